#include "fixture.h"

namespace zellick::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct TickCase {
  int h, m, s;
  int wantH, wantM, wantS;
  const char* text;
};

class TickTest : public CounterTest, public ::testing::WithParamInterface<TickCase> {};

TEST_P(TickTest, CarriesSecondsIntoMinutesIntoUnboundedHours) {
  const TickCase& k = GetParam();
  c().Ahh = k.h;
  c().Amm = k.m;
  c().Ass = k.s;
  p().touch("LabelTimer", 1);
  wait(0.999);
  EXPECT_EQ(c().Ass, k.s) << "starting adds nothing at once";
  wait(0.001);
  EXPECT_EQ(c().Ahh, k.wantH);
  EXPECT_EQ(c().Amm, k.wantM);
  EXPECT_EQ(c().Ass, k.wantS);
  EXPECT_EQ(p().label("LabelTimer")->text(), k.text);
}

INSTANTIATE_TEST_SUITE_P(Ticks, TickTest,
                         ::testing::Values(TickCase{0, 0, 0, 0, 0, 1, "00:00:01"},
                                           TickCase{0, 0, 59, 0, 1, 0, "00:01:00"},
                                           TickCase{0, 59, 59, 1, 0, 0, "01:00:00"},
                                           TickCase{9, 5, 3, 9, 5, 4, "09:05:04"},
                                           TickCase{10, 0, 0, 10, 0, 1, "10:00:01"},
                                           TickCase{99, 59, 59, 100, 0, 0, "100:00:00"}));

struct RateCase {
  int numerator;
  int h, m, s;
  int tap;
  const char* text;  // null: the label keeps what it had
  const char* logLine;
};

class RateTest : public CounterTest, public ::testing::WithParamInterface<RateCase> {};

