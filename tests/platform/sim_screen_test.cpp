#include <gtest/gtest.h>

#include <algorithm>

#include "platform/sim/simulation.h"

namespace zellick::sim {
namespace {

bool contains(const std::vector<std::string>& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

TEST(SimServices, AlertsAreAnsweredOnceFrontFirst) {
  VirtualTime time;
  EventRecorder events(time);
  SimAlerts alerts(events);
  EXPECT_EQ(alerts.answer(0), "no question on screen");

  std::vector<std::string> answers;
  auto ask = [&](const char* title, std::vector<std::string> buttons) {
    auto alert = std::make_shared<AlertView>(title, "m", std::move(buttons));
    alerts.show(alert, [&](AlertView& a, int index) {
      // Already off the screen when the answer runs.
      EXPECT_NE(alerts.onScreen(), &a);
      answers.push_back(a.title + ":" + std::to_string(index));
    });
  };
  ask("RESET COUNTER", {"Yes", "No"});
  ask("NOTICE", {"OK"});
  ASSERT_NE(alerts.onScreen(), nullptr);
  EXPECT_EQ(alerts.onScreen()->title, "NOTICE");
  EXPECT_TRUE(alerts.answer(1).has_value());  // NOTICE has only button 0
  EXPECT_TRUE(alerts.answer(-1).has_value());
  EXPECT_EQ(alerts.count(), 2u);
  EXPECT_FALSE(alerts.answer(0));
  EXPECT_FALSE(alerts.answer(1));
  EXPECT_EQ(alerts.onScreen(), nullptr);
  EXPECT_EQ(answers, (std::vector<std::string>{"NOTICE:0", "RESET COUNTER:1"}));
  EXPECT_EQ(events.takeNew(), (std::vector<std::string>{"t=0 alert RESET COUNTER", "t=0 alert NOTICE",
                                                        "t=0 answer 0", "t=0 answer 1"}));
}

// The tests below run the real controller on the platform.

TEST(SimProcess, PressesFollowInteractionAndReleasesFollowPresses) {
  Simulation sim;
  Process& p = sim.start();
  sim.world().events().takeNew();
  SimButton& add = *p.button("ButtonAdd");

  EXPECT_EQ(p.release("ButtonAdd"), InputResult::Ignored);  // no press yet
  EXPECT_EQ(p.press("ButtonAdd"), InputResult::Done);
  EXPECT_TRUE(add.isHighlighted());
  // Add locks Minus: its press is refused, and so is its release.
  EXPECT_EQ(p.press("ButtonMinus"), InputResult::Ignored);
  EXPECT_FALSE(p.button("ButtonMinus")->isHighlighted());
  EXPECT_EQ(p.release("ButtonMinus"), InputResult::Ignored);
  EXPECT_EQ(p.release("ButtonAdd"), InputResult::Done);
  EXPECT_FALSE(add.isHighlighted());
  EXPECT_EQ(p.release("ButtonAdd"), InputResult::Ignored);
  EXPECT_EQ(p.controller().total, 1);
  auto events = sim.world().events().takeNew();
  EXPECT_EQ(std::count(events.begin(), events.end(), "t=0 sound ButtonLetUp"), 1);

  add.setUserInteractionEnabled(false);
  EXPECT_EQ(p.tap("ButtonAdd"), InputResult::Ignored);
  EXPECT_EQ(p.controller().total, 1);
  EXPECT_TRUE(sim.world().events().takeNew().empty());

  EXPECT_EQ(p.press("LabelTimer"), InputResult::Unknown);
  EXPECT_EQ(p.touch("Nowhere", 1), InputResult::Unknown);
  EXPECT_EQ(p.touch("view", 1), InputResult::Done);
  EXPECT_TRUE(contains(sim.world().events().takeNew(), "t=0 track Touch began on timer"));
}

TEST(SimProcess, RestartKeepsDefaultsAndTimeButDropsPendingTimers) {
  Simulation sim;
  sim.start();
  sim.wait(1);
  for (int i = 0; i < 3; ++i) sim.process().tap("ButtonAdd");
  sim.process().touch("LabelTimer", 1);  // starts memory A's clock
  const TimerRef tick = sim.process().controller().TimerForLabelA;
  ASSERT_TRUE(tick && tick->isValid());
  sim.process().resign();
  sim.world().store().setObject("Other", std::string("kept"));

  sim.restart();
  EXPECT_FALSE(tick->isValid());
  EXPECT_DOUBLE_EQ(sim.world().time().now(), 1);
  EXPECT_EQ(sim.world().store().objectForKey("Other"), DefaultsValue(std::string("kept")));
  sim.wait(0.5);
  EXPECT_EQ(sim.process().controller().total, 3);
  EXPECT_EQ(sim.process().controller().totalA, 3);
  EXPECT_DOUBLE_EQ(sim.world().time().now(), 1.5);
}

}  // namespace
}  // namespace zellick::sim
