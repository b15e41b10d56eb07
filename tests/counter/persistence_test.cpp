#include "fixture.h"
#include "support/faulty_defaults.h"

namespace zellick::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

DefaultsArray ints(std::initializer_list<long long> values) {
  DefaultsArray a;
  for (long long v : values) a.emplace_back(v);
  return a;
}

class PersistenceTest : public CounterTest {
 protected:
  using MemoryStore = sim::MemoryDefaults;
  MemoryStore& store() { return sim_.world().store(); }
  double wallNow() { return sim_.world().clock().now(); }
  // A new process over the same saved defaults, settled past its redraw.
  void restart() {
    sim_.restart();
    wait(1);
  }
  std::vector<std::string> logs() {
    std::vector<std::string> out;
    for (const auto& e : events("log")) out.push_back(e.substr(e.find(" log ") + 5));
    return out;
  }
};

TEST_F(PersistenceTest, ResignSavesTheSixKeysWithTheirTypes) {
  c().totalA = 1;
  c().totalB = 2;
  c().totalC = 3;
  c().Ahh = 123;
  c().Amm = 4;
  c().Ass = 5;
  c().Css = 9;
  c().isStartedTimerB = 1;
  c().totalForAvgA = -2;
  c().totalForAvgC = 7;
  c().buttonId = 3;
  c().tap = 2;
  p().resign();

  EXPECT_EQ(store().objectForKey("Counters"), DefaultsValue(ints({1, 2, 3})));
  EXPECT_EQ(store().objectForKey("Timers"),
            DefaultsValue(ints({123, 4, 5, 0, 0, 0, 0, 0, 9, 0, 1, 0})));
  EXPECT_EQ(store().objectForKey("TotalForAvg"), DefaultsValue(ints({-2, 0, 7})));
  EXPECT_EQ(store().objectForKey("ButtonId"), DefaultsValue(3LL));
  EXPECT_EQ(store().objectForKey("TapValue"), DefaultsValue(2LL));
  EXPECT_EQ(store().objectForKey("DateOfInactive"), DefaultsValue(Date{wallNow()}));
  EXPECT_GE(store().synchronizeCount(), 1);
  EXPECT_THAT(logs(), Contains("App resign active"));
}

TEST_F(PersistenceTest, RestartRestoresEveryField) {
  p().tap("ButtonB");
  for (int i = 0; i < 3; ++i) p().tap("ButtonAdd");
  c().Bhh = 150;  // past 99 hours
  c().Bmm = 7;
  c().Bss = 8;
  c().Ahh = 1;
  c().totalA = 9876;
  c().totalForAvgC = 11;
  c().tap = 3;
  p().resign();
  restart();

  EXPECT_EQ(c().buttonId, 2);
  EXPECT_EQ(c().total, 3);
  EXPECT_EQ(c().totalA, 9876);
  EXPECT_EQ(c().totalB, 3);
  EXPECT_EQ(c().totalForAvgB, 3);
  EXPECT_EQ(c().totalForAvgC, 11);
  EXPECT_EQ(c().Ahh, 1);
  EXPECT_EQ(c().Bhh, 150);
  EXPECT_EQ(c().Bmm, 7);
  EXPECT_EQ(c().Bss, 8);
  EXPECT_EQ(c().tap, 3);
  EXPECT_EQ(p().label("LabelTimer")->text(), "150:07:08");
  EXPECT_EQ(p().button("ButtonB")->image(), "b-down.png");
  EXPECT_DOUBLE_EQ(c().ImageView4->frame().y, digitY(3));
}

