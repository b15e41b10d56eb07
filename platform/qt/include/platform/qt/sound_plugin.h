#pragma once

#include <QtPlugin>

#include <memory>

#include "platform/log.h"
#include "platform/sound.h"

namespace zellick::qt {

// What the audio module offers: sound on the system's default output. The module is a Qt
// plugin that the app loads after start-up, so start-up does not pay for the audio stack.
class SoundOutputFactory {
 public:
  virtual ~SoundOutputFactory() = default;
  // A new output on the default device; `log` must outlive it. Never null: without a device
  // the output is silent.
  virtual std::unique_ptr<SoundOutput> createOutput(Log& log) = 0;
};

}  // namespace zellick::qt

#define ZellickSoundOutputFactory_iid "example.orvanta.Zellick.SoundOutputFactory/1.0"
Q_DECLARE_INTERFACE(zellick::qt::SoundOutputFactory, ZellickSoundOutputFactory_iid)