TEST_P(RateTest, RateTakesHoursAsMinutesAndTruncates) {
  const RateCase& k = GetParam();
  c().totalForAvgA = k.numerator;
  c().Ahh = k.h;
  c().Amm = k.m;
  c().Ass = k.s;
  c().tap = k.tap;
  p().label("LabelAvg")->setText("before");
  c().ShowOnLabel();
  EXPECT_EQ(p().label("LabelAvg")->text(), k.text ? k.text : "before");
  const auto logs = events("log");
  if (k.logLine) {
    EXPECT_THAT(logs, ElementsAre(std::string("t=1 log ") + k.logLine));
  } else {
    EXPECT_THAT(logs, IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rates, RateTest,
    ::testing::Values(RateCase{30, 0, 2, 0, 1, "15/min", "avg for min 15"},
                      RateCase{30, 0, 2, 0, 2, "900/hour", "avg for hour 900"},
                      RateCase{7, 0, 0, 3, 3, "201600/day", "avg for day 201600"},
                      RateCase{10, 1, 0, 0, 2, "600/hour", "avg for hour 600"},
                      RateCase{120, 2, 0, 0, 1, "60/min", "avg for min 60"},
                      RateCase{9999, 0, 0, 1, 3, "863913600/day", "avg for day 863913600"},
                      RateCase{-1, 0, 0, 7, 1, "-8/min", "avg for min -8"},
                      RateCase{40000, 0, 0, 1, 3, "-838967296/day", "avg for day -838967296"},
                      RateCase{5, 0, 0, 0, 1, "0/min", nullptr},
                      RateCase{5, 0, 0, 0, 2, "0/hour", nullptr},
                      RateCase{5, 0, 0, 0, 3, "0/day", nullptr},
                      RateCase{5, 0, 0, 0, 4, nullptr, nullptr},
                      RateCase{5, 0, 1, 0, 4, nullptr, nullptr}));

TEST_F(CounterTest, RateUnitCyclesOnlyWhileTheClockShowsTime) {
  std::vector<int> seen;
  for (int i = 0; i < 2; ++i) {
    p().touch("LabelAvg", 1);
    seen.push_back(c().tap);
  }
  c().tap = 4;
  p().touch("LabelAvg", 1);
  seen.push_back(c().tap);
  c().Ass = 1;
  c().ShowOnLabel();
  for (int i = 0; i < 4; ++i) {
    p().touch("LabelAvg", 1);
    seen.push_back(c().tap);
  }
  EXPECT_THAT(seen, ElementsAre(1, 1, 1, 2, 3, 1, 2));
  EXPECT_EQ(p().label("LabelAvg")->text(), "0/hour");
}

TEST_F(CounterTest, SingleTapsStartAndStopTheShownClock) {
  p().touch("LabelTimer", 1);
  EXPECT_THAT(events(), ElementsAre("t=1 track Touch began on timer", "t=1 log tapCount 1",
                                    "t=1 log continue timer", "t=1 log tapCount 1",
                                    "t=1 track Touch ended on timer"));
  EXPECT_TRUE(c().TimerForLabelA);
  EXPECT_EQ(c().isStartedTimerA, 1);
  EXPECT_TRUE(c().isTimerA);
  EXPECT_EQ(p().label("LabelTimer")->textColor(), Color::White);
  EXPECT_EQ(p().label("LabelAvg")->textColor(), Color::White);
  wait(2.5);
  p().touch("LabelTimer", 1);
  EXPECT_FALSE(c().TimerForLabelA);
  EXPECT_EQ(c().isStartedTimerA, 0);
  EXPECT_FALSE(c().isTimerA);
  EXPECT_EQ(p().label("LabelTimer")->textColor(), Color::Gray);
  wait(5);
  EXPECT_EQ(c().Ass, 2) << "the part second since the last tick is lost";
}

TEST_F(CounterTest, TouchElsewhereOnlyTellsTheTracker) {
  p().touch("baseImageView", 2);
  EXPECT_THAT(events(), ElementsAre("t=1 track Touch began on timer"));
  EXPECT_FALSE(c().TimerForLabelA);
}

struct DoubleTapCase {
  const char* name;
  bool runningBefore;
  int seconds;  // the clock before the double tap
  bool asks;
  int answer;
  bool runningAfter;  // one second after the answer
  Color colorAfter;
  int secondsAfterAnswer;  // A's seconds just after the answer
};

class DoubleTapTest : public CounterTest, public ::testing::WithParamInterface<DoubleTapCase> {};

TEST_P(DoubleTapTest, StopsAndAsksAboutTheClock) {
  const DoubleTapCase& k = GetParam();
  c().Ass = k.seconds;
  c().ShowOnLabel();
  if (k.runningBefore) p().touch("LabelTimer", 1);
  events();

  p().touch("LabelTimer", 1);  // a double tap arrives as a tap of 1, then one of 2
  p().touch("LabelTimer", 2);
  EXPECT_FALSE(c().TimerForLabelA);
  EXPECT_EQ(c().isStartedTimerA, 0);
  EXPECT_THAT(events("track"), Contains("t=1 track Reset Timer using Double tap"));
  if (!k.asks) {
    EXPECT_FALSE(p().alerts().onScreen());
    return;
  }
  ASSERT_TRUE(p().alerts().onScreen());
  EXPECT_EQ(c().alertView->tag(), kResetTimerAlertTag);
  EXPECT_EQ(c().alertView->title, "RESET TIMER");
  EXPECT_EQ(c().alertView->message, "Are you sure you want\nto reset the timer?");
  EXPECT_THAT(c().alertView->buttons, ElementsAre("Yes", "No"));

  c().total = 9;
  ASSERT_FALSE(p().answer(k.answer));
  EXPECT_EQ(c().Ass, k.secondsAfterAnswer);
  EXPECT_EQ(p().label("LabelTimer")->textColor(), k.colorAfter);
  EXPECT_EQ(p().label("LabelAvg")->textColor(), k.colorAfter);
  wait(1);
  EXPECT_EQ(static_cast<bool>(c().TimerForLabelA), k.runningAfter);
  EXPECT_EQ(c().total, 9) << "the clock's question never touches the count";
}

INSTANTIATE_TEST_SUITE_P(
    DoubleTaps, DoubleTapTest,
    ::testing::Values(DoubleTapCase{"RunningYes", true, 5, true, 0, false, Color::Gray, 0},
                      DoubleTapCase{"RunningNo", true, 5, true, 1, true, Color::White, 5},
                      DoubleTapCase{"StoppedYes", false, 5, true, 0, false, Color::Gray, 0},
                      DoubleTapCase{"StoppedNo", false, 5, true, 1, false, Color::Gray, 5},
                      DoubleTapCase{"StoppedAtZero", false, 0, false, 0, false, Color::Gray, 0}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(CounterTest, YesToResetTimerKeepsTheCountAndShowsTheZeroRate) {
  c().total = c().totalA = 40;
  c().totalForAvgA = 40;
  c().Amm = 2;
  c().tap = 3;
  c().ShowOnLabel();
  p().touch("LabelTimer", 2);
  ASSERT_FALSE(p().answer(0));
  EXPECT_EQ(c().totalA, 40);
  EXPECT_EQ(c().totalForAvgA, 0);
  EXPECT_EQ(p().label("LabelTimer")->text(), "00:00:00");
  EXPECT_EQ(p().label("LabelAvg")->text(), "0/day");
  EXPECT_THAT(events("log"), Contains("t=1 log Double tap on buttonid 1"));
}

TEST_F(CounterTest, ATapOnTheClockOnlyTouchesTheShownMemory) {
  p().touch("LabelTimer", 1);  // A runs
  p().tap("ButtonB");
  p().touch("LabelTimer", 1);  // B runs too
  p().touch("LabelTimer", 1);  // B stops again
  wait(3);
  EXPECT_EQ(c().Ass, 3);
  EXPECT_EQ(c().Bss, 0);
}

}  // namespace
}  // namespace zellick::test
