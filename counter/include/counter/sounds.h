#pragma once

namespace zellick {

// The click sounds the counter plays: bundle resources of type "caf".
inline constexpr const char* kClickSound = "Counter Click2";
inline constexpr const char* kLetUpSound = "ButtonLetUp";
inline constexpr const char* kMemorySound = "Counter Click3";
inline constexpr const char* kResetSound = "ResetButton";
inline constexpr const char* kFastClickingSound = "Counter Clicking Fast";
inline constexpr const char* kCounterSounds[] = {kClickSound, kLetUpSound, kMemorySound,
                                                 kResetSound, kFastClickingSound};
inline constexpr const char* kSoundType = "caf";

}  // namespace zellick
