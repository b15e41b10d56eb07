#include <tuple>

#include "fixture.h"

namespace zellick::test {
namespace {

void setClockA(ZellickViewController& c, int h, int m, int s) {
  std::tie(c.Ahh, c.Amm, c.Ass) = std::tuple(h, m, s);
}

TEST_F(CounterTest, TicksCarrySecondsIntoMinutesIntoUnboundedHours) {
  const struct {
    int h, m, s;
    const char* after;  // one tick later
  } cases[] = {{0, 0, 0, "00:00:01"},    {0, 0, 59, "00:01:00"}, {0, 58, 59, "00:59:00"},
               {0, 59, 59, "01:00:00"},  {9, 5, 3, "09:05:04"},  {10, 0, 0, "10:00:01"},
               {99, 59, 59, "100:00:00"}};
  for (const auto& k : cases) {
    SCOPED_TRACE(k.after);
    fresh();
    setClockA(c(), k.h, k.m, k.s);
    p().touch("LabelTimer", 1);
    wait(0.999);
    EXPECT_EQ(c().Ass, k.s) << "starting adds nothing at once";
    wait(0.001);
    EXPECT_EQ(text("LabelTimer"), k.after);
  }
}

// A clock counts the seconds that really passed: a machine that slept (or a stopped process)
// shows them at the next tick, and the ticks stay on the clock's own whole seconds.
TEST_F(CounterTest, ClocksCountTheTimeThatReallyPassed) {
  p().touch("LabelTimer", 1);  // A starts at t=1
  wait(2.5);
  sim().suspend(30.4);
  wait(0.5);  // the tick due at t=4 comes, late by the suspension
  EXPECT_EQ(text("LabelTimer"), "00:00:33");
  wait(0.4);
  EXPECT_EQ(text("LabelTimer"), "00:00:33");
  wait(0.7);  // the next whole second of the clock, 34.0 s after its start
  EXPECT_EQ(text("LabelTimer"), "00:00:34");
}

TEST_F(CounterTest, RateTakesHoursAsMinutesAndTruncates) {
  const struct {
    int numerator, h, m, s, tap;
    const char* text;  // null: the label keeps what it had
  } cases[] = {
      {30, 0, 2, 0, 1, "15/min"},
      {30, 0, 2, 0, 2, "900/hour"},
      {7, 0, 0, 3, 3, "201600/day"},
      {10, 1, 0, 0, 2, "600/hour"},
      {120, 2, 0, 0, 1, "60/min"},  // two hours count as two minutes
      {9999, 0, 0, 1, 3, "863913600/day"},
      {-1, 0, 0, 7, 1, "-8/min"},
      {40000, 0, 0, 2, 3, "-419483648/day"},  // the product wraps at 32 bits
      {5, 0, 0, 0, 1, "0/min"},
      {5, 0, 0, 0, 2, "0/hour"},
      {5, 0, 0, 0, 3, "0/day"},
      {5, 0, 0, 0, 4, nullptr},
      {5, 0, 1, 0, 4, nullptr},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(::testing::Message() << "row " << &k - cases);
    c().totalForAvgA = k.numerator;
    setClockA(c(), k.h, k.m, k.s);
    c().tap = k.tap;
    p().label("LabelAvg")->setText("before");
    c().ShowOnLabel();
    const std::string want = k.text ? k.text : "before";
    EXPECT_EQ(text("LabelAvg"), want);
    // A worked-out rate is logged, e.g. "avg for min 15".
    std::vector<std::string> logs;
    const auto slash = want.find('/');
    if (k.text && k.h + k.m + k.s > 0)
      logs.push_back("t=1 log avg for " + want.substr(slash + 1) + " " + want.substr(0, slash));
    EXPECT_THAT(events("log"), ElementsAreArray(logs));
  }
}

TEST_F(CounterTest, RateUnitCyclesOnlyWhileTheClockShowsTime) {
  std::vector<int> seen;
  for (int i = 0; i < 7; ++i) {
    if (i == 2) c().tap = 4;  // not a unit: the next touch falls back to per minute
    if (i == 3) {
      c().Ass = 1;
      c().ShowOnLabel();
    }
    p().touch("LabelAvg", 1);
    seen.push_back(c().tap);
  }
  EXPECT_THAT(seen, ElementsAre(1, 1, 1, 2, 3, 1, 2));
  EXPECT_EQ(text("LabelAvg"), "0/hour");
}

TEST_F(CounterTest, SingleTapsStartAndStopTheShownMemorysClockOnly) {
  p().touch("baseImageView", 2);  // elsewhere: only the tracker hears of it
  EXPECT_THAT(events(), ElementsAre("t=1 track Touch began on timer"));
  p().touch("LabelTimer", 1);  // A's clock starts at t=1
  EXPECT_THAT(events("track"),
              ElementsAre("t=1 track Touch began on timer", "t=1 track Touch ended on timer"));
  EXPECT_EQ(c().isStartedTimerA, 1);
  EXPECT_TRUE(lit());
  wait(1);
  p().tap("ButtonB");
  EXPECT_EQ(text("LabelTimer"), "00:00:00");
  EXPECT_FALSE(lit());
  p().touch("LabelTimer", 1);  // B's starts at t=2; A's runs on
  EXPECT_TRUE(lit());
  wait(2.5);
  p().touch("LabelTimer", 1);  // B's stops at t=4.5, losing the fraction since its last tick
  EXPECT_FALSE(c().TimerForLabelB) << "or the next tap would stop it again";
  EXPECT_EQ(c().isStartedTimerB, 0);
  EXPECT_FALSE(lit());
  wait(2);
  EXPECT_EQ(text("LabelTimer"), "00:00:02");
  p().tap("ButtonA");
  EXPECT_EQ(text("LabelTimer"), "00:00:05");
  EXPECT_TRUE(lit());
}

TEST_F(CounterTest, DoubleTapStopsTheClockAndAsksToResetIt) {
  const struct {
    const char* name;
    bool running;         // before the double tap
    int seconds, answer;  // answer 0 is "Yes", 1 "No", -1 no question
    bool resumes;         // a second after the answer
  } cases[] = {
      {"RunningYes", true, 5, 0, false},
      {"RunningNo", true, 5, 1, true},
      {"StoppedYes", false, 5, 0, false},
      {"StoppedNo", false, 5, 1, false},
      {"StoppedAtZeroAsksNothing", false, 0, -1, false},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(k.name);
    fresh();
    c().total = c().totalA = c().totalForAvgA = 40;
    c().Ass = k.seconds;
    c().tap = 3;
    c().ShowOnLabel();
    if (k.running) p().touch("LabelTimer", 1);
    events();

    p().touch("LabelTimer", 1);  // a double tap arrives as a tap of 1, then one of 2
    p().touch("LabelTimer", 2);
    EXPECT_FALSE(c().TimerForLabelA);
    EXPECT_EQ(c().isStartedTimerA, 0);
    EXPECT_THAT(events("track"), Contains("t=1 track Reset Timer using Double tap"));
    const std::string asked = "RESET TIMER|Are you sure you want\nto reset the timer?|Yes No";
    ASSERT_EQ(question(), k.answer < 0 ? "" : asked);
    if (k.answer < 0) continue;
    ASSERT_FALSE(p().answer(k.answer));
    const bool yes = k.answer == 0;
    EXPECT_EQ(text("LabelTimer") + " " + text("LabelAvg"),
              yes ? "00:00:00 0/day" : "00:00:05 691200/day");
    EXPECT_EQ(c().totalForAvgA, yes ? 0 : 40);
    EXPECT_EQ(lit(), k.resumes);
    wait(0.99);
    EXPECT_EQ(c().Ass, yes ? 0 : 5);
    wait(0.02);
    EXPECT_EQ(c().Ass, yes ? 0 : k.resumes ? 6 : 5);
    EXPECT_EQ(c().totalA, 40) << "the clock's question never touches the count";
  }
}

}  // namespace
}  // namespace zellick::test
