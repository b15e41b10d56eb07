// Add, Minus, their releases and the Info button.
#include "counter/ZellickViewController.h"
#include "internal.h"

namespace zellick {

using detail::wrapAdd;

void ZellickViewController::setOtherMemoryButtons(bool enabled) {
  // Memory 1 guards B and C, memory 2 guards A and C, anything else A and B.
  Button* first = buttonId == 1 ? ButtonB : ButtonA;
  Button* second = buttonId == 3 || (buttonId != 1 && buttonId != 2) ? ButtonB : ButtonC;
  first->setUserInteractionEnabled(enabled);
  second->setUserInteractionEnabled(enabled);
}

int32_t& ZellickViewController::countCopy() {
  if (buttonId == 1) return totalA;
  if (buttonId == 2) return totalB;
  return totalC;
}

void ZellickViewController::Add() {
  ButtonMinus->setUserInteractionEnabled(false);
  ButtonReset->setUserInteractionEnabled(false);
  setOtherMemoryButtons(false);

  if (ButtonAdd->isHighlighted()) playClick(kClickSound);

  int32_t* numerator = memory(buttonId).numerator;
  if (total == 9999) {
    total = 0;
    previousTotal = 9999;
    // The rate starts afresh when the count wraps.
    if (numerator) *numerator = 0;
  } else {
    total = wrapAdd(total, 1);
    if (numerator) *numerator = wrapAdd(*numerator, 1);
    previousTotal = previousTotal == 9999 ? 0 : wrapAdd(total, -1);
  }
  value = total;
  countCopy() = total;
  ShowOnLabel();
  services_.tracker.Track("Count");
  Show();
  stateChanged();
}

void ZellickViewController::PlayLetUpSound() {
  playClick(kLetUpSound);
  ButtonMinus->setUserInteractionEnabled(true);
  ButtonReset->setUserInteractionEnabled(true);
  setOtherMemoryButtons(true);
}

void ZellickViewController::OnClickMinus() {
  ButtonAdd->setUserInteractionEnabled(false);
  ButtonReset->setUserInteractionEnabled(false);
  setOtherMemoryButtons(false);

  if (total < 0) return;  // the release still lifts the locks

  IsMinusClicked = true;
  playClick(kClickSound);
  if (total == 0) {
    total = 9999;  // the rate numerator is kept on this wrap
  } else {
    total = wrapAdd(total, -1);
    // No floor: after a clock reset the numerator may go below zero.
    if (int32_t* numerator = memory(buttonId).numerator) *numerator = wrapAdd(*numerator, -1);
  }
  value = total;
  countCopy() = total;
  // From 9999 this is 10000, which the wheels read as 0000.
  previousTotal = wrapAdd(total, 1);
  ShowOnLabel();
  services_.tracker.Track("Reduce");
  Show();
  stateChanged();
}

void ZellickViewController::OnMinusReleased() {
  ButtonAdd->setUserInteractionEnabled(true);
  ButtonReset->setUserInteractionEnabled(true);
  setOtherMemoryButtons(true);
}

void ZellickViewController::OnClickInfo() {
  services_.tracker.Track("Info");
  services_.screens.presentModalViewController("moreViewController");
}

}  // namespace zellick
