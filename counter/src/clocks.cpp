// Each memory's elapsed-time clock and the rate derived from it.
#include "counter/ZellickViewController.h"
#include "internal.h"

namespace zellick {

using detail::wrapAdd;
using detail::wrapDiv;
using detail::wrapMul;

using detail::kTick;

namespace {

// A timer may come a hair before its due moment; it still counts its second.
constexpr double kEarlyTolerance = 0.01;

struct RateUnit {
  int32_t tap;
  const char* text;
  const char* logLine;
  int32_t multiplier;
};

constexpr RateUnit kRateUnits[] = {
    {1, "%d/min", "avg for min %d", 60},
    {2, "%d/hour", "avg for hour %d", 3600},
    {3, "%d/day", "avg for day %d", 86400},
};

const RateUnit* rateUnit(int32_t tap) {
  for (const RateUnit& u : kRateUnits) {
    if (u.tap == tap) return &u;
  }
  return nullptr;
}

std::string twoDigits(int32_t v) { return v < 10 ? format("0%d", v) : format("%d", v); }

}  // namespace

void ZellickViewController::writeZeroRate() {
  if (const RateUnit* unit = rateUnit(tap)) LabelAvg->setText(format(unit->text, 0));
}

void ZellickViewController::startTick(int id, double seconds) {
  Memory x = memory(id);
  if (!x.tick) return;
  // Never two chains for one clock: that would run it at double speed.
  if (*x.tick) (*x.tick)->invalidate();
  *x.lastTick = services_.uptime.now() + (seconds - kTick);
  *x.tick = schedule(seconds, x.tickStep);
}

void ZellickViewController::addOneSecond(const Memory& x) {
  const int32_t s = *x.ss;
  *x.ss = wrapAdd(*x.ss, 1);
  if (s >= 59) {
    *x.mm = wrapAdd(*x.mm, 1);
    *x.ss = 0;
  }
  if (*x.mm > 59) {
    *x.hh = wrapAdd(*x.hh, 1);  // hours have no upper bound
    *x.mm = 0;
  }
}

// The seconds of memory `id`'s clock; every memory ticks on its own, whichever is shown. A tick
// counts the whole seconds that really passed since the previous one: normally one, more after
// the process was stopped or the machine slept. The next is due at the clock's next whole
// second, so a late tick never makes the following ones late.
void ZellickViewController::tick(int id) {
  Memory x = memory(id);
  const double now = services_.uptime.now();
  const double passed = now - *x.lastTick + kEarlyTolerance;
  const int64_t seconds = passed >= 1 ? static_cast<int64_t>(passed) : 0;
  for (int64_t i = 0; i < seconds; ++i) addOneSecond(x);
  *x.lastTick += static_cast<double>(seconds);
  ShowOnLabel();
  *x.tick = schedule(kTick - (now - *x.lastTick), x.tickStep);
}

void ZellickViewController::StartTimerA(Timer&) { tick(1); }
void ZellickViewController::StartTimerB(Timer&) { tick(2); }
void ZellickViewController::StartTimerC(Timer&) { tick(3); }

void ZellickViewController::ShowOnLabel() {
  if (Memory x = memory(buttonId); x.count) {
    hh = *x.hh;
    mm = *x.mm;
    ss = *x.ss;
  }
  LabelTimer->setText(twoDigits(hh) + ":" + twoDigits(mm) + ":" + twoDigits(ss));

  // Hours are weighted as minutes here, as the rate has always been computed.
  const int32_t elapsed = wrapAdd(wrapMul(wrapAdd(hh, mm), 60), ss);
  if (elapsed == 0) {
    writeZeroRate();
    return;
  }
  Memory x = memory(buttonId);
  const int32_t numerator = x.numerator ? *x.numerator : buttonId;
  const RateUnit* unit = rateUnit(tap);
  if (!unit) return;
  const int32_t rate = wrapDiv(wrapMul(numerator, unit->multiplier), elapsed);
  LabelAvg->setText(format(unit->text, rate));
  log(format(unit->logLine, rate));
}

void ZellickViewController::touchesBegan(const std::vector<Touch>& touches) {
  services_.tracker.Track("Touch began on timer");
  if (touches.empty()) return;
  const Touch& touch = touches.front();
  const int c = touch.tapCount;
  const int tag = touch.view ? touch.view->tag() : 0;

  if (tag == LabelTimer->tag()) {
    log(format("tapCount %d", c));
    Memory x = memory(buttonId);
    if (c == 1) {
      log("continue timer");
      if (x.tick && *x.tick) {
        (*x.tick)->invalidate();
        *x.tick = nullptr;
        *x.isStarted = 0;
        setLabelColors(Color::Gray);
        *x.isTimer = false;
      } else if (x.tick) {
        startTick(buttonId, kTick);  // the first second is added a second from now
        *x.isStarted = 1;
        setLabelColors(Color::White);
        *x.isTimer = true;
      }
    } else if (c >= 2) {
      services_.tracker.Track("Reset Timer using Double tap");
      log("Double tap");
      log(format("hh mm ss %d, %d, %d", hh, mm, ss));
      if (x.tick) {
        // The colour of the state before the stop; isTimer keeps it too, for the answer.
        setLabelColors(*x.tick ? Color::White : Color::Gray);
        if (*x.tick) (*x.tick)->invalidate();
        *x.tick = nullptr;
        *x.isStarted = 0;
      }
      if (hh != 0 || mm != 0 || ss != 0) {
        alertView =
            std::make_shared<AlertView>("RESET TIMER", "Are you sure you want\nto reset the timer?",
                                        std::vector<std::string>{"Yes", "No"});
        alertView->setTag(kResetTimerAlertTag);
        showQuestion();
      }
    }
  }

  if (tag == LabelAvg->tag()) {
    // The unit does not change while the shown clock is at zero.
    if (hh < 1 && mm < 1 && ss < 1) {
      if (tap >= 4) tap = 1;
    } else {
      tap = wrapAdd(tap, 1);
      if (tap >= 4) tap = 1;
    }
    ShowOnLabel();
  }
  if (tag == LabelTimer->tag() || tag == LabelAvg->tag()) stateChanged();
}

void ZellickViewController::touchesEnded(const std::vector<Touch>& touches) {
  if (touches.empty()) return;
  const Touch& touch = touches.front();
  if (touch.view && touch.view->tag() == LabelTimer->tag()) {
    log(format("tapCount %d", touch.tapCount));
    services_.tracker.Track("Touch ended on timer");
  }
}

}  // namespace zellick
