#include "ui/artwork.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QResource>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace zellick::ui {

namespace {

// Texture sizes beyond this are refused by common GPUs.
constexpr int kMaxSide = 8192;

// File layout: this header, then the pixels row after row with no padding.
struct CacheHeader {
  char magic[4];
  std::uint32_t version;
  std::int32_t naturalWidth, naturalHeight;
  std::int32_t width, height;
  std::uint32_t format;
};
constexpr char kMagic[4] = {'Z', 'A', 'R', 'T'};
constexpr std::uint32_t kCacheVersion = 1;
constexpr QImage::Format kFormat = QImage::Format_ARGB32_Premultiplied;

bool sensible(int w, int h) { return w > 0 && h > 0 && w <= kMaxSide && h <= kMaxSide; }

// Through Qt's SVG image plugin, which is loaded only when something has to be rendered:
// starts served from the cache never load the SVG library.
QImage render(QByteArray svg, QSize* natural, const QSize& requestedSize) {
  QBuffer buffer(&svg);
  buffer.open(QIODevice::ReadOnly);
  QImageReader reader(&buffer, "svg");
  *natural = reader.size();
  if (!natural->isValid() || natural->isEmpty()) {
    qWarning("artwork: cannot read the SVG (%s)", qPrintable(reader.errorString()));
    return {};
  }
  QSize target = requestedSize;
  if (target.width() <= 0 && target.height() <= 0) {
    target = *natural;
  } else if (target.width() <= 0) {
    target.setWidth(qMax(1, natural->width() * target.height() / qMax(1, natural->height())));
  } else if (target.height() <= 0) {
    target.setHeight(qMax(1, natural->height() * target.width() / qMax(1, natural->width())));
  }
  target = target.boundedTo(QSize(kMaxSide, kMaxSide));
  reader.setScaledSize(target);
  QImage image = reader.read();
  if (image.isNull()) {
    qWarning("artwork: cannot render the SVG (%s)", qPrintable(reader.errorString()));
    return {};
  }
  return image.format() == kFormat ? image : image.convertToFormat(kFormat);
}

QString artworkPath(const QString& id) { return QStringLiteral(":/images/%1.svg").arg(id); }

// A mapped cache file, unmapped when the last image sharing it goes.
struct Mapping {
  void* address;
  size_t length;
  static void release(void* mapping) {
    auto* m = static_cast<Mapping*>(mapping);
    munmap(m->address, m->length);
    delete m;
  }
};

}  // namespace

QByteArray bundledArtworkBytes(const QString& id) {
  const QResource resource(artworkPath(id));
  if (!resource.isValid() || resource.size() <= 0 || !resource.data()) return {};
  return QByteArray::fromRawData(reinterpret_cast<const char*>(resource.data()),
                                 static_cast<qsizetype>(resource.size()));
}

QString artworkCacheName(const QString& id, const QSize& requestedSize, const QByteArray& bundled) {
  // 64-bit FNV-1a: a cache key, not a defence; cheap on every start, unlike a cryptographic hash.
  std::uint64_t hash = 0xcbf29ce484222325ULL;
  for (const char c : bundled) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3ULL;
  const QString digest = QStringLiteral("%1").arg(hash, 16, 16, QLatin1Char('0'));
  return QStringLiteral("%1-%2x%3-%4.raw")
      .arg(id)
      .arg(requestedSize.width())
      .arg(requestedSize.height())
      .arg(digest);
}

