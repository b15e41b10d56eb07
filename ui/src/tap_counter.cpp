#include "ui/tap_counter.h"

#include <climits>
#include <cmath>

namespace zellick::ui {

TapCounter::TapCounter(long long intervalMs, double maxDistance)
    : intervalMs_(intervalMs < 0 ? 0 : intervalMs),
      maxDistance_(std::isfinite(maxDistance) && maxDistance > 0 ? maxDistance : 0) {}

int TapCounter::press(long long timeMs, Point where) {
  const long long gap = timeMs - lastMs_;
  const bool continues = count_ > 0 && gap >= 0 && gap <= intervalMs_ &&
                         std::hypot(where.x - last_.x, where.y - last_.y) <= maxDistance_;
  count_ = continues && count_ < INT_MAX ? count_ + 1 : 1;
  lastMs_ = timeMs;
  last_ = where;
  return count_;
}

}  // namespace zellick::ui
