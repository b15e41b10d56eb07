#include "counter/ZellickViewController.h"
#include "counter/sounds.h"

namespace zellick {

ZellickViewController::ZellickViewController(CounterServices services, CounterViews views)
    : ButtonReset(views.ButtonReset),
      ButtonAdd(views.ButtonAdd),
      ButtonA(views.ButtonA),
      ButtonB(views.ButtonB),
      ButtonC(views.ButtonC),
      ButtonInfo(views.ButtonInfo),
      ButtonMinus(views.ButtonMinus),
      ImageView1(views.ImageView1),
      ImageView2(views.ImageView2),
      ImageView3(views.ImageView3),
      ImageView4(views.ImageView4),
      LabelTimer(views.LabelTimer),
      LabelAvg(views.LabelAvg),
      baseImageView(views.baseImageView),
      services_(services),
      view_(views.view) {}

ZellickViewController::~ZellickViewController() {
  // Timers and delayed calls check alive_ before touching the controller; cancel what we can.
  for (TimerRef* t : {&TimerForLabelA, &TimerForLabelB, &TimerForLabelC, &timer1, &timer2, &timer3,
                      &timer4, &ResetTimer, &autosave_}) {
    if (*t) (*t)->invalidate();
  }
}

TimerRef ZellickViewController::schedule(double seconds,
                                         void (ZellickViewController::*step)(Timer&)) {
  std::weak_ptr<bool> alive = alive_;
  return services_.runLoop.scheduledTimer(seconds, [this, alive, step](Timer& timer) {
    if (alive.lock()) (this->*step)(timer);
  });
}

void ZellickViewController::later(double seconds, void (ZellickViewController::*work)()) {
  std::weak_ptr<bool> alive = alive_;
  services_.runLoop.dispatchAfter(seconds, [this, alive, work] {
    if (alive.lock()) (this->*work)();
  });
}

std::shared_ptr<AudioPlayer> ZellickViewController::makePlayer(const char* resource) {
  // A missing resource still gives a player; it just stays silent.
  auto path = services_.bundle.pathForResource(resource, kSoundType);
  return services_.sound.playerWithContentsOfFile(path.value_or(std::string()));
}

void ZellickViewController::playClick(const char* resource) {
  player = makePlayer(resource);
  player->play();
  // Dropping the reference does not stop the sound, so quick presses overlap.
  player = nullptr;
}

void ZellickViewController::setAllSixButtons(bool enabled) {
  for (Button* b : {ButtonReset, ButtonAdd, ButtonMinus, ButtonA, ButtonB, ButtonC}) {
    b->setUserInteractionEnabled(enabled);
  }
}

void ZellickViewController::setLabelColors(Color color) {
  LabelTimer->setTextColor(color);
  LabelAvg->setTextColor(color);
}

ZellickViewController::Memory ZellickViewController::memory(int id) {
  using C = ZellickViewController;
  switch (id) {
    case 1:
      return {&totalA,
              &Ahh,
              &Amm,
              &Ass,
              &totalForAvgA,
              &TimerForLabelA,
              &isStartedTimerA,
              &isTimerA,
              &C::StartTimerA,
              &lastTick_[0]};
    case 2:
      return {&totalB,
              &Bhh,
              &Bmm,
              &Bss,
              &totalForAvgB,
              &TimerForLabelB,
              &isStartedTimerB,
              &isTimerB,
              &C::StartTimerB,
              &lastTick_[1]};
    case 3:
      return {&totalC,
              &Chh,
              &Cmm,
              &Css,
              &totalForAvgC,
              &TimerForLabelC,
              &isStartedTimerC,
              &isTimerC,
              &C::StartTimerC,
              &lastTick_[2]};
    default: return {};
  }
}

}  // namespace zellick
