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

// Sound through one long-lived pull-mode audio sink fed by a SoundMixer: every player that plays
// adds a voice, so plays overlap and none cuts another off. Without an output device, or when the
// device will not open, everything stays silent after one log line. Main thread only.
class QtSoundOutput : public SoundOutput {
 public:
  enum class Device {
    Default,   // the system's default output; muted when none, or when ZELLICK_NO_AUDIO is set
    None,      // muted from the start; never touches the audio system
    Detached,  // voices go to the mixer but nothing reads it but the caller (tests)
  };

  explicit QtSoundOutput(Log& log, Device device = Device::Default);
  QtSoundOutput(const QtSoundOutput&) = delete;
  QtSoundOutput& operator=(const QtSoundOutput&) = delete;
  ~QtSoundOutput() override;

  // Never null; a file that cannot be read gives a silent player and one log line per path.
  std::shared_ptr<AudioPlayer> playerWithContentsOfFile(const std::string& path) override;

  bool isMuted() const { return muted_; }
  int sampleRate() const { return sampleRate_; }
  int channels() const { return channels_; }
  SoundMixer& mixer() { return *mixer_; }

 private:
  void mute(const std::string& why);
  std::shared_ptr<const Pcm> load(const std::string& path);

  Log& log_;
  int sampleRate_ = 44100;
  int channels_ = 2;
  bool muted_ = false;
  std::shared_ptr<SoundMixer> mixer_;
  QAudioSink* sink_ = nullptr;  // owned; stopped and deleted before the mixer goes
  std::map<std::string, std::shared_ptr<const Pcm>> cache_;  // null for files that failed
};

}  // namespace zellick::qt
