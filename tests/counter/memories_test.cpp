#include "fixture.h"

namespace zellick::test {
namespace {

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
