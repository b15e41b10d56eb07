#pragma once

#include <cstdint>

#include "counter/interface.h"
#include "counter/sounds.h"

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

// The one-second tick of a running clock.
inline constexpr double kTick = 1.0;
// Where a wheel shows its roll-over "0", above its top "0".
inline constexpr double kRollOverOffset = 10 * kDigitCellHeight;

// The pictures of the memory buttons while memory `id` (1..3) is the current one.
struct MemoryImages {
  const char* a;
  const char* b;
  const char* c;
};
inline const MemoryImages& memoryImages(int id) {
  static constexpr MemoryImages kImages[] = {
      {"a-down.png", "b-up.png", "c-up.png"},
      {"a-up.png", "b-down.png", "c-up.png"},
      {"a-up.png", "b-up.png", "c-down.png"},
  };
  return kImages[id - 1];
}

}  // namespace zellick::detail
