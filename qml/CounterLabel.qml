import QtQuick
import Zellick

// The clock and rate labels: grey condensed bold text, centred in its frame.
GlyphLabel {
    color: "#808080"
    font.family: "Roboto Condensed"
    font.bold: true
    font.pixelSize: 17

    // Read as its name and its text, once the screen gives it a node (while a reader listens).
    property string accessibleName
}
