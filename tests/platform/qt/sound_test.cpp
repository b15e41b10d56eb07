// Sound on Qt: the mixer read directly, players that play into it, and the audio module's
// loading. Nothing here opens an audio device.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <QTemporaryDir>

#include <QFile>
#include <QPluginLoader>

#include "platform/fake/services.h"
#include "platform/qt/deferred_sound.h"
#include "platform/qt/sound_output.h"
#include "platform/qt/sound_plugin.h"

namespace zellick::test {
namespace {

using fake::RecordingLog;
using qt::DeferredSoundOutput;
using qt::MixerSoundOutput;
using qt::Pcm;
using qt::SoundMixer;

std::shared_ptr<const Pcm> pcm(std::vector<float> s) {
  return std::make_shared<Pcm>(Pcm{std::move(s)});
}

std::vector<qint16> pull(SoundMixer& m, int samples) {
  std::vector<qint16> out(samples, 12345);
  out.resize(m.read(reinterpret_cast<char*>(out.data()), samples * 2) / 2);
  return out;
}

// A click file of one level throughout.
std::string writeClick(const QTemporaryDir& dir, int rate, int channels, int frames, float level) {
  const std::string path = dir.filePath("click.caf").toStdString();
  SF_INFO info{0, rate, channels, SF_FORMAT_CAF | SF_FORMAT_PCM_16, 0, 0};
  SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
  EXPECT_NE(f, nullptr);
  const std::vector<float> data(static_cast<std::size_t>(frames * channels), level);
  sf_writef_float(f, data.data(), frames);
  sf_close(f);
  return path;
}

// One step of a mixing script: start voices, stop one, then pull samples.
struct Step {
  std::vector<std::vector<float>> start;
  int stopIndex;               // index among all voices started so far, or -1
  std::vector<qint16> expect;  // as many samples are pulled
  int voicesAfter;
};

TEST(Mixer, MixesVoices) {
  const std::pair<const char*, std::vector<Step>> cases[] = {
      {"one voice, then silence, and dropped", {{{{0.5f, -0.25f}}, -1, {16384, -8192, 0, 0}, 0}}},
      {"sums and clamps both ways",
       {{{{0.75f, -0.75f, 0.25f}, {0.75f, -0.75f, -0.5f}}, -1, {32767, -32768, -8192}, 0}}},
      {"a later voice starts at its beginning",
       {{{{0.1f, 0.2f, 0.3f}}, -1, {3277}, 1}, {{{0.5f}}, -1, {22937, 9830}, 0}}},
      {"stop removes only that voice", {{{{0.5f, 0.5f}, {0.25f, 0.25f}}, 0, {8192, 8192}, 0}}},
      {"stop after the end is harmless", {{{{0.5f}}, -1, {16384}, 0}, {{}, 0, {0}, 0}}},
  };
  for (const auto& [name, steps] : cases) {
    SoundMixer mixer(1);
    std::vector<SoundMixer::VoiceId> ids;
    for (std::size_t n = 0; n < steps.size(); ++n) {
      for (const auto& s : steps[n].start) ids.push_back(mixer.addVoice(pcm(s)));
      if (steps[n].stopIndex >= 0) mixer.removeVoice(ids.at(steps[n].stopIndex));
      EXPECT_EQ(pull(mixer, int(steps[n].expect.size())), steps[n].expect)
          << name << ", step " << n;
      EXPECT_EQ(mixer.voiceCount(), steps[n].voicesAfter) << name << ", step " << n;
    }
  }
}

TEST(Mixer, ReadsWholeFramesOnlyAndDropsTheOldestBeyondTheLimit) {
  SoundMixer stereo(2);
  char buf[7];
  EXPECT_EQ(stereo.read(buf, 7), 4);
  EXPECT_EQ(stereo.read(buf, 3), 0);
  SoundMixer mixer(1);
  const auto first = mixer.addVoice(pcm({0.1f}));
  for (int i = 0; i < SoundMixer::kMaxVoices; ++i) mixer.addVoice(pcm({0.01f}));
  EXPECT_EQ(mixer.voiceCount(), SoundMixer::kMaxVoices);
  EXPECT_FALSE(mixer.isPlaying(first));
}

// Each player is a voice of its own: a file is read once and resampled to the mixer's rate,
// plays overlap, a stop ends only its own voice, and dropping a player does not cut its sound.
TEST(MixerSoundOutput, PlayersAreOverlappingVoicesOfFilesReadOnce) {
  QTemporaryDir dir;
  const std::string click = writeClick(dir, 22050, 1, 100, 0.5f);
  RecordingLog log;
  MixerSoundOutput out(log, std::make_shared<SoundMixer>(2), 44100);
  auto a = out.playerWithContentsOfFile(click);
  auto b = out.playerWithContentsOfFile(click);
  a->play();
  a->play();  // still sounding: no second voice
  b->play();
  EXPECT_EQ(pull(out.mixer(), 4), (std::vector<qint16>{32767, 32767, 32767, 32767}));
  a->stop();
  b.reset();
  EXPECT_EQ(out.mixer().voiceCount(), 1);
  // 100 frames at 22050 Hz become 199 at 44100 Hz; two were read already.
  auto rest = pull(out.mixer(), 2 * 200);
  EXPECT_EQ(std::count(rest.begin(), rest.end(), qint16(16384)), 2 * 197);
  EXPECT_EQ(out.mixer().voiceCount(), 0);

  // An unreadable file is silent, with one log line per path.
  for (const std::string& p : {click + "x", click + "x", dir.path().toStdString()})
    out.playerWithContentsOfFile(p)->play();
  EXPECT_EQ(out.mixer().voiceCount(), 0);
  EXPECT_EQ(log.lines.size(), 2u);
}

// The built module is a plugin of the factory this build expects.
TEST(AudioModule, IsAPluginOfTheSoundOutputFactory) {
  QPluginLoader module(QStringLiteral(ZELLICK_AUDIO_MODULE_FILE));
  EXPECT_EQ(module.metaData().value("IID").toString(), ZellickSoundOutputFactory_iid);
  QObject* instance = module.instance();
  ASSERT_NE(instance, nullptr) << module.errorString().toStdString();
  EXPECT_NE(qobject_cast<qt::SoundOutputFactory*>(instance), nullptr);
}

// A missing or foreign module, or audio switched off (which must not even try the module), is
// one log line and silence.
TEST(DeferredSound, WithoutAUsableModuleOrSwitchedOffLogsOnceAndStaysSilent) {
  QTemporaryDir dir;
  const QString foreign = dir.filePath("libforeign.so");
  QFile(foreign).open(QIODevice::WriteOnly);
  const struct {
    QString module;
    bool muted;
    const char* why;
  } cases[] = {
      {QStringLiteral("/nonexistent/libzellick_audio.so"), false, "no audio module"},
      {foreign, false, "cannot load the audio module"},
      {QStringLiteral(ZELLICK_AUDIO_MODULE_FILE), true, "switched off"},
  };
  for (const auto& c : cases) {
    RecordingLog log;
    DeferredSoundOutput out(log, c.module);
    if (c.muted) out.mute("switched off");
    out.load();
    for (int i = 0; i < 3; ++i) out.playerWithContentsOfFile("/nonexistent.caf")->play();
    EXPECT_TRUE(out.isMuted()) << c.why;
    EXPECT_EQ(out.loaded(), nullptr) << c.why;
    ASSERT_EQ(log.lines.size(), 1u) << c.why;
    EXPECT_NE(log.lines[0].find(c.why), std::string::npos) << log.lines[0];
  }
}

}  // namespace
}  // namespace zellick::test
