#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/bundle.h"
#include "platform/defaults.h"
#include "platform/log.h"
#include "platform/notifications.h"
#include "platform/runloop.h"
#include "platform/sound.h"
#include "platform/views.h"
#include "services/tracker.h"

namespace zellick {

// What the counter screen needs from the outside world. All references outlive the controller.
struct CounterServices {
  RunLoop& runLoop;
  Clock& clock;
  MonotonicClock& uptime;  // what the running clocks count
  NotificationCenter& notifications;
  UserDefaults& defaults;
  SoundOutput& sound;
  Bundle& bundle;
  Log& log;
  AlertPresenter& alerts;
  ScreenPresenter& screens;
  orvtracker& tracker;
};

// The controls of the screen's interface file, found by their field names. Owned by the screen.
struct CounterViews {
  RootView* view = nullptr;
  Button* ButtonReset = nullptr;
  Button* ButtonAdd = nullptr;
  Button* ButtonA = nullptr;
  Button* ButtonB = nullptr;
  Button* ButtonC = nullptr;
  Button* ButtonInfo = nullptr;
  Button* ButtonMinus = nullptr;
  ImageView* ImageView1 = nullptr;
  ImageView* ImageView2 = nullptr;
  ImageView* ImageView3 = nullptr;
  ImageView* ImageView4 = nullptr;
  Label* LabelTimer = nullptr;
  Label* LabelAvg = nullptr;
  ImageView* baseImageView = nullptr;
};

// One touch as the controller sees it: the view it lies on and the platform's tap count.
struct Touch {
  const View* view = nullptr;
  int tapCount = 0;
};

// Tags of the two questions the screen asks.
inline constexpr int kResetCounterAlertTag = 200;
inline constexpr int kResetTimerAlertTag = 201;

// The counter screen: the count on four rolling wheels, three memories with their clocks and
// rates, the reset roll, and saving/restoring across activity changes. Main thread only.
// Each concern lives in its own source file: memories, counting, wheels, reset, clocks,
// persistence, screen.
class ZellickViewController : public ViewController {
 public:
  ZellickViewController(CounterServices services, CounterViews views);
  ZellickViewController(const ZellickViewController&) = delete;
  ZellickViewController& operator=(const ZellickViewController&) = delete;
  ~ZellickViewController() override;

  // Screen construction and life cycle (screen.cpp).
  void viewDidLoad() override;
  void viewWillAppear(bool animated) override;
  bool shouldAutorotateToInterfaceOrientation(InterfaceOrientation orientation) const;
  void applicationWillResignActive();
  void applicationDidBecomeActive();

  // Memories (memories.cpp).
  void SelectMemoryA();
  void SelectMemoryB();
  void SelectMemoryC();
  void MemoryButtonPlayer();

  // Counting and clicks (counting.cpp).
  void Add();
  void PlayLetUpSound();
  void OnClickMinus();
  void OnMinusReleased();
  void OnClickInfo();

  // Digit wheels (wheels.cpp).
  void Show();
  void timerFired1(Timer& timer);
  void timerFired2(Timer& timer);
  void timerFired3(Timer& timer);
  void timerFired4(Timer& timer);

  // Reset roll and the two questions (reset.cpp).
  void Reset();
  void DelayTimerFired(Timer& timer);
  void alertViewClickedButtonAtIndex(AlertView& alert, int buttonIndex);
  void ResetTimerFired(Timer& timer);

  // Clocks and rates (clocks.cpp).
  void StartTimerA(Timer& timer);
  void StartTimerB(Timer& timer);
  void StartTimerC(Timer& timer);
  void ShowOnLabel();
  void touchesBegan(const std::vector<Touch>& touches);
  void touchesEnded(const std::vector<Touch>& touches);

  // Saving and restoring (persistence.cpp).
  void RetrieveValues();
  void SaveUserSettings();

