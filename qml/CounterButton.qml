import QtQuick

// A push button drawn from artwork: the pressed picture while a finger is down on it, or
// the normal picture dimmed when it has none. Touches are routed by the screen, not here.
Item {
    id: button
    property string viewKind: "button"
    property string image
    property url source
    property url pressedSource
    property bool highlighted: false
    property real renderScale: 1

    readonly property bool hasPressedPicture: pressedSource.toString() !== ""

    Image {
        anchors.fill: parent
        source: button.source
        sourceSize: Qt.size(Math.ceil(width * button.renderScale), Math.ceil(height * button.renderScale))
        visible: !(button.highlighted && button.hasPressedPicture)
        opacity: button.highlighted ? 0.7 : 1.0
        smooth: true
    }
    Image {
        anchors.fill: parent
        source: button.hasPressedPicture ? button.pressedSource : ""
        // Not part of the first frame: rendered in the background meanwhile.
        asynchronous: true
        sourceSize: Qt.size(Math.ceil(width * button.renderScale), Math.ceil(height * button.renderScale))
        visible: button.highlighted && button.hasPressedPicture
        smooth: true
    }
}
