#include "platform/qt/sound_mixer.h"

#include <QMutexLocker>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zellick::qt {

namespace {
constexpr qint64 kBytesPerSample = 2;
// What bytesAvailable() promises: enough for a sink's period, as the stream never ends.
constexpr qint64 kNominalAvailable = 4096;
}  // namespace

SoundMixer::SoundMixer(int channels, QObject* parent)
    : QIODevice(parent), channels_(std::max(1, channels)) {
  // Unbuffered: QIODevice's read-ahead would play sounds late and keep stopped ones audible.
  open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

SoundMixer::VoiceId SoundMixer::addVoice(std::shared_ptr<const Pcm> pcm) {
  QMutexLocker lock(&mutex_);
  const VoiceId id = nextId_++;
  if (!pcm || pcm->samples.empty()) return id;  // a voice with nothing to play has ended already
  if (static_cast<int>(voices_.size()) >= kMaxVoices) voices_.erase(voices_.begin());
  voices_.push_back(Voice{id, std::move(pcm), 0});
  return id;
}

void SoundMixer::removeVoice(VoiceId id) {
  QMutexLocker lock(&mutex_);
  std::erase_if(voices_, [id](const Voice& v) { return v.id == id; });
}

bool SoundMixer::isPlaying(VoiceId id) const {
  QMutexLocker lock(&mutex_);
  return std::any_of(voices_.begin(), voices_.end(), [id](const Voice& v) { return v.id == id; });
}

int SoundMixer::voiceCount() const {
  QMutexLocker lock(&mutex_);
  return static_cast<int>(voices_.size());
}

qint64 SoundMixer::bytesAvailable() const {
  return kNominalAvailable + QIODevice::bytesAvailable();
}

qint64 SoundMixer::readData(char* data, qint64 maxlen) {
  const qint64 frameBytes = kBytesPerSample * channels_;
  const size_t samples = static_cast<size_t>(maxlen / frameBytes) * channels_;
  if (samples == 0) return 0;

  QMutexLocker lock(&mutex_);
  scratch_.assign(samples, 0.0f);
  for (Voice& v : voices_) {
    const auto& src = v.pcm->samples;
    const size_t n = std::min(samples, src.size() - v.position);
    for (size_t i = 0; i < n; ++i) scratch_[i] += src[v.position + i];
    v.position += n;
  }
  std::erase_if(voices_, [](const Voice& v) { return v.position >= v.pcm->samples.size(); });
  lock.unlock();

  auto* out = reinterpret_cast<qint16*>(data);
  for (size_t i = 0; i < samples; ++i) {
    const long s = std::lround(scratch_[i] * 32767.0f);
    out[i] = static_cast<qint16>(std::clamp(s, -32768L, 32767L));
  }
  return static_cast<qint64>(samples) * kBytesPerSample;
}

qint64 SoundMixer::writeData(const char*, qint64) { return -1; }

}  // namespace zellick::qt
