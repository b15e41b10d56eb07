#pragma once

#include <QIODevice>
#include <QMutex>

#include <cstdint>
#include <memory>
#include <vector>

namespace zellick::qt {

// A decoded sound: interleaved float samples (-1..1) in the mixer's channel layout and rate.
struct Pcm {
  std::vector<float> samples;
};

// The device a pull-mode audio sink reads: signed 16-bit interleaved frames, the clamped sum of
// the voices playing. Never runs dry (silence when idle); finished voices are dropped as they end.
// Reads may come from the sink's thread, so voice changes are locked.
class SoundMixer : public QIODevice {
  Q_OBJECT
 public:
  using VoiceId = std::uint64_t;
  // Oldest voices give way beyond this, so a sink that stopped reading cannot make them pile up.
  static constexpr int kMaxVoices = 32;

  explicit SoundMixer(int channels, QObject* parent = nullptr);
  SoundMixer(const SoundMixer&) = delete;
  SoundMixer& operator=(const SoundMixer&) = delete;

  // Starts `pcm` from its beginning as a new voice beside those playing; returns its id (never 0).
  VoiceId addVoice(std::shared_ptr<const Pcm> pcm);
  // Ends the voice at once; harmless when it has finished already.
  void removeVoice(VoiceId id);
  bool isPlaying(VoiceId id) const;
  int voiceCount() const;
  int channels() const { return channels_; }

  bool isSequential() const override { return true; }
  qint64 bytesAvailable() const override;

 protected:
  qint64 readData(char* data, qint64 maxlen) override;
  qint64 writeData(const char* data, qint64 len) override;

 private:
  struct Voice {
    VoiceId id;
    std::shared_ptr<const Pcm> pcm;
    size_t position;  // in samples
  };

  const int channels_;
  mutable QMutex mutex_;
  std::vector<Voice> voices_;
  VoiceId nextId_ = 1;
  std::vector<float> scratch_;
};

}  // namespace zellick::qt
