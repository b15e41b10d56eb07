#pragma once

#include <functional>
#include <map>
#include <string>

namespace zellick {

class ZellickViewController;

// What a control's touch events run. Counting buttons act on touch down and must see their
// release for every press that ends (inside or outside), or the locks stay on; the other
// buttons act on a release inside the button.
struct ControlActions {
  std::function<void()> press;    // touch down
  std::function<void()> release;  // touch up, inside or outside
};

// The bindings of the counter screen's interface file, keyed by control field name.
std::map<std::string, ControlActions> counterActions(ZellickViewController& controller);

// Tags of the views that route touches (every other view is untagged).
inline constexpr int kLabelTimerTag = 101;
inline constexpr int kLabelAvgTag = 102;

// Logical size of the interface file's controls, in points. The wheels' strip is eleven
// 101-point cells, "0".."9" and a second "0".
struct ControlSize {
  const char* name;
  double w;
  double h;
};
inline constexpr double kDigitCellHeight = 101;
inline constexpr ControlSize kControlSizes[] = {
    {"baseImageView", 320, 460}, {"ButtonAdd", 110, 110},  {"ButtonMinus", 48, 48},
    {"ButtonReset", 44, 44},     {"ButtonA", 36, 30},      {"ButtonB", 36, 30},
    {"ButtonC", 36, 30},         {"ButtonInfo", 30, 30},   {"LabelTimer", 84, 24},
    {"LabelAvg", 74, 24},        {"ImageView1", 46, 1111}, {"ImageView2", 46, 1111},
    {"ImageView3", 46, 1111},    {"ImageView4", 46, 1111},
};

// The logical screen is 320 points wide; the body picture is centred vertically on it, so the
// bands above and below are equal.
inline constexpr double kScreenWidth = 320;
inline constexpr double kMinScreenHeight = 480;

}  // namespace zellick
