// The four digit wheels: a strip of eleven cells ("0".."9" and a second "0") behind a one-digit
// window. Counting up past 9 rolls on into the second "0" and then silently jumps back to the
// first; counting down from 0 jumps to the second "0" and rolls back to 9.
#include "counter/ZellickViewController.h"
#include "internal.h"

namespace zellick {

using detail::kRollOverOffset;

namespace {

constexpr double kCell = kDigitCellHeight;
constexpr double kPlainRoll = 0.3;
constexpr double kRollOverLeg = 0.15;
// Just before the leg into the roll-over cell ends, so the jump back is never seen mid-roll.
constexpr double kFollowUpDelay = 0.14;

Rect withY(const ImageView& wheel, double y) {
  Rect f = wheel.frame();
  f.y = y;
  return f;
}

}  // namespace

ZellickViewController::Wheel ZellickViewController::wheel(int index) {
  switch (index) {
    case 1: return {ImageView4, &remainder1, &timer1, &ZellickViewController::timerFired1};
    case 2: return {ImageView3, &remainder2, &timer2, &ZellickViewController::timerFired2};
    case 3: return {ImageView2, &remainder3, &timer3, &ZellickViewController::timerFired3};
    default: return {ImageView1, &remainder4, &timer4, &ZellickViewController::timerFired4};
  }
}

void ZellickViewController::Show() {
  value = total;
  previousValue = previousTotal;
  const double p = initialPositionOfNumbers;

  // Units first; digits beyond the fourth are ignored.
  for (int index = 1; index <= 4; ++index) {
    const int32_t n = value % 10;
    value /= 10;
    const int32_t o = previousValue % 10;
    previousValue /= 10;
    if (n == o) continue;

    Wheel w = wheel(index);
    *w.target = n;
    if (n < o && !IsMinusClicked) {
      w.view->animateFrame(withY(*w.view, p - kRollOverOffset), kRollOverLeg);
      *w.timer = schedule(kFollowUpDelay, w.followUp);
    } else if (n == 9 && IsMinusClicked) {
      w.view->setFrame(withY(*w.view, p - kRollOverOffset));
      w.view->animateFrame(withY(*w.view, p - 9 * kCell), kRollOverLeg);
    } else {
      w.view->animateFrame(withY(*w.view, p - kCell * n), kPlainRoll);
    }
  }
  IsMinusClicked = false;
  if (onShow) onShow();
}

void ZellickViewController::followUp(int index) {
  Wheel w = wheel(index);
  const double p = initialPositionOfNumbers;
  w.view->setFrame(withY(*w.view, p));
  // During the reset's final roll the wheel stays on its top "0".
  if (!IsResetClicked) w.view->animateFrame(withY(*w.view, p - kCell * *w.target), kRollOverLeg);
  if (index == 4) IsResetClicked = false;
  *w.timer = nullptr;
}

void ZellickViewController::timerFired1(Timer&) { followUp(1); }
void ZellickViewController::timerFired2(Timer&) { followUp(2); }
void ZellickViewController::timerFired3(Timer&) { followUp(3); }
void ZellickViewController::timerFired4(Timer&) { followUp(4); }

}  // namespace zellick
