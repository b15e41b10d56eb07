#include "fixture.h"

namespace zellick::test {
namespace {

struct CountCase {
  const char* name;
  bool add;              // else Minus
  int id;                // the current memory; 0 and 7 name none
  int total, numerator;  // the count and the current memory's rate numerator, before and after
  int wantTotal, wantNumerator;
  const char* locked;  // while the button is held
};

TEST_F(CounterTest, AddAndMinusWrapMoveTheRateAndLockTheOthersWhileHeld) {
  const CountCase cases[] = {
      {"Add", true, 1, 5, 3, 6, 4, "Minus Reset B C"},
      {"AddWrapsAndRestartsTheRate", true, 1, 9999, 40, 0, 0, "Minus Reset B C"},
      {"AddOnB", true, 2, 7, 7, 8, 8, "Minus Reset A C"},
      {"AddOnC", true, 3, 9998, 1, 9999, 2, "Minus Reset A B"},
      {"AddWithNoMemoryWritesCOnly", true, 0, 5, 11, 6, 11, "Minus Reset A B"},
      {"Minus", false, 1, 5, 3, 4, 2, "Add Reset B C"},
      {"MinusWrapsKeepingTheRate", false, 1, 0, 3, 9999, 3, "Add Reset B C"},
      {"MinusTakesTheRateBelowZero", false, 1, 1, 0, 0, -1, "Add Reset B C"},
      {"MinusOnB", false, 2, 10, 4, 9, 3, "Add Reset A C"},
      {"MinusOnC", false, 3, 1, 1, 0, 0, "Add Reset A B"},
      {"MinusWithNoMemoryWritesCOnly", false, 7, 3, 9, 2, 9, "Add Reset A B"},
      {"MinusOnANegativeCountOnlyLocks", false, 1, -1, 3, -1, 3, "Add Reset B C"},
  };
  for (const CountCase& k : cases) {
    SCOPED_TRACE(k.name);
    fresh();
    c().buttonId = k.id;
    setCount(k.total);
    c().totalForAvgA = c().totalForAvgB = c().totalForAvgC = k.numerator;
    const char* button = k.add ? "ButtonAdd" : "ButtonMinus";

    p().press(button);
    EXPECT_EQ(locked(), k.locked);
    p().release(button);
    EXPECT_EQ(locked(), "");

    EXPECT_EQ(c().total, k.wantTotal);
    // Only the current memory's copy and rate move; with no memory, C's copy takes the count.
    const bool known = k.id >= 1 && k.id <= 3;
    std::vector<int32_t> counts(3, 0), numerators(3, k.numerator);
    counts[known ? k.id - 1 : 2] = k.wantTotal;
    if (known) numerators[k.id - 1] = k.wantNumerator;
    EXPECT_EQ((std::vector{c().totalA, c().totalB, c().totalC}), counts);
    EXPECT_EQ((std::vector{c().totalForAvgA, c().totalForAvgB, c().totalForAvgC}), numerators);
    std::vector<std::string> sounds, tracks;
    if (k.wantTotal != k.total) {
      sounds.push_back("t=1 sound Counter Click2");
      tracks.push_back(std::string("t=1 track ") + (k.add ? "Count" : "Reduce"));
    }
    if (k.add) sounds.push_back("t=1 sound ButtonLetUp");  // Minus lets go silently
    const auto e = events();
    EXPECT_THAT(only(e, "sound"), ElementsAreArray(sounds));
    EXPECT_THAT(only(e, "track"), ElementsAreArray(tracks));
  }
}

TEST_F(CounterTest, ClicksOverlapAndAddClicksOnlyWhenPressed) {
  p().tap("ButtonAdd");
  wait(0.03);
  p().tap("ButtonAdd");
  c().Add();  // not through the button, so not highlighted: counts silently
  EXPECT_EQ(c().total, 3);
  const auto e = events();
  EXPECT_THAT(only(e, "sound"),
              ElementsAre("t=1 sound Counter Click2", "t=1 sound ButtonLetUp",
                          "t=1.03 sound Counter Click2", "t=1.03 sound ButtonLetUp"));
  EXPECT_THAT(only(e, "stop"), IsEmpty()) << "no click cuts another off";
}

TEST_F(CounterTest, SelectingAMemoryShowsItAndGuardsItsButton) {
  const struct {
    char letter;
    const char* images;  // of A, B and C
  } cases[] = {
      {'A', "a-down.png b-up.png c-up.png"},  // at start A is current, yet its button answers
      {'B', "a-up.png b-down.png c-up.png"},
      {'C', "a-up.png b-up.png c-down.png"},
  };
  for (const auto& k : cases) {
    const std::string letter(1, k.letter);
    SCOPED_TRACE(letter);
    fresh();
    c().totalA = 11;
    c().totalB = 22;
    c().totalC = 33;

    ASSERT_EQ(p().tap("Button" + letter), sim::InputResult::Done);
    EXPECT_EQ(c().buttonId, k.letter - 'A' + 1);
    EXPECT_EQ(c().total, 11 * c().buttonId);
    EXPECT_EQ(p().button("ButtonA")->image() + " " + p().button("ButtonB")->image() + " " +
                  p().button("ButtonC")->image(),
              k.images);
    EXPECT_EQ(locked(), letter);
    const auto e = events();
    EXPECT_THAT(only(e, "sound"), ElementsAre("t=1 sound Counter Click3"));
    EXPECT_THAT(only(e, "track"), ElementsAre("t=1 track Memory" + letter));
  }
}

}  // namespace
}  // namespace zellick::test
