#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "counter/ZellickViewController.h"
#include "platform/sim/numbers.h"
#include "platform/sim/simulation.h"

namespace zellick::test {

// The real controller on the deterministic platform, started as the app starts and settled
// past its start-up redraw, so every test begins at t=1 with an empty event log.
class CounterTest : public ::testing::Test {
 protected:
  explicit CounterTest(sim::SimOptions options = {}) : sim_(options) {
    sim_.start();
    sim_.wait(1);
    events();
  }

  sim::Process& p() { return sim_.process(); }
  ZellickViewController& c() { return p().controller(); }
  void wait(double seconds) { sim_.wait(seconds); }

  std::vector<std::string> events() { return sim_.world().events().takeNew(); }
  // Events whose text (after "t=T ") starts with `kind`, e.g. "move", "sound", "track".
  std::vector<std::string> events(const std::string& kind) {
    std::vector<std::string> out;
    for (const std::string& e : events()) {
      const auto space = e.find(' ');
      if (e.compare(space + 1, kind.size() + 1, kind + " ") == 0) out.push_back(e);
    }
    return out;
  }

  // The wheel's vertical origin for digit d (10 is the roll-over "0").
  double digitY(int d) { return c().initialPositionOfNumbers - 101.0 * d; }
  std::string move(double t, const std::string& wheel, int digit, double duration) {
    return "t=" + sim::formatNumber(t) + " move " + wheel + " y=" +
           sim::formatNumber(digitY(digit)) + " duration=" + sim::formatNumber(duration);
  }

  // Puts the current memory at `count` with the wheels showing it.
  void setCount(int count) {
    c().total = c().previousTotal = count;
    if (c().buttonId == 1) c().totalA = count;
    if (c().buttonId == 2) c().totalB = count;
    if (c().buttonId == 3) c().totalC = count;
  }

  sim::Simulation sim_;
};

}  // namespace zellick::test
