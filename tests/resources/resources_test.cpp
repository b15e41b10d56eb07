// Checks the shipped artwork, font and synthesised sounds are usable as-is:
// every picture the app refers to is in the resource and draws at its
// layout size, the body really lets the wheels show through, and each sound
// is a real, unclipped click of a sensible length.

#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <gtest/gtest.h>
#include <sndfile.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

// ---------------------------------------------------------------- images

struct Picture {
    const char* name;
    int width;
    int height;
};

constexpr Picture kPictures[] = {
    {"counter-body", 320, 460}, {"wheel-strip", 46, 1111},
    {"add-up", 110, 110},       {"add-down", 110, 110},
    {"minus-up", 48, 48},       {"minus-down", 48, 48},
    {"reset-up", 44, 44},       {"reset-down", 44, 44},
    {"info-up", 30, 30},
    {"a-up", 36, 30},           {"a-down", 36, 30},
    {"b-up", 36, 30},           {"b-down", 36, 30},
    {"c-up", 36, 30},           {"c-down", 36, 30},
};

QImage render(const QString& name, double scale = 1.0)
{
    QSvgRenderer r(QStringLiteral(":/images/%1.svg").arg(name));
    QImage img((r.defaultSize() * scale), QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    r.render(&p);
    return img;
}

double opaqueFraction(const QImage& img)
{
    qsizetype n = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            n += qAlpha(img.pixel(x, y)) > 0;
    return double(n) / (double(img.width()) * img.height());
}

// Mean absolute channel difference, 0..255.
double difference(const QImage& a, const QImage& b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q))
                   + std::abs(qBlue(p) - qBlue(q)) + std::abs(qAlpha(p) - qAlpha(q));
        }
    return sum / (4.0 * a.width() * a.height());
}

class PictureTest : public ::testing::TestWithParam<Picture> {};

TEST_P(PictureTest, IsBundledAndDrawsAtLayoutSize)
{
    const Picture pic = GetParam();
    const QString path = QStringLiteral(":/images/%1.svg").arg(pic.name);
    ASSERT_TRUE(QFile::exists(path)) << pic.name;
    QSvgRenderer r(path);
    ASSERT_TRUE(r.isValid()) << pic.name;
    EXPECT_EQ(r.defaultSize(), QSize(pic.width, pic.height)) << pic.name;
    // Mostly painted; only the body has large see-through windows.
    EXPECT_GT(opaqueFraction(render(pic.name)), 0.6) << pic.name;
}

INSTANTIATE_TEST_SUITE_P(All, PictureTest, ::testing::ValuesIn(kPictures),
                         [](const auto& info) {
                             std::string n = info.param.name;
                             std::erase(n, '-');
                             return n;
                         });

TEST(Artwork, PressedPicturesDifferFromReleased)
{
    for (const char* base : {"add", "minus", "reset", "a", "b", "c"}) {
        const QImage up = render(QStringLiteral("%1-up").arg(base));
        const QImage down = render(QStringLiteral("%1-down").arg(base));
        EXPECT_GT(difference(up, down), 4.0) << base;
    }
}

TEST(Artwork, BodyWindowsAreClearAndFramed)
{
    constexpr double s = 2.0;
    const QImage body = render(QStringLiteral("counter-body"), s);
    for (int i = 0; i < 4; ++i) {
        const double x = 320.0 / 5 + i * (320.0 / 6.2);
        const double y = 460.0 / 2.43;
        // Whole aperture, less half a point of antialiasing at the edges.
        for (int py = int((y + 0.5) * s); py < int((y + 101 - 0.5) * s); ++py)
            for (int px = int((x + 0.5) * s); px < int((x + 46 - 0.5) * s); ++px)
                ASSERT_EQ(qAlpha(body.pixel(px, py)), 0) << "window " << i << " at " << px << "," << py;
        // Dark, opaque bezel just outside each side.
        const QPoint around[] = {
            {int((x - 1.2) * s), int((y + 50) * s)}, {int((x + 47.2) * s), int((y + 50) * s)},
            {int((x + 23) * s), int((y - 1.2) * s)}, {int((x + 23) * s), int((y + 102.2) * s)}};
        for (const QPoint pt : around) {
            const QRgb c = body.pixel(pt);
            EXPECT_EQ(qAlpha(c), 255) << "window " << i;
            EXPECT_LT(qGray(c), 60) << "window " << i;
        }
    }
}

TEST(Artwork, WheelStripCellsRunZeroToNineThenZero)
{
    const QImage strip = render(QStringLiteral("wheel-strip"));
    auto cell = [&](int i) { return strip.copy(0, i * 101, 46, 101); };
    // The trailing zero lets the wheel roll 9 -> 0 seamlessly.
    // Same digit renders alike up to antialiasing noise; any two different
    // digits differ by several times that.
    EXPECT_LT(difference(cell(0), cell(10)), 1.5);
    for (int i = 1; i < 10; ++i)
        for (int j = 0; j < i; ++j)
            EXPECT_GT(difference(cell(i), cell(j)), 3.0) << "cells " << i << " and " << j;
}

