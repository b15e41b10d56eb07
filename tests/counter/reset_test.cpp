#include "fixture.h"

namespace zellick::test {
namespace {

constexpr const char* kAllSix = "Add Minus Reset A B C";

struct RollCase {
  int from;
  std::vector<int> steps;  // the count after each step, 0.15 s apart from t=1.2; ends at 9999
  size_t plays, stops;     // of the fast clicking
};

TEST_F(CounterTest, YesClearsTheMemoryAndRollsTheSmallestDigitsUpToZero) {
  const RollCase cases[] = {
      {1234, {2234, 3334, 4444, 5555, 6666, 7777, 8888, 9999}, 2, 0},
      // Every step inside 5001-5999 restarts the fast clicking; the first restart plays over
      // the sound that "Yes" started.
      {5000, {5111, 5222, 5333, 5444, 5555, 6666, 7777, 8888, 9999}, 6, 4},
      {4999, {5999, 6999, 7999, 8999, 9999}, 2, 0},
      {9999, {9999}, 1, 0},  // straight to the final roll
  };
  for (const RollCase& k : cases) {
    SCOPED_TRACE(k.from);
    fresh();
    setCount(k.from);
    c().tap = 2;
    c().Amm = 3;
    c().totalForAvgA = 12;
    c().ShowOnLabel();
    p().touch("LabelTimer", 1);
    p().tap("ButtonReset");
    wait(0.2);
    events();
    ASSERT_FALSE(p().answer(0)) << "a question to answer";

    EXPECT_EQ(c().total, k.from) << "the roll takes the count to zero, not the answer";
    EXPECT_EQ(std::pair(c().totalA, c().totalForAvgA), std::pair(0, 0));
    EXPECT_EQ(text("LabelTimer") + " " + text("LabelAvg"), "00:00:00 0/hour");
    EXPECT_FALSE(lit());
    for (size_t i = 0; i < k.steps.size(); ++i) {
      wait(i == 0 ? 0 : 0.15);
      const bool last = i + 1 == k.steps.size();
      EXPECT_EQ(c().total, last ? 0 : k.steps[i]) << "step " << i;
      EXPECT_EQ(locked(), last ? "" : kAllSix) << "step " << i;
    }
    wait(0.48);

    // Each step rolls the wheels whose digit changes, units first; the step that reaches 9999
    // also rolls all four into the "0" below 9, and 0.48 s later they are set on the top "0".
    std::vector<std::string> want;
    double t = 1.2;
    for (int shown = k.from; int step : k.steps) {
      for (int n = 4, d = 1; n >= 1; --n, d *= 10)
        if (step / d % 10 != shown / d % 10) want.push_back(move(t, n, step / d % 10, .3));
      shown = step;
      t += 0.15;
    }
    t -= 0.15;
    for (int n = 4; n >= 1; --n) want.push_back(move(t, n, 10, .5));
    for (int n = 4; n >= 1; --n) want.push_back(move(t + .48, n, 0, 0));
    const auto e = events();
    EXPECT_THAT(only(e, "move"), ElementsAreArray(want));
    EXPECT_EQ(only(e, "sound").size(), k.plays);
    EXPECT_EQ(only(e, "stop").size(), k.stops);
    EXPECT_FALSE(c().IsResetClicked) << "later roll-overs would not roll on";
    EXPECT_FALSE(c().TimerForLabelA || c().isTimerA) << "the cleared clock stays stopped";
  }
}

// Reset pauses the shown clock and asks a fifth of a second later; "No" (or the notice at
// 0000) unlocks, and only "No" resumes a clock that ran, a second later.
TEST_F(CounterTest, ResetPausesTheClockAndAsksAndOnlyNoResumesIt) {
  const struct {
    int count;
    bool running;
    const char* asked;
    const char* lockedWhileAsked;
  } cases[] = {
      {5, true, "RESET COUNTER|Are you sure you want \nto reset the counter?|Yes No", kAllSix},
      {5, false, "RESET COUNTER|Are you sure you want \nto reset the counter?|Yes No", kAllSix},
      {0, true, "NOTICE|Counter is already reset to 0000|OK", ""},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(::testing::Message() << k.count << (k.running ? ", running" : ", stopped"));
    fresh();
    setCount(k.count);
    if (k.running) p().touch("LabelTimer", 1);
    events();
    p().tap("ButtonReset");
    EXPECT_EQ(locked(), kAllSix);
    EXPECT_FALSE(c().TimerForLabelA);
    EXPECT_THAT(events(), ElementsAre("t=1 sound ResetButton", "t=1 track Reset"));
    wait(0.19);
    EXPECT_EQ(question(), "");
    wait(0.01);
    ASSERT_EQ(question(), k.asked);
    EXPECT_EQ(locked(), k.lockedWhileAsked);
    ASSERT_FALSE(p().answer(k.count ? 1 : 0));
    EXPECT_EQ(locked(), "");
    EXPECT_EQ(c().totalA, k.count);
    wait(0.99);
    EXPECT_EQ(c().Ass, 0);
    wait(0.02);
    EXPECT_EQ(c().Ass, k.count && k.running ? 1 : 0);
    EXPECT_THAT(events("sound"), IsEmpty()) << "no fast clicking without a Yes";
  }
}

}  // namespace
}  // namespace zellick::test
