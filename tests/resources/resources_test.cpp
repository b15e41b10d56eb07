// The shipped artwork, font and synthesised sounds are usable as-is.
#include <QFile>
#include <QFontDatabase>
#include <QImage>
#include <QPainter>
#include <QRawFont>
#include <QSvgRenderer>

#include <gtest/gtest.h>
#include <sndfile.h>
#include <unistd.h>

#include "counter/interface.h"
#include "counter/sounds.h"
#include "sim/simulation.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace zellick::test {
namespace {

QImage render(QSvgRenderer& svg, double scale = 1.0) {
  QImage img(svg.defaultSize() * scale, QImage::Format_ARGB32_Premultiplied);
  img.fill(Qt::transparent);
  QPainter p(&img);
  svg.render(&p);
  return img;
}

// The SVG of an image name as the controller writes it ("a-up.png").
QString svgOf(const std::string& image) {
  return QStringLiteral(":/images/%1.svg").arg(QString::fromStdString(image).chopped(4));
}

// Every picture the counter's table of controls names is bundled, is drawn at its control's
// size, and is mostly painted (only the body has large see-through windows).
TEST(Artwork, EveryPictureIsBundledAndDrawsAtItsControlsSize) {
  std::vector<std::pair<std::string, QSize>> pictures;
  for (const ControlSpec& c : counterInterface(kMinScreenHeight)) {
    const QSize size(int(c.frame.w), int(c.frame.h));
    for (const std::string& image : {c.image, c.highlightedImage})
      if (!image.empty()) pictures.emplace_back(image, size);
  }
  // The memory buttons' other pictures.
  for (const char* image : {"a-up.png", "b-down.png", "c-down.png"})
    pictures.emplace_back(image, QSize(36, 30));
  for (const auto& [name, size] : pictures) {
    QSvgRenderer svg(svgOf(name));
    ASSERT_TRUE(svg.isValid()) << name;
    EXPECT_EQ(svg.defaultSize(), size) << name;
    const QImage img = render(svg);
    qsizetype opaque = 0;
    for (int y = 0; y < img.height(); ++y)
      for (int x = 0; x < img.width(); ++x) opaque += qAlpha(img.pixel(x, y)) > 0;
    EXPECT_GT(double(opaque) / (double(img.width()) * img.height()), 0.6) << name;
  }
}

// Where the controller lays the wheels out, the body picture is clear.
TEST(Artwork, BodyWindowsAreClearWhereTheWheelsStand) {
  constexpr double s = 2.0;
  sim::Simulation sim;
  sim::Process& p = sim.start();
  const Rect body = p.imageView("baseImageView")->frame();
  QSvgRenderer svg(svgOf(p.imageView("baseImageView")->image()));
  const QImage picture = render(svg, s);
  for (const char* name : {"ImageView1", "ImageView2", "ImageView3", "ImageView4"}) {
    const Rect wheel = p.imageView(name)->frame();
    const double x = wheel.x - body.x, y = wheel.y - body.y;
    // The top cell, less half a point of antialiasing at the edges.
    for (int py = int((y + 0.5) * s); py < int((y + kDigitCellHeight - 0.5) * s); ++py)
      for (int px = int((x + 0.5) * s); px < int((x + wheel.w - 0.5) * s); ++px)
        ASSERT_EQ(qAlpha(picture.pixel(px, py)), 0) << name << " at " << px << "," << py;
  }
}

TEST(Artwork, FontIsBundledWithEveryCharacterTheScreenShows) {
  const int id =
      QFontDatabase::addApplicationFont(QStringLiteral(":/fonts/RobotoCondensed-Bold.ttf"));
  ASSERT_GE(id, 0);
  EXPECT_TRUE(
      QFontDatabase::applicationFontFamilies(id).contains(QStringLiteral("Roboto Condensed")));
  // The bundled font is a subset: the clocks, rates and questions must not fall back.
  QFile file(QStringLiteral(":/fonts/RobotoCondensed-Bold.ttf"));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QRawFont font(file.readAll(), 17);
  ASSERT_TRUE(font.isValid());
  const QString shown = QStringLiteral(
      "0123456789:/ minhrday ABCDEFGHIJKLMNOPQRSTUVWXYZ abcdefghijklmnopqrstuvwxyz "
      "?.,'!-\u00e9\u2026");
  for (const QChar c : shown) EXPECT_TRUE(font.supportsCharacter(c)) << QString(c).toStdString();
}

std::vector<char> bytes(const std::filesystem::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::vector<char>(std::istreambuf_iterator<char>(in), {});
}

// Each bundled sound is a real, unclipped click of a sensible length, and the generator run
// afresh makes the very same file.
TEST(Sounds, EachIsARealUnclippedClickMadeAlikeEveryTime) {
  struct Sound {
    const char* name;
    double minMs, maxMs;
  };
  const Sound sounds[] = {
      {kClickSound, 35, 70},
      {kLetUpSound, 20, 70},
      {kMemorySound, 15, 60},
      {kResetSound, 40, 150},
      {kFastClickingSound, 1200, 1600},
  };
  const auto fresh =
      std::filesystem::temp_directory_path() / ("zellick-sounds-" + std::to_string(::getpid()));
  const std::string cmd = std::string("\"") + ZELLICK_GEN_SOUNDS + "\" \"" + fresh.string() + "\"";
  ASSERT_EQ(std::system(cmd.c_str()), 0);
  for (const Sound& sound : sounds) {
    const auto bundled =
        std::filesystem::path(ZELLICK_BUNDLE_DIR) / (std::string(sound.name) + ".caf");
    SF_INFO info{};
    SNDFILE* f = sf_open(bundled.string().c_str(), SFM_READ, &info);
    ASSERT_NE(f, nullptr) << sound.name;
    std::vector<double> samples(static_cast<std::size_t>(info.frames * info.channels));
    samples.resize(
        static_cast<std::size_t>(sf_read_double(f, samples.data(), sf_count_t(samples.size()))));
    sf_close(f);
    ASSERT_FALSE(samples.empty()) << sound.name;
    EXPECT_EQ(info.format, SF_FORMAT_CAF | SF_FORMAT_PCM_16) << sound.name;
    EXPECT_EQ(info.channels, 1) << sound.name;
    EXPECT_EQ(info.samplerate, 44100) << sound.name;
    const double ms = 1000.0 * double(info.frames) / info.samplerate;
    EXPECT_GE(ms, sound.minMs) << sound.name;
    EXPECT_LE(ms, sound.maxMs) << sound.name;

    double peak = 0, energy = 0;
    std::size_t railed = 0;
    for (double v : samples) {
      peak = std::max(peak, std::abs(v));
      energy += v * v;
      railed += std::abs(v) >= 0.999;
    }
    const double rms = std::sqrt(energy / double(samples.size()));
    EXPECT_GT(peak, 0.3) << sound.name << ": too quiet";
    EXPECT_EQ(railed, 0u) << sound.name << ": clipping";
    EXPECT_GT(rms, 0.01) << sound.name << ": silent";
    EXPECT_LT(rms, 0.5 * peak) << sound.name << ": not a click, no decay";
    EXPECT_EQ(bytes(fresh / (std::string(sound.name) + ".caf")), bytes(bundled)) << sound.name;
  }
  std::filesystem::remove_all(fresh);
}

}  // namespace
}  // namespace zellick::test
