import QtQuick

// A push button drawn from artwork: the pressed picture while a finger is down on it, or
// the normal picture dimmed when it has none (or it is not loaded yet). Touches are routed by
// the screen, not here.
Item {
    id: button
    property url source
    property url pressedSource
    property bool highlighted: false
    property real renderScale: 1
    // Set once the first frame is out: the pressed picture is no part of it.
    property bool loadPressedPicture: false

    // What a screen reader is told; the screen gives the button its accessible node while one
    // listens, and a press through it taps the button.
    property string accessibleName
    property bool accessibleChecked: false
    property bool accessibleCheckable: false
    signal accessiblePressed()

    readonly property bool pressedShown: highlighted && pressed.item !== null
                                         && pressed.item.status === Image.Ready

    // Both pictures are rendered at the screen's resolution and drawn unsmoothed, as the wheels.
    Image {
        anchors.fill: parent
        source: button.source
        sourceSize: Qt.size(Math.ceil(width * button.renderScale), Math.ceil(height * button.renderScale))
        visible: !button.pressedShown
        opacity: button.highlighted ? 0.7 : 1.0
        smooth: false
    }
    Loader {
        id: pressed
        anchors.fill: parent
        active: button.loadPressedPicture && button.pressedSource.toString() !== ""
        visible: button.pressedShown
        sourceComponent: Image {
            source: button.pressedSource
            asynchronous: true
            sourceSize: Qt.size(Math.ceil(width * button.renderScale), Math.ceil(height * button.renderScale))
            smooth: false
        }
    }
}
