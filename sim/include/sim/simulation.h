#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "adconnect/AdConnect.h"
#include "app/ZellickAppDelegate.h"
#include "counter/ZellickViewController.h"
#include "more/moreView.h"
#include "platform/application.h"
#include "platform/fake/application.h"
#include "platform/fake/documents.h"
#include "platform/fake/http.h"
#include "platform/fake/memory_defaults.h"
#include "platform/fake/recorder.h"
#include "platform/fake/services.h"
#include "platform/fake/time.h"
#include "platform/fake/views.h"
#include "platform/notifications.h"
#include "services/apps.h"
#include "services/configuration.h"
#include "services/tracker.h"

namespace zellick::sim {

using fake::InputResult;

struct SimOptions {
  double screenHeight = 480;  // logical points, at least 480; the width is always 320
  double epoch = 1.8e9;       // wall-clock seconds at virtual time 0
  // What the machine says of itself to the maker's services.
  DeviceFacts device{"Zellick Sim",
                     "Simulated PC",
                     "Debian GNU/Linux",
                     "12",
                     "5A1C0E2B-7F3D-4E8A-9B6C-0D1E2F3A4B5C",
                     "US",
                     "en"};
  Configuration configuration = Configuration::shipped();
  // The bundled seed list of the maker's other apps; empty: the bundle has none.
  std::string seedList = kBundledSeedList;
  // The seed list the build made, beside the sim.
  static const char* const kBundledSeedList;
};

// The real tracker, each record also shown as a "track TAG" event.
class RecordingTracker final : public orvtracker {
 public:
  RecordingTracker(Services services, DeviceFacts device, std::string makerBaseUrl,
                   fake::EventRecorder& events)
      : orvtracker(services, std::move(device), std::move(makerBaseUrl)), events_(events) {}
  void Track(const std::string& tag) override {
    events_.record("track " + tag);
    orvtracker::Track(tag);
  }

 private:
  fake::EventRecorder& events_;
};

// What outlives a process: virtual time, the wall clock, the saved defaults, the event log.
class World {
 public:
  explicit World(SimOptions options = {});
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  const SimOptions& options() const { return options_; }
  fake::VirtualTime& time() { return time_; }
  fake::WallClock& clock() { return clock_; }
  fake::FakeMonotonicClock& uptime() { return uptime_; }
  fake::EventRecorder& events() { return events_; }
  // The store underneath; `defaults()` is what processes use.
  fake::MemoryDefaults& store() { return store_; }
  UserDefaults& defaults() { return defaults_ ? *defaults_ : store_; }
  // How the simulated network answers; it outlives processes.
  fake::HttpRules& network() { return network_; }
  // The app's documents folder (the catalogue's icons).
  fake::MemoryDocuments& documents() { return documents_; }
  // Whether the machine has a mail composer to offer.
  bool mailAvailable = false;
  // Puts another store (e.g. a fault-injecting wrapper of store()) in front; null removes it.
  // It must outlive every process started afterwards.
  void useDefaults(UserDefaults* defaults) { defaults_ = defaults; }

 private:
  SimOptions options_;
  fake::VirtualTime time_;
  fake::WallClock clock_;
  fake::FakeMonotonicClock uptime_;
  fake::EventRecorder events_;
  fake::MemoryDefaults store_;
  fake::HttpRules network_;
  fake::MemoryDocuments documents_;
  UserDefaults* defaults_ = nullptr;
};

// One run of the app: its run loop, screen, services, ad network client, delegate and
// controller. Construction starts it as the app does (the delegate's launch, which shows the
// counter, then become-active); destruction ends it without any save, and its pending timers and
// requests die with it. The ad network's two notifications are recorded as
// "notification NAME" as they are posted.
class Process {
 public:
  explicit Process(World& world);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  ZellickViewController& controller() { return *controller_; }
  ZellickAppDelegate& delegate() { return *delegate_; }
  AdConnect& adConnect() { return adConnect_; }
  fake::VirtualRunLoop& runLoop() { return runLoop_; }
  NotificationCenter& notifications() { return notifications_; }
  fake::FakeScreen& screen() { return screen_; }
  fake::FakeAlerts& alerts() { return screen_.alerts(); }

