import QtQuick

// One digit wheel: a strip of eleven cells, "0" to "9" and a second "0".
Image {
    property real renderScale: 1
    // Capped so the strip stays within common texture size limits.
    sourceSize: Qt.size(Math.ceil(width * Math.min(renderScale, 7)), Math.ceil(height * Math.min(renderScale, 7)))
    // At the screen's resolution already: drawn pixel for pixel, which is sharper and spares
    // the software renderer a filtered scaling on every frame of a roll.
    smooth: false
}
