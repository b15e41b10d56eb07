#include "platform/qt/deferred_sound.h"

#include <QFileInfo>
#include <QPluginLoader>

#include "platform/qt/sound_plugin.h"

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
  // The output goes first; the module stays mapped (the loader does not unload on destruction).
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
  plugin_ = std::make_unique<QPluginLoader>(path);
  QObject* instance = plugin_->instance();
  if (!instance) {
    mute("cannot load the audio module " + path.toStdString() + " (" +
         plugin_->errorString().toStdString() + ")");
    return;
  }
  auto* factory = qobject_cast<SoundOutputFactory*>(instance);
  if (!factory) {
    mute("the audio module " + path.toStdString() + " does not fit this build");
    return;
  }
  real_ = factory->createOutput(log_);
  if (!real_) mute("the audio module made no output");
}

std::shared_ptr<AudioPlayer> DeferredSoundOutput::playerWithContentsOfFile(
    const std::string& path) {
  load();
  if (!real_) return std::make_shared<SilentPlayer>();
  return real_->playerWithContentsOfFile(path);
}

}  // namespace zellick::qt
