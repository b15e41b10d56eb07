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
  const qint64 got = m.read(reinterpret_cast<char*>(out.data()), samples * 2);
  out.resize(got / 2);
  return out;
}

// One step of a mixing script: start voices, stop one, then pull samples.
struct Step {
  std::vector<std::vector<float>> start;
  int stopIndex = -1;  // index among all voices started so far
  int pull = 0;
  std::vector<qint16> expect;
  int voicesAfter = 0;
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
    EXPECT_EQ(mixer.voiceCount(), step.voicesAfter) << "step " << n;
    ++n;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Mixer, MixerTable,
    testing::Values(
        MixCase{"SilenceWhenIdle", {{{}, -1, 3, {0, 0, 0}, 0}}},
        MixCase{"OneVoiceThenSilenceAndDropped", {{{{0.5f, -0.25f}}, -1, 4, {16384, -8192, 0, 0}, 0}}},
        MixCase{"OverlapSums", {{{{0.25f, 0.25f}, {0.5f, -0.5f}}, -1, 2, {24575, -8192}, 0}}},
        MixCase{"ClampsBothWays", {{{{0.75f, -0.75f}, {0.75f, -0.75f}}, -1, 2, {32767, -32768}, 0}}},
        MixCase{"LaterVoiceStartsAtItsBeginning",
                {{{{0.1f, 0.2f, 0.3f}}, -1, 1, {3277}, 1}, {{{0.5f}}, -1, 2, {22937, 9830}, 0}}},
        MixCase{"StopRemovesOnlyThatVoice",
                {{{{0.5f, 0.5f}, {0.25f, 0.25f}}, 0, 2, {8192, 8192}, 0}}},
        MixCase{"LongVoiceSpansReads",
                {{{{0.5f, 0.5f, 0.5f}}, -1, 2, {16384, 16384}, 1}, {{}, -1, 2, {16384, 0}, 0}}},
        MixCase{"StopAfterFinishIsHarmless", {{{{0.5f}}, -1, 1, {16384}, 0}, {{}, 0, 1, {0}, 0}}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Mixer, ReadsWholeFramesOnly) {
  SoundMixer mixer(2);
  char buf[7];
  EXPECT_EQ(mixer.read(buf, 7), 4);
  EXPECT_EQ(mixer.read(buf, 3), 0);
}

TEST(Mixer, OldestVoicesGiveWayBeyondTheLimit) {
  SoundMixer mixer(1);
  const auto first = mixer.addVoice(pcm({0.1f}));
  for (int i = 0; i < SoundMixer::kMaxVoices; ++i) mixer.addVoice(pcm({0.01f}));
  EXPECT_EQ(mixer.voiceCount(), SoundMixer::kMaxVoices);
  EXPECT_FALSE(mixer.isPlaying(first));
  EXPECT_FALSE(mixer.isPlaying(mixer.addVoice(pcm({}))));
}

// A 22050 Hz mono file of constant `level`, as the click files are read back.
std::string writeCaf(const QTemporaryDir& dir, const char* name, float level, int frames) {
  const std::string path = dir.filePath(name).toStdString();
  SF_INFO info{};
  info.samplerate = 22050;
  info.channels = 1;
  info.format = SF_FORMAT_CAF | SF_FORMAT_PCM_16;
  SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
  EXPECT_NE(f, nullptr);
  std::vector<float> data(frames, level);
  sf_writef_float(f, data.data(), frames);
  sf_close(f);
  return path;
}

TEST(SoundOutput, PlayersAreOverlappingVoicesUntilStopped) {
  QTemporaryDir dir;
  RecordingLog log;
  QtSoundOutput out(log, QtSoundOutput::Device::Detached);
  ASSERT_EQ(out.channels(), 2);
  ASSERT_EQ(out.sampleRate(), 44100);
  const std::string click = writeCaf(dir, "click.caf", 0.5f, 100);

  auto a = out.playerWithContentsOfFile(click);
  auto b = out.playerWithContentsOfFile(click);
  a->play();
  a->play();  // still sounding: no second voice
  b->play();
  EXPECT_EQ(out.mixer().voiceCount(), 2);
  auto first = pull(out.mixer(), 4);  // two stereo frames, both voices at 0.5
  EXPECT_EQ(first, (std::vector<qint16>{32767, 32767, 32767, 32767}));

  a->stop();
  b.reset();  // dropping a player does not cut its sound
  EXPECT_EQ(out.mixer().voiceCount(), 1);
  // 100 frames at 22050 Hz become 199 at 44100 Hz; two were read already.
  auto rest = pull(out.mixer(), 2 * 200);
  EXPECT_EQ(std::count(rest.begin(), rest.end(), qint16(16384)), 2 * 197);
  EXPECT_EQ(rest.back(), 0);
  EXPECT_EQ(out.mixer().voiceCount(), 0);
  EXPECT_TRUE(log.lines.empty());
}

TEST(SoundOutput, UnreadableFileIsSilentWithOneLogLinePerPath) {
  QTemporaryDir dir;
  RecordingLog log;
  QtSoundOutput out(log, QtSoundOutput::Device::Detached);
  const std::string missing = dir.filePath("nope.caf").toStdString();
  QFile junk(dir.filePath("junk.caf"));
  ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
  junk.write("not a sound at all");
  junk.close();
  for (const std::string& p : {missing, missing, junk.fileName().toStdString()}) {
    auto player = out.playerWithContentsOfFile(p);
    ASSERT_NE(player, nullptr);
    player->play();
    player->stop();
  }
  EXPECT_EQ(out.mixer().voiceCount(), 0);
  EXPECT_EQ(log.lines.size(), 2u);
}

TEST(SoundOutput, MutedOutputLogsOnceAndPlaysNothing) {
  RecordingLog log;
  QtSoundOutput out(log, QtSoundOutput::Device::None);
  EXPECT_TRUE(out.isMuted());
  auto p = out.playerWithContentsOfFile("/nonexistent.caf");
  p->play();
  p->stop();
  EXPECT_EQ(log.lines.size(), 1u);
}

}  // namespace
