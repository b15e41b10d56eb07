#include "counter/interface.h"

#include <algorithm>

#include "internal.h"

namespace zellick {

namespace {

using Kind = ControlSpec::Kind;

constexpr double kBodyWidth = kScreenWidth;
constexpr double kBodyHeight = 460;
constexpr double kWheelWidth = 46;

ControlSpec control(const char* name, Kind kind, double w, double h, std::string image = {},
                    std::string highlighted = {}, int tag = 0) {
  return ControlSpec{name, kind, {0, 0, w, h}, std::move(image), std::move(highlighted), tag};
}

}  // namespace

std::vector<ControlSpec> counterInterface(double screenHeight) {
  const double height = std::max(screenHeight, kMinScreenHeight);
  const Rect body{0, (height - kBodyHeight) / 2, kBodyWidth, kBodyHeight};
  const detail::MemoryImages& a = detail::memoryImages(1);  // memory A is shown first
  const double wheelHeight = kWheelCells * kDigitCellHeight;
  std::vector<ControlSpec> out = {
      control(kWheelWindow, Kind::Clip, kScreenWidth, kDigitCellHeight),
      control("ImageView1", Kind::Image, kWheelWidth, wheelHeight, "wheel-strip.png"),
      control("ImageView2", Kind::Image, kWheelWidth, wheelHeight, "wheel-strip.png"),
      control("ImageView3", Kind::Image, kWheelWidth, wheelHeight, "wheel-strip.png"),
      control("ImageView4", Kind::Image, kWheelWidth, wheelHeight, "wheel-strip.png"),
      control("baseImageView", Kind::Image, kBodyWidth, kBodyHeight, "counter-body.png"),
      control("ButtonReset", Kind::Button, 44, 44, "reset-up.png", "reset-down.png"),
      control("ButtonAdd", Kind::Button, 110, 110, "add-up.png", "add-down.png"),
      control("ButtonA", Kind::Button, 36, 30, a.a),
      control("ButtonB", Kind::Button, 36, 30, a.b),
      control("ButtonC", Kind::Button, 36, 30, a.c),
      control("ButtonInfo", Kind::Button, 30, 30, "info-up.png"),
      control("ButtonMinus", Kind::Button, 48, 48, "minus-up.png", "minus-down.png"),
      control("LabelTimer", Kind::Label, 84, 24, {}, {}, kLabelTimerTag),
      control("LabelAvg", Kind::Label, 74, 24, {}, {}, kLabelAvgTag),
  };
  for (ControlSpec& c : out) {
    if (c.name == "baseImageView") c.frame = body;
    // The window the wheels show through lies where they show their top "0".
    if (c.name == kWheelWindow) c.frame.y = ZellickViewController::wheelsHomeY(body.y, body.h);
  }
  return out;
}

CounterViews counterViews(Screen& s) {
  CounterViews v;
  v.view = s.rootView();
  v.ButtonReset = s.button("ButtonReset");
  v.ButtonAdd = s.button("ButtonAdd");
  v.ButtonA = s.button("ButtonA");
  v.ButtonB = s.button("ButtonB");
  v.ButtonC = s.button("ButtonC");
  v.ButtonInfo = s.button("ButtonInfo");
  v.ButtonMinus = s.button("ButtonMinus");
  v.ImageView1 = s.imageView("ImageView1");
  v.ImageView2 = s.imageView("ImageView2");
  v.ImageView3 = s.imageView("ImageView3");
  v.ImageView4 = s.imageView("ImageView4");
  v.LabelTimer = s.label("LabelTimer");
  v.LabelAvg = s.label("LabelAvg");
  v.baseImageView = s.imageView("baseImageView");
  return v;
}

bool isComplete(const CounterViews& v) {
  const void* all[] = {v.view,       v.ButtonReset, v.ButtonAdd,   v.ButtonA,    v.ButtonB,
                       v.ButtonC,    v.ButtonInfo,  v.ButtonMinus, v.ImageView1, v.ImageView2,
                       v.ImageView3, v.ImageView4,  v.LabelTimer,  v.LabelAvg,   v.baseImageView};
  return std::all_of(std::begin(all), std::end(all), [](const void* p) { return p != nullptr; });
}

void bindCounter(Screen& s, ZellickViewController& c) {
  s.bindButton(
      "ButtonAdd", [&c] { c.Add(); }, [&c] { c.PlayLetUpSound(); });
  s.bindButton(
      "ButtonMinus", [&c] { c.OnClickMinus(); }, [&c] { c.OnMinusReleased(); });
  s.bindButton("ButtonReset", nullptr, [&c] { c.Reset(); });
  s.bindButton("ButtonA", nullptr, [&c] { c.SelectMemoryA(); });
  s.bindButton("ButtonB", nullptr, [&c] { c.SelectMemoryB(); });
  s.bindButton("ButtonC", nullptr, [&c] { c.SelectMemoryC(); });
  s.bindButton("ButtonInfo", nullptr, [&c] { c.OnClickInfo(); });
  s.setTouchHandlers(
      [&c](const View& view, int taps) {
        c.touchesBegan({Touch{&view, taps}});
      },
      [&c](const View& view, int taps) {
        c.touchesEnded({Touch{&view, taps}});
      });
}

}  // namespace zellick
