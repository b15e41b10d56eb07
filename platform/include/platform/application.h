#pragma once

#include <string>

#include "platform/notifications.h"

namespace zellick {

// What the app's delegate asks of the platform's application object. Main thread.
class Application {
 public:
  virtual ~Application() = default;
  // Keeps the display from dimming or locking while the app runs (true), or lets it (false).
  virtual void setIdleTimerDisabled(bool disabled) = 0;
  // Hands `url` to the system (browser, mail client, store) and returns at once.
  virtual void openURL(const std::string& url) = 0;
};

// The application's life cycle as its delegate hears it. Main thread.
class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;
  virtual void applicationWillResignActive() {}
  virtual void applicationDidEnterBackground() {}
  virtual void applicationWillEnterForeground() {}
  virtual void applicationDidBecomeActive() {}
  virtual void applicationWillTerminate() {}
  virtual void applicationSignificantTimeChange() {}
};

// Each change of the life cycle as the platform delivers it: first to the delegate, then as a
// notification to every observer. Main thread.
class LifecycleEvents {
 public:
  explicit LifecycleEvents(NotificationCenter& center) : center_(center) {}
  void setDelegate(ApplicationDelegate* delegate) { delegate_ = delegate; }

  void willResignActive() {
    deliver(&ApplicationDelegate::applicationWillResignActive, kWillResignActive);
  }
  void didEnterBackground() {
    deliver(&ApplicationDelegate::applicationDidEnterBackground, kDidEnterBackground);
  }
  void willEnterForeground() {
    deliver(&ApplicationDelegate::applicationWillEnterForeground, kWillEnterForeground);
  }
  void didBecomeActive() {
    deliver(&ApplicationDelegate::applicationDidBecomeActive, kDidBecomeActive);
  }
  void willTerminate() { deliver(&ApplicationDelegate::applicationWillTerminate, kWillTerminate); }
  void significantTimeChange() {
    deliver(&ApplicationDelegate::applicationSignificantTimeChange, kSignificantTimeChange);
  }

 private:
  void deliver(void (ApplicationDelegate::*method)(), const char* name) {
    if (delegate_) (delegate_->*method)();
    center_.post(name);
  }
  NotificationCenter& center_;
  ApplicationDelegate* delegate_ = nullptr;
};

}  // namespace zellick
