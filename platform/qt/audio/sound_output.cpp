#include "platform/qt/sound_output.h"

#include <sndfile.h>

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSink>
#include <QMediaDevices>

#include <algorithm>
#include <cmath>

namespace zellick::qt {

namespace {

// About 40 ms: short enough that a click follows the press, long enough not to underrun.
constexpr int kSinkBufferMs = 40;

class SoundFile {
 public:
  explicit SoundFile(const std::string& path) : file_(sf_open(path.c_str(), SFM_READ, &info_)) {}
  SoundFile(const SoundFile&) = delete;
  SoundFile& operator=(const SoundFile&) = delete;
  ~SoundFile() {
    if (file_) sf_close(file_);
  }
  SNDFILE* get() const { return file_; }
  const SF_INFO& info() const { return info_; }

 private:
  SF_INFO info_{};
  SNDFILE* file_;
};

// One channel of the output from the source frame: mono is spread, wider sources are folded
// to the channel of the same index or averaged down to mono.
float sampleFor(const float* frame, int srcChannels, int outChannel, int outChannels) {
  if (srcChannels == 1) return frame[0];
  if (outChannels == 1) {
    float sum = 0;
    for (int c = 0; c < srcChannels; ++c) sum += frame[c];
    return sum / static_cast<float>(srcChannels);
  }
  return frame[std::min(outChannel, srcChannels - 1)];
}

// A player whose plays are voices in the mixer. Plays on after the player is dropped.
class MixerPlayer : public AudioPlayer {
 public:
  MixerPlayer(std::weak_ptr<SoundMixer> mixer, std::shared_ptr<const Pcm> pcm)
      : mixer_(std::move(mixer)), pcm_(std::move(pcm)) {}

  // Like a single player: a play while it is still sounding changes nothing.
  void play() override {
    auto mixer = mixer_.lock();
    if (!mixer || !pcm_) return;
    if (voice_ && mixer->isPlaying(voice_)) return;
    voice_ = mixer->addVoice(pcm_);
  }
  void stop() override {
    if (auto mixer = mixer_.lock(); mixer && voice_) mixer->removeVoice(voice_);
    voice_ = 0;
  }

 private:
  std::weak_ptr<SoundMixer> mixer_;
  std::shared_ptr<const Pcm> pcm_;
  SoundMixer::VoiceId voice_ = 0;
};

class SilentPlayer : public AudioPlayer {
 public:
  void play() override {}
  void stop() override {}
};

}  // namespace

std::shared_ptr<const Pcm> decodeSoundFile(const std::string& path, int sampleRate, int channels) {
  SoundFile file(path);
  const SF_INFO& info = file.info();
  if (!file.get() || info.frames <= 0 || info.channels <= 0 || info.samplerate <= 0) return nullptr;

  std::vector<float> raw(static_cast<size_t>(info.frames) * info.channels);
  const sf_count_t frames = sf_readf_float(file.get(), raw.data(), info.frames);
  if (frames <= 0) return nullptr;

  const double step = static_cast<double>(info.samplerate) / sampleRate;
  const auto outFrames = static_cast<size_t>(std::floor((frames - 1) / step)) + 1;
  auto pcm = std::make_shared<Pcm>();
  pcm->samples.resize(outFrames * channels);
  for (size_t f = 0; f < outFrames; ++f) {
    const double at = f * step;
    const auto i0 = static_cast<sf_count_t>(at);
    const sf_count_t i1 = std::min(i0 + 1, frames - 1);
    const auto t = static_cast<float>(at - static_cast<double>(i0));
    const float* a = raw.data() + i0 * info.channels;
    const float* b = raw.data() + i1 * info.channels;
    for (int c = 0; c < channels; ++c) {
      const float sa = sampleFor(a, info.channels, c, channels);
      const float sb = sampleFor(b, info.channels, c, channels);
      pcm->samples[f * channels + c] = sa + (sb - sa) * t;
    }
  }
  return pcm;
}

MixerSoundOutput::MixerSoundOutput(Log& log, std::shared_ptr<SoundMixer> mixer, int sampleRate)
    : log_(log), mixer_(std::move(mixer)), sampleRate_(sampleRate) {}

std::shared_ptr<AudioPlayer> MixerSoundOutput::playerWithContentsOfFile(const std::string& path) {
  auto it = cache_.find(path);
  if (it == cache_.end()) {
    auto pcm = decodeSoundFile(path, sampleRate_, mixer_->channels());
    if (!pcm) log_.line("Sound: cannot read \"" + path + "\"; that sound stays silent");
    it = cache_.emplace(path, std::move(pcm)).first;
  }
  if (!it->second) return std::make_shared<SilentPlayer>();
  return std::make_shared<MixerPlayer>(mixer_, it->second);
}

QtSoundOutput::QtSoundOutput(Log& log) : log_(log) {
  const QAudioDevice out = QMediaDevices::defaultAudioOutput();
  if (out.isNull()) {
    mute("Sound: no audio output device; playing silently");
    return;
  }
  QAudioFormat format = out.preferredFormat();
  format.setSampleFormat(QAudioFormat::Int16);
  if (format.sampleRate() <= 0 || format.channelCount() <= 0 || !out.isFormatSupported(format)) {
    format.setSampleRate(44100);
    format.setChannelCount(2);
  }
  format.setChannelCount(std::clamp(format.channelCount(), 1, 2));
  auto mixer = std::make_shared<SoundMixer>(format.channelCount());
  output_ = std::make_unique<MixerSoundOutput>(log_, mixer, format.sampleRate());
  sink_ = new QAudioSink(out, format);
  sink_->setBufferSize(format.bytesForDuration(kSinkBufferMs * 1000));
  sink_->start(mixer.get());
  if (sink_->error() != QAudio::NoError) {
    mute("Sound: audio output device would not open; playing silently");
    return;
  }
  QObject::connect(sink_, &QAudioSink::stateChanged, sink_, [this](QAudio::State state) {
    if (state == QAudio::StoppedState && sink_ && sink_->error() != QAudio::NoError && !muted_) {
      // Cannot delete the sink inside its own signal; drop it once the loop is back.
      QAudioSink* gone = sink_;
      sink_ = nullptr;
      gone->deleteLater();
      mute("Sound: audio output failed; playing silently");
    }
  });
}

QtSoundOutput::~QtSoundOutput() {
  if (sink_) {
    sink_->stop();
    delete sink_;
  }
}

void QtSoundOutput::mute(const std::string& why) {
  muted_ = true;
  if (sink_) {
    sink_->stop();
    delete sink_;
    sink_ = nullptr;
  }
  // The mixer stays: players already handed out hold it, and a late sink may still point at it.
  log_.line(why);
}

std::shared_ptr<AudioPlayer> QtSoundOutput::playerWithContentsOfFile(const std::string& path) {
  if (muted_ || !output_) return std::make_shared<SilentPlayer>();
  return output_->playerWithContentsOfFile(path);
}

}  // namespace zellick::qt
