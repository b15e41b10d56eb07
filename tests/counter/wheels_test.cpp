#include "fixture.h"

namespace zellick::test {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

// A move as (time offset, wheel, digit, duration); digit 10 is the roll-over cell.
struct Move {
  double dt;
  const char* wheel;
  int digit;
  double duration;
};

struct WheelCase {
  const char* name;
  const char* action;  // "add", "minus" or "memoryB"
  int from;
  int to;
  std::vector<Move> moves;  // in order, including the follow-up steps
};

class WheelTest : public CounterTest, public ::testing::WithParamInterface<WheelCase> {};

TEST_P(WheelTest, RollsEachChangedWheelLikeAMechanicalCounter) {
  const WheelCase& k = GetParam();
  setCount(k.from);
  const std::string action = k.action;
  if (action == "memoryB") {
    c().totalB = k.to;
    p().tap("ButtonB");
  } else {
    p().tap(action == "add" ? "ButtonAdd" : "ButtonMinus");
  }
  wait(1);

  ASSERT_EQ(c().total, k.to);
  std::vector<std::string> want;
  for (const Move& m : k.moves) want.push_back(move(1 + m.dt, m.wheel, m.digit, m.duration));
  EXPECT_THAT(events("move"), ElementsAreArray(want));
  // Whatever the path, every wheel comes to rest on its digit with no follow-up pending.
  const int digits[] = {k.to / 1000, k.to / 100 % 10, k.to / 10 % 10, k.to % 10};
  const ImageView* wheels[] = {c().ImageView1, c().ImageView2, c().ImageView3, c().ImageView4};
  for (int i = 0; i < 4; ++i) EXPECT_DOUBLE_EQ(wheels[i]->frame().y, digitY(digits[i])) << i;
  EXPECT_FALSE(c().timer1 || c().timer2 || c().timer3 || c().timer4);
  EXPECT_FALSE(c().IsMinusClicked);
}

INSTANTIATE_TEST_SUITE_P(
    Examples, WheelTest,
    ::testing::Values(
        WheelCase{"Add0099To0100", "add", 99, 100,
                  {{0, "ImageView4", 10, 0.15},
                   {0, "ImageView3", 10, 0.15},
                   {0, "ImageView2", 1, 0.3},
                   {0.14, "ImageView4", 0, 0},
                   {0.14, "ImageView4", 0, 0.15},
                   {0.14, "ImageView3", 0, 0},
                   {0.14, "ImageView3", 0, 0.15}}},
        WheelCase{"Minus0100To0099", "minus", 100, 99,
                  {{0, "ImageView4", 10, 0},
                   {0, "ImageView4", 9, 0.15},
                   {0, "ImageView3", 10, 0},
                   {0, "ImageView3", 9, 0.15},
                   {0, "ImageView2", 0, 0.3}}},
        WheelCase{"Add0005To0006", "add", 5, 6, {{0, "ImageView4", 6, 0.3}}},
        WheelCase{"Minus0001To0000IsAPlainRoll", "minus", 1, 0, {{0, "ImageView4", 0, 0.3}}},
        WheelCase{"Switch0257To0134", "memoryB", 257, 134,
                  {{0, "ImageView4", 10, 0.15},
                   {0, "ImageView3", 10, 0.15},
                   {0, "ImageView2", 10, 0.15},
                   {0.14, "ImageView4", 0, 0},
                   {0.14, "ImageView4", 4, 0.15},
                   {0.14, "ImageView3", 0, 0},
                   {0.14, "ImageView3", 3, 0.15},
                   {0.14, "ImageView2", 0, 0},
                   {0.14, "ImageView2", 1, 0.15}}},
        WheelCase{"Switch0000To0900RollsDownTheStrip", "memoryB", 0, 900,
                  {{0, "ImageView2", 9, 0.3}}},
        WheelCase{"Minus0000To9999", "minus", 0, 9999,
                  {{0, "ImageView4", 10, 0},
                   {0, "ImageView4", 9, 0.15},
                   {0, "ImageView3", 10, 0},
                   {0, "ImageView3", 9, 0.15},
                   {0, "ImageView2", 10, 0},
                   {0, "ImageView2", 9, 0.15},
                   {0, "ImageView1", 10, 0},
                   {0, "ImageView1", 9, 0.15}}},
        WheelCase{"Add9999To0000", "add", 9999, 0,
                  {{0, "ImageView4", 10, 0.15},
                   {0, "ImageView3", 10, 0.15},
                   {0, "ImageView2", 10, 0.15},
                   {0, "ImageView1", 10, 0.15},
                   {0.14, "ImageView4", 0, 0},
                   {0.14, "ImageView4", 0, 0.15},
                   {0.14, "ImageView3", 0, 0},
                   {0.14, "ImageView3", 0, 0.15},
                   {0.14, "ImageView2", 0, 0},
                   {0.14, "ImageView2", 0, 0.15},
                   {0.14, "ImageView1", 0, 0},
                   {0.14, "ImageView1", 0, 0.15}}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(CounterTest, UnchangedCountMovesNothingAndClearsMinus) {
  setCount(42);
  c().IsMinusClicked = true;
  c().Show();
  EXPECT_THAT(events("move"), IsEmpty());
  EXPECT_FALSE(c().IsMinusClicked);
}

struct TwoChanges {
  const char* name;
  const char* second;  // the second press, 0.05 s after the first Add
  int want;
};

class TwoChangesTest : public CounterTest, public ::testing::WithParamInterface<TwoChanges> {};

TEST_P(TwoChangesTest, WheelComesToRestOnTheNewestDigit) {
  setCount(9);
  p().tap("ButtonAdd");  // units roll over the top; follow-up due at +0.14
  ASSERT_TRUE(c().timer1);
  wait(0.05);
  p().tap(GetParam().second);
  wait(0.3);
  EXPECT_EQ(c().total, GetParam().want);
  EXPECT_DOUBLE_EQ(c().ImageView4->frame().y, digitY(GetParam().want % 10));
  EXPECT_FALSE(c().timer1);
}

INSTANTIATE_TEST_SUITE_P(Within014s, TwoChangesTest,
                         ::testing::Values(TwoChanges{"AddAgain", "ButtonAdd", 11},
                                           TwoChanges{"MinusBack", "ButtonMinus", 9}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(CounterTest, SecondRollOverKeepsTheOldFollowUpWhichUsesTheNewTarget) {
  setCount(9);
  p().tap("ButtonAdd");  // 0009 -> 0010
  wait(0.05);
  c().totalB = 5;
  c().totalA = 10;
  p().tap("ButtonB");     // units 0 -> 5: plain roll
  c().totalA = 3;
  p().tap("ButtonA");     // units 5 -> 3: a second roll over the top, new timer
  wait(0.5);
  EXPECT_DOUBLE_EQ(c().ImageView4->frame().y, digitY(3));
  const auto moves = events("move");
  // Both follow-ups (at +0.14 and +0.19) send the wheel to the newest digit.
  EXPECT_THAT(moves, ::testing::Contains(move(1.14, "ImageView4", 3, 0.15)));
  EXPECT_THAT(moves, ::testing::Contains(move(1.19, "ImageView4", 3, 0.15)));
}

}  // namespace
}  // namespace zellick::test