TEST_F(PersistenceTest, FirstStartUsesDefaultsAndCatchesNothingUp) {
  sim::Simulation fresh;
  fresh.start();
  std::vector<std::string> lines;
  for (const auto& e : fresh.world().events().takeNew()) lines.push_back(e);
  ZellickViewController& f = fresh.process().controller();
  EXPECT_EQ(f.CounterArray, ints({0, 0, 0}));
  EXPECT_EQ(f.TimerArray, ints({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(f.TotalForAvgArray, ints({0, 0, 0}));
  EXPECT_EQ(f.buttonId, 1);
  EXPECT_EQ(f.tap, 1);
  EXPECT_FALSE(f.dateOfInactive);
  EXPECT_THAT(lines, Contains("t=0 log Counters Default"));
  EXPECT_THAT(lines, Not(Contains(HasSubstr("timediff"))));
}

TEST_F(PersistenceTest, AStoreWithOnlyCountsRestoresThemAndZeroesTheRest) {
  store().setObject("Counters", ints({4, 5, 6}));
  restart();
  EXPECT_EQ(c().totalA, 4);
  EXPECT_EQ(c().totalC, 6);
  EXPECT_EQ(c().total, 4);
  EXPECT_EQ(c().Ahh + c().Amm + c().Ass, 0);
  EXPECT_THAT(logs(), Contains("Counters User value"));
}

TEST_F(PersistenceTest, CatchUpAddsTheTimeAwayToRunningClocksOnly) {
  store().setObject("Timers", ints({0, 59, 50, 0, 0, 0, 0, 0, 30, 1, 0, 0}));
  store().setObject("DateOfInactive", Date{wallNow() - 3725.9});
  restart();
  EXPECT_EQ(c().Ahh, 2);
  EXPECT_EQ(c().Amm, 1);
  EXPECT_EQ(c().Ass, 55 + 1) << "and it runs on: one tick during the settling second";
  EXPECT_EQ(c().Css, 30) << "a stopped clock keeps its time";
  EXPECT_TRUE(c().TimerForLabelA);
  EXPECT_FALSE(c().TimerForLabelC);
  EXPECT_EQ(p().label("LabelTimer")->textColor(), Color::White);
  EXPECT_THAT(logs(), Contains(HasSubstr("hh = 1, mm: 2, ss: 5")));
}

TEST_F(PersistenceTest, CatchUpShowsTheWorkedExampleOnTheRedraw) {
  store().setObject("Timers", ints({0, 59, 50, 0, 0, 0, 0, 0, 0, 1, 0, 0}));
  store().setObject("DateOfInactive", Date{wallNow() - 3725.9});
  sim_.restart();
  wait(0.5);
  EXPECT_EQ(p().label("LabelTimer")->text(), "02:01:55");
}

TEST_F(PersistenceTest, SleepWhileInactiveIsCaughtUpOnActivation) {
  p().touch("LabelTimer", 1);
  wait(3);
  p().resign();
  EXPECT_FALSE(c().TimerForLabelA);
  EXPECT_EQ(c().isStartedTimerA, 1);
  sim_.sleep(125);
  p().activate();
  EXPECT_EQ(c().Amm, 2);
  EXPECT_EQ(c().Ass, 8);
  EXPECT_TRUE(c().TimerForLabelA);
}

TEST_F(PersistenceTest, AStartedClockStillAtZeroIsNotRestarted) {
  store().setObject("Timers", ints({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
  store().setObject("DateOfInactive", Date{wallNow() - 0.5});
  restart();
  EXPECT_FALSE(c().TimerForLabelC);
  EXPECT_EQ(c().Css, 0);
}

TEST_F(PersistenceTest, AClockSetBackDoesNotWindClocksBackwards) {
  store().setObject("Timers", ints({0, 10, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0}));
  store().setObject("DateOfInactive", Date{wallNow() + 7200});
  restart();
  EXPECT_EQ(c().Amm, 10);
  EXPECT_EQ(c().Ahh, 0);
}

struct DamagedCase {
  const char* name;
  const char* key;
  DefaultsValue stored;
  int a, b, c;  // what the three affected fields read as
};

class DamagedStoreTest : public PersistenceTest,
                         public ::testing::WithParamInterface<DamagedCase> {};

TEST_P(DamagedStoreTest, LogsAndKeepsEverythingThatCanBeRead) {
  const DamagedCase& k = GetParam();
  store().setObject("Counters", ints({1, 2, 3}));
  store().setObject("Timers", ints({4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0}));
  store().setObject("TotalForAvg", ints({13, 14, 15}));
  store().setObject("ButtonId", 2LL);
  store().setObject("TapValue", 3LL);
  store().setObject(k.key, k.stored);
  restart();

  const std::string key = k.key;
  int32_t got[3];
  if (key == "Counters") {
    got[0] = c().totalA, got[1] = c().totalB, got[2] = c().totalC;
  } else if (key == "Timers") {
    got[0] = c().Ahh, got[1] = c().Amm, got[2] = c().Css;
  } else {
    got[0] = c().totalForAvgA, got[1] = c().totalForAvgB, got[2] = c().totalForAvgC;
  }
  EXPECT_THAT(got, ElementsAre(k.a, k.b, k.c));
  EXPECT_THAT(logs(), Contains(HasSubstr("Saved \"" + key + "\" is damaged")));
  // Every other key still reads back whole.
  if (key != "Counters") {
    EXPECT_EQ(c().totalB, 2);
  }
  if (key != "TotalForAvg") {
    EXPECT_EQ(c().totalForAvgC, 15);
  }
  EXPECT_EQ(c().buttonId, 2);
  EXPECT_EQ(c().tap, 3);

  // The next save writes whole arrays again.
  p().resign();
  const auto saved = store().arrayForKey(key);
  ASSERT_TRUE(saved);
  EXPECT_EQ(saved->size(), key == "Timers" ? 12u : 3u);
}

INSTANTIATE_TEST_SUITE_P(
    Damaged, DamagedStoreTest,
    ::testing::Values(
        DamagedCase{"ShortCounters", "Counters", ints({8}), 8, 0, 0},
        DamagedCase{"CountersNotAList", "Counters", DefaultsValue(std::string("garbage")), 0, 0, 0},
        DamagedCase{"CountsAsText", "Counters",
                    DefaultsValue(DefaultsArray{std::string("12"), std::string("x"), 3LL}), 12, 0, 3},
        DamagedCase{"LongTimers", "Timers",
                    ints({4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0, 99, 98}), 4, 5, 12},
        DamagedCase{"ShortTimers", "Timers", ints({4, 5}), 4, 5, 0},
        DamagedCase{"TimerHoldsAList", "Timers",
                    DefaultsValue(DefaultsArray{DefaultsArray{}, 5LL, 6LL, 7LL, 8LL, 9LL, 10LL,
                                                11LL, 12LL, 0LL, 0LL, 0LL}),
                    0, 5, 12},
        DamagedCase{"EmptyTotalForAvg", "TotalForAvg", DefaultsValue(DefaultsArray{}), 0, 0, 0}),
    [](const auto& info) { return std::string(info.param.name); });

struct BadScalarCase {
  const char* key;
  DefaultsValue stored;
};

class BadScalarTest : public PersistenceTest, public ::testing::WithParamInterface<BadScalarCase> {};

TEST_P(BadScalarTest, FallsBackSafelyAndNeverTouchesMemoryC) {
  store().setObject("Counters", ints({1, 2, 3}));
  store().setObject(GetParam().key, GetParam().stored);
  restart();
  EXPECT_EQ(c().buttonId, 1);
  EXPECT_EQ(c().tap, 1);
  p().tap("ButtonAdd");
  EXPECT_EQ(c().totalA, 2);
  EXPECT_EQ(c().totalC, 3);
}

INSTANTIATE_TEST_SUITE_P(BadScalars, BadScalarTest,
                         ::testing::Values(BadScalarCase{"ButtonId", 7LL},
                                           BadScalarCase{"ButtonId", std::string("B")},
                                           BadScalarCase{"TapValue", 9LL},
                                           BadScalarCase{"DateOfInactive", std::string("yesterday")}));

TEST_F(PersistenceTest, ACountBeyondFourDigitsReadsAsZero) {
  store().setObject("Counters", ints({12345, -4, 3}));
  restart();
  EXPECT_EQ(c().totalA, 0);
  EXPECT_EQ(c().totalB, 0);
  EXPECT_EQ(c().totalC, 3);
  EXPECT_THAT(logs(), Contains(HasSubstr("outside 0000-9999")));
}

TEST_F(PersistenceTest, AFailedSaveLosesNothing) {
  testing::FaultyDefaults faulty(store());
  sim_.world().useDefaults(&faulty);
  restart();
  p().tap("ButtonAdd");
  p().resign();  // 0001 is saved
  p().activate();
  p().tap("ButtonAdd");
  faulty.failNextSynchronize();
  faulty.dropNextWrites(3);
  p().resign();  // 0002 never reaches the store
  EXPECT_THAT(logs(), Contains(HasSubstr("could not be written")));
  p().activate();
  EXPECT_EQ(c().totalA, 2) << "the older store must not undo the count";
  p().resign();
  sim_.world().useDefaults(nullptr);
  restart();
  EXPECT_EQ(c().totalA, 2);
}

}  // namespace
}  // namespace zellick::test
