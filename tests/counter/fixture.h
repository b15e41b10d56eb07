#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "counter/ZellickViewController.h"
#include "counter/interface.h"
#include "platform/fake/numbers.h"
#include "sim/simulation.h"

namespace zellick::test {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// The lines whose text (after "t=T ") starts with `kind`, e.g. "move", "sound", "log".
inline std::vector<std::string> only(const std::vector<std::string>& lines,
                                     const std::string& kind) {
  std::vector<std::string> out;
  for (const std::string& e : lines)
    if (e.compare(e.find(' ') + 1, kind.size() + 1, kind + " ") == 0) out.push_back(e);
  return out;
}

// The real controller on the deterministic platform, started as the app starts and settled
// past its start-up redraw, so every test (and every table row after fresh()) begins at t=1
// with an empty event log.
class CounterTest : public ::testing::Test {
 protected:
  CounterTest() { fresh(); }

  void fresh(sim::SimOptions options = {}) {
    sim_ = std::make_unique<sim::Simulation>(options);
    wait(1);
    events();
  }
  sim::Simulation& sim() { return *sim_; }
  sim::Process& p() { return sim_->process(); }
  ZellickViewController& c() { return p().controller(); }
  void wait(double seconds) { sim_->wait(seconds); }
  std::string text(const char* label) { return p().label(label)->text(); }
  Color color(const char* label) { return p().label(label)->textColor(); }
  // The clock labels share one colour: white while the shown clock runs, grey otherwise.
  bool lit() {
    EXPECT_EQ(color("LabelTimer"), color("LabelAvg"));
    EXPECT_NE(color("LabelTimer"), Color::Black) << "never left uncoloured";
    return color("LabelTimer") == Color::White;
  }
  fake::FakeImageView& wheel(int n) { return *p().imageView("ImageView" + std::to_string(n)); }

  // The counter's own events: what the tracker sends and hears back is its own tests' business.
  std::vector<std::string> events() {
    std::vector<std::string> e = sim_->world().events().takeNew();
    std::erase_if(e, [](const std::string& line) {
      const std::string what = line.substr(line.find(' ') + 1);
      return what.starts_with("http ") || what.starts_with("log Sending request: ") ||
             what.starts_with("log Response: ");
    });
    return e;
  }
  std::vector<std::string> events(const std::string& kind) { return only(events(), kind); }

  // The question on screen as "TITLE|message|buttons", or "" when there is none.
  std::string question() {
    const AlertView* a = p().alerts().onScreen();
    if (!a) return "";
    std::string out = a->title + "|" + a->message + "|";
    for (const std::string& b : a->buttons) out += b + (&b == &a->buttons.back() ? "" : " ");
    return out;
  }

  // The buttons that refuse touches, named without "Button", e.g. "Minus Reset B C".
  std::string locked() {
    std::string out;
    for (const char* n : {"Add", "Minus", "Reset", "A", "B", "C", "Info"}) {
      if (p().button(std::string("Button") + n)->userInteractionEnabled()) continue;
      out += (out.empty() ? "" : " ") + std::string(n);
    }
    return out;
  }

  // Where a wheel stands to show digit d (10 is the roll-over "0"), and the event of it going
  // there; wheel 1 is the thousands, 4 the units.
  double digitY(int d) { return c().initialPositionOfNumbers - kDigitCellHeight * d; }
  std::string move(double t, int wheel, int digit, double duration) {
    return "t=" + fake::formatNumber(t) + " move ImageView" + std::to_string(wheel) +
           " y=" + fake::formatNumber(digitY(digit)) + " duration=" + fake::formatNumber(duration);
  }

  // Puts the current memory at `count`. The wheels are left where they stand; tests check the
  // moves that follow, which depend only on the digits that change.
  void setCount(int count) {
    c().total = c().previousTotal = count;
    (c().buttonId == 1 ? c().totalA : c().buttonId == 2 ? c().totalB : c().totalC) = count;
  }

  std::unique_ptr<sim::Simulation> sim_;
};

}  // namespace zellick::test
