#pragma once

#include "platform/log.h"
#include "platform/sound.h"

namespace zellick {

// What the app and the audio module agree on. Bump the version when anything here, or a
// class that crosses the boundary (SoundOutput, AudioPlayer, Log), changes.
inline constexpr int kAudioModuleAbiVersion = 1;
inline constexpr int kAudioModuleDefaultDevice = 0;  // the system's default output
inline constexpr int kAudioModuleDetached = 1;       // a mixer nothing reads (tests)

// The module's exports, as resolved by name.
using AudioModuleAbiVersionFn = int (*)();
// A new output owned by the caller, or null for an unknown device. `log` must outlive it.
using AudioModuleCreateFn = SoundOutput* (*)(Log* log, int device);
inline constexpr const char* kAudioModuleAbiVersionSymbol = "zellick_audio_abi_version";
inline constexpr const char* kAudioModuleCreateSymbol = "zellick_audio_create";

}  // namespace zellick
