#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "ui/tap_counter.h"

namespace zellick::test {
namespace {

using namespace ui;

struct Tap {
  long long ms;
  double x, y;
  int expected;
};

// Interval 400 ms, slop 10 points.
const std::pair<const char*, std::vector<Tap>> kCases[] = {
    {"double tap", {{1000, 50, 50, 1}, {1200, 52, 49, 2}}},
    {"second tap exactly at the interval", {{1000, 50, 50, 1}, {1400, 50, 50, 2}}},
    {"second tap just too late", {{1000, 50, 50, 1}, {1401, 50, 50, 1}}},
    {"interval counts from the previous tap",
     {{0, 5, 5, 1}, {300, 5, 5, 2}, {650, 5, 5, 3}, {1100, 5, 5, 1}}},
    {"second tap too far away", {{1000, 50, 50, 1}, {1100, 61, 50, 1}}},
    {"diagonal within reach", {{1000, 50, 50, 1}, {1100, 57, 57, 2}, {1200, 64, 64, 3}}},
    {"distance is euclidean", {{1000, 50, 50, 1}, {1100, 58, 58, 1}}},
    {"far tap starts a series that continues there",
     {{0, 0, 0, 1}, {100, 100, 0, 1}, {200, 100, 5, 2}}},
    {"clock going backwards starts again", {{1000, 50, 50, 1}, {900, 50, 50, 1}}},
    {"same instant counts", {{1000, 50, 50, 1}, {1000, 50, 50, 2}}},
};

TEST(TapCounter, NumbersTapsLikeAPhone) {
  for (const auto& [name, taps] : kCases) {
    TapCounter counter(400, 10);
    for (std::size_t i = 0; i < taps.size(); ++i)
      EXPECT_EQ(counter.press(taps[i].ms, Point{taps[i].x, taps[i].y}), taps[i].expected)
          << name << ", tap " << i;
  }
}

}  // namespace
}  // namespace zellick::test
