import QtQuick

// The More screen, shown over the counter in its logical screen: a grouped table below a
// navigation bar. The app binds the table by objectName; the controller adds the bar.
Item {
    id: screen
    property color backgroundColor: "white"
    // Device pixels per point, as the screen beneath renders its artwork.
    readonly property real renderScale: parent && parent.renderScale ? parent.renderScale : 1

    // Added by the controller; a bar lies over the rest.
    function addNavigationBar(x, y, w, h) {
        return barComponent.createObject(bars, { x: x, y: y, width: w, height: h })
    }

    Rectangle { anchors.fill: parent; color: screen.backgroundColor }
    // Touches that reach no control of this screen stop here.
    MouseArea { anchors.fill: parent; acceptedButtons: Qt.AllButtons }

    GroupedTable { objectName: "pTblView"; renderScale: screen.renderScale }

    Item { id: bars; anchors.fill: parent; z: 10 }
    Component { id: barComponent; NavigationBar {} }
}