  // Fields, in declaration order; other layers (the scenario driver, tests) read them by name.
  Button* ButtonReset = nullptr;
  Button* ButtonAdd = nullptr;
  Button* ButtonA = nullptr;
  Button* ButtonB = nullptr;
  Button* ButtonC = nullptr;
  Button* ButtonInfo = nullptr;
  Button* ButtonMinus = nullptr;
  ImageView* ImageView1 = nullptr;
  ImageView* ImageView2 = nullptr;
  ImageView* ImageView3 = nullptr;
  ImageView* ImageView4 = nullptr;
  Label* LabelTimer = nullptr;
  Label* LabelAvg = nullptr;
  TimerRef TimerForLabelA;
  TimerRef TimerForLabelB;
  TimerRef TimerForLabelC;
  std::shared_ptr<AlertView> alertView;
  int32_t total = 0;
  int32_t value = 0;
  int32_t totalA = 0;
  int32_t totalB = 0;
  int32_t totalC = 0;
  int32_t buttonId = 1;
  int32_t previousTotal = 0;
  int32_t previousValue = 0;
  int32_t remainder1 = 0;
  int32_t remainder2 = 0;
  int32_t remainder3 = 0;
  int32_t remainder4 = 0;
  TimerRef timer1;
  TimerRef timer2;
  TimerRef timer3;
  TimerRef timer4;
  TimerRef ResetTimer;
  std::shared_ptr<AudioPlayer> player;
  bool IsMinusClicked = false;
  bool IsResetClicked = false;
  int32_t Ahh = 0, Bhh = 0, Chh = 0;
  int32_t Amm = 0, Bmm = 0, Cmm = 0;
  int32_t Ass = 0, Bss = 0, Css = 0;
  int32_t hh = 0, mm = 0, ss = 0;
  int32_t tap = 1;
  int32_t totalForAvgA = 0, totalForAvgB = 0, totalForAvgC = 0;
  int32_t timePassed = 0;
  int32_t isStartedTimerA = 0, isStartedTimerB = 0, isStartedTimerC = 0;
  std::optional<DefaultsArray> CounterArray;
  std::optional<DefaultsArray> TimerArray;
  std::optional<DefaultsArray> TotalForAvgArray;
  std::optional<Date> dateOfInactive;
  UserDefaults* prefs = nullptr;
  bool isTimerA = false, isTimerB = false, isTimerC = false;
  ImageView* baseImageView = nullptr;
  double backgroundTopGap = 0;
  double backgroundLeftGap = 0;
  double backgroundWidth = 0;
  double backgroundHeight = 0;
  double initialPositionOfNumbers = 0;

  // Calls `visit(name, field)` for every field above, in declaration order. The field list is
  // written here once; the scenario driver's state dump reads the controller through it.
  template <class Visitor>
  void visitFields(Visitor&& visit) {
    visit("ButtonReset", ButtonReset);
    visit("ButtonAdd", ButtonAdd);
    visit("ButtonA", ButtonA);
    visit("ButtonB", ButtonB);
    visit("ButtonC", ButtonC);
    visit("ButtonInfo", ButtonInfo);
    visit("ButtonMinus", ButtonMinus);
    visit("ImageView1", ImageView1);
    visit("ImageView2", ImageView2);
    visit("ImageView3", ImageView3);
    visit("ImageView4", ImageView4);
    visit("LabelTimer", LabelTimer);
    visit("LabelAvg", LabelAvg);
    visit("TimerForLabelA", TimerForLabelA);
    visit("TimerForLabelB", TimerForLabelB);
    visit("TimerForLabelC", TimerForLabelC);
    visit("alertView", alertView);
    visit("total", total);
    visit("value", value);
    visit("totalA", totalA);
    visit("totalB", totalB);
    visit("totalC", totalC);
    visit("buttonId", buttonId);
    visit("previousTotal", previousTotal);
    visit("previousValue", previousValue);
    visit("remainder1", remainder1);
    visit("remainder2", remainder2);
    visit("remainder3", remainder3);
    visit("remainder4", remainder4);
    visit("timer1", timer1);
    visit("timer2", timer2);
    visit("timer3", timer3);
    visit("timer4", timer4);
    visit("ResetTimer", ResetTimer);
    visit("player", player);
    visit("IsMinusClicked", IsMinusClicked);
    visit("IsResetClicked", IsResetClicked);
    visit("Ahh", Ahh);
    visit("Bhh", Bhh);
    visit("Chh", Chh);
    visit("Amm", Amm);
    visit("Bmm", Bmm);
    visit("Cmm", Cmm);
    visit("Ass", Ass);
    visit("Bss", Bss);
    visit("Css", Css);
    visit("hh", hh);
    visit("mm", mm);
    visit("ss", ss);
    visit("tap", tap);
    visit("totalForAvgA", totalForAvgA);
    visit("totalForAvgB", totalForAvgB);
    visit("totalForAvgC", totalForAvgC);
    visit("timePassed", timePassed);
    visit("isStartedTimerA", isStartedTimerA);
    visit("isStartedTimerB", isStartedTimerB);
    visit("isStartedTimerC", isStartedTimerC);
    visit("CounterArray", CounterArray);
    visit("TimerArray", TimerArray);
    visit("TotalForAvgArray", TotalForAvgArray);
    visit("dateOfInactive", dateOfInactive);
    visit("prefs", prefs);
    visit("isTimerA", isTimerA);
    visit("isTimerB", isTimerB);
    visit("isTimerC", isTimerC);
    visit("baseImageView", baseImageView);
    visit("backgroundTopGap", backgroundTopGap);
    visit("backgroundLeftGap", backgroundLeftGap);
    visit("backgroundWidth", backgroundWidth);
    visit("backgroundHeight", backgroundHeight);
    visit("initialPositionOfNumbers", initialPositionOfNumbers);
  }

