// The audio module loaded on demand. Detached outputs only: no audio device is opened.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <QFile>
#include <QTemporaryDir>

#include "platform/qt/deferred_sound.h"
#include "platform/qt/sound_output.h"
#include "recording_log.h"

using zellick::qt::DeferredSoundOutput;
using zellick::qt::QtSoundOutput;

namespace {

std::string writeClick(const QTemporaryDir& dir) {
  const std::string path = dir.filePath("click.caf").toStdString();
  SF_INFO info{};
  info.samplerate = 44100;
  info.channels = 2;
  info.format = SF_FORMAT_CAF | SF_FORMAT_PCM_16;
  SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
  EXPECT_NE(f, nullptr);
  std::vector<float> data(2 * 64, 0.25f);
  sf_writef_float(f, data.data(), 64);
  sf_close(f);
  return path;
}

TEST(DeferredSound, FirstPlayerLoadsTheModuleAndItsClickIsMixed) {
  QTemporaryDir dir;
  RecordingLog log;
  DeferredSoundOutput out(log, DeferredSoundOutput::Device::Detached, ZELLICK_AUDIO_MODULE_FILE);
  EXPECT_EQ(out.loaded(), nullptr);
  auto player = out.playerWithContentsOfFile(writeClick(dir));
  ASSERT_NE(out.loaded(), nullptr) << (log.lines.empty() ? "" : log.lines.front());
  player->play();
  // The module was built with the same headers; its output is the one the tests know.
  auto& real = static_cast<QtSoundOutput&>(*out.loaded());
  EXPECT_EQ(real.mixer().voiceCount(), 1);
  EXPECT_FALSE(out.isMuted());
  EXPECT_TRUE(log.lines.empty());
}

struct BrokenCase {
  const char* name;
  const char* fileContents;  // null: the file does not exist
};

class DeferredSoundBroken : public testing::TestWithParam<BrokenCase> {};

TEST_P(DeferredSoundBroken, LogsOnceAndStaysSilent) {
  QTemporaryDir dir;
  const QString path = dir.filePath(QStringLiteral("libzellick_audio.so"));
  if (GetParam().fileContents) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(GetParam().fileContents);
  }
  RecordingLog log;
  DeferredSoundOutput out(log, DeferredSoundOutput::Device::Detached, path);
  for (int i = 0; i < 3; ++i) {
    auto p = out.playerWithContentsOfFile("/nonexistent.caf");
    ASSERT_NE(p, nullptr);
    p->play();
    p->stop();
  }
  EXPECT_EQ(out.loaded(), nullptr);
  EXPECT_TRUE(out.isMuted());
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_NE(log.lines[0].find("audio module"), std::string::npos) << log.lines[0];
}

INSTANTIATE_TEST_SUITE_P(Module, DeferredSoundBroken,
                         testing::Values(BrokenCase{"Missing", nullptr},
                                         BrokenCase{"NotALibrary", "not a shared object"}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(DeferredSound, MutedOutputsNeverLoadTheModule) {
  for (const bool byEnvironment : {false, true}) {
    RecordingLog log;
    if (byEnvironment) setenv("ZELLICK_NO_AUDIO", "1", 1);
    // A missing module: trying it would add a second log line.
    DeferredSoundOutput out(log,
                            byEnvironment ? DeferredSoundOutput::Device::Default
                                          : DeferredSoundOutput::Device::None,
                            QStringLiteral("/nonexistent/libzellick_audio.so"));
    out.load();
    out.playerWithContentsOfFile("/nonexistent.caf")->play();
    EXPECT_TRUE(out.isMuted());
    EXPECT_EQ(out.loaded(), nullptr);
    ASSERT_EQ(log.lines.size(), 1u) << byEnvironment;
    EXPECT_NE(log.lines[0].find("disabled"), std::string::npos) << log.lines[0];
  }
}

}  // namespace
