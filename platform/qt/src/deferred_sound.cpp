#include "platform/qt/deferred_sound.h"

#include <QFileInfo>
#include <QLibrary>

#include "platform/qt/audio_module_abi.h"

namespace zellick::qt {

namespace {

class SilentPlayer : public AudioPlayer {
 public:
  void play() override {}
  void stop() override {}
};

}  // namespace

DeferredSoundOutput::DeferredSoundOutput(Log& log, QString modulePath)
    : log_(log), modulePath_(std::move(modulePath)) {}

DeferredSoundOutput::~DeferredSoundOutput() {
  // The output goes first; the library stays mapped (QLibrary does not unload on destruction).
  real_.reset();
}

void DeferredSoundOutput::mute(const std::string& why) {
  if (muted_) return;
  muted_ = true;
  log_.line("Sound: " + why + "; playing silently");
}

void DeferredSoundOutput::load() {
  if (muted_ || real_) return;
  const QString& path = modulePath_;
  if (!QFileInfo::exists(path)) {
    mute("no audio module at " + path.toStdString());
    return;
  }
  library_ = std::make_unique<QLibrary>(path);
  if (!library_->load()) {
    mute("cannot load the audio module " + path.toStdString() + " (" +
         library_->errorString().toStdString() + ")");
    return;
  }
  const auto version =
      reinterpret_cast<AudioModuleAbiVersionFn>(library_->resolve(kAudioModuleAbiVersionSymbol));
  const auto create =
      reinterpret_cast<AudioModuleCreateFn>(library_->resolve(kAudioModuleCreateSymbol));
  if (!version || !create || version() != kAudioModuleAbiVersion) {
    mute("the audio module " + path.toStdString() + " does not fit this build");
    return;
  }
  real_.reset(create(&log_));
  if (!real_) mute("the audio module made no output");
}

std::shared_ptr<AudioPlayer> DeferredSoundOutput::playerWithContentsOfFile(
    const std::string& path) {
  load();
  if (!real_) return std::make_shared<SilentPlayer>();
  return real_->playerWithContentsOfFile(path);
}

}  // namespace zellick::qt
