#include "fixture.h"

namespace zellick::test {
namespace {

TEST_F(CounterTest, LayoutFollowsTheBodyBetweenEqualBlackBands) {
  const struct {
    const char* name;
    double x, y;  // the centre, as fractions of the 320x460 body
  } centres[] = {
      {"ButtonAdd", 0.5, 1 / 1.184},       {"ButtonMinus", 1 / 6.0, 1 / 1.112},
      {"ButtonReset", 1 / 1.302, 1 / 4.6}, {"ButtonC", 1 / 2.18, 1 / 4.7},
      {"ButtonB", 1 / 3.0, 1 / 4.7},       {"ButtonA", 1 / 4.8, 1 / 4.7},
      {"ButtonInfo", 1 / 6.0, 1 / 9.7},    {"LabelTimer", 0.5, 1 / 9.7},
      {"LabelAvg", 1 / 1.33, 1 / 9.7},
  };
  for (double screenHeight : {480.0, 568.0}) {
    SCOPED_TRACE(screenHeight);
    fresh({screenHeight});
    const double T = (screenHeight - 460) / 2;  // the body is centred
    const auto& bands = p().screen().rootView()->bands();
    ASSERT_EQ(bands.size(), 2u);
    EXPECT_EQ(bands[0].frame, (Rect{0, 0, 320, T}));
    EXPECT_EQ(bands[1].frame, (Rect{0, T + 460, 320, T}));
    EXPECT_EQ(std::pair(bands[0].color, bands[1].color), std::pair(Color::Black, Color::Black));
    for (const auto& k : centres) {
      const Point centre = p().view(k.name)->frame().center();
      EXPECT_NEAR(centre.x, 320 * k.x, 1e-9) << k.name;
      EXPECT_NEAR(centre.y, T + 460 * k.y, 1e-9) << k.name;
    }
    for (int n = 1; n <= 4; ++n) {
      const Rect f = wheel(n).frame();
      EXPECT_NEAR(f.x, 320 / 5.0 + (n - 1) * 320 / 6.2, 1e-9) << "wheel " << n;
      EXPECT_NEAR(f.y, T + 460 / 2.43, 1e-9) << "wheel " << n;
      EXPECT_EQ(std::pair(f.w, f.h), std::pair(46.0, 1111.0)) << "wheels keep their size";
    }
    for (const char* label : {"LabelTimer", "LabelAvg"})
      EXPECT_EQ(p().label(label)->font(), (Font{"TradeGothicLTCom-BdCn20", 17})) << label;
  }
}

}  // namespace
}  // namespace zellick::test
