#pragma once

#include <QString>

#include <memory>
#include <string>

#include "platform/log.h"
#include "platform/sound.h"

class QPluginLoader;

namespace zellick::qt {

// Sound whose audio stack (Qt Multimedia, the sound server client, the file decoders) lives in
// a plugin module loaded on demand, so start-up does not pay for loading it (about 2 ms of the
// first frame, measured against linking it into the app). The module is loaded by
// load(), at the latest by the first player asked for, so no click is lost; once loaded it
// stays loaded. A module that is missing or will not load gives one log line and silence.
// Main thread only.
class DeferredSoundOutput : public SoundOutput {
 public:
  // `modulePath`: the module's file, a plugin of SoundOutputFactory.
  DeferredSoundOutput(Log& log, QString modulePath);
  DeferredSoundOutput(const DeferredSoundOutput&) = delete;
  DeferredSoundOutput& operator=(const DeferredSoundOutput&) = delete;
  ~DeferredSoundOutput() override;

  // Silent from now on, without ever loading the module; logs `why` once.
  void mute(const std::string& why);
  // Loads the module now unless it is loaded, has failed, or the output is muted.
  void load();

  std::shared_ptr<AudioPlayer> playerWithContentsOfFile(const std::string& path) override;

  bool isMuted() const { return muted_; }
  // The module's output once loaded, else null.
  SoundOutput* loaded() const { return real_.get(); }

 private:
  Log& log_;
  QString modulePath_;
  bool muted_ = false;
  std::unique_ptr<QPluginLoader> plugin_;  // never unloaded: the output's code lives there
  std::unique_ptr<SoundOutput> real_;
};

}  // namespace zellick::qt
