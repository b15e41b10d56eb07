#include "fixture.h"

namespace zellick::test {
namespace {

// The 480-point layout is pinned, view by view, by the scenario scripts' state dumps; a taller
// screen must move all of it down by half the extra height, between two equal black bands.
TEST_F(CounterTest, ATallerScreenCentresTheBodyBetweenEqualBlackBands) {
  const char* names[] = {"baseImageView", "ButtonAdd",  "ButtonMinus", "ButtonReset", "ButtonA",
                         "ButtonB",       "ButtonC",    "ButtonInfo",  "LabelTimer",  "LabelAvg",
                         "ImageView1",    "ImageView2", "ImageView3",  "ImageView4"};
  std::vector<Rect> short_;
  for (const char* n : names) short_.push_back(p().view(n)->frame());
  fresh({568.0});
  for (size_t i = 0; i < std::size(names); ++i) {
    const Rect f = p().view(names[i])->frame(), want = short_[i];
    EXPECT_NEAR(f.x, want.x, 1e-9) << names[i];
    EXPECT_NEAR(f.y, want.y + 44, 1e-9) << names[i];
    EXPECT_EQ(std::pair(f.w, f.h), std::pair(want.w, want.h)) << names[i];
  }
  const auto& bands = p().screen().rootView()->bands();
  ASSERT_EQ(bands.size(), 2u);
  EXPECT_EQ(bands[0].frame, (Rect{0, 0, 320, 54}));
  EXPECT_EQ(bands[1].frame, (Rect{0, 514, 320, 54}));
  EXPECT_EQ(std::pair(bands[0].color, bands[1].color), std::pair(Color::Black, Color::Black));
  for (const char* label : {"LabelTimer", "LabelAvg"})
    EXPECT_EQ(p().label(label)->font(), (Font{"TradeGothicLTCom-BdCn20", 17})) << label;
}

}  // namespace
}  // namespace zellick::test
