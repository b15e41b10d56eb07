#pragma once

#include <cstdint>

namespace zellick::detail {

// Counts and clocks are 32-bit and may come from a hand-edited store, so arithmetic on them
// wraps like the 32-bit machine arithmetic it mirrors instead of overflowing.
inline int32_t wrapAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t wrapMul(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
// Truncating division; INT32_MIN / -1 wraps to INT32_MIN.
inline int32_t wrapDiv(int32_t a, int32_t b) {
  if (b == -1) return static_cast<int32_t>(0u - static_cast<uint32_t>(a));
  return a / b;
}

inline constexpr const char* kClickSound = "Counter Click2";
inline constexpr const char* kLetUpSound = "ButtonLetUp";
inline constexpr const char* kMemorySound = "Counter Click3";
inline constexpr const char* kResetSound = "ResetButton";
inline constexpr const char* kFastClickingSound = "Counter Clicking Fast";

}  // namespace zellick::detail
