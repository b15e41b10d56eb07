#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/fake/services.h"
#include "platform/fake/time.h"
#include "platform/fake/views.h"

namespace zellick::test {
namespace {

using namespace fake;

using ::testing::Contains;
using ::testing::ElementsAre;

TEST(FakeAlerts, AreAnsweredOnceFrontFirst) {
  VirtualTime time;
  EventRecorder events(time);
  FakeAlerts alerts(events);
  std::vector<std::string> answers;
  auto ask = [&](const char* title, std::vector<std::string> buttons) {
    alerts.show(std::make_shared<AlertView>(title, "m", std::move(buttons)),
                [&](AlertView& a, int index) {
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
  EXPECT_THAT(events.takeNew(), ElementsAre("t=0 alert RESET COUNTER", "t=0 alert NOTICE",
                                            "t=0 answer 0", "t=0 answer 1"));
}

TEST(FakeViews, MovesLandAtOnceAndANewMoveRetargets) {
  VirtualTime time;
  VirtualRunLoop loop(time);
  EventRecorder events(time);
  FakeImageView wheel("ImageView4", {10, 20, 46, 1111}, "numbers.png", events);
  wheel.animateFrame({10, -810.7, 46, 1111}, 0.3);
  EXPECT_EQ(wheel.frame().y, -810.7);  // the model value is the target at once
  loop.advance(0.1);
  wheel.animateFrame({10, 98.3, 46, 1111}, 0.15);  // before the first would have ended
  EXPECT_EQ(wheel.frame().y, 98.3);
  wheel.setFrame({10, 5, 46, 1111});
  events.record("log two\nlines");
  EXPECT_THAT(events.takeNew(),
              ElementsAre("t=0 move ImageView4 y=-810.7 duration=0.3",
                          "t=0.1 move ImageView4 y=98.3 duration=0.15",
                          "t=0.1 move ImageView4 y=5 duration=0", "t=0.1 log two\\nlines"));
  EXPECT_TRUE(events.takeNew().empty());
}

// A finger goes where a table's controls are: presses follow interaction and the question in
// front, releases follow presses, and touches reach the handlers with their view and count.
TEST(FakeScreen, InputGoesWhereAFingerWould) {
  VirtualTime time;
  EventRecorder events(time);
  using Kind = ControlSpec::Kind;
  FakeScreen screen({0, 0, 320, 480},
                    {{"Add", Kind::Button, {10, 10, 50, 50}, "add.png", {}, 0, "Count up"},
                     {"Clock", Kind::Label, {0, 0, 80, 20}, {}, {}, 7, {}},
                     {"Band", Kind::Clip, {0, 0, 320, 101}, {}, {}, 0, {}}},
                    events);
  std::vector<std::string> calls;
  screen.bindButton(
      "Add", [&] { calls.push_back("press"); }, [&] { calls.push_back("release"); });
  screen.setTouchHandlers(
      [&](const View& v, int n) {
        calls.push_back("began " + *screen.nameOf(&v) + " " + std::to_string(n));
      },
      [&](const View& v, int n) {
        calls.push_back("ended " + *screen.nameOf(&v) + " " + std::to_string(n));
      });
  FakeButton& add = *screen.button("Add");
  EXPECT_EQ(add.image(), "add.png");
  EXPECT_EQ(screen.label("Clock")->tag(), 7);
  EXPECT_EQ(screen.view("Band"), nullptr);  // a clip is no view

  EXPECT_EQ(screen.release("Add"), InputResult::Ignored);  // no press yet
  EXPECT_EQ(screen.press("Add"), InputResult::Done);
  EXPECT_TRUE(add.isHighlighted());
  EXPECT_EQ(screen.release("Add"), InputResult::Done);
  EXPECT_FALSE(add.isHighlighted());
  EXPECT_EQ(screen.release("Add"), InputResult::Ignored);
  add.setUserInteractionEnabled(false);
  EXPECT_EQ(screen.tap("Add"), InputResult::Ignored);
  add.setUserInteractionEnabled(true);
  EXPECT_EQ(screen.touch("Clock", 2), InputResult::Done);
  EXPECT_EQ(screen.touch("view", 1), InputResult::Done);
  // Keys stand in for fingers: a held key is one press, a locked button refuses its key too.
  screen.setKeyBindings({{"Space", "Add"}, {"Shift+T", "Clock", 2}});
  EXPECT_EQ(screen.keyDown("Space"), InputResult::Done);
  EXPECT_EQ(screen.keyDown("Space"), InputResult::Ignored);
  EXPECT_EQ(screen.keyUp("Space"), InputResult::Done);
  EXPECT_EQ(screen.keyDown("Shift+T"), InputResult::Done);
  EXPECT_EQ(screen.keyDown("T"), InputResult::Ignored);
  EXPECT_EQ(screen.keyDown("Hyper"), InputResult::Unknown);
  add.setUserInteractionEnabled(false);
  EXPECT_EQ(screen.keyDown("Space"), InputResult::Ignored);
  add.setUserInteractionEnabled(true);
  int answered = -1;
  const auto ask = [&] {
    screen.alerts().show(
        std::make_shared<AlertView>("Q", "m", std::vector<std::string>{"Yes", "No"}),
        [&](AlertView&, int i) { answered = i; });
  };
  ask();
  EXPECT_EQ(screen.tap("Add"), InputResult::Ignored);  // questions are modal
  EXPECT_EQ(screen.touch("Clock", 1), InputResult::Ignored);
  EXPECT_EQ(screen.tap("Nothing"), InputResult::Unknown);
  for (const auto& [key, index] :
       std::vector<std::pair<std::string, int>>{{"N", 1}, {"Y", 0}, {"Return", 0}, {"Escape", 1}}) {
    EXPECT_EQ(screen.keyDown("Space"), InputResult::Ignored) << "keys answer the question";
    EXPECT_EQ(screen.keyDown(key), InputResult::Done) << key;
    EXPECT_EQ(answered, index) << key;
    ask();
  }
  EXPECT_THAT(calls,
              ElementsAre("press", "release", "began Clock 2", "ended Clock 2", "began view 1",
                          "ended view 1", "press", "release", "began Clock 2", "ended Clock 2"));
}

TEST(FakeBundle, HoldsExactlyWhatItIsGiven) {
  FakeBundle bundle({"Click.caf", "list"});
  EXPECT_EQ(bundle.pathForResource("Click", "caf"), "bundle/Click.caf");
  EXPECT_EQ(bundle.pathForResource("list", ""), "bundle/list");
  EXPECT_EQ(bundle.pathForResource("Click", "wav"), std::nullopt);
}

}  // namespace
}  // namespace zellick::test
