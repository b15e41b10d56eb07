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
  return ControlSpec{name, kind, {0, 0, w, h}, std::move(image), std::move(highlighted), tag, {}};
}

// What a screen reader calls each control it reads.
constexpr std::pair<const char*, const char*> kAccessibleNames[] = {
    {"ButtonAdd", "Count up"}, {"ButtonMinus", "Count down"}, {"ButtonReset", "Reset"},
    {"ButtonA", "Memory A"},   {"ButtonB", "Memory B"},       {"ButtonC", "Memory C"},
    {"ButtonInfo", "More"},    {"LabelTimer", "Clock"},       {"LabelAvg", "Rate"},
    {kWheelWindow, "Count"},
};

// The memories' buttons by memory number, 1 to 3.
constexpr const char* kMemoryButtons[] = {"ButtonA", "ButtonB", "ButtonC"};

// The count as the wheels show it, without the leading zeros a reader would spell out.
std::string shownCount(int32_t total) { return std::to_string((total % 10000 + 10000) % 10000); }

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
    for (const auto& [name, spoken] : kAccessibleNames)
      if (c.name == name) c.accessibleName = spoken;
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

std::vector<KeyBinding> counterKeys() {
  std::vector<KeyBinding> keys;
  for (const char* key : {"Space", "Return", "Up", "Plus", "VolumeUp"})
    keys.push_back({key, "ButtonAdd"});
  for (const char* key : {"Down", "Minus", "Backspace", "VolumeDown"})
    keys.push_back({key, "ButtonMinus"});
  keys.push_back({"A", "ButtonA"});
  keys.push_back({"B", "ButtonB"});
  keys.push_back({"C", "ButtonC"});
  keys.push_back({"R", "ButtonReset"});
  keys.push_back({"I", "ButtonInfo"});
  keys.push_back({"F1", "ButtonInfo"});
  keys.push_back({"T", "LabelTimer", 1});
  keys.push_back({"Shift+T", "LabelTimer", 2});
  keys.push_back({"U", "LabelAvg", 1});
  return keys;
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
  s.setKeyBindings(counterKeys());
  // A screen reader hears the count and the memory in use whenever the wheels change.
  c.onShow = [&s, &c] {
    s.setAccessibleText(kWheelWindow, shownCount(c.total));
    for (int id = 1; id <= 3; ++id)
      s.setAccessibleChecked(kMemoryButtons[id - 1], c.buttonId == id);
  };
  c.onShow();
}

}  // namespace zellick
