// The entry point the app resolves after dlopen. Only these symbols are exported.
#include "platform/qt/audio_module_abi.h"
#include "platform/qt/sound_output.h"

extern "C" {

__attribute__((visibility("default"))) int zellick_audio_abi_version() {
  return zellick::qt::kAudioModuleAbiVersion;
}

__attribute__((visibility("default"))) zellick::SoundOutput* zellick_audio_create(
    zellick::Log* log) {
  if (!log) return nullptr;
  return new zellick::qt::QtSoundOutput(*log);
}

}  // extern "C"
