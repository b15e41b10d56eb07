// The mixer is read directly; nothing here opens an audio device.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <QTemporaryDir>

#include "platform/qt/sound_output.h"
#include "recording_log.h"

using zellick::qt::Pcm;
using zellick::qt::QtSoundOutput;
using zellick::qt::SoundMixer;

namespace {

std::shared_ptr<const Pcm> pcm(std::vector<float> s) {
  auto p = std::make_shared<Pcm>();
  p->samples = std::move(s);
  return p;
}

std::vector<qint16> pull(SoundMixer& m, int samples) {
  std::vector<qint16> out(samples, 12345);
  out.resize(m.read(reinterpret_cast<char*>(out.data()), samples * 2) / 2);
  return out;
}

// One step of a mixing script: start voices, stop one, then pull samples.
struct Step {
  std::vector<std::vector<float>> start;
  int stopIndex;  // index among all voices started so far, or -1
  int pull;
  std::vector<qint16> expect;
  int voicesAfter;
};

struct MixCase {
  const char* name;
  std::vector<Step> steps;
};

void PrintTo(const MixCase& c, std::ostream* os) { *os << c.name; }

class MixerTable : public testing::TestWithParam<MixCase> {};

TEST_P(MixerTable, MixesVoices) {
  SoundMixer mixer(1);
  std::vector<SoundMixer::VoiceId> ids;
  int n = 0;
  for (const Step& step : GetParam().steps) {
    for (const auto& s : step.start) ids.push_back(mixer.addVoice(pcm(s)));
    if (step.stopIndex >= 0) mixer.removeVoice(ids.at(step.stopIndex));
    EXPECT_EQ(pull(mixer, step.pull), step.expect) << "step " << n;
    EXPECT_EQ(mixer.voiceCount(), step.voicesAfter) << "step " << n++;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Mixer, MixerTable,
    testing::Values(
        MixCase{"OneVoiceThenSilenceAndDropped", {{{{0.5f, -0.25f}}, -1, 4, {16384, -8192, 0, 0}, 0}}},
        MixCase{"OverlapSums", {{{{0.25f, 0.25f}, {0.5f, -0.5f}}, -1, 2, {24575, -8192}, 0}}},
        MixCase{"ClampsBothWays", {{{{0.75f, -0.75f}, {0.75f, -0.75f}}, -1, 2, {32767, -32768}, 0}}},
        MixCase{"LaterVoiceStartsAtItsBeginning",
                {{{{0.1f, 0.2f, 0.3f}}, -1, 1, {3277}, 1}, {{{0.5f}}, -1, 2, {22937, 9830}, 0}}},
        MixCase{"StopRemovesOnlyThatVoice", {{{{0.5f, 0.5f}, {0.25f, 0.25f}}, 0, 2, {8192, 8192}, 0}}},
        MixCase{"StopAfterFinishIsHarmless", {{{{0.5f}}, -1, 1, {16384}, 0}, {{}, 0, 1, {0}, 0}}}),
    [](const auto& info) { return std::string(info.param.name); });

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

// A file is read, resampled to the output rate, and each player is its own voice until stopped.
TEST(SoundOutput, PlayersAreOverlappingVoicesUntilStopped) {
  QTemporaryDir dir;
  const std::string click = dir.filePath("click.caf").toStdString();
  SF_INFO info{0, 22050, 1, SF_FORMAT_CAF | SF_FORMAT_PCM_16, 0, 0};
  SNDFILE* f = sf_open(click.c_str(), SFM_WRITE, &info);
  ASSERT_NE(f, nullptr);
  const std::vector<float> data(100, 0.5f);
  sf_writef_float(f, data.data(), 100);
  sf_close(f);
  RecordingLog log;
  QtSoundOutput out(log, QtSoundOutput::Device::Detached);
  ASSERT_EQ(out.channels(), 2);
  ASSERT_EQ(out.sampleRate(), 44100);

  auto a = out.playerWithContentsOfFile(click);
  auto b = out.playerWithContentsOfFile(click);
  a->play();
  a->play();  // still sounding: no second voice
  b->play();
  EXPECT_EQ(pull(out.mixer(), 4), (std::vector<qint16>{32767, 32767, 32767, 32767}));
  a->stop();
  b.reset();  // dropping a player does not cut its sound
  EXPECT_EQ(out.mixer().voiceCount(), 1);
  // 100 frames at 22050 Hz become 199 at 44100 Hz; two were read already.
  auto rest = pull(out.mixer(), 2 * 200);
  EXPECT_EQ(std::count(rest.begin(), rest.end(), qint16(16384)), 2 * 197);
  EXPECT_EQ(out.mixer().voiceCount(), 0);

  // An unreadable file is silent, with one log line per path.
  for (const std::string& p : {click + "x", click + "x", dir.path().toStdString()}) {
    out.playerWithContentsOfFile(p)->play();
  }
  EXPECT_EQ(out.mixer().voiceCount(), 0);
  EXPECT_EQ(log.lines.size(), 2u);
}

}  // namespace
