#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "counter/ZellickViewController.h"
#include "counter/actions.h"
#include "platform/notifications.h"
#include "platform/sim/memory_defaults.h"
#include "platform/sim/recorder.h"
#include "platform/sim/services.h"
#include "platform/sim/time.h"
#include "platform/sim/views.h"

namespace zellick::sim {

struct SimOptions {
  double screenHeight = kMinScreenHeight;  // logical points; the width is always 320
  double epoch = 1.8e9;                    // wall-clock seconds at virtual time 0
};

// What outlives a process: virtual time, the wall clock, the saved defaults, the event log.
class World {
 public:
  explicit World(SimOptions options = {});
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  const SimOptions& options() const { return options_; }
  VirtualTime& time() { return time_; }
  WallClock& clock() { return clock_; }
  EventRecorder& events() { return events_; }
  // The store underneath; `defaults()` is what processes use.
  MemoryDefaults& store() { return store_; }
  UserDefaults& defaults() { return defaults_ ? *defaults_ : store_; }
  // Puts another store (e.g. a fault-injecting wrapper of store()) in front; null removes it.
  // It must outlive every process started afterwards.
  void useDefaults(UserDefaults* defaults) { defaults_ = defaults; }

 private:
  SimOptions options_;
  VirtualTime time_;
  WallClock clock_;
  EventRecorder events_;
  MemoryDefaults store_;
  UserDefaults* defaults_ = nullptr;
};

enum class InputResult {
  Done,     // the input reached the screen
  Ignored,  // the control refused it (interaction off, or a release without a press)
  Unknown,  // no view of that name
};

// One run of the app: its run loop, screen, services and controller. Construction starts it
// as the app does (viewDidLoad, viewWillAppear, then become-active); destruction ends it
// without any save, and its pending timers die with it.
class Process {
 public:
  explicit Process(World& world);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  ZellickViewController& controller() { return *controller_; }
  VirtualRunLoop& runLoop() { return runLoop_; }
  NotificationCenter& notifications() { return notifications_; }
  SimAlerts& alerts() { return alerts_; }
  SimRootView& root() { return root_; }

  // Views by field name ("view" for the root); null when there is none.
  View* view(const std::string& name) const;
  SimButton* button(const std::string& name) const;
  SimLabel* label(const std::string& name) const;
  SimImageView* imageView(const std::string& name) const;
  // The name of a view of this screen, or nothing.
  std::optional<std::string> nameOf(const View* view) const;
  // Controls, wheels and the body picture, in the controller's field order.
  static const std::vector<std::string>& viewNames();

  // A finger down on a button: refused while its interaction is off; otherwise the button is
  // highlighted and its press action runs.
  InputResult press(const std::string& name);
  // The finger lifted: only after an accepted press of that button.
  InputResult release(const std::string& name);
  InputResult tap(const std::string& name);
  // A touch that begins and ends on any view, with the platform's tap count.
  InputResult touch(const std::string& name, int tapCount);
  std::optional<std::string> answer(int index) { return alerts_.answer(index); }
  void resign() { notifications_.post(kWillResignActive); }
  void activate() { notifications_.post(kDidBecomeActive); }

 private:
  World& world_;
  VirtualRunLoop runLoop_;
  NotificationCenter notifications_;
  SimSoundOutput sound_;
  SimBundle bundle_;
  SimLog log_;
  SimAlerts alerts_;
  SimScreens screens_;
  SimTracker tracker_;
  SimRootView root_;
  std::map<std::string, std::unique_ptr<SimButton>> buttons_;
  std::map<std::string, std::unique_ptr<SimLabel>> labels_;
  std::map<std::string, std::unique_ptr<SimImageView>> images_;
  std::set<std::string> pressed_;
  std::map<std::string, ControlActions> actions_;
  // Last, so it goes first: its destructor may still touch the services above.
  std::unique_ptr<ZellickViewController> controller_;
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

 private:
  World world_;
  std::unique_ptr<Process> process_;
};

}  // namespace zellick::sim
