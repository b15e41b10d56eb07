// The artwork provider's disk cache: hits are used, anything wrong with a cache file falls back
// to rendering (and repairs the file), and changed artwork never meets an old rendering.
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

#include "ui/artwork.h"

namespace zellick::test {
namespace {

using namespace ui;

const QString kArt = QStringLiteral("minus-up");

TEST(ArtworkCache, HitsAreServedAndDamagedFilesRenderedAfreshAndRepaired) {
  QFile svg(":/images/" + kArt + ".svg");
  ASSERT_TRUE(svg.open(QIODevice::ReadOnly)) << "artwork not linked in";
  const QSize requested(54, 54);
  const QImage expected = ArtworkProvider().requestImage(kArt, nullptr, requested);
  ASSERT_FALSE(expected.isNull());
  QTemporaryDir dir;
  const QString file = dir.filePath(artworkCacheName(kArt, requested, bundledArtworkBytes(kArt)));
  const auto request = [&](QSize* natural = nullptr) {
    return ArtworkProvider(dir.path()).requestImage(kArt, natural, requested);
  };
  request();
  EXPECT_EQ(readArtworkCache(file, nullptr), expected) << "a miss stores the rendering";

  QImage red(17, 9, QImage::Format_ARGB32_Premultiplied);
  red.fill(Qt::red);
  ASSERT_TRUE(writeArtworkCache(file, red, QSize(123, 45)));
  QSize natural;
  EXPECT_EQ(request(&natural), red) << "a hit is served from the file";
  EXPECT_EQ(natural, QSize(123, 45));

  // Each row damages the file the previous one left behind (and a request repaired).
  const std::pair<const char*, std::function<void(QByteArray&)>> cases[] = {
      {"empty", [](QByteArray& b) { b.clear(); }},
      {"truncated", [](QByteArray& b) { b.chop(5); }},
      {"longer", [](QByteArray& b) { b.append("xx"); }},
      {"wrong magic", [](QByteArray& b) { b[0] = 'X'; }},
      {"wrong version", [](QByteArray& b) { b[4] = 99; }},
      {"huge width", [](QByteArray& b) { b[18] = 0x7f; }},
      {"not a cache file", [](QByteArray& b) { b = "P6 54 54 255\n"; }},
  };
  for (const auto& [name, damage] : cases) {
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::ReadWrite)) << name;
    QByteArray bytes = f.readAll();
    damage(bytes);
    f.resize(0);
    f.seek(0);
    f.write(bytes);
    f.close();
    EXPECT_TRUE(readArtworkCache(file, nullptr).isNull()) << name;
    EXPECT_EQ(request(), expected) << name;
    EXPECT_EQ(readArtworkCache(file, nullptr), expected) << name << ": repaired";
  }
}

// Renderings shipped with the app come first; a damaged one is passed over, never written to.
TEST(ArtworkCache, ShippedRenderingsComeFirstAndAreOnlyRead) {
  ASSERT_FALSE(bundledArtworkBytes(kArt).isEmpty()) << "artwork not linked in";
  const QSize requested(54, 54);
  const QString name = artworkCacheName(kArt, requested, bundledArtworkBytes(kArt));
  QTemporaryDir shipped, cache;
  QImage blue(54, 54, QImage::Format_ARGB32_Premultiplied), green = blue;
  blue.fill(Qt::blue);
  green.fill(Qt::green);
  ASSERT_TRUE(writeArtworkCache(shipped.filePath(name), blue, {9, 9}));
  ASSERT_TRUE(writeArtworkCache(cache.filePath(name), green, {9, 9}));
  ArtworkProvider provider(cache.path(), {QStringLiteral("/nonexistent"), shipped.path()});
  EXPECT_EQ(provider.requestImage(kArt, nullptr, requested), blue);

  QFile damaged(shipped.filePath(name));
  ASSERT_TRUE(damaged.open(QIODevice::WriteOnly | QIODevice::Truncate));
  damaged.write("junk");
  damaged.close();
  EXPECT_EQ(provider.requestImage(kArt, nullptr, requested), green);
  QFile::remove(cache.filePath(name));
  const QImage rendered = provider.requestImage(kArt, nullptr, requested);
  EXPECT_EQ(rendered.size(), requested);
  EXPECT_EQ(readArtworkCache(cache.filePath(name), nullptr), rendered)
      << "the rendering goes to the cache";
  EXPECT_EQ(QFileInfo(shipped.filePath(name)).size(), 4) << "the shipped folder is left alone";
}

// Served pixels are the file's, mapped: replacing the file (as every write does) leaves an
// image already handed out as it was, and each copy keeps the mapping alive.
TEST(ArtworkCache, AServedImageOutlivesTheFileBeingReplaced) {
  QTemporaryDir dir;
  const QString file = dir.filePath(QStringLiteral("x.raw"));
  QImage blue(31, 7, QImage::Format_ARGB32_Premultiplied), green = blue;
  blue.fill(Qt::blue);
  green.fill(Qt::green);
  ASSERT_TRUE(writeArtworkCache(file, blue, {31, 7}));
  QImage served = readArtworkCache(file, nullptr);
  const QImage copy = served;
  ASSERT_TRUE(writeArtworkCache(file, green, {31, 7}));
  served = QImage();
  EXPECT_EQ(copy, blue);
  EXPECT_EQ(readArtworkCache(file, nullptr), green);
}

TEST(ArtworkCache, NamesFollowSizeAndArtwork) {
  const QString base = artworkCacheName("a-up", {41, 34}, "<svg/>");
  EXPECT_NE(base, artworkCacheName("a-up", {41, 35}, "<svg/>"));
  EXPECT_NE(base, artworkCacheName("a-up", {41, 34}, "<svg />"));
  EXPECT_NE(base, artworkCacheName("b-up", {41, 34}, "<svg/>"));
}

}  // namespace
}  // namespace zellick::test