  // Views by field name ("view" for the root); null when there is none.
  View* view(const std::string& name) { return screen_.view(name); }
  fake::FakeButton* button(const std::string& name) { return screen_.button(name); }
  fake::FakeLabel* label(const std::string& name) { return screen_.label(name); }
  fake::FakeImageView* imageView(const std::string& name) { return screen_.imageView(name); }

  // Input to the counter's screen; refused while another screen covers it.
  InputResult press(const std::string& name) {
    return unlessCovered(name, [&] { return screen_.press(name); });
  }
  InputResult release(const std::string& name) {
    return unlessCovered(name, [&] { return screen_.release(name); });
  }
  InputResult tap(const std::string& name) {
    return unlessCovered(name, [&] { return screen_.tap(name); });
  }
  InputResult touch(const std::string& name, int tapCount) {
    return unlessCovered(name, [&] { return screen_.touch(name, tapCount); });
  }
  std::optional<std::string> answer(int index) { return alerts().answer(index); }
  // Keys go to the screen in front: the More screen while it is on show, else the counter's.
  InputResult keyDown(const std::string& key) {
    return host_.front() ? host_.front()->keyDown(key) : screen_.keyDown(key);
  }
  InputResult keyUp(const std::string& key) {
    return host_.front() ? host_.front()->keyUp(key) : screen_.keyUp(key);
  }

  // The More screen and its controller while it is on show; null otherwise.
  fake::FakeScreen* moreScreen() { return host_.front(); }
  moreView* more() { return screens_.controller(); }
  fake::FakeMailComposer& mail() { return mail_; }
  orvapps& apps() { return apps_; }
  void resign() { events_.willResignActive(); }
  void activate() { events_.didBecomeActive(); }
  // To the background (resigning first) and back (becoming active after).
  void background() {
    events_.willResignActive();
    events_.didEnterBackground();
  }
  void foreground() {
    events_.willEnterForeground();
    events_.didBecomeActive();
  }

 private:
  // Input to the counter's view `name`: it goes nowhere while another screen covers it.
  template <class Input>
  InputResult unlessCovered(const std::string& name, Input input) {
    if (!host_.front()) return input();
    return screen_.view(name) ? InputResult::Ignored : InputResult::Unknown;
  }

  World& world_;
  fake::VirtualRunLoop runLoop_;
  NotificationCenter notifications_;
  fake::RecordingSoundOutput sound_;
  fake::FakeBundle bundle_;
  fake::EventLog log_;
  fake::FakeHttpClient http_;
  RecordingTracker tracker_;
  AdConnect adConnect_;
  fake::FakeApplication application_;
  orvapps apps_;
  fake::FakeScreenHost host_;
  fake::FakeMailComposer mail_;
  MoreScreenPresenter screens_;
  fake::FakeWindow window_;
  LifecycleEvents events_;
  fake::FakeScreen screen_;
  // Last, so they go first: their destructors may still touch the services above.
  std::unique_ptr<ZellickViewController> controller_;
  std::unique_ptr<ZellickAppDelegate> delegate_;
};

// A world plus the process running in it; what the driver and the tests drive.
class Simulation {
 public:
  explicit Simulation(SimOptions options = {}) : world_(options) {}

  World& world() { return world_; }
  bool running() const { return process_ != nullptr; }
  // Starts a process; a no-op while one runs.
  Process& start();
  // The running process, started on first use.
  Process& process() { return start(); }
  // Ends the process as a kill would and starts a fresh one over the same world.
  Process& restart();

  // Run-loop time passes; timers fire.
  std::size_t wait(double seconds) { return process().runLoop().advance(seconds); }
  // Wall-clock time passes without the run loop turning.
  void sleep(double seconds) { world_.clock().sleep(seconds); }
  // The machine sleeps, or the process is stopped, while the app runs: the wall clock and the
  // monotonic clock move on, the run loop does not; its timers come due late.
  void suspend(double seconds) {
    world_.clock().sleep(seconds);
    world_.uptime().suspend(seconds);
  }

 private:
  World world_;
  std::unique_ptr<Process> process_;
};

}  // namespace zellick::sim
