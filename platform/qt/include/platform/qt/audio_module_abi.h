#pragma once

#include "platform/log.h"
#include "platform/sound.h"

namespace zellick::qt {

// What the app and the audio module agree on. Bump the version when anything here, or a
// class that crosses the boundary (SoundOutput, AudioPlayer, Log), changes.
inline constexpr int kAudioModuleAbiVersion = 2;

// The module's exports, as resolved by name.
using AudioModuleAbiVersionFn = int (*)();
// A new output on the system's default device, owned by the caller. `log` must outlive it.
using AudioModuleCreateFn = SoundOutput* (*)(Log* log);
inline constexpr const char* kAudioModuleAbiVersionSymbol = "zellick_audio_abi_version";
inline constexpr const char* kAudioModuleCreateSymbol = "zellick_audio_create";

}  // namespace zellick::qt
