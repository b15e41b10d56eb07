import QtQuick
import QtQuick.Window

// The counter screen: a 320-point-wide portrait screen, scaled to fit the window and
// letterboxed in black. Controls are found by objectName; the controller places them.
Window {
    id: window
    title: "Zellick"
    color: "black"
    width: 360
    height: 640
    visible: true

    // Fixed once at start-up: the layout does not change when the window is resized.
    property real screenHeight: 480
    Component.onCompleted: screenHeight = Math.max(480, height * 320 / Math.max(1, width))

    Item {
        id: screen
        objectName: "RootView"
        width: 320
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
        readonly property real bodyY: (height - 460) / 2

        // Plain coloured views the controller lays over everything but the questions.
        function addColorView(x, y, w, h, c) {
            colorViewComponent.createObject(colorViews, { x: x, y: y, width: w, height: h, color: c })
        }

        // The wheels show through the body's windows; the band clips the rest of the strip.
        Item {
            id: aperture
            x: 0
            y: screen.bodyY + 460 / 2.43
            width: 320
            height: 101
            clip: true

            Wheel { objectName: "ImageView1"; x: 64; renderScale: screen.renderScale }
            Wheel { objectName: "ImageView2"; x: 116; renderScale: screen.renderScale }
            Wheel { objectName: "ImageView3"; x: 167; renderScale: screen.renderScale }
            Wheel { objectName: "ImageView4"; x: 219; renderScale: screen.renderScale }
        }

        Image {
            objectName: "baseImageView"
            property string viewKind: "image"
            property string image: "counter-body.png"
            x: 0
            y: screen.bodyY
            width: 320
            height: 460
            source: "image://art/counter-body"
            sourceSize: Qt.size(Math.ceil(width * screen.renderScale), Math.ceil(height * screen.renderScale))
            smooth: false  // rendered at the screen's resolution, as the wheels
        }

        CounterButton {
            objectName: "ButtonAdd"; width: 110; height: 110
            image: "add-up.png"; source: "image://art/add-up"; pressedSource: "image://art/add-down"
            loadPressedPicture: screen.firstFrameShown
            renderScale: screen.renderScale
        }
        CounterButton {
            objectName: "ButtonMinus"; width: 48; height: 48
            image: "minus-up.png"; source: "image://art/minus-up"; pressedSource: "image://art/minus-down"
            loadPressedPicture: screen.firstFrameShown
            renderScale: screen.renderScale
        }
        CounterButton {
            objectName: "ButtonReset"; width: 44; height: 44
            image: "reset-up.png"; source: "image://art/reset-up"; pressedSource: "image://art/reset-down"
            loadPressedPicture: screen.firstFrameShown
            renderScale: screen.renderScale
        }
        CounterButton {
            objectName: "ButtonA"; width: 36; height: 30
            image: "a-down.png"; source: "image://art/a-down"
            renderScale: screen.renderScale
        }
        CounterButton {
            objectName: "ButtonB"; width: 36; height: 30
            image: "b-up.png"; source: "image://art/b-up"
            renderScale: screen.renderScale
        }
        CounterButton {
            objectName: "ButtonC"; width: 36; height: 30
            image: "c-up.png"; source: "image://art/c-up"
            renderScale: screen.renderScale
        }
        CounterButton {
            objectName: "ButtonInfo"; width: 30; height: 30
            image: "info-up.png"; source: "image://art/info-up"
            renderScale: screen.renderScale
        }

        CounterLabel { objectName: "LabelTimer"; width: 84; height: 24; text: "00:00:00" }
        CounterLabel { objectName: "LabelAvg"; width: 74; height: 24; text: "0/min" }

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
