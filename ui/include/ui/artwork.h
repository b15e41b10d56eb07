#pragma once

#include <QImage>
#include <QQuickImageProvider>
#include <QString>
#include <QStringList>

namespace zellick::ui {

// The bundled vector artwork (qrc:/images/<id>.svg) rendered at exactly the size the item
// asks for, so it stays crisp at any scale. Served to QML as image://art/<id>.
// With a cache folder, each rendering is kept there as a raw image, so later starts map the
// pixels instead of parsing and rasterising the SVG again. Renderings shipped with the app
// (the same files, made at build time for the usual window sizes) are looked for first.
class ArtworkProvider : public QQuickImageProvider {
 public:
  // `cacheDir` empty: no disk cache. `shippedDirs` are only read, in order.
  explicit ArtworkProvider(QString cacheDir = {}, QStringList shippedDirs = {})
      : QQuickImageProvider(QQuickImageProvider::Image),
        cacheDir_(std::move(cacheDir)),
        shippedDirs_(std::move(shippedDirs)) {}

  // Thread-safe: each call renders with its own renderer. An unknown id gives a null image.
  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

 private:
  QString cacheDir_;
  QStringList shippedDirs_;
};

// The artwork's bytes as bundled (perhaps compressed), without copying: they change whenever
// the artwork does. Empty when there is no artwork `id`.
QByteArray bundledArtworkBytes(const QString& id);
// The raw image cache. A file is named after the artwork, the size asked for and a digest of
// the bundled bytes, so changed artwork never meets an old rendering.
QString artworkCacheName(const QString& id, const QSize& requestedSize, const QByteArray& bundled);
// The image in `path`, mapped read-only rather than copied, and the artwork's natural size; a
// null image when the file is missing, truncated or not a cache file. Cache files are only
// ever replaced whole (see below), never rewritten in place under a reader's mapping.
QImage readArtworkCache(const QString& path, QSize* natural);
// Writes through a temporary file renamed into place, so readers never see half a file.
bool writeArtworkCache(const QString& path, const QImage& image, QSize natural);

}  // namespace zellick::ui
