// The artwork provider's disk cache: hits are used, anything wrong with a cache file falls back
// to rendering (and repairs the file), and changed artwork never meets an old rendering.
#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QFontInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

#include "platform/qt/font_setup.h"
#include "platform/qt/qt_artwork.h"
#include "platform/qt/qt_screen.h"
#include "fakes.h"

namespace zellick {
namespace {

bool haveArt() { return QFile::exists(QStringLiteral(":/images/add-up.svg")); }

QByteArray svgOf(const char* id) {
  QFile f(QStringLiteral(":/images/%1.svg").arg(QLatin1String(id)));
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QString cacheFile(const QTemporaryDir& dir, const char* id, QSize requested) {
  return dir.filePath(artworkCacheName(QLatin1String(id), requested, svgOf(id)));
}

QImage rendered(const char* id, QSize requested, QSize* natural = nullptr) {
  ArtworkProvider plain;
  return plain.requestImage(QLatin1String(id), natural, requested);
}

TEST(ArtworkCache, AHitIsServedFromTheFile) {
  if (!haveArt()) GTEST_SKIP() << "artwork not linked in";
  QTemporaryDir dir;
  const QSize requested(40, 40);
  QImage red(17, 9, QImage::Format_ARGB32_Premultiplied);
  red.fill(Qt::red);
  ASSERT_TRUE(writeArtworkCache(cacheFile(dir, "add-up", requested), red, QSize(123, 45)));

  ArtworkProvider cached(dir.path());
  QSize natural;
  const QImage got = cached.requestImage(QStringLiteral("add-up"), &natural, requested);
  EXPECT_EQ(got.size(), red.size());
  EXPECT_EQ(got.pixel(3, 3), red.pixel(3, 3));
  EXPECT_EQ(natural, QSize(123, 45));
}

TEST(ArtworkCache, MissRendersStoresAndTheNextStartGetsTheSamePixels) {
  if (!haveArt()) GTEST_SKIP() << "artwork not linked in";
  struct Case {
    const char* id;
    QSize requested;
  };
  const Case cases[] = {{"counter-body", {360, 518}}, {"wheel-strip", {52, 0}}, {"add-up", {0, 0}},
                        {"c-up", {41, 34}}};
  for (const Case& c : cases) {
    QTemporaryDir dir;
    QSize expectNatural;
    const QImage expected = rendered(c.id, c.requested, &expectNatural);
    ASSERT_FALSE(expected.isNull()) << c.id;

    QSize natural;
    EXPECT_EQ(ArtworkProvider(dir.path()).requestImage(QLatin1String(c.id), &natural, c.requested), expected)
        << c.id;
    ASSERT_TRUE(QFile::exists(cacheFile(dir, c.id, c.requested))) << c.id;
    // A new provider, as on the next start: only the file can give it the image now.
    QSize again;
    const QImage hit = ArtworkProvider(dir.path()).requestImage(QLatin1String(c.id), &again, c.requested);
    EXPECT_EQ(hit, expected) << c.id;
    EXPECT_EQ(again, expectNatural) << c.id;
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 1) << c.id << ": no temporary left";
  }
}

TEST(ArtworkCache, DamagedFilesAreRenderedAfreshAndRepaired) {
  if (!haveArt()) GTEST_SKIP() << "artwork not linked in";
  const QSize requested(54, 54);
  const QImage expected = rendered("minus-up", requested);
  struct Case {
    const char* name;
    std::function<void(QByteArray&)> damage;
  };
  const Case cases[] = {
      {"empty", [](QByteArray& b) { b.clear(); }},
      {"truncated", [](QByteArray& b) { b.chop(5); }},
      {"longer", [](QByteArray& b) { b.append("xx"); }},
      {"wrong magic", [](QByteArray& b) { b[0] = 'X'; }},
      {"wrong version", [](QByteArray& b) { b[4] = 99; }},
      {"huge width", [](QByteArray& b) { b[18] = 0x7f; }},
      {"not a cache file", [](QByteArray& b) { b = "P6 54 54 255\n"; }},
  };
  for (const Case& c : cases) {
    QTemporaryDir dir;
    const QString file = cacheFile(dir, "minus-up", requested);
    ArtworkProvider(dir.path()).requestImage(QStringLiteral("minus-up"), nullptr, requested);
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::ReadWrite)) << c.name;
    QByteArray bytes = f.readAll();
    c.damage(bytes);
    f.resize(0);
    f.seek(0);
    f.write(bytes);
    f.close();
    EXPECT_TRUE(readArtworkCache(file, nullptr).isNull()) << c.name;

    EXPECT_EQ(ArtworkProvider(dir.path()).requestImage(QStringLiteral("minus-up"), nullptr, requested), expected)
        << c.name;
    EXPECT_EQ(readArtworkCache(file, nullptr), expected) << c.name << ": repaired";
  }
}

TEST(ArtworkCache, NamesFollowSizeAndArtwork) {
  const QByteArray svg = "<svg/>";
  const QString base = artworkCacheName("a-up", {41, 34}, svg);
  EXPECT_NE(base, artworkCacheName("a-up", {41, 35}, svg));
  EXPECT_NE(base, artworkCacheName("a-up", {41, 34}, "<svg />"));
  EXPECT_NE(base, artworkCacheName("b-up", {41, 34}, svg));
  EXPECT_EQ(base, artworkCacheName("a-up", {41, 34}, svg));
}

TEST(ArtworkCache, UnusableFolderOrBadNamesStillBehave) {
  if (!haveArt()) GTEST_SKIP() << "artwork not linked in";
  QTemporaryDir dir;
  // A file where the folder should be: nothing can be cached, everything still renders.
  const QString blocked = dir.filePath(QStringLiteral("blocked"));
  QFile(blocked).open(QIODevice::WriteOnly);
  const QImage expected = rendered("info-up", {34, 34});
  EXPECT_EQ(ArtworkProvider(blocked).requestImage(QStringLiteral("info-up"), nullptr, {34, 34}), expected);

  const QString folder = dir.filePath(QStringLiteral("cache"));
  for (const char* id : {"", "nope", "../images/add-up", "images/add-up"})
    EXPECT_TRUE(ArtworkProvider(folder).requestImage(QLatin1String(id), nullptr, {10, 10}).isNull()) << id;
  EXPECT_FALSE(QDir(folder).exists() && !QDir(folder).isEmpty());
}

TEST(FontSetup, BundledFaceIsRegisteredOnTheHelperThreadBeforeWaitReturns) {
  if (!QFile::exists(QStringLiteral(":/fonts/RobotoCondensed-Bold.ttf"))) GTEST_SKIP() << "font not linked in";
  test::RecordingLog log;
  QStringList added;
  qt::FontSetupAhead setup([&] { return added = registerBundledFonts(log); });
  setup.wait();
  ASSERT_FALSE(added.isEmpty());
  EXPECT_TRUE(log.lines.empty());
  EXPECT_TRUE(QFontDatabase::families().contains(added.first()));
  QFont font(added.first());
  font.setBold(true);
  EXPECT_EQ(QFontInfo(font).family(), added.first());
}

}  // namespace
}  // namespace zellick
