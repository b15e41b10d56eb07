import QtQuick
import Zellick

// The clock and rate labels: grey condensed bold text, centred in its frame.
GlyphLabel {
    color: "#808080"
    font.family: "Roboto Condensed"
    font.bold: true
    font.pixelSize: 17

    property string accessibleName
    Accessible.role: Accessible.StaticText
    Accessible.name: accessibleName + " " + text
}
