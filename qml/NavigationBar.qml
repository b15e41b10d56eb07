import QtQuick

// A bar across the top of a screen: the title in the middle and, when set, a back button named
// backTitle at the left, pointed to the left. barStyle: 0 default (blue-grey), 1 black,
// 2 black and translucent.
Item {
    id: bar
    property string title
    property string backTitle
    property int barStyle: 0
    property bool translucent: false
    property color tintColor: "transparent"
    signal backClicked()

    readonly property bool black: barStyle !== 0

    Rectangle {
        anchors.fill: parent
        opacity: bar.barStyle === 2 || bar.translucent ? 0.8 : 1
        gradient: Gradient {
            GradientStop { position: 0.0; color: bar.black ? "#4a4a4a" : "#b3c0d0" }
            GradientStop { position: 0.5; color: bar.black ? "#1c1c1c" : "#889bb3" }
            GradientStop { position: 1.0; color: bar.black ? "#000000" : "#6d83a1" }
        }
    }
    Rectangle { anchors.bottom: parent.bottom; width: parent.width; height: 1; color: bar.black ? "#000000" : "#2d3642" }

    Text {
        objectName: "NavigationTitle"
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 2 * (back.x + back.width) - 8)
        text: bar.title
        color: "white"
        style: Text.Raised
        styleColor: "#000000"
        font.bold: true
        font.pixelSize: 20
        elide: Text.ElideRight
    }

    Item {
        id: back
        objectName: "BackButton"
        visible: bar.backTitle !== ""
        Accessible.role: Accessible.Button
        Accessible.name: bar.backTitle
        Accessible.onPressAction: bar.backClicked()
        x: 5
        anchors.verticalCenter: parent.verticalCenter
        height: 30
        width: Math.min(label.implicitWidth, 120) + 26
        readonly property color face: tap.pressed ? "#5a5a5a" : (bar.black ? "#2e2e2e" : "#5873a0")

        // The point: a square turned half a right angle under the left end of the body.
        Rectangle {
            x: 15 - width / 2
            y: (parent.height - height) / 2
            width: parent.height / Math.SQRT2
            height: width
            rotation: 45
            radius: 2
            color: back.face
            border.color: "#000000"
            border.width: 0.5
        }
        Rectangle {
            x: 15
            width: parent.width - 15
            height: parent.height
            radius: 5
            color: back.face
            border.color: "#000000"
            border.width: 0.5
            // Hides the point's border where it meets the body.
            Rectangle { x: 0; y: 1; width: 2; height: parent.height - 2; color: back.face }
        }
        Text {
            id: label
            x: 17
            width: parent.width - 21
            anchors.verticalCenter: parent.verticalCenter
            text: bar.backTitle
            color: "white"
            font.bold: true
            font.pixelSize: 12
            horizontalAlignment: Text.AlignHCenter
            elide: Text.ElideRight
        }
        MouseArea {
            id: tap
            anchors.fill: parent
            anchors.margins: -6  // a fingertip's slack
            onClicked: bar.backClicked()
        }
    }
}
