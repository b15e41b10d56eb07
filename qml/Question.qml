import QtQuick

// A modal question over the counter: everything beneath ignores touches while it shows.
Item {
    id: question
    objectName: "QuestionOverlay"
    property string title
    property string message
    property var buttons: []
    property bool shown: false
    signal answered(int index)

    visible: shown
    z: 1000

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        preventStealing: true
    }
    Rectangle {
        anchors.fill: parent
        color: "black"
        opacity: 0.6
    }

    // Built the first time a question shows: its text would otherwise hold up the first frame.
    property bool panelBuilt: false
    onShownChanged: if (shown) panelBuilt = true

    // Unsized, so it takes the panel's size rather than stretching it.
    Loader {
        anchors.centerIn: parent
        active: question.panelBuilt
        sourceComponent: Component {
            Rectangle {
                id: panel
                objectName: "QuestionPanel"
                Accessible.role: Accessible.AlertMessage
                Accessible.name: question.title
                Accessible.description: question.message
                width: 272
                height: 18 + titleText.height + 10 + messageText.height + 16 + 40 + 18
                radius: 10
                border.color: "#a9aeb3"
                border.width: 1.5
                gradient: Gradient {
                    GradientStop { position: 0.0; color: "#42464b" }
                    GradientStop { position: 0.5; color: "#26292d" }
                    GradientStop { position: 1.0; color: "#141618" }
                }

                // Anchored rather than laid out by a positioner: the places are right at once,
                // before the next frame is drawn.
                Text {
                    id: titleText
                    objectName: "QuestionTitle"
                    anchors { top: parent.top; topMargin: 18; left: parent.left; right: parent.right; leftMargin: 16; rightMargin: 16 }
                    text: question.title
                    color: "white"
                    font.family: "Roboto Condensed"
                    font.bold: true
                    font.pixelSize: 20
                    font.letterSpacing: 1
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                }
                Text {
                    id: messageText
                    objectName: "QuestionMessage"
                    anchors { top: titleText.bottom; topMargin: 10; left: titleText.left; right: titleText.right }
                    text: question.message
                    color: "#d4d7da"
                    font.family: "Roboto Condensed"
                    font.pixelSize: 16
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                }
                Item {
                    id: buttonRow
                    anchors { top: messageText.bottom; topMargin: 16; left: titleText.left; right: titleText.right }
                    height: 40

                    Repeater {
                        model: question.buttons
                        delegate: Rectangle {
                            required property int index
                            required property string modelData
                            readonly property int count: Math.max(1, question.buttons.length)
                            objectName: "QuestionButton" + index
                            property string label: modelData
                            Accessible.role: Accessible.Button
                            Accessible.name: label
                            Accessible.onPressAction: question.answered(index)
                            width: (buttonRow.width - 10 * (count - 1)) / count
                            height: 40
                            x: index * (width + 10)
                            radius: 6
                            border.color: "#5b6066"
                            border.width: 1
                            gradient: Gradient {
                                GradientStop { position: 0.0; color: tap.pressed ? "#9ea3a8" : "#f5f6f7" }
                                GradientStop { position: 0.45; color: tap.pressed ? "#80858a" : "#c9cdd1" }
                                GradientStop { position: 1.0; color: tap.pressed ? "#6a6f74" : "#8f9499" }
                            }
                            Text {
                                anchors.centerIn: parent
                                text: parent.label
                                color: "#1a1c1f"
                                font.family: "Roboto Condensed"
                                font.bold: true
                                font.pixelSize: 18
                            }
                            MouseArea {
                                id: tap
                                anchors.fill: parent
                                onClicked: question.answered(parent.index)
                            }
                        }
                    }
                }
            }
        }
    }
}