TEST(Artwork, FontIsBundled)
{
    const int id = QFontDatabase::addApplicationFont(QStringLiteral(":/fonts/RobotoCondensed-Bold.ttf"));
    ASSERT_GE(id, 0);
    EXPECT_TRUE(QFontDatabase::applicationFontFamilies(id).contains(QStringLiteral("Roboto Condensed")));
}

// ---------------------------------------------------------------- sounds

struct SoundCase {
    const char* name;
    double minMs, maxMs;
    int minClicks, maxClicks;
};

constexpr SoundCase kSounds[] = {
    {"Counter Click2", 35, 70, 1, 2},
    {"ButtonLetUp", 20, 70, 1, 1},
    {"Counter Click3", 15, 60, 1, 1},
    {"ResetButton", 40, 150, 1, 3},
    {"Counter Clicking Fast", 1200, 1600, 30, 48},  // 25-30 per second
};

struct Audio {
    SF_INFO info{};
    std::vector<double> samples;
};

Audio load(const std::filesystem::path& path)
{
    Audio a;
    SNDFILE* f = sf_open(path.string().c_str(), SFM_READ, &a.info);
    if (!f)
        return a;
    a.samples.resize(static_cast<std::size_t>(a.info.frames * a.info.channels));
    a.samples.resize(static_cast<std::size_t>(sf_read_double(f, a.samples.data(), sf_count_t(a.samples.size()))));
    sf_close(f);
    return a;
}

// Impacts: 2 ms envelope frames rising past 30 % of the peak, at least
// 20 ms apart (a ratchet is never faster than that).
int countClicks(const std::vector<double>& s, int rate, double peak)
{
    const std::size_t frame = std::size_t(rate) / 500;
    const std::size_t refractory = std::size_t(rate) / 50;
    int clicks = 0;
    bool above = false;
    std::size_t last = 0;
    for (std::size_t i = 0; i + frame <= s.size(); i += frame) {
        double m = 0;
        for (std::size_t j = i; j < i + frame; ++j)
            m = std::max(m, std::abs(s[j]));
        const bool now = m > 0.3 * peak;
        if (now && !above && (clicks == 0 || i - last >= refractory)) {
            ++clicks;
            last = i;
        }
        above = now;
    }
    return clicks;
}

std::filesystem::path bundled(const char* name)
{
    return std::filesystem::path(ZELLICK_BUNDLE_DIR) / (std::string(name) + ".caf");
}

class SoundTest : public ::testing::TestWithParam<SoundCase> {};

TEST_P(SoundTest, IsARealUnclippedClick)
{
    const SoundCase sound = GetParam();
    const Audio a = load(bundled(sound.name));
    ASSERT_FALSE(a.samples.empty()) << sound.name;
    EXPECT_EQ(a.info.format, SF_FORMAT_CAF | SF_FORMAT_PCM_16);
    EXPECT_EQ(a.info.channels, 1);
    EXPECT_EQ(a.info.samplerate, 44100);

    const double ms = 1000.0 * double(a.info.frames) / a.info.samplerate;
    EXPECT_GE(ms, sound.minMs);
    EXPECT_LE(ms, sound.maxMs);

    double peak = 0, energy = 0;
    std::size_t railed = 0;
    for (double v : a.samples) {
        peak = std::max(peak, std::abs(v));
        energy += v * v;
        railed += std::abs(v) >= 0.999;
    }
    const double rms = std::sqrt(energy / double(a.samples.size()));
    EXPECT_GT(peak, 0.3) << "too quiet";
    EXPECT_EQ(railed, 0u) << "clipping";
    EXPECT_GT(rms, 0.01) << "silent";
    EXPECT_LT(rms, 0.5 * peak) << "not a click: no decay";

    const int clicks = countClicks(a.samples, a.info.samplerate, peak);
    EXPECT_GE(clicks, sound.minClicks);
    EXPECT_LE(clicks, sound.maxClicks);
}

INSTANTIATE_TEST_SUITE_P(All, SoundTest, ::testing::ValuesIn(kSounds),
                         [](const auto& info) {
                             std::string n = info.param.name;
                             std::erase(n, ' ');
                             return n;
                         });

TEST(Sounds, ReleaseIsSofterThanPress)
{
    auto peakOf = [](const char* name) {
        double p = 0;
        for (double v : load(bundled(name)).samples)
            p = std::max(p, std::abs(v));
        return p;
    };
    EXPECT_LT(peakOf("ButtonLetUp"), 0.8 * peakOf("Counter Click2"));
}

TEST(Sounds, GeneratorIsDeterministic)
{
    const auto dir = std::filesystem::temp_directory_path() / ("zellick-sounds-" + std::to_string(::getpid()));
    const std::string cmd = std::string("\"") + ZELLICK_GEN_SOUNDS + "\" \"" + dir.string() + "\"";
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    auto bytes = [](const std::filesystem::path& p) {
        std::ifstream in(p, std::ios::binary);
        return std::vector<char>(std::istreambuf_iterator<char>(in), {});
    };
    for (const SoundCase& s : kSounds) {
        const auto fresh = bytes(dir / (std::string(s.name) + ".caf"));
        EXPECT_FALSE(fresh.empty()) << s.name;
        EXPECT_EQ(fresh, bytes(bundled(s.name))) << s.name;
    }
    std::filesystem::remove_all(dir);
}

}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
