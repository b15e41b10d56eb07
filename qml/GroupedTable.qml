import QtQuick

// A grouped table: rows in sections with a gap above and below each, inset, the ends of a
// section rounded, over a pinstriped background; a header whose labels may reach past it onto
// the rows and are drawn over them. `rows` is the table itself (a list model): the list makes a
// row only as it comes into view, and the row asks for its cell once, when made.
Item {
    id: table
    property QtObject rows: null
    property var headerLabels: []
    property real headerHeight: 0
    property real renderScale: 1

    readonly property real inset: 9
    readonly property real imageSide: 32

    Rectangle {
        anchors.fill: parent
        color: "#46515d"
        Repeater {
            model: Math.ceil(table.width / 7)
            Rectangle { x: index * 7 + 5; width: 2; height: table.height; color: "#3f4955" }
        }
    }

    // A cell's shape: rounded at the top of its section, at the bottom, both or neither.
    component CellShape: Item {
        property color color
        property bool roundTop
        property bool roundBottom
        readonly property real radius: 8
        clip: roundTop !== roundBottom
        Rectangle {
            y: parent.roundTop || !parent.roundBottom ? 0 : -parent.radius
            width: parent.width
            height: parent.height + (parent.roundTop !== parent.roundBottom ? parent.radius : 0)
            radius: parent.roundTop || parent.roundBottom ? parent.radius : 0
            color: parent.color
        }
    }

    ListView {
        id: list
        objectName: "TableList"
        anchors.fill: parent
        model: table.rows
        // Rows just out of view are not made: thousands of rows cost what a screenful does.
        cacheBuffer: 0
        boundsBehavior: Flickable.DragOverBounds

        // The keys' row stays in view.
        Connections {
            target: table.rows
            function onCurrentChanged() {
                if (table.rows.currentIndex >= 0)
                    list.positionViewAtIndex(table.rows.currentIndex, ListView.Contain)
            }
        }

        header: Item {
            z: 3  // the labels lie over the rows, even where they reach past the header
            width: list.width
            height: table.headerHeight
            Repeater {
                model: table.headerLabels
                delegate: Item {
                    required property var modelData
                    x: modelData.x
                    y: modelData.y
                    width: modelData.w
                    height: modelData.h
                    Rectangle { anchors.fill: parent; color: modelData.background }
                    Text {
                        x: modelData.shadowX
                        y: modelData.shadowY
                        width: parent.width
                        height: parent.height
                        visible: modelData.shadowColor.a > 0
                        text: modelData.text
                        font: modelData.font
                        color: modelData.shadowColor
                        verticalAlignment: Text.AlignVCenter
                    }
                    Text {
                        objectName: "HeaderLabel"
                        anchors.fill: parent
                        text: modelData.text
                        font: modelData.font
                        color: modelData.color
                        verticalAlignment: Text.AlignVCenter
                    }
                }
            }
        }

        delegate: Item {
            id: entry
            required property int index
            required property real rowHeight
            required property bool isRow
            required property bool first
            required property bool last
            // Asked for once, as the row is made; given back as it goes.
            property var cell: null
            property int madeAt: -1
            readonly property bool selected: table.rows !== null && table.rows.selectedIndex === index
            objectName: isRow ? "TableRow" : "TableGap"
            width: list.width
            height: rowHeight
            Component.onCompleted: {
                if (!isRow || !table.rows)
                    return
                madeAt = index
                cell = table.rows.cell(index)
            }
            Component.onDestruction: if (cell && table.rows) table.rows.released(madeAt, cell.token)

            Item {
                id: body
                visible: entry.isRow
                x: table.inset
                Accessible.role: entry.isRow ? Accessible.Button : Accessible.NoRole
                Accessible.name: entry.cell ? entry.cell.text : ""
                Accessible.onPressAction: if (table.rows) table.rows.tapped(entry.index)
                width: parent.width - 2 * table.inset
                height: parent.height

                CellShape {
                    anchors.fill: parent
                    color: entry.cell ? entry.cell.background : "black"
                    roundTop: entry.first
                    roundBottom: entry.last
                }
                CellShape {
                    anchors.fill: parent
                    color: "#1a6fd6"
                    roundTop: entry.first
                    roundBottom: entry.last
                    visible: tap.pressed && tap.containsMouse
                }
                CellShape {
                    objectName: "SelectedHighlight"
                    anchors.fill: parent
                    color: "#1a6fd6"
                    roundTop: entry.first
                    roundBottom: entry.last
                    opacity: entry.selected ? 1 : 0
                    visible: opacity > 0
                    Behavior on opacity {
                        enabled: table.rows !== null && table.rows.fading
                        NumberAnimation { duration: 300 }
                    }
                }
                // Bundled artwork by name, at the screen's resolution.
                Image {
                    objectName: "CellPicture"
                    x: 6
                    anchors.verticalCenter: parent.verticalCenter
                    width: table.imageSide
                    height: table.imageSide
                    source: entry.cell ? entry.cell.image : ""
                    sourceSize: Qt.size(Math.ceil(width * table.renderScale), Math.ceil(height * table.renderScale))
                    visible: status === Image.Ready
                }
                // A downloaded file: read off the main thread, again each time the row is made.
                Image {
                    objectName: "CellIcon"
                    x: 6
                    anchors.verticalCenter: parent.verticalCenter
                    width: table.imageSide
                    height: table.imageSide
                    source: entry.cell ? entry.cell.imageFile : ""
                    sourceSize: Qt.size(Math.ceil(width * table.renderScale), Math.ceil(height * table.renderScale))
                    asynchronous: true
                    cache: false
                    fillMode: Image.PreserveAspectFit
                    visible: status === Image.Ready
                }
                Text {
                    objectName: "CellText"
                    readonly property bool pictured: !!entry.cell
                                                     && (entry.cell.image.toString() !== ""
                                                         || entry.cell.imageFile.toString() !== "")
                    x: pictured ? 6 + table.imageSide + 10 : 10
                    width: parent.width - x - 10
                    anchors.verticalCenter: parent.verticalCenter
                    text: entry.cell ? entry.cell.text : ""
                    color: entry.cell ? entry.cell.textColor : "white"
                    font.bold: true
                    font.pixelSize: 17
                    fontSizeMode: Text.HorizontalFit  // a long name shrinks a little first
                    minimumPixelSize: 13
                    elide: Text.ElideRight
                }
                // The row the keys are on.
                Rectangle {
                    objectName: "CurrentRow"
                    anchors.fill: parent
                    visible: table.rows !== null && table.rows.currentIndex === entry.index
                    color: "transparent"
                    border.color: "white"
                    border.width: 2
                    radius: entry.first || entry.last ? 8 : 0
                }
                Rectangle {
                    visible: !entry.last
                    anchors.bottom: parent.bottom
                    width: parent.width
                    height: 1
                    color: "#3a3a3a"
                }
                MouseArea {
                    id: tap
                    anchors.fill: parent
                    enabled: entry.isRow
                    onClicked: if (table.rows) table.rows.tapped(entry.index)
                }
            }
        }
    }

    // Where the list stands, while it moves.
    Rectangle {
        objectName: "ScrollIndicator"
        visible: list.visibleArea.heightRatio < 1
        opacity: list.moving ? 0.6 : 0
        Behavior on opacity { NumberAnimation { duration: 300 } }
        x: table.width - width - 2
        y: list.visibleArea.yPosition * table.height
        width: 3
        height: Math.max(8, list.visibleArea.heightRatio * table.height)
        radius: 1.5
        color: "white"
    }
}
