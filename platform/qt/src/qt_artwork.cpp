#include "platform/qt/qt_artwork.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

namespace zellick {

QImage ArtworkProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  const QString path = QStringLiteral(":/images/%1.svg").arg(id);
  if (id.contains(QLatin1Char('/')) || !QFile::exists(path)) return {};
  QSvgRenderer renderer(path);
  if (!renderer.isValid()) return {};
  const QSize natural = renderer.defaultSize();
  if (size) *size = natural;
  QSize target = requestedSize;
  if (target.width() <= 0 && target.height() <= 0) {
    target = natural;
  } else if (target.width() <= 0) {
    target.setWidth(qMax(1, natural.width() * target.height() / qMax(1, natural.height())));
  } else if (target.height() <= 0) {
    target.setHeight(qMax(1, natural.height() * target.width() / qMax(1, natural.width())));
  }
  // Texture sizes beyond this are refused by common GPUs.
  target = target.boundedTo(QSize(8192, 8192));
  QImage image(target, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  renderer.render(&painter);
  return image;
}

}  // namespace zellick
