#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/log.h"
#include "platform/qt/sound_mixer.h"
#include "platform/sound.h"

QT_BEGIN_NAMESPACE
class QAudioSink;
QT_END_NAMESPACE

namespace zellick::qt {

// Reads a sound file with libsndfile and converts it to `channels` channels at `sampleRate`
// (linear resampling). Nothing when the file cannot be read or holds no frames.
std::shared_ptr<const Pcm> decodeSoundFile(const std::string& path, int sampleRate, int channels);

// Players that play into a SoundMixer: every play adds a voice, so plays overlap and none cuts
// another off. Each file is decoded once, at the mixer's rate and channel count.
class MixerSoundOutput : public SoundOutput {
 public:
  MixerSoundOutput(Log& log, std::shared_ptr<SoundMixer> mixer, int sampleRate);
  MixerSoundOutput(const MixerSoundOutput&) = delete;
  MixerSoundOutput& operator=(const MixerSoundOutput&) = delete;

  // Never null; a file that cannot be read gives a silent player and one log line per path.
  std::shared_ptr<AudioPlayer> playerWithContentsOfFile(const std::string& path) override;

  SoundMixer& mixer() { return *mixer_; }
  int sampleRate() const { return sampleRate_; }

 private:
  Log& log_;
  std::shared_ptr<SoundMixer> mixer_;
  int sampleRate_;
  std::map<std::string, std::shared_ptr<const Pcm>> cache_;  // null for files that failed
};

// Sound on the system's default output: one long-lived pull-mode audio sink reading a
// MixerSoundOutput's mixer. Without an output device, or when the device will not open or
// fails later, everything stays silent after one log line. Main thread only.
class QtSoundOutput : public SoundOutput {
 public:
  explicit QtSoundOutput(Log& log);
  QtSoundOutput(const QtSoundOutput&) = delete;
  QtSoundOutput& operator=(const QtSoundOutput&) = delete;
  ~QtSoundOutput() override;

  std::shared_ptr<AudioPlayer> playerWithContentsOfFile(const std::string& path) override;

  bool isMuted() const { return muted_; }

 private:
  void mute(const std::string& why);

  Log& log_;
  bool muted_ = false;
  std::unique_ptr<MixerSoundOutput> output_;
  QAudioSink* sink_ = nullptr;  // owned; stopped and deleted before the mixer goes
};

}  // namespace zellick::qt
