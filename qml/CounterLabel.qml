import QtQuick

// The clock and rate labels: grey condensed bold text, centred in its frame.
Text {
    property string viewKind: "label"
    color: "#808080"
    font.family: "Roboto Condensed"
    font.bold: true
    font.pixelSize: 17
    horizontalAlignment: Text.AlignHCenter
    verticalAlignment: Text.AlignVCenter
    elide: Text.ElideNone
}
