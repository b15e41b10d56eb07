#include <cstdio>
#include <map>
#include <optional>

#include "fixture.h"
#include "support/faulty_defaults.h"

namespace zellick::test {
namespace {

using Saved = std::map<std::string, DefaultsValue>;

DefaultsArray ints(const std::vector<long long>& values) {
  return DefaultsArray(values.begin(), values.end());
}

class PersistenceTest : public CounterTest {
 protected:
  fake::MemoryDefaults& store() { return sim().world().store(); }
  double wallNow() { return sim().world().clock().now(); }
  // What the controller holds under each saved key but the date, as it would save it.
  Saved held() {
    ZellickViewController& k = c();
    return {{"Counters", ints({k.totalA, k.totalB, k.totalC})},
            {"Timers", ints({k.Ahh, k.Amm, k.Ass, k.Bhh, k.Bmm, k.Bss, k.Chh, k.Cmm, k.Css,
                             k.isStartedTimerA, k.isStartedTimerB, k.isStartedTimerC})},
            {"TotalForAvg", ints({k.totalForAvgA, k.totalForAvgB, k.totalForAvgC})},
            {"ButtonId", static_cast<long long>(k.buttonId)},
            {"TapValue", static_cast<long long>(k.tap)}};
  }
};

TEST_F(PersistenceTest, EveryFieldComesBackAndIsSavedAgainAsItWas) {
  Saved saved = {{"Counters", ints({1, 1234, 3})},
                 {"Timers", ints({123, 4, 5, 150, 7, 8, 0, 0, 9, 0, 1, 0})},  // B runs
                 {"TotalForAvg", ints({-2, 0, 7})},
                 {"ButtonId", 2LL},
                 {"TapValue", 3LL}};
  store().replaceAll(saved);
  sim().restart();
  events();
  EXPECT_EQ(held(), saved);
  wait(0.5);  // the redraw
  EXPECT_EQ(text("LabelTimer"), "150:07:08");
  EXPECT_TRUE(lit());
  EXPECT_EQ(p().button("ButtonA")->image() + " " + p().button("ButtonB")->image(),
            "a-up.png b-down.png");
  for (int n = 1, d = 1000; n <= 4; ++n, d /= 10)
    EXPECT_DOUBLE_EQ(wheel(n).frame().y, digitY(1234 / d % 10)) << "wheel " << n;
  EXPECT_THAT(events("move"), IsEmpty()) << "the redraw rolls from the count to itself";

  p().resign();
  EXPECT_FALSE(c().TimerForLabelB) << "stopped while away, but saved as running";
  saved["DateOfInactive"] = Date{wallNow()};
  saved["Count"] = 1LL;  // the delegate's activations share the store
  EXPECT_EQ(store().values(), saved);
}

TEST_F(PersistenceTest, CatchUpAddsTheTimeAwayToRunningClocksOnly) {
  const struct {
    const char* name;
    std::vector<long long> timers;
    double away;
    const char* a;  // A's clock then, the one shown; every other field is kept
    bool aRuns;
  } cases[] = {
      // 3725.9 s is 1:02:05 and a fraction; on 0:59:50 that carries into 2:01:55.
      {"WorkedExample", {0, 59, 50, 0, 0, 0, 0, 0, 30, 1, 0, 0}, 3725.9, "02:01:55", true},
      {"StartedAtZeroIsNotRestarted", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 0.5, "00:00:00", false},
      {"CarriesOnTheMinuteAndHour", {0, 59, 55, 0, 0, 0, 0, 0, 0, 1, 0, 0}, 3605, "02:00:00", true},
      {"AClockSetBack", {0, 10, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0}, -7200, "00:10:00", true},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(k.name);
    store().replaceAll({{"Timers", ints(k.timers)}, {"DateOfInactive", Date{wallNow() - k.away}}});
    sim().restart();
    auto want = k.timers;
    std::sscanf(k.a, "%lld:%lld:%lld", &want[0], &want[1], &want[2]);
    EXPECT_EQ(held()["Timers"], DefaultsValue(ints(want)));
    EXPECT_FALSE(c().TimerForLabelC);
    wait(0.5);
    EXPECT_EQ(text("LabelTimer"), k.a);
    EXPECT_EQ(lit(), k.aRuns);
  }
}

struct StoreCase {
  const char* name;
  bool intact;  // the other keys hold good values; else they are missing
  const char* key;
  DefaultsValue stored;
  std::optional<DefaultsValue> want = std::nullopt;  // what is held and saved next, if not `stored`
  const char* damage = nullptr;                      // what each report of damage says
  size_t reports = 1;
};

TEST_F(PersistenceTest, EveryDamagedValueIsSaidAndTheRestKept) {
  const Saved defaults = {{"Counters", ints({0, 0, 0})},
                          {"Timers", ints({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})},
                          {"TotalForAvg", ints({0, 0, 0})},
                          {"ButtonId", 1LL},
                          {"TapValue", 1LL}};
  const Saved intact = {{"Counters", ints({1, 2, 3})},
                        {"Timers", ints({4, 5, 6, 7, 8, 9, 10, 11, 12, 1, 0, 0})},  // A runs
                        {"TotalForAvg", ints({13, 14, 15})},
                        {"ButtonId", 2LL},
                        {"TapValue", 3LL},
                        {"DateOfInactive", Date{wallNow()}}};
  const StoreCase cases[] = {
      {"FirstStart", false, nullptr, {}},
      // A store with some keys lost the others: each gets its line.
      {"OnlyCounts", false, "Counters", ints({4, 5, 6}), std::nullopt, "is missing", 5},
      {"NoDateSoNothingIsCaughtUp", false, "Timers", ints({0, 0, 10, 0, 0, 0, 0, 0, 0, 1, 0, 0}),
       std::nullopt, "is missing", 5},
      {"ShortCounters", true, "Counters", ints({8}), ints({8, 0, 0}), "has 1 elements, not 3"},
      {"CountersNotAList", true, "Counters", std::string("x"), ints({0, 0, 0}), "not a list"},
      {"CountsAsText", true, "Counters", DefaultsArray{std::string("12"), std::string("x"), 3LL},
       ints({12, 0, 3}), "not a number"},
      {"CountsNotWhole", true, "Counters",
       DefaultsArray{std::string("3xyz"), std::string("2.9"), std::string("1e3")}, ints({3, 2, 1}),
       "not a whole number", 3},
      // Values out of range are taken as stored, and said.
      {"CountsBeyondFourDigits", true, "Counters", ints({12345, -4, 3}), std::nullopt,
       "outside 0..9999", 2},
      {"RatesOutOfRange", true, "TotalForAvg", ints({10000, -10000, 7}), std::nullopt,
       "outside -9999..9999", 2},
      {"LongTimers", true, "Timers", ints({4, 5, 6, 7, 8, 9, 10, 11, 12, 1, 0, 0, 99, 98}),
       ints({4, 5, 6, 7, 8, 9, 10, 11, 12, 1, 0, 0}), "the rest are ignored"},
      {"NoSuchMemory", true, "ButtonId", 7LL, std::nullopt, "outside 1..3"},
      {"NoSuchRateUnit", true, "TapValue", 9LL, std::nullopt, "outside 1..3"},
      // Nothing is caught up, so A's running clock keeps its time.
      {"DateAsText", true, "DateOfInactive", std::string("x"), std::nullopt, "not a date"},
  };
  for (const StoreCase& k : cases) {
    SCOPED_TRACE(k.name);
    Saved stored = k.intact ? intact : Saved{}, want = k.intact ? intact : defaults;
    if (k.key) stored[k.key] = k.stored;
    if (k.key && want.contains(k.key)) want[k.key] = k.want.value_or(k.stored);
    want.erase("DateOfInactive");
    store().replaceAll(stored);
    sim().restart();
    const auto logs = events("log");
    EXPECT_THAT(logs, Contains(HasSubstr(" log Saved ")).Times(k.damage ? k.reports : 0));
    if (k.damage) {
      EXPECT_THAT(logs, Contains(HasSubstr(k.damage)).Times(k.reports));
    }
    EXPECT_EQ(held(), want);
    p().resign();
    Saved saved = store().values();
    saved.erase("DateOfInactive");
    saved.erase("Count");
    EXPECT_EQ(saved, want) << "as saved next";
  }
}

// What a user changes is written within a second, a burst in one write stamped with its
// moment; a running clock's ticks alone write nothing. A kill then loses at most that second.
TEST_F(PersistenceTest, ChangesAreWrittenSoonAndSurviveAKill) {
  const int before = store().synchronizeCount();
  for (int i = 0; i < 5; ++i) p().tap("ButtonAdd");
  p().touch("LabelTimer", 1);
  wait(0.99);
  EXPECT_EQ(store().synchronizeCount(), before);
  wait(0.02);
  EXPECT_EQ(store().synchronizeCount(), before + 1);
  EXPECT_NEAR(std::get<Date>(*store().objectForKey("DateOfInactive")).seconds, wallNow() - 0.01,
              1e-6)
      << "stamped with the moment of the write";
  wait(30);
  EXPECT_EQ(store().synchronizeCount(), before + 1) << "ticks alone";
  p().tap("ButtonAdd");
  sim().restart();  // a kill at once: the sixth press is lost
  wait(0.5);
  EXPECT_EQ(c().totalA, 5);
  // Caught up from the write, which came just before the clock's first second.
  EXPECT_EQ(text("LabelTimer"), "00:00:30");
}

TEST_F(PersistenceTest, AFailedSaveLosesNothing) {
  FaultyDefaults faulty(store());
  sim().world().useDefaults(&faulty);
  sim().restart();
  p().tap("ButtonAdd");
  p().resign();  // 0001 is saved
  p().activate();
  p().tap("ButtonAdd");
  faulty.failNextSynchronize();
  faulty.dropNextWrites(3);
  p().resign();  // 0002 never reaches the store
  p().activate();
  EXPECT_EQ(c().totalA, 2) << "the older store must not undo the count";
  p().resign();
  sim().world().useDefaults(nullptr);
  sim().restart();
  EXPECT_EQ(c().totalA, 2);
}

}  // namespace
}  // namespace zellick::test
