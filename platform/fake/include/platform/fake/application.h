#pragma once

#include <string>

#include "platform/application.h"
#include "platform/fake/recorder.h"
#include "platform/views.h"

namespace zellick::fake {

// Records "awake" when the idle timer is disabled and "open URL" for each URL opened.
class FakeApplication final : public Application {
 public:
  explicit FakeApplication(EventRecorder& events) : events_(events) {}
  void setIdleTimerDisabled(bool disabled) override {
    if (disabled) events_.record("awake");
    idleTimerDisabled_ = disabled;
  }
  void openURL(const std::string& url) override { events_.record("open " + url); }
  bool idleTimerDisabled() const { return idleTimerDisabled_; }

 private:
  EventRecorder& events_;
  bool idleTimerDisabled_ = false;
};

// A window that loads its root controller's view when first made visible.
class FakeWindow final : public Window {
 public:
  void setRootViewController(ViewController* controller) override { root_ = controller; }
  void makeKeyAndVisible() override {
    if (root_ && !loaded_) {
      loaded_ = true;
      root_->viewDidLoad();
    }
    if (root_) root_->viewWillAppear(false);
    visible_ = true;
  }
  bool isVisible() const { return visible_; }

 private:
  ViewController* root_ = nullptr;
  bool loaded_ = false;
  bool visible_ = false;
};

}  // namespace zellick::fake
