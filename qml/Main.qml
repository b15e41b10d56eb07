import QtQuick
import QtQuick.Window

// The counter screen: a portrait logical screen, scaled to fit the window and letterboxed in
// black. Controls are found by objectName; the app sizes and places them from the counter's
// table of controls, and the controller moves them from there.
Window {
    id: window
    title: "Zellick"
    color: "black"
    width: 360
    height: 640
    visible: false  // shown by the app once its screen is ready

    // The logical screen's width and least height, in points.
    required property real logicalWidth
    required property real minLogicalHeight

    // Fixed once at start-up: the layout does not change when the window is resized.
    property real screenHeight: minLogicalHeight
    Component.onCompleted: screenHeight = Math.max(minLogicalHeight, height * logicalWidth / Math.max(1, width))

    Item {
        id: screen
        objectName: "RootView"
        width: window.logicalWidth
        height: window.screenHeight
        clip: true
        transformOrigin: Item.TopLeft
        scale: Math.min(window.width / width, window.height / height)
        x: (window.width - width * scale) / 2
        y: (window.height - height * scale) / 2

        // Set by the app once the first frame is shown; what is not part of it waits for this.
        property bool firstFrameShown: false

        // Device pixels per point, so the vector artwork is rasterised crisp.
        readonly property real renderScale: Math.max(0.25, scale * Screen.devicePixelRatio)

        // Plain coloured views the controller lays over everything but the questions.
        function addColorView(x, y, w, h, c) {
            colorViewComponent.createObject(colorViews, { x: x, y: y, width: w, height: h, color: c })
        }

        // The wheels show through the body's windows; this band clips the rest of the strip.
        Item {
            objectName: "WheelWindow"
            clip: true

            // The count as one text for a screen reader; it holds the focus, so a reader speaks
            // each change.
            property string accessibleName
            property string accessibleText
            readonly property bool accessibleFocus: true

            Wheel { objectName: "ImageView1"; renderScale: screen.renderScale }
            Wheel { objectName: "ImageView2"; renderScale: screen.renderScale }
            Wheel { objectName: "ImageView3"; renderScale: screen.renderScale }
            Wheel { objectName: "ImageView4"; renderScale: screen.renderScale }
        }

        Image {
            objectName: "baseImageView"
            sourceSize: Qt.size(Math.ceil(width * screen.renderScale), Math.ceil(height * screen.renderScale))
            smooth: false  // rendered at the screen's resolution, as the wheels
        }

        CounterButton { objectName: "ButtonAdd"; renderScale: screen.renderScale; loadPressedPicture: screen.firstFrameShown }
        CounterButton { objectName: "ButtonMinus"; renderScale: screen.renderScale; loadPressedPicture: screen.firstFrameShown }
        CounterButton { objectName: "ButtonReset"; renderScale: screen.renderScale; loadPressedPicture: screen.firstFrameShown }
        CounterButton { objectName: "ButtonA"; renderScale: screen.renderScale }
        CounterButton { objectName: "ButtonB"; renderScale: screen.renderScale }
        CounterButton { objectName: "ButtonC"; renderScale: screen.renderScale }
        CounterButton { objectName: "ButtonInfo"; renderScale: screen.renderScale }

        CounterLabel { objectName: "LabelTimer"; text: "00:00:00" }
        CounterLabel { objectName: "LabelAvg"; text: "0/min" }

        Item {
            id: colorViews
            anchors.fill: parent
        }
        Component {
            id: colorViewComponent
            Rectangle {}
        }

        // The questions, built when the first one is asked: none of it is in the first frame.
        Loader {
            objectName: "QuestionLoader"
            anchors.fill: parent
            z: 1000
            active: false
            source: "Question.qml"
        }
    }
}
