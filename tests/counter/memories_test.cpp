#include "fixture.h"

namespace zellick::test {
namespace {

using ::testing::ElementsAre;

struct SelectCase {
  const char* button;
  int id;
  const char* images[3];
  const char* tag;
};

class SelectTest : public CounterTest, public ::testing::WithParamInterface<SelectCase> {};

TEST_P(SelectTest, ShowsTheMemoryAndGuardsItsButton) {
  const SelectCase& k = GetParam();
  if (k.id == 1) p().tap("ButtonB");  // come to A from elsewhere
  c().totalA = 11;
  c().totalB = 22;
  c().totalC = 33;
  c().Ahh = 1;
  c().Bmm = 2;
  c().Css = 3;
  const int left = c().total;
  events();

  p().tap(k.button);

  EXPECT_EQ(c().buttonId, k.id);
  EXPECT_EQ(c().previousTotal, left);
  EXPECT_EQ(c().total, 11 * k.id);
  EXPECT_EQ(c().hh, k.id == 1 ? 1 : 0);
  EXPECT_EQ(c().mm, k.id == 2 ? 2 : 0);
  EXPECT_EQ(c().ss, k.id == 3 ? 3 : 0);
  const char* names[] = {"ButtonA", "ButtonB", "ButtonC"};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(p().button(names[i])->image(), k.images[i]);
    EXPECT_EQ(p().button(names[i])->userInteractionEnabled(), i + 1 != k.id) << names[i];
  }
  EXPECT_THAT(events("sound"), ElementsAre("t=1 sound Counter Click3"));
  EXPECT_EQ(p().press(k.button), sim::InputResult::Ignored);
}

INSTANTIATE_TEST_SUITE_P(
    Memories, SelectTest,
    ::testing::Values(SelectCase{"ButtonA", 1, {"a-down.png", "b-up.png", "c-up.png"}, "MemoryA"},
                      SelectCase{"ButtonB", 2, {"a-up.png", "b-down.png", "c-up.png"}, "MemoryB"},
                      SelectCase{"ButtonC", 3, {"a-up.png", "b-up.png", "c-down.png"}, "MemoryC"}),
    [](const auto& info) { return std::string(info.param.tag); });

TEST_F(CounterTest, OtherMemoriesClocksRunOnWhileAnotherIsShown) {
  p().touch("LabelTimer", 1);  // start A's clock
  wait(1.0);
  p().tap("ButtonB");
  EXPECT_EQ(p().label("LabelTimer")->textColor(), Color::Gray);
  EXPECT_EQ(p().label("LabelAvg")->textColor(), Color::Gray);
  wait(5.0);
  EXPECT_EQ(c().Ass, 6);
  EXPECT_EQ(p().label("LabelTimer")->text(), "00:00:00");
  p().tap("ButtonA");
  EXPECT_EQ(p().label("LabelTimer")->text(), "00:00:06");
  EXPECT_EQ(p().label("LabelTimer")->textColor(), Color::White);
  EXPECT_EQ(p().label("LabelAvg")->textColor(), Color::White);
}

TEST_F(CounterTest, FreshStartStillAcceptsTheCurrentMemory) {
  EXPECT_TRUE(p().button("ButtonA")->userInteractionEnabled());
  p().tap("ButtonA");
  EXPECT_THAT(events("track"), ElementsAre("t=1 track MemoryA"));
}

}  // namespace
}  // namespace zellick::test
