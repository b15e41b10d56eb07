#include <gtest/gtest.h>

#include <vector>

#include "platform/qt/tap_counter.h"

namespace zellick {
namespace {

struct Tap {
  long long ms;
  double x, y;
  int expected;
};

struct TapCase {
  const char* name;
  std::vector<Tap> taps;
};

// Interval 400 ms, slop 10 points.
const TapCase kCases[] = {
    {"single tap", {{1000, 50, 50, 1}}},
    {"double tap", {{1000, 50, 50, 1}, {1200, 52, 49, 2}}},
    {"triple tap", {{1000, 50, 50, 1}, {1200, 50, 50, 2}, {1500, 50, 50, 3}}},
    {"second tap exactly at the interval", {{1000, 50, 50, 1}, {1400, 50, 50, 2}}},
    {"second tap just too late", {{1000, 50, 50, 1}, {1401, 50, 50, 1}}},
    {"interval counts from the previous tap", {{0, 5, 5, 1}, {300, 5, 5, 2}, {650, 5, 5, 3}, {1100, 5, 5, 1}}},
    {"second tap too far away", {{1000, 50, 50, 1}, {1100, 61, 50, 1}}},
    {"diagonal within reach", {{1000, 50, 50, 1}, {1100, 57, 57, 2}, {1200, 64, 64, 3}}},
    {"distance is euclidean", {{1000, 50, 50, 1}, {1100, 58, 58, 1}}},
    {"far tap starts a series that continues there", {{0, 0, 0, 1}, {100, 100, 0, 1}, {200, 100, 5, 2}}},
    {"clock going backwards starts again", {{1000, 50, 50, 1}, {900, 50, 50, 1}}},
    {"same instant counts", {{1000, 50, 50, 1}, {1000, 50, 50, 2}}},
};

TEST(TapCounter, NumbersTapsLikeAPhone) {
  for (const auto& c : kCases) {
    TapCounter counter(400, 10);
    for (std::size_t i = 0; i < c.taps.size(); ++i) {
      const Tap& t = c.taps[i];
      EXPECT_EQ(counter.press(t.ms, Point{t.x, t.y}), t.expected) << c.name << ", tap " << i;
    }
  }
}

}  // namespace
}  // namespace zellick