  // Where the wheels show their top "0", for a counter body at `top` that is `height` tall.
  static double wheelsHomeY(double top, double height) { return height / 2.43 + top; }

  // Run after the wheels are sent to show a new count or memory (e.g. to tell a screen reader).
  std::function<void()> onShow;

 private:
  // The fields of one memory; all null for a memory number outside 1..3.
  struct Memory {
    int32_t* count = nullptr;
    int32_t* hh = nullptr;
    int32_t* mm = nullptr;
    int32_t* ss = nullptr;
    int32_t* numerator = nullptr;
    TimerRef* tick = nullptr;
    int32_t* isStarted = nullptr;
    bool* isTimer = nullptr;
    void (ZellickViewController::*tickStep)(Timer&) = nullptr;
    double* lastTick = nullptr;  // on the uptime clock
  };
  // One digit wheel: units is 1, thousands 4.
  struct Wheel {
    ImageView* view;
    int32_t* target;
    TimerRef* timer;
    void (ZellickViewController::*followUp)(Timer&);
  };

  Memory memory(int id);
  Wheel wheel(int index);
  int32_t& countCopy();
  TimerRef schedule(double seconds, void (ZellickViewController::*step)(Timer&));
  void later(double seconds, void (ZellickViewController::*work)());
  std::shared_ptr<AudioPlayer> makePlayer(const char* resource);
  // A click: a new player per play, dropped at once so quick presses overlap.
  void playClick(const char* resource);
  void setAllSixButtons(bool enabled);  // Reset, Add, Minus, A, B, C
  void setOtherMemoryButtons(bool enabled);
  void setLabelColors(Color color);  // LabelTimer, then LabelAvg
  void selectMemory(int id);
  void followUp(int index);
  void startTick(int id, double seconds);
  void tick(int id);
  void writeZeroRate();
  void showQuestion();
  void confirmResetCounter();
  void keepCounter();
  void confirmResetTimer();
  void keepTimer();
  void placeWheels();
  void redraw();
  void catchUp(double secondsSinceNow);
  void addOneSecond(const Memory& x);
  // The changes a user makes reach the store within a second or two, however the app ends.
  void stateChanged();
  void autosave(Timer& timer);
  void storeState();

  void log(const std::string& line) { services_.log.line(line); }

  CounterServices services_;
  RootView* view_ = nullptr;
  // Deferred work holds a weak reference, so nothing fires into a destroyed controller.
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
  // The last save did not reach permanent storage, so the store holds older values.
  bool saveFailed_ = false;
  TimerRef autosave_;
  // When each memory's clock last counted a second, on the uptime clock.
  double lastTick_[3] = {0, 0, 0};
};

}  // namespace zellick
