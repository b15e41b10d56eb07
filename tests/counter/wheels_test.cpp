#include <cstdio>
#include <sstream>

#include "fixture.h"

namespace zellick::test {
namespace {

struct WheelCase {
  const char* name;
  char action;  // '+' Add, '-' Minus, 'B' memory B, which holds `to`
  int from, to;
  // "wheel>digit/duration" in order; the moves after "|" are the follow-ups, 0.14 s later.
  const char* moves;
};

TEST_F(CounterTest, WheelsRollLikeAMechanicalCounter) {
  const WheelCase cases[] = {
      {"Add0099To0100", '+', 99, 100, "4>10/.15 3>10/.15 2>1/.3 | 4>0/0 4>0/.15 3>0/0 3>0/.15"},
      {"Minus0100To0099", '-', 100, 99, "4>10/0 4>9/.15 3>10/0 3>9/.15 2>0/.3"},
      {"Add0005To0006", '+', 5, 6, "4>6/.3"},
      {"Minus0001To0000IsAPlainRoll", '-', 1, 0, "4>0/.3"},
      {"Switch0257To0134", 'B', 257, 134,
       "4>10/.15 3>10/.15 2>10/.15 | 4>0/0 4>4/.15 3>0/0 3>3/.15 2>0/0 2>1/.15"},
      {"Switch0000To0900RollsDownTheStrip", 'B', 0, 900, "2>9/.3"},
      {"SwitchToTheSameCountMovesNothing", 'B', 42, 42, ""},
      {"Minus0000To9999", '-', 0, 9999,
       "4>10/0 4>9/.15 3>10/0 3>9/.15 2>10/0 2>9/.15 1>10/0 1>9/.15"},
      {"Add9999To0000", '+', 9999, 0,
       "4>10/.15 3>10/.15 2>10/.15 1>10/.15 | 4>0/0 4>0/.15 3>0/0 3>0/.15 2>0/0 2>0/.15 1>0/0 "
       "1>0/.15"},
  };
  for (const WheelCase& k : cases) {
    SCOPED_TRACE(k.name);
    fresh();
    setCount(k.from);
    c().totalB = k.to;
    p().tap(k.action == '+' ? "ButtonAdd" : k.action == '-' ? "ButtonMinus" : "ButtonB");
    wait(1);

    ASSERT_EQ(c().total, k.to);
    std::vector<std::string> want;
    std::istringstream words(k.moves);
    double at = 1;
    for (std::string m; words >> m;) {
      int wheel = 0, digit = 0;
      double duration = 0;
      if (m == "|")
        at += .14;
      else if (std::sscanf(m.c_str(), "%d>%d/%lf", &wheel, &digit, &duration) == 3)
        want.push_back(move(at, wheel, digit, duration));
      else
        ADD_FAILURE() << "bad move " << m;
    }
    EXPECT_THAT(events("move"), ElementsAreArray(want));
    EXPECT_FALSE(c().timer1 || c().timer2 || c().timer3 || c().timer4) << "follow-up pending";
    EXPECT_FALSE(c().IsMinusClicked) << "the next roll-over would go the Minus way";
  }
}

// A second change 0.05 s after a roll-over, before its follow-up (due at +0.14 s) has run.
TEST_F(CounterTest, TwoChangesWithinAFollowUpEndOnTheNewestDigit) {
  const struct {
    const char* name;
    int from;  // memory A's; B holds 15 and C 13
    const char *first, *second;
    int want;
    std::vector<double> followUps;  // when the units wheel jumps to its top "0" and rolls on
  } cases[] = {
      {"AddAgain", 9, "ButtonAdd", "ButtonAdd", 11, {1.14}},
      {"MinusBack", 9, "ButtonAdd", "ButtonMinus", 9, {1.14}},
      // Both roll the units over the top; the first follow-up still lands on the newest digit.
      {"TwoRollOvers", 19, "ButtonB", "ButtonC", 13, {1.14, 1.19}},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(k.name);
    fresh();
    setCount(k.from);
    c().totalB = 15;
    c().totalC = 13;
    p().tap(k.first);
    wait(0.05);
    p().tap(k.second);
    events();
    wait(0.3);

    EXPECT_EQ(c().total, k.want);
    std::vector<std::string> want;
    for (double t : k.followUps) {
      want.push_back(move(t, 4, 0, 0));
      want.push_back(move(t, 4, k.want % 10, .15));
    }
    EXPECT_THAT(events("move"), ElementsAreArray(want));
    EXPECT_FALSE(c().timer1);
  }
}

}  // namespace
}  // namespace zellick::test
