// The audio module loaded on demand. Detached outputs only: no audio device is opened.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <QTemporaryDir>

#include "platform/qt/deferred_sound.h"
#include "platform/qt/sound_output.h"
#include "recording_log.h"

using zellick::qt::DeferredSoundOutput;
using zellick::qt::QtSoundOutput;

namespace {

TEST(DeferredSound, FirstPlayerLoadsTheModuleAndItsClickIsMixed) {
  QTemporaryDir dir;
  const std::string click = dir.filePath("click.caf").toStdString();
  SF_INFO info{0, 44100, 2, SF_FORMAT_CAF | SF_FORMAT_PCM_16, 0, 0};
  SNDFILE* f = sf_open(click.c_str(), SFM_WRITE, &info);
  ASSERT_NE(f, nullptr);
  const std::vector<float> data(2 * 64, 0.25f);
  sf_writef_float(f, data.data(), 64);
  sf_close(f);
  RecordingLog log;
  DeferredSoundOutput out(log, DeferredSoundOutput::Device::Detached, ZELLICK_AUDIO_MODULE_FILE);
  EXPECT_EQ(out.loaded(), nullptr);
  auto player = out.playerWithContentsOfFile(click);
  ASSERT_NE(out.loaded(), nullptr) << (log.lines.empty() ? "" : log.lines.front());
  player->play();
  // The module was built with the same headers; its output is the one the tests know.
  EXPECT_EQ(static_cast<QtSoundOutput&>(*out.loaded()).mixer().voiceCount(), 1);
  EXPECT_FALSE(out.isMuted());
  EXPECT_TRUE(log.lines.empty());
}

TEST(DeferredSound, MissingModuleLogsOnceAndStaysSilent) {
  RecordingLog log;
  DeferredSoundOutput out(log, DeferredSoundOutput::Device::Detached,
                          QStringLiteral("/nonexistent/libzellick_audio.so"));
  for (int i = 0; i < 3; ++i) out.playerWithContentsOfFile("/nonexistent.caf")->play();
  EXPECT_EQ(out.loaded(), nullptr);
  EXPECT_TRUE(out.isMuted());
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_NE(log.lines[0].find("audio module"), std::string::npos) << log.lines[0];
}

TEST(DeferredSound, DisabledByTheEnvironmentNeverLoadsTheModule) {
  RecordingLog log;
  setenv("ZELLICK_NO_AUDIO", "1", 1);
  // A missing module: trying it would add a second log line.
  DeferredSoundOutput out(log, DeferredSoundOutput::Device::Default, QStringLiteral("/nonexistent/libzellick_audio.so"));
  out.load();
  out.playerWithContentsOfFile("/nonexistent.caf")->play();
  EXPECT_TRUE(out.isMuted());
  EXPECT_EQ(out.loaded(), nullptr);
  EXPECT_EQ(log.lines.size(), 1u);
}

}  // namespace
