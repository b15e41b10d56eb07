#include "fixture.h"

namespace zellick::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

const std::vector<std::string> kSix = {"ButtonReset", "ButtonAdd", "ButtonMinus",
                                       "ButtonA",     "ButtonB",   "ButtonC"};

class ResetTest : public CounterTest {
 protected:
  bool allSixEnabled(bool enabled) {
    for (const auto& name : kSix) {
      if (p().button(name)->userInteractionEnabled() != enabled) return false;
    }
    return true;
  }
  // Reset, then "Yes" as soon as the question shows (t=1.2).
  void confirmReset() {
    p().tap("ButtonReset");
    wait(0.2);
    ASSERT_TRUE(p().alerts().onScreen());
    ASSERT_FALSE(p().answer(0)) << "a question to answer";
  }
  int count(const std::vector<std::string>& lines, const std::string& suffix) {
    return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const std::string& l) {
      return l.ends_with(suffix);
    }));
  }
};

struct RollCase {
  const char* name;
  int from;
  std::vector<int> steps;  // the count after each 0.15 s step, the last one being 9999
  int fastClickPlays;
  int fastClickStops;
};

class ResetRollTest : public ResetTest, public ::testing::WithParamInterface<RollCase> {};

TEST_P(ResetRollTest, StepsTheSmallestDigitsThenRollsOverToZero) {
  const RollCase& k = GetParam();
  setCount(k.from);
  confirmReset();
  for (size_t i = 0; i < k.steps.size(); ++i) {
    wait(i == 0 ? 0 : 0.15);
    if (i + 1 < k.steps.size()) {
      EXPECT_EQ(c().total, k.steps[i]) << "step " << i;
      EXPECT_TRUE(allSixEnabled(false)) << "locked during the roll, step " << i;
    }
  }
  // The step that reaches 9999 also starts the final roll.
  const double finalAt = 1.2 + 0.15 * (k.steps.size() - 1);
  EXPECT_EQ(c().total, 0);
  EXPECT_TRUE(c().IsResetClicked);
  EXPECT_TRUE(allSixEnabled(true));
  EXPECT_EQ(c().totalA, 0);

  const auto all = events();
  std::vector<std::string> finalMoves;
  for (const auto& l : all) {
    if (l.starts_with("t=" + sim::formatNumber(finalAt) + " move") && l.ends_with("duration=0.5"))
      finalMoves.push_back(l);
  }
  EXPECT_THAT(finalMoves, ElementsAre(move(finalAt, "ImageView4", 10, 0.5),
                                      move(finalAt, "ImageView3", 10, 0.5),
                                      move(finalAt, "ImageView2", 10, 0.5),
                                      move(finalAt, "ImageView1", 10, 0.5)));
  EXPECT_EQ(count(all, "sound Counter Clicking Fast"), k.fastClickPlays);
  EXPECT_EQ(count(all, "stop Counter Clicking Fast"), k.fastClickStops);

  wait(0.48);  // the follow-ups set every wheel on its top "0" without a further roll
  EXPECT_THAT(events("move"), ElementsAre(move(finalAt + 0.48, "ImageView4", 0, 0),
                                          move(finalAt + 0.48, "ImageView3", 0, 0),
                                          move(finalAt + 0.48, "ImageView2", 0, 0),
                                          move(finalAt + 0.48, "ImageView1", 0, 0)));
  EXPECT_FALSE(c().IsResetClicked);
  EXPECT_FALSE(c().ResetTimer && c().ResetTimer->isValid());
}

