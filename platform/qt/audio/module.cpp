// The entry point the app resolves after dlopen. Only these symbols are exported.
#include "platform/qt/audio_module_abi.h"
#include "platform/qt/sound_output.h"

extern "C" {

__attribute__((visibility("default"))) int zellick_audio_abi_version() {
  return zellick::kAudioModuleAbiVersion;
}

__attribute__((visibility("default"))) zellick::SoundOutput* zellick_audio_create(zellick::Log* log,
                                                                                  int device) {
  if (!log) return nullptr;
  using Device = zellick::qt::QtSoundOutput::Device;
  switch (device) {
    case zellick::kAudioModuleDefaultDevice:
      return new zellick::qt::QtSoundOutput(*log, Device::Default);
    case zellick::kAudioModuleDetached:
      return new zellick::qt::QtSoundOutput(*log, Device::Detached);
    default:
      return nullptr;
  }
}

}  // extern "C"
