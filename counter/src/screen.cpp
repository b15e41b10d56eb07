// Building the screen around the counter body, and the trips to and from the background.
#include <cmath>
#include <limits>

#include "counter/ZellickViewController.h"
#include "internal.h"

namespace zellick {

using detail::kTick;
using detail::wrapAdd;

namespace {

constexpr double kRedrawDelay = 0.5;
constexpr double kLabelFontSize = 17.0;

std::string rectString(const Rect& r) { return format("{{%g, %g}, {%g, %g}}", r.x, r.y, r.w, r.h); }

}  // namespace

void ZellickViewController::viewDidLoad() {
  buttonId = 1;
  total = totalA = totalB = totalC = 0;
  tap = 1;
  IsMinusClicked = false;
  IsResetClicked = false;
  Ahh = Amm = Ass = Bhh = Bmm = Bss = Chh = Cmm = Css = 0;
  hh = Ahh;
  mm = Amm;
  ss = Ass;
  LabelTimer->setMultipleTouchEnabled(true);
  ButtonB->setImage(detail::memoryImages(1).b);
  ButtonC->setImage(detail::memoryImages(1).c);
  totalForAvgA = totalForAvgB = totalForAvgC = 0;
  isStartedTimerA = isStartedTimerB = isStartedTimerC = 0;
  LabelAvg->setTextColor(Color::Gray);
  LabelTimer->setTextColor(Color::Gray);
  LabelAvg->setFont({kLabelFontName, kLabelFontSize});
  LabelTimer->setFont({kLabelFontName, kLabelFontSize});
  log("ScreenWidth = " + rectString(view_->bounds()));
  log("Frame = " + rectString(baseImageView->frame()));

  const Rect body = baseImageView->frame();
  backgroundLeftGap = body.x;
  backgroundTopGap = body.y;
  backgroundWidth = body.w;
  backgroundHeight = body.h;
  initialPositionOfNumbers = wheelsHomeY(backgroundTopGap, backgroundHeight);
  const double L = backgroundLeftGap, T = backgroundTopGap;
  const double W = backgroundWidth, H = backgroundHeight;

  // The band below is as tall as the band above, which keeps the body centred.
  const double width = view_->bounds().w;
  view_->addColorView({0, 0, width, T}, Color::Black);
  view_->addColorView({0, T + H, width, T}, Color::Black);

  ButtonAdd->setCenter({L + W * 0.5, T + H / 1.184});
  ButtonMinus->setCenter({L + W / 6.0, T + H / 1.112});
  ButtonReset->setCenter({L + W / 1.302, T + H / 4.6});
  ButtonC->setCenter({L + W / 2.18, T + H / 4.7});
  ButtonB->setCenter({L + W / 3.0, T + H / 4.7});
  ButtonA->setCenter({L + W / 4.8, T + H / 4.7});
  ButtonInfo->setCenter({L + W / 6.0, T + H / 9.7});
  LabelTimer->setCenter({L + W * 0.5, T + H / 9.7});
  LabelAvg->setCenter({L + W / 1.33, T + H / 9.7});

  ImageView* wheels[] = {ImageView1, ImageView2, ImageView3, ImageView4};
  for (int i = 0; i < 4; ++i) {
    Rect f = wheels[i]->frame();
    f.x = L + W / 5.0 + i * (W / 6.2);
    f.y = initialPositionOfNumbers;
    wheels[i]->setFrame(f);
  }

  std::weak_ptr<bool> alive = alive_;
  services_.notifications.addObserver(kWillResignActive, [this, alive] {
    if (alive.lock()) applicationWillResignActive();
  });
  services_.notifications.addObserver(kDidBecomeActive, [this, alive] {
    if (alive.lock()) applicationDidBecomeActive();
  });
}

void ZellickViewController::viewWillAppear(bool) {
  // There is no navigation bar to hide on this screen.
}

bool ZellickViewController::shouldAutorotateToInterfaceOrientation(
    InterfaceOrientation orientation) const {
  return orientation == InterfaceOrientation::Portrait;
}

void ZellickViewController::applicationWillResignActive() {
  log("App resign active");
  SaveUserSettings();
  // The isStartedTimer flags stay, so running clocks are saved as running.
  for (TimerRef* tick : {&TimerForLabelA, &TimerForLabelB, &TimerForLabelC}) {
    if (*tick) {
      (*tick)->invalidate();
      *tick = nullptr;
    }
  }
}

void ZellickViewController::applicationDidBecomeActive() {
  log("app become active");
  if (saveFailed_) {
    // What is in memory is newer than the store; reading it back would undo counts.
    log("The last save did not reach the disk; keeping the counter state in memory");
  } else {
    RetrieveValues();
  }
  log(format("A:%d %d %d", Ahh, Amm, Ass));

  if (dateOfInactive) catchUp(dateOfInactive->seconds - services_.clock.now());

  // A clock started but still at 0:00:00 when saved is not restarted.
  for (int id = 1; id <= 3; ++id) {
    Memory x = memory(id);
    if (*x.isStarted != 0 && (*x.hh >= 1 || *x.mm >= 1 || *x.ss >= 1)) {
      startTick(id, kTick);
      LabelAvg->setTextColor(Color::White);
      LabelTimer->setTextColor(Color::White);
    }
  }

  Memory current = memory(buttonId);
  const bool running = current.tick && *current.tick;
  LabelAvg->setTextColor(running ? Color::White : Color::Gray);
  LabelTimer->setTextColor(running ? Color::White : Color::Gray);

  if (current.count) {
    previousTotal = total = *current.count;
    const detail::MemoryImages& images = detail::memoryImages(buttonId);
    ButtonA->setImage(images.a);
    ButtonB->setImage(images.b);
    ButtonC->setImage(images.c);
    hh = *current.hh;
    mm = *current.mm;
    ss = *current.ss;
    placeWheels();
  }
  later(kRedrawDelay, &ZellickViewController::redraw);
}

// On a cold start the wheels stand at 0000 while the restored count may be anything; the
// redraw only rolls from the count to itself, so set each wheel on its digit now.
void ZellickViewController::placeWheels() {
  int32_t rest = total;
  for (int index = 1; index <= 4; ++index) {
    const int32_t digit = rest % 10;
    rest /= 10;
    Wheel w = wheel(index);
    Rect f = w.view->frame();
    const double y = initialPositionOfNumbers - kDigitCellHeight * digit;
    if (f.y == y || *w.timer) continue;  // in place, or a roll-over is about to land it
    f.y = y;
    w.view->setFrame(f);
    *w.target = digit;
  }
}

void ZellickViewController::redraw() {
  Show();
  ShowOnLabel();
}

// Adds the time since the last save (t, seconds, negative) to every clock that was running.
void ZellickViewController::catchUp(double t) {
  if (!std::isfinite(t) || t > 0 || -t / 3600.0 > std::numeric_limits<int32_t>::max() / 3600) {
    // A clock set back (or a nonsense date) must not wind the clocks backwards.
    log(format("timediff: %f is not a time spent away; no time is caught up", t));
    return;
  }
  const int32_t h = static_cast<int32_t>(t / -3600.0);
  const double r = -t - (h * 3600);
  const int32_t m = static_cast<int32_t>(r / 60.0);
  const int32_t s = static_cast<int32_t>(r - (m * 60));
  for (int id = 1; id <= 3; ++id) {
    Memory x = memory(id);
    if (*x.isStarted == 0) continue;
    *x.ss = wrapAdd(*x.ss, s);
    if (*x.ss >= 60) {
      *x.ss -= 60;
      *x.mm = wrapAdd(*x.mm, 1);
    }
    *x.mm = wrapAdd(*x.mm, m);
    if (*x.mm >= 60) {
      *x.mm -= 60;
      *x.hh = wrapAdd(*x.hh, 1);
    }
    *x.hh = wrapAdd(*x.hh, h);
    log(format("timediff: %f, hh = %d, mm: %d, ss: %d", t, h, m, s));
  }
}

}  // namespace zellick
