import QtQuick
import QtQuick.Window

// The yardstick for the app's start-up: the least a Qt Quick window can be.
Window {
    width: 360
    height: 640
    visible: true
    color: "black"

    Rectangle {
        anchors.centerIn: parent
        width: 100
        height: 100
        color: "gray"
    }
}