QImage readArtworkCache(const QString& path, QSize* natural) {
  const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return {};
  struct stat st {};
  void* address = MAP_FAILED;
  if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) &&
      st.st_size >= static_cast<off_t>(sizeof(CacheHeader)))
    address = mmap(nullptr, static_cast<size_t>(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
  ::close(fd);
  if (address == MAP_FAILED) return {};
  auto* mapping = new Mapping{address, static_cast<size_t>(st.st_size)};

  CacheHeader h{};
  std::memcpy(&h, address, sizeof h);
  const qint64 rowBytes = qint64(h.width) * 4;
  if (std::memcmp(h.magic, kMagic, sizeof kMagic) != 0 || h.version != kCacheVersion ||
      h.format != static_cast<std::uint32_t>(kFormat) || !sensible(h.width, h.height) ||
      !sensible(h.naturalWidth, h.naturalHeight) ||
      st.st_size != static_cast<off_t>(sizeof h + rowBytes * h.height)) {
    Mapping::release(mapping);
    return {};
  }
  // The pixels start right after the header, on a 4-byte boundary as the format needs.
  QImage image(static_cast<const uchar*>(address) + sizeof h, h.width, h.height, rowBytes, kFormat,
               &Mapping::release, mapping);
  if (image.isNull()) {
    Mapping::release(mapping);
    return {};
  }
  if (natural) *natural = QSize(h.naturalWidth, h.naturalHeight);
  return image;
}

bool writeArtworkCache(const QString& path, const QImage& image, QSize natural) {
  if (image.isNull() || !sensible(image.width(), image.height()) ||
      !sensible(natural.width(), natural.height()))
    return false;
  const QImage pixels = image.format() == kFormat ? image : image.convertToFormat(kFormat);
  static std::atomic<unsigned> serial{0};
  // Unique per process and call: two writers of one file never share a temporary.
  const QString temp = QStringLiteral("%1.%2-%3.tmp")
                           .arg(path)
                           .arg(QCoreApplication::applicationPid())
                           .arg(serial.fetch_add(1));
  QFile file(temp);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
  CacheHeader h{};
  std::memcpy(h.magic, kMagic, sizeof kMagic);
  h.version = kCacheVersion;
  h.naturalWidth = natural.width();
  h.naturalHeight = natural.height();
  h.width = pixels.width();
  h.height = pixels.height();
  h.format = static_cast<std::uint32_t>(kFormat);
  bool ok = file.write(reinterpret_cast<const char*>(&h), sizeof h) == sizeof h;
  const qint64 rowBytes = qint64(pixels.width()) * 4;
  for (int y = 0; ok && y < pixels.height(); ++y)
    ok = file.write(reinterpret_cast<const char*>(pixels.constScanLine(y)), rowBytes) == rowBytes;
  file.close();
  ok = ok && file.error() == QFileDevice::NoError;
  // rename() replaces an existing file atomically; QFile::rename would refuse to.
  if (!ok ||
      std::rename(QFile::encodeName(temp).constData(), QFile::encodeName(path).constData()) != 0) {
    QFile::remove(temp);
    return false;
  }
  return true;
}

QImage ArtworkProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  if (id.isEmpty() || id.contains(QLatin1Char('/')) || id.contains(QLatin1Char('\\'))) return {};
  const QByteArray bundled = bundledArtworkBytes(id);
  if (bundled.isEmpty()) return {};

  const QString name = artworkCacheName(id, requestedSize, bundled);
  const QString cached = cacheDir_.isEmpty() ? QString() : QDir(cacheDir_).filePath(name);
  QStringList tries;
  for (const QString& dir : shippedDirs_) tries << QDir(dir).filePath(name);
  if (!cached.isEmpty()) tries << cached;
  for (const QString& path : tries) {
    QSize natural;
    QImage image = readArtworkCache(path, &natural);
    if (!image.isNull()) {
      if (size) *size = natural;
      return image;
    }
  }

  QFile source(artworkPath(id));
  if (!source.open(QIODevice::ReadOnly)) return {};
  QSize natural;
  QImage image = render(source.readAll(), &natural, requestedSize);
  if (image.isNull()) return {};
  if (size) *size = natural;
  // A cache that cannot be written only costs the next start the rendering.
  if (!cached.isEmpty() && QDir().mkpath(cacheDir_)) writeArtworkCache(cached, image, natural);
  return image;
}

}  // namespace zellick::ui
