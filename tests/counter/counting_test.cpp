#include "fixture.h"

namespace zellick::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct CountCase {
  const char* name;
  bool add;  // Add, else Minus
  int buttonId;
  int total;
  int previousTotal;
  int numerator;
  int wantTotal;
  int wantPrevious;
  int wantNumerator;  // of the current memory (memory A's for an unknown memory number)
};

class CountingTest : public CounterTest, public ::testing::WithParamInterface<CountCase> {};

int32_t& numeratorOf(ZellickViewController& c, int id) {
  return id == 2 ? c.totalForAvgB : id == 3 ? c.totalForAvgC : c.totalForAvgA;
}

TEST_P(CountingTest, WrapsAndMovesTheRateNumerator) {
  const CountCase& k = GetParam();
  c().buttonId = k.buttonId;
  c().total = k.total;
  c().previousTotal = k.previousTotal;
  numeratorOf(c(), k.buttonId) = k.numerator;

  p().press(k.add ? "ButtonAdd" : "ButtonMinus");

  EXPECT_EQ(c().total, k.wantTotal);
  EXPECT_EQ(c().value, 0) << "Show consumes value";
  EXPECT_EQ(c().previousTotal, k.wantPrevious);
  EXPECT_EQ(numeratorOf(c(), k.buttonId), k.wantNumerator);
  // The count copy is the current memory's, or C's for an unknown memory number.
  const int32_t copy = k.buttonId == 1 ? c().totalA : k.buttonId == 2 ? c().totalB : c().totalC;
  EXPECT_EQ(copy, k.wantTotal);
  EXPECT_FALSE(c().IsMinusClicked);
  EXPECT_THAT(events("track"), ElementsAre("t=1 track " + std::string(k.add ? "Count" : "Reduce")));
}

INSTANTIATE_TEST_SUITE_P(
    Counting, CountingTest,
    ::testing::Values(
        CountCase{"AddCounts", true, 1, 5, 5, 3, 6, 5, 4},
        CountCase{"AddWrapsAndRestartsTheRate", true, 1, 9999, 9998, 40, 0, 9999, 0},
        CountCase{"AddAfterWrapRollsFromZero", true, 1, 0, 9999, 0, 1, 0, 1},
        CountCase{"AddOnB", true, 2, 7, 7, 7, 8, 7, 8},
        CountCase{"AddOnC", true, 3, 9998, 9998, 1, 9999, 9998, 2},
        CountCase{"AddWithNoMemoryWritesCOnly", true, 0, 5, 5, 11, 6, 5, 11},
        CountCase{"MinusCounts", false, 1, 5, 5, 3, 4, 5, 2},
        CountCase{"MinusWrapsKeepingTheRate", false, 1, 0, 0, 3, 9999, 10000, 3},
        CountCase{"MinusTakesNumeratorBelowZero", false, 1, 1, 1, 0, 0, 1, -1},
        CountCase{"MinusOnB", false, 2, 10, 10, 4, 9, 10, 3},
        CountCase{"MinusOnC", false, 3, 1, 1, 1, 0, 1, 0},
        CountCase{"MinusWithNoMemoryWritesCOnly", false, 7, 3, 3, 9, 2, 3, 9}),
    [](const auto& info) { return std::string(info.param.name); });

struct LockCase {
  const char* control;
  int buttonId;
  std::vector<std::string> locked;
};

class LockTest : public CounterTest, public ::testing::WithParamInterface<LockCase> {};

TEST_P(LockTest, PressLocksOthersAndReleaseLiftsExactlyThose) {
  const LockCase& k = GetParam();
  c().buttonId = k.buttonId;
  const std::vector<std::string> all = {"ButtonAdd", "ButtonMinus", "ButtonReset", "ButtonA",
                                        "ButtonB",   "ButtonC",     "ButtonInfo"};
  for (const auto& name : all) p().button(name)->setUserInteractionEnabled(true);

  p().press(k.control);
  for (const auto& name : all) {
    const bool locked = std::find(k.locked.begin(), k.locked.end(), name) != k.locked.end();
    EXPECT_EQ(p().button(name)->userInteractionEnabled(), !locked) << name;
    // A locked control ignores a press.
    if (locked) {
      EXPECT_EQ(p().press(name), sim::InputResult::Ignored) << name;
    }
  }
  p().release(k.control);
  for (const auto& name : all) EXPECT_TRUE(p().button(name)->userInteractionEnabled()) << name;
}

INSTANTIATE_TEST_SUITE_P(
    Locks, LockTest,
    ::testing::Values(
        LockCase{"ButtonAdd", 1, {"ButtonMinus", "ButtonReset", "ButtonB", "ButtonC"}},
        LockCase{"ButtonAdd", 2, {"ButtonMinus", "ButtonReset", "ButtonA", "ButtonC"}},
        LockCase{"ButtonAdd", 9, {"ButtonMinus", "ButtonReset", "ButtonA", "ButtonB"}},
        LockCase{"ButtonMinus", 3, {"ButtonAdd", "ButtonReset", "ButtonA", "ButtonB"}}));

TEST_F(CounterTest, AddClicksOnlyWhileHighlightedAndReleaseClicksBack) {
  p().press("ButtonAdd");
  p().release("ButtonAdd");
  c().Add();  // not highlighted: counts silently
  EXPECT_EQ(c().total, 2);
  EXPECT_THAT(events("sound"), ElementsAre("t=1 sound Counter Click2", "t=1 sound ButtonLetUp"));
  EXPECT_EQ(c().player, nullptr);
}

TEST_F(CounterTest, MinusOnANegativeCountOnlyLocks) {
  c().total = -1;
  p().press("ButtonMinus");
  EXPECT_EQ(c().total, -1);
  EXPECT_FALSE(c().IsMinusClicked);
  EXPECT_THAT(events("sound"), IsEmpty());
  EXPECT_FALSE(p().button("ButtonAdd")->userInteractionEnabled());
  p().release("ButtonMinus");
  EXPECT_TRUE(p().button("ButtonAdd")->userInteractionEnabled());
  EXPECT_THAT(events("sound"), IsEmpty()) << "Minus releases silently";
}

TEST_F(CounterTest, QuickPressesOverlapTheirClicks) {
  for (int i = 0; i < 10; ++i) {
    p().tap("ButtonAdd");
    wait(0.03);
  }
  EXPECT_EQ(c().total, 10);
  const auto sounds = events("sound");
  EXPECT_EQ(std::count_if(sounds.begin(), sounds.end(),
                          [](const std::string& s) { return s.ends_with("Counter Click2"); }),
            10);
  EXPECT_EQ(std::count_if(sounds.begin(), sounds.end(),
                          [](const std::string& s) { return s.find(" stop ") != std::string::npos; }),
            0)
      << "no click cuts another off";
}

TEST_F(CounterTest, InfoTracksThenPresentsTheMoreScreen) {
  p().tap("ButtonInfo");
  const auto e = events();
  EXPECT_THAT(e, ElementsAre("t=1 track Info", "t=1 present moreViewController"));
}

}  // namespace
}  // namespace zellick::test
