// Reset: the question, then the roll that drives every smallest digit up until all four show
// 9 and rolls them over together to 0000, like a counter's reset knob.
#include <algorithm>

#include "counter/ZellickViewController.h"
#include "internal.h"

namespace zellick {

namespace {

constexpr double kQuestionDelay = 0.2;
constexpr double kStepInterval = 0.15;
constexpr double kFinalRoll = 0.5;
constexpr double kFinalFollowUp = 0.48;  // just before the final roll ends
constexpr double kResumeClock = detail::kTick;

}  // namespace

void ZellickViewController::Reset() {
  setAllSixButtons(false);
  playClick(kResetSound);
  // Pause the shown clock; its isTimer flag stays so "No" can resume it.
  if (TimerRef* tick = memory(buttonId).tick) {
    if (*tick) (*tick)->invalidate();
    *tick = nullptr;
  }
  schedule(kQuestionDelay, &ZellickViewController::DelayTimerFired);
  services_.tracker.Track("Reset");
}

void ZellickViewController::DelayTimerFired(Timer&) {
  if (total == 0) {
    alertView = std::make_shared<AlertView>("NOTICE", "Counter is already reset to 0000",
                                            std::vector<std::string>{"OK"});
    services_.alerts.show(alertView, nullptr);
    setAllSixButtons(true);
    return;
  }
  // Prepared now so the fast clicking starts the moment "Yes" is pressed.
  player = makePlayer(kFastClickingSound);
  alertView =
      std::make_shared<AlertView>("RESET COUNTER", "Are you sure you want \nto reset the counter?",
                                  std::vector<std::string>{"Yes", "No"});
  alertView->setTag(kResetCounterAlertTag);
  showQuestion();
}

void ZellickViewController::showQuestion() {
  std::weak_ptr<bool> alive = alive_;
  services_.alerts.show(alertView, [this, alive](AlertView& alert, int index) {
    if (alive.lock()) alertViewClickedButtonAtIndex(alert, index);
  });
}

void ZellickViewController::alertViewClickedButtonAtIndex(AlertView&, int buttonIndex) {
  // The question raised last decides, as it is the one on screen.
  const int tag = alertView ? alertView->tag() : 0;
  if (tag == kResetCounterAlertTag) {
    buttonIndex == 0 ? confirmResetCounter() : keepCounter();
  } else if (tag == kResetTimerAlertTag) {
    buttonIndex == 0 ? confirmResetTimer() : keepTimer();
  }
  stateChanged();
}

void ZellickViewController::confirmResetCounter() {
  if (player) player->play();
  previousTotal = total;
  ResetTimer = schedule(0, &ZellickViewController::ResetTimerFired);
  // Memory C stands in for any unknown memory number.
  Memory x = memory(buttonId >= 1 && buttonId <= 3 ? buttonId : 3);
  *x.count = 0;
  *x.hh = *x.mm = *x.ss = 0;
  hh = mm = ss = 0;
  LabelTimer->setText("00:00:00");
  *x.numerator = 0;
  *x.isTimer = false;
  setLabelColors(Color::Gray);
  writeZeroRate();
  player = nullptr;  // the sound plays on
}

void ZellickViewController::keepCounter() {
  setAllSixButtons(true);
  Memory x = memory(buttonId);
  if (x.isTimer && *x.isTimer) startTick(buttonId, kResumeClock);
}

void ZellickViewController::confirmResetTimer() {
  if (Memory x = memory(buttonId); x.count) {
    log("Double tap on buttonid 1");
    *x.hh = *x.mm = *x.ss = 0;
    *x.numerator = 0;
    *x.isTimer = false;
  }
  hh = mm = ss = 0;
  LabelTimer->setText("00:00:00");
  writeZeroRate();
  setLabelColors(Color::Gray);
}

void ZellickViewController::keepTimer() {
  log("Clicked no on alert view");
  Memory x = memory(buttonId);
  // The first tap of the double tap already toggled the flag: NO means the clock ran before.
  if (x.isTimer && !*x.isTimer) startTick(buttonId, kResumeClock);
  setLabelColors(x.isTimer && !*x.isTimer ? Color::White : Color::Gray);
}

void ZellickViewController::ResetTimerFired(Timer&) {
  previousTotal = total;
  if (total <= 9998) {
    int32_t digits[4] = {total % 10, total / 10 % 10, total / 100 % 10, total / 1000};
    const int32_t smallest = *std::min_element(std::begin(digits), std::end(digits));
    for (int32_t& d : digits) {
      if (d == smallest) ++d;
    }
    total = digits[0] + 10 * digits[1] + 100 * digits[2] + 1000 * digits[3];
    Show();
  }
  if (total >= 5001 && total <= 5999) {
    // Restarted on purpose through this band; the first restart plays over the first sound.
    if (player) player->stop();
    player = nullptr;
    player = makePlayer(kFastClickingSound);
    player->play();
  }
  if (total != 9999) {
    ResetTimer = schedule(kStepInterval, &ZellickViewController::ResetTimerFired);
    return;
  }

  total = 0;
  IsResetClicked = true;
  for (int index = 1; index <= 4; ++index) {  // units wheel first, thousands last
    Wheel w = wheel(index);
    Rect f = w.view->frame();
    f.y = initialPositionOfNumbers - detail::kRollOverOffset;
    w.view->animateFrame(f, kFinalRoll);
    *w.timer = schedule(kFinalFollowUp, w.followUp);
  }
  setAllSixButtons(true);
}

}  // namespace zellick
