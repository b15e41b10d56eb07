#pragma once

#include "platform/geometry.h"

namespace zellick::ui {

// Numbers successive taps as a phone does: a tap that begins within `intervalMs` of the
// previous one and within `maxDistance` points of it continues the series (2, 3, ...);
// any other tap starts a new series at 1.
class TapCounter {
 public:
  TapCounter(long long intervalMs, double maxDistance);

  // The tap count of a touch beginning at `timeMs` (any monotonic milliseconds) at `where`.
  int press(long long timeMs, Point where);
  void reset() { count_ = 0; }

 private:
  long long intervalMs_;
  double maxDistance_;
  long long lastMs_ = 0;
  Point last_;
  int count_ = 0;
};

}  // namespace zellick::ui