INSTANTIATE_TEST_SUITE_P(
    Rolls, ResetRollTest,
    ::testing::Values(
        RollCase{"From1234", 1234, {2234, 3334, 4444, 5555, 6666, 7777, 8888, 9999}, 2, 0},
        RollCase{"From5000", 5000, {5111, 5222, 5333, 5444, 5555, 6666, 7777, 8888, 9999}, 6, 4},
        RollCase{"From4999", 4999, {5999, 6999, 7999, 8999, 9999}, 2, 0},
        RollCase{"From9999", 9999, {9999}, 1, 0}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ResetTest, RollFrom1234MovesOnlyTheWheelsThatChange) {
  setCount(1234);
  confirmReset();
  wait(0);
  EXPECT_THAT(events("move"), ElementsAre(move(1.2, "ImageView1", 2, 0.3)));
  wait(0.15);  // 2234 -> 3334
  EXPECT_THAT(events("move"), ElementsAre(move(1.35, "ImageView2", 3, 0.3),
                                          move(1.35, "ImageView1", 3, 0.3)));
}

TEST_F(ResetTest, ResetLocksPausesTheClockAndAsksAfterAFifthOfASecond) {
  setCount(7);
  p().touch("LabelTimer", 1);
  events();
  p().tap("ButtonReset");
  EXPECT_TRUE(allSixEnabled(false));
  EXPECT_FALSE(c().TimerForLabelA);
  EXPECT_TRUE(c().isTimerA);
  EXPECT_THAT(events(), ElementsAre("t=1 sound ResetButton", "t=1 track Reset"));
  wait(0.19);
  EXPECT_FALSE(p().alerts().onScreen());
  wait(0.01);
  ASSERT_TRUE(p().alerts().onScreen());
  EXPECT_EQ(c().alertView->tag(), kResetCounterAlertTag);
  EXPECT_EQ(c().alertView->title, "RESET COUNTER");
  EXPECT_EQ(c().alertView->message, "Are you sure you want \nto reset the counter?");
  EXPECT_THAT(c().alertView->buttons, ElementsAre("Yes", "No"));
  EXPECT_TRUE(c().player) << "the fast clicking is prepared, not yet playing";
  EXPECT_THAT(events("sound"), ::testing::IsEmpty());
}

TEST_F(ResetTest, AtZeroOnlyNotifiesAndLeavesTheClockStopped) {
  p().touch("LabelTimer", 1);
  p().tap("ButtonReset");
  wait(0.2);
  ASSERT_TRUE(p().alerts().onScreen());
  EXPECT_EQ(c().alertView->title, "NOTICE");
  EXPECT_EQ(c().alertView->message, "Counter is already reset to 0000");
  EXPECT_THAT(c().alertView->buttons, ElementsAre("OK"));
  EXPECT_TRUE(allSixEnabled(true));
  p().answer(0);
  wait(3);
  EXPECT_FALSE(c().TimerForLabelA);
  EXPECT_TRUE(c().isTimerA);
  EXPECT_EQ(c().Ass, 0);
}

TEST_F(ResetTest, YesClearsTheMemoryAndItsClock) {
  setCount(12);
  c().tap = 2;
  c().Amm = 3;
  c().totalForAvgA = 12;
  p().touch("LabelTimer", 1);
  confirmReset();
  EXPECT_EQ(c().totalA, 0);
  EXPECT_EQ(c().Amm, 0);
  EXPECT_EQ(c().totalForAvgA, 0);
  EXPECT_FALSE(c().isTimerA);
  EXPECT_EQ(p().label("LabelTimer")->text(), "00:00:00");
  EXPECT_EQ(p().label("LabelAvg")->text(), "0/hour");
  EXPECT_EQ(p().label("LabelTimer")->textColor(), Color::Gray);
  EXPECT_EQ(c().player, nullptr);
  EXPECT_EQ(c().total, 12) << "the roll takes the count to zero, not the answer";
}

TEST_F(ResetTest, NoResumesARunningClockOneSecondLater) {
  setCount(5);
  p().touch("LabelTimer", 1);
  p().tap("ButtonReset");
  wait(0.2);
  p().answer(1);
  EXPECT_TRUE(allSixEnabled(true));
  EXPECT_EQ(c().total, 5);
  ASSERT_TRUE(c().TimerForLabelA);
  wait(0.95);
  EXPECT_EQ(c().Ass, 0);
  wait(0.1);
  EXPECT_EQ(c().Ass, 1);
}

TEST_F(ResetTest, NoLeavesAStoppedClockStopped) {
  setCount(5);
  p().tap("ButtonReset");
  wait(0.2);
  p().answer(1);
  wait(2);
  EXPECT_FALSE(c().TimerForLabelA);
}

}  // namespace
}  // namespace zellick::test
