#pragma once

#include <QString>

#include <memory>
#include <string>

#include "platform/log.h"
#include "platform/sound.h"

class QLibrary;
class QQuickWindow;

namespace zellick::qt {

// Sound whose audio stack (Qt Multimedia, the sound server client, the file decoders) lives in
// a module loaded on demand, so start-up does not pay for loading it. The module is loaded by
// load(), at the latest by the first player asked for, so no click is lost; once loaded it
// stays loaded. A module that is missing or will not load gives one log line and silence.
// Main thread only.
class DeferredSoundOutput : public SoundOutput {
 public:
  enum class Device {
    Default,   // the system's default output; muted when ZELLICK_NO_AUDIO is set
    None,      // muted from the start; the module is never loaded
    Detached,  // the module's output with a mixer nothing reads (tests)
  };

  // `modulePath` empty: $ZELLICK_AUDIO_MODULE, else the module next to the executable.
  explicit DeferredSoundOutput(Log& log, Device device = Device::Default, QString modulePath = {});
  DeferredSoundOutput(const DeferredSoundOutput&) = delete;
  DeferredSoundOutput& operator=(const DeferredSoundOutput&) = delete;
  ~DeferredSoundOutput() override;

  // Loads the module now unless it is loaded, has failed, or the output is muted.
  void load();
  // Loads the module once the loop is back after `window`'s first frame. This output must
  // outlive `window`.
  void loadAfterFirstFrame(QQuickWindow* window);

  std::shared_ptr<AudioPlayer> playerWithContentsOfFile(const std::string& path) override;

  bool isMuted() const { return muted_; }
  // The module's output once loaded, else null.
  SoundOutput* loaded() const { return real_.get(); }
  // Where the module is looked for when no path is given.
  static QString defaultModulePath();

 private:
  void fail(const std::string& why);

  Log& log_;
  Device device_;
  QString modulePath_;
  bool muted_ = false;
  std::unique_ptr<QLibrary> library_;  // never unloaded: the output's code lives there
  std::unique_ptr<SoundOutput> real_;
};

}  // namespace zellick::qt
