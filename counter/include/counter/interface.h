#pragma once

#include <string>
#include <vector>

#include "counter/ZellickViewController.h"
#include "platform/views.h"

namespace zellick {

// The counter screen's interface file: every control with its size, first pictures and tag,
// and the actions its touches run. The app's screen and the scenario driver's both bind
// through it, so this is the one place these facts are written.

// Tags of the views that route touches (every other view is untagged).
inline constexpr int kLabelTimerTag = 101;
inline constexpr int kLabelAvgTag = 102;

// A wheel's strip is eleven cells of this height: "0".."9" and a second "0".
inline constexpr double kDigitCellHeight = 101;
inline constexpr int kWheelCells = 11;

// The logical screen is 320 points wide; the body picture is centred vertically on it, so the
// bands above and below are equal.
inline constexpr double kScreenWidth = 320;
inline constexpr double kMinScreenHeight = 480;

// The font the controller gives both labels; a screen maps it to a face it has.
inline constexpr const char* kLabelFontName = "TradeGothicLTCom-BdCn20";

// The control that clips the wheels to a one-digit window; no field of the controller.
inline constexpr const char* kWheelWindow = "WheelWindow";

// The controls on a logical screen `screenHeight` points tall (at least kMinScreenHeight), in
// the order a screen lays them out: the wheel window before the wheels inside it.
std::vector<ControlSpec> counterInterface(double screenHeight);

// The controls of `screen` by field name; a control the screen lacks stays null.
CounterViews counterViews(Screen& screen);
// Every view of `views` is there.
bool isComplete(const CounterViews& views);

// The keys that stand in for the counter's touches.
std::vector<KeyBinding> counterKeys();

// Connects the screen's buttons, touches and keys to the controller's actions. Counting buttons act
// on touch down and must see their release for every press that ends; the others act on a
// release inside the button. The screen's reader is kept told of the count and the memory in use.
void bindCounter(Screen& screen, ZellickViewController& controller);

}  // namespace zellick
