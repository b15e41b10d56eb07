#include "platform/qt/deferred_sound.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QPointer>
#include <QQuickWindow>

#include <cstdlib>

#include "platform/qt/audio_module_abi.h"
#include "platform/qt/first_frame.h"

namespace zellick::qt {

namespace {

class SilentPlayer : public AudioPlayer {
 public:
  void play() override {}
  void stop() override {}
};

}  // namespace

QString DeferredSoundOutput::defaultModulePath() {
  const QByteArray env = qgetenv("ZELLICK_AUDIO_MODULE");
  if (!env.isEmpty()) return QString::fromLocal8Bit(env);
  const QString dir =
      QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QDir::currentPath();
  return QDir(dir).filePath(QStringLiteral("libzellick_audio.so"));
}

DeferredSoundOutput::DeferredSoundOutput(Log& log, Device device, QString modulePath)
    : log_(log), device_(device), modulePath_(std::move(modulePath)) {
  // The same lines the module's output logs, without loading it only to be told to be quiet.
  if (device == Device::None) {
    muted_ = true;
    log_.line("Sound: audio output disabled; playing silently");
    return;
  }
  if (device == Device::Default) {
    const char* off = std::getenv("ZELLICK_NO_AUDIO");
    if (off && *off) {
      muted_ = true;
      log_.line("Sound: audio output disabled by ZELLICK_NO_AUDIO; playing silently");
    }
  }
}

DeferredSoundOutput::~DeferredSoundOutput() {
  // The output goes first; the library stays mapped (QLibrary does not unload on destruction).
  real_.reset();
}

void DeferredSoundOutput::fail(const std::string& why) {
  muted_ = true;
  log_.line("Sound: " + why + "; playing silently");
}

void DeferredSoundOutput::load() {
  if (muted_ || real_) return;
  const QString path = modulePath_.isEmpty() ? defaultModulePath() : modulePath_;
  if (!QFileInfo::exists(path)) {
    fail("no audio module at " + path.toStdString());
    return;
  }
  library_ = std::make_unique<QLibrary>(path);
  if (!library_->load()) {
    fail("cannot load the audio module " + path.toStdString() + " (" +
         library_->errorString().toStdString() + ")");
    return;
  }
  const auto version =
      reinterpret_cast<AudioModuleAbiVersionFn>(library_->resolve(kAudioModuleAbiVersionSymbol));
  const auto create =
      reinterpret_cast<AudioModuleCreateFn>(library_->resolve(kAudioModuleCreateSymbol));
  if (!version || !create || version() != kAudioModuleAbiVersion) {
    fail("the audio module " + path.toStdString() + " does not fit this build");
    return;
  }
  real_.reset(create(&log_, device_ == Device::Detached ? kAudioModuleDetached
                                                        : kAudioModuleDefaultDevice));
  if (!real_) fail("the audio module made no output");
}

void DeferredSoundOutput::loadAfterFirstFrame(QQuickWindow* window) {
  if (!window || muted_ || real_) return;
  afterFirstFrame(window, window, [this] { load(); });
}

std::shared_ptr<AudioPlayer> DeferredSoundOutput::playerWithContentsOfFile(const std::string& path) {
  load();
  if (!real_) return std::make_shared<SilentPlayer>();
  return real_->playerWithContentsOfFile(path);
}

}  // namespace zellick::qt
