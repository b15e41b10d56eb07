// Labels drawn with FreeType from the bundled face: the rasteriser's lines, and the item that
// centres one in its frame at the screen's resolution.
#include <QFile>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "ui/glyph_label.h"
#include "ui/line_raster.h"
#include "ui/views.h"

namespace zellick::test {
namespace {

using namespace ui;

QByteArray bundledFont() {
  QFile file(QString::fromLatin1(kBundledFontResource));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The smallest rectangle holding every pixel with any coverage.
QRect inkOf(const QImage& image, QRgb background = 0) {
  QRect ink;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (image.pixel(x, y) != background) ink |= QRect(x, y, 1, 1);
  return ink;
}

TEST(LineRaster, DrawsTheLineInItsColourAndScalesWithTheSize) {
  const QByteArray font = bundledFont();
  ASSERT_FALSE(font.isEmpty()) << "font not linked in";
  LineRaster raster(font);
  ASSERT_TRUE(raster.isValid());

  const RasterLine small = raster.render(QStringLiteral("00:00:00"), 17, QColor("#808080"));
  const RasterLine large = raster.render(QStringLiteral("00:00:00"), 34, QColor("#808080"));
  ASSERT_FALSE(small.image.isNull());
  ASSERT_FALSE(large.image.isNull());
  EXPECT_NEAR(large.advance, 2 * small.advance, 0.5) << "spacing does not drift with rounding";
  EXPECT_GE(small.image.height(), std::floor(small.ascent + small.descent));
  EXPECT_NEAR(small.ascent + small.descent, 17 * 1.17, 2) << "the face's line box";

  // Where a glyph covers a pixel fully the colour is exact; digits stand on the baseline.
  bool opaque = false;
  for (int y = 0; y < small.image.height(); ++y)
    for (int x = 0; x < small.image.width(); ++x)
      if (qAlpha(small.image.pixel(x, y)) == 255) {
        opaque = true;
        EXPECT_EQ(small.image.pixel(x, y), qRgb(128, 128, 128));
      }
  EXPECT_TRUE(opaque);
  const QRect ink = inkOf(small.image);
  EXPECT_NEAR(ink.bottom() + 1, small.baselineY, 1);
  EXPECT_LE(ink.left(), small.penX + 3);
  EXPECT_NEAR(ink.right() + 1 - small.penX, small.advance, 3);
}

TEST(LineRaster, NothingToDrawGivesAnEmptyLine) {
  const QByteArray font = bundledFont();
  ASSERT_FALSE(font.isEmpty()) << "font not linked in";
  LineRaster raster(font);
  const struct {
    const char* title;
    QString text;
    double size;
  } cases[] = {
      {"empty text", QString(), 17},
      {"zero size", QStringLiteral("0/min"), 0},
      {"negative size", QStringLiteral("0/min"), -3},
      {"absurd size", QStringLiteral("0/min"), 5000},
      {"not a number", QStringLiteral("0/min"), std::numeric_limits<double>::quiet_NaN()},
  };
  for (const auto& k : cases) {
    const RasterLine line = raster.render(k.text, k.size, Qt::white);
    EXPECT_TRUE(line.image.isNull()) << k.title;
  }
  // A character the face lacks still takes room, as its missing-glyph box.
  const RasterLine missing = raster.render(QString::fromUtf8("\xe4\xb8\xad"), 17, Qt::white);
  EXPECT_GT(missing.advance, 0);
  EXPECT_FALSE(missing.image.isNull());

  LineRaster broken(QByteArray("not a font at all"));
  EXPECT_FALSE(broken.isValid());
  EXPECT_TRUE(broken.render(QStringLiteral("0/min"), 17, Qt::white).image.isNull());
}

// The item in a window whose content is scaled, as the counter screen is.
class GlyphLabelOnScreen : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(bundledFont().isEmpty()) << "font not linked in";
    window.resize(400, 200);
    window.setColor(Qt::black);
    scaled.setParentItem(window.contentItem());
    scaled.setTransformOrigin(QQuickItem::TopLeft);
    label.setParentItem(&scaled);
    label.setPosition({40, 20});
    label.setSize({84, 24});
    QFont font;
    font.setPixelSize(17);
    label.setFont(font);
    label.setColor(Qt::white);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
  }
  QRect inkOnScreen() { return inkOf(grab(), qRgb(0, 0, 0)); }
  QImage grab() { return window.grabWindow().convertToFormat(QImage::Format_RGB32); }
  // Changes between horizontal neighbours, counted by the parity of the left one's column. A
  // line drawn at one pixel and stretched to two changes only every second column.
  std::pair<int, int> changesByColumnParity(const QImage& image, const QRect& ink) {
    std::pair<int, int> changes{0, 0};
    for (int y = ink.top(); y <= ink.bottom(); ++y)
      for (int x = ink.left(); x < ink.right(); ++x)
        if (image.pixel(x, y) != image.pixel(x + 1, y)) ++(x % 2 ? changes.second : changes.first);
    return changes;
  }

  QQuickWindow window;
  QQuickItem scaled;
  GlyphLabel label;
};

TEST_F(GlyphLabelOnScreen, CentredInItsFrameAtTheScreensResolution) {
  const struct {
    double scale;
    QString text;
  } cases[] = {{1, QStringLiteral("00:00:00")},
               {2, QStringLiteral("00:00:00")},
               {1.125, QStringLiteral("0/min")}};
  double heightAtOne = 0;
  for (const auto& k : cases) {
    scaled.setScale(k.scale);
    label.setText(k.text);
    const QRect ink = inkOnScreen();
    ASSERT_FALSE(ink.isEmpty()) << k.scale;
    const QPointF centre = scaled.mapToScene(QPointF(40 + 42, 20 + 12));
    EXPECT_NEAR(ink.center().x(), centre.x(), 2 * k.scale) << k.scale;
    EXPECT_NEAR(ink.center().y(), centre.y(), 3 * k.scale) << k.scale;
    if (k.scale == 1) heightAtOne = ink.height();
    if (k.scale == 2) {
      EXPECT_NEAR(ink.height(), 2 * heightAtOne, 2);
      const auto [even, odd] = changesByColumnParity(grab(), ink);
      EXPECT_GT(std::min(even, odd), 0) << "drawn at twice the pixels, not stretched";
    }
  }
}

TEST_F(GlyphLabelOnScreen, FollowsTextAndColourAndMayOverflowItsFrame) {
  label.setText(QStringLiteral("00:00:00"));
  const QRect first = inkOnScreen();
  label.setColor(QColor("#808080"));
  const QImage grey = window.grabWindow().convertToFormat(QImage::Format_RGB32);
  bool sawGrey = false;
  for (int y = first.top(); y <= first.bottom() && !sawGrey; ++y)
    for (int x = first.left(); x <= first.right(); ++x)
      if (grey.pixel(x, y) == qRgb(128, 128, 128)) sawGrey = true;
  EXPECT_TRUE(sawGrey);

  // Wider than the frame: it spills over both sides evenly rather than being cut.
  label.setText(QStringLiteral("2147483647/hour"));
  const QRect wide = inkOnScreen();
  EXPECT_LT(wide.left(), 40);
  EXPECT_GT(wide.right(), 40 + 84);
  EXPECT_NEAR(wide.center().x(), 40 + 42, 2);

  // A new frame centres it anew.
  label.setSize({300, 24});
  EXPECT_NEAR(inkOnScreen().center().x(), 40 + 150, 2);

  label.setText(QString());
  EXPECT_TRUE(inkOnScreen().isEmpty());
}

}  // namespace
}  // namespace zellick::test
