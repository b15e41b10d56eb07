#include "fixture.h"

namespace zellick::test {
namespace {

using ::testing::Contains;

struct Centre {
  const char* name;
  double x;  // as fractions of the body: L + W * x, T + H * y
  double y;
};

constexpr Centre kCentres[] = {
    {"ButtonAdd", 0.5, 1 / 1.184},   {"ButtonMinus", 1 / 6.0, 1 / 1.112},
    {"ButtonReset", 1 / 1.302, 1 / 4.6}, {"ButtonC", 1 / 2.18, 1 / 4.7},
    {"ButtonB", 1 / 3.0, 1 / 4.7},   {"ButtonA", 1 / 4.8, 1 / 4.7},
    {"ButtonInfo", 1 / 6.0, 1 / 9.7}, {"LabelTimer", 0.5, 1 / 9.7},
    {"LabelAvg", 1 / 1.33, 1 / 9.7},
};

class LayoutTest : public CounterTest, public ::testing::WithParamInterface<double> {
 protected:
  LayoutTest() : CounterTest(sim::SimOptions{GetParam()}) {}
};

TEST_P(LayoutTest, PlacesEverythingFromTheBodyWithEqualBlackBands) {
  const double screenHeight = GetParam();
  const Rect body = p().view("baseImageView")->frame();
  const double T = (screenHeight - 460) / 2;
  EXPECT_DOUBLE_EQ(c().backgroundTopGap, T);
  EXPECT_DOUBLE_EQ(c().backgroundLeftGap, 0);
  EXPECT_DOUBLE_EQ(c().backgroundWidth, 320);
  EXPECT_DOUBLE_EQ(c().backgroundHeight, 460);
  EXPECT_DOUBLE_EQ(c().initialPositionOfNumbers, 460 / 2.43 + T);

  const auto& bands = p().root().bands();
  ASSERT_EQ(bands.size(), 2u);
  EXPECT_EQ(bands[0].frame, (Rect{0, 0, 320, T}));
  EXPECT_EQ(bands[1].frame, (Rect{0, T + 460, 320, T}));
  EXPECT_EQ(bands[0].color, Color::Black);
  EXPECT_EQ(bands[1].color, Color::Black);

  for (const Centre& k : kCentres) {
    const Point centre = p().view(k.name)->frame().center();
    EXPECT_NEAR(centre.x, body.x + body.w * k.x, 1e-9) << k.name;
    EXPECT_NEAR(centre.y, body.y + body.h * k.y, 1e-9) << k.name;
  }
  const char* wheels[] = {"ImageView1", "ImageView2", "ImageView3", "ImageView4"};
  for (int i = 0; i < 4; ++i) {
    const Rect f = p().view(wheels[i])->frame();
    EXPECT_NEAR(f.x, 320 / 5.0 + i * 320 / 6.2, 1e-9) << wheels[i];
    EXPECT_DOUBLE_EQ(f.y, c().initialPositionOfNumbers) << wheels[i];
    EXPECT_EQ(f.w, 46);
    EXPECT_EQ(f.h, 1111) << "wheels keep their size";
  }
}

INSTANTIATE_TEST_SUITE_P(ScreenHeights, LayoutTest, ::testing::Values(480.0, 568.0));

TEST(ScreenStartTest, StartsGreyWithTheCounterFontAndLogsTheFrames) {
  sim::Simulation sim;
  sim.start();
  ZellickViewController& c = sim.process().controller();
  const auto lines = sim.world().events().takeNew();
  EXPECT_THAT(lines, Contains("t=0 log ScreenWidth = {{0, 0}, {320, 480}}"));
  EXPECT_THAT(lines, Contains("t=0 log Frame = {{0, 10}, {320, 460}}"));
  for (Label* l : {c.LabelTimer, c.LabelAvg}) {
    EXPECT_EQ(l->textColor(), Color::Gray);
    EXPECT_EQ(l->font(), (Font{"TradeGothicLTCom-BdCn20", 17}));
  }
  EXPECT_TRUE(c.LabelTimer->multipleTouchEnabled());
  EXPECT_EQ(c.ButtonB->image(), "b-up.png");
  EXPECT_TRUE(c.shouldAutorotateToInterfaceOrientation(InterfaceOrientation::Portrait));
  for (auto o : {InterfaceOrientation::PortraitUpsideDown, InterfaceOrientation::LandscapeLeft,
                 InterfaceOrientation::LandscapeRight}) {
    EXPECT_FALSE(c.shouldAutorotateToInterfaceOrientation(o));
  }
}

}  // namespace
}  // namespace zellick::test
