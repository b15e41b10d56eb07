#pragma once

#include <QQuickImageProvider>

namespace zellick {

// The bundled vector artwork (qrc:/images/<id>.svg) rendered at exactly the size the item
// asks for, so it stays crisp at any scale. Served to QML as image://art/<id>.
class ArtworkProvider : public QQuickImageProvider {
 public:
  ArtworkProvider() : QQuickImageProvider(QQuickImageProvider::Image) {}

  // Thread-safe: each call renders with its own renderer. An unknown id gives a null image.
  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

}  // namespace zellick
