// What of the fake screen the sim transcripts do not pin: keys (held, locked, answering a
// question) and stacked questions. Moves, taps, touches and the More screen's row keys are in
// tests/sim/scripts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/fake/services.h"
#include "platform/fake/time.h"
#include "platform/fake/views.h"

namespace zellick::test {
namespace {

using namespace fake;

using ::testing::ElementsAre;

TEST(FakeScreen, KeysStandInForFingers) {
  VirtualTime time;
  EventRecorder events(time);
  FakeScreen screen({0, 0, 320, 480},
                    {{"Add", ControlSpec::Kind::Button, {10, 10, 50, 50}, "add.png", {}, 0, {}},
                     {"Clock", ControlSpec::Kind::Label, {0, 0, 80, 20}, {}, {}, 7, {}}},
                    events);
  std::vector<std::string> calls;
  screen.bindButton(
      "Add", [&] { calls.push_back("press"); }, [&] { calls.push_back("release"); });
  const auto touched = [&](const View& v, int n) {
    calls.push_back(*screen.nameOf(&v) + " " + std::to_string(n));
  };
  screen.setTouchHandlers(touched, [](const View&, int) {});
  screen.setKeyBindings({{"Space", "Add"}, {"Shift+T", "Clock", 2}});
  // "^" lifts the key.
  const std::pair<const char*, InputResult> steps[] = {
      {"Space", InputResult::Done},    {"Space", InputResult::Ignored},  // held: one press
      {"^Space", InputResult::Done},   {"^Space", InputResult::Ignored},
      {"Shift+T", InputResult::Done},  {"T", InputResult::Ignored},
      {"Hyper", InputResult::Unknown},
  };
  for (const auto& [key, result] : steps)
    EXPECT_EQ(key[0] == '^' ? screen.keyUp(key + 1) : screen.keyDown(key), result) << key;
  screen.button("Add")->setUserInteractionEnabled(false);
  EXPECT_EQ(screen.keyDown("Space"), InputResult::Ignored);  // a locked button refuses its key
  screen.button("Add")->setUserInteractionEnabled(true);
  // Questions stack, the last in front; it takes every key: Return is its first button, Escape
  // its last, a letter the button it begins. It is off the screen when its answer runs.
  std::vector<std::string> answers;
  for (const char* title : {"A", "B", "C", "D"}) {
    screen.alerts().show(
        std::make_shared<AlertView>(title, "m", std::vector<std::string>{"Yes", "No"}),
        [&](AlertView& a, int i) {
          EXPECT_NE(screen.alerts().onScreen(), &a);
          answers.push_back(a.title + std::to_string(i));
        });
  }
  for (const char* key : {"Space", "N", "Y", "Return", "Escape"})
    EXPECT_EQ(screen.keyDown(key), key[0] == 'S' ? InputResult::Ignored : InputResult::Done) << key;
  EXPECT_THAT(answers, ElementsAre("D1", "C0", "B0", "A1"));
  EXPECT_THAT(calls, ElementsAre("press", "release", "Clock 2"));
}

}  // namespace
}  // namespace zellick::test
