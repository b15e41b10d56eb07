#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/sim/simulation.h"

namespace zellick::sim {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

TEST(SimServices, AlertsAreAnsweredOnceFrontFirst) {
  VirtualTime time;
  EventRecorder events(time);
  SimAlerts alerts(events);
  std::vector<std::string> answers;
  auto ask = [&](const char* title, std::vector<std::string> buttons) {
    alerts.show(std::make_shared<AlertView>(title, "m", std::move(buttons)), [&](AlertView& a, int index) {
      EXPECT_NE(alerts.onScreen(), &a);  // already off the screen when the answer runs
      answers.push_back(a.title + ":" + std::to_string(index));
    });
  };
  ask("RESET COUNTER", {"Yes", "No"});
  ask("NOTICE", {"OK"});
  ASSERT_NE(alerts.onScreen(), nullptr);
  EXPECT_EQ(alerts.onScreen()->title, "NOTICE");
  EXPECT_TRUE(alerts.answer(1).has_value());  // NOTICE has only button 0
  EXPECT_TRUE(alerts.answer(-1).has_value());
  EXPECT_FALSE(alerts.answer(0));
  EXPECT_FALSE(alerts.answer(1));
  EXPECT_THAT(answers, ElementsAre("NOTICE:0", "RESET COUNTER:1"));
  EXPECT_THAT(events.takeNew(),
              ElementsAre("t=0 alert RESET COUNTER", "t=0 alert NOTICE", "t=0 answer 0", "t=0 answer 1"));
}

TEST(SimViews, MovesLandAtOnceAndANewMoveRetargets) {
  VirtualTime time;
  VirtualRunLoop loop(time);
  EventRecorder events(time);
  SimImageView wheel("ImageView4", {10, 20, 46, 1111}, "numbers.png", events);
  wheel.animateFrame({10, -810.7, 46, 1111}, 0.3);
  EXPECT_EQ(wheel.frame().y, -810.7);  // the model value is the target at once
  loop.advance(0.1);
  wheel.animateFrame({10, 98.3, 46, 1111}, 0.15);  // before the first would have ended
  EXPECT_EQ(wheel.frame().y, 98.3);
  wheel.setFrame({10, 5, 46, 1111});
  events.record("log two\nlines");
  EXPECT_THAT(events.takeNew(), ElementsAre("t=0 move ImageView4 y=-810.7 duration=0.3",
                                            "t=0.1 move ImageView4 y=98.3 duration=0.15",
                                            "t=0.1 move ImageView4 y=5 duration=0", "t=0.1 log two\\nlines"));
  EXPECT_TRUE(events.takeNew().empty());
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
  EXPECT_EQ(p.release("ButtonAdd"), InputResult::Done);
  EXPECT_FALSE(add.isHighlighted());
  EXPECT_EQ(p.release("ButtonAdd"), InputResult::Ignored);
  EXPECT_EQ(p.controller().total, 1);

  add.setUserInteractionEnabled(false);
  EXPECT_EQ(p.tap("ButtonAdd"), InputResult::Ignored);
  EXPECT_EQ(p.controller().total, 1);
  EXPECT_EQ(p.touch("LabelTimer", 2), InputResult::Done);  // the tap count reaches the screen
  EXPECT_THAT(sim.world().events().takeNew(), Contains("t=0 log tapCount 2"));
}

TEST(SimProcess, RestartKeepsTheWorldButDropsTheOldProcessTimers) {
  Simulation sim;
  sim.wait(1);
  sim.process().touch("LabelTimer", 1);  // starts memory A's clock
  const TimerRef tick = sim.process().controller().TimerForLabelA;
  ASSERT_TRUE(tick && tick->isValid());
  sim.world().store().setObject("Other", std::string("kept"));
  sim.restart();
  EXPECT_FALSE(tick->isValid());
  EXPECT_DOUBLE_EQ(sim.world().time().now(), 1);
  EXPECT_EQ(sim.world().store().objectForKey("Other"), DefaultsValue(std::string("kept")));
}

}  // namespace
}  // namespace zellick::sim
