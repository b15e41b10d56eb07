#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/application.h"
#include "platform/fake/recorder.h"
#include "platform/fake/views.h"
#include "platform/mail.h"
#include "platform/runloop.h"
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

// Screens over the window's own, as FakeScreens of the given bounds. Records "present NIB" and
// "dismiss NIB"; a screen is gone on the run loop's next turn.
class FakeScreenHost final : public ModalScreenHost {
 public:
  FakeScreenHost(Rect bounds, RunLoop& runLoop, EventRecorder& events)
      : bounds_(bounds), runLoop_(runLoop), events_(events) {}
  ~FakeScreenHost() override { *alive_ = false; }

  std::unique_ptr<Screen> loadScreen(const std::string& nibName,
                                     const std::vector<ControlSpec>& controls) override;
  Rect screenBounds() const override { return bounds_; }
  void show(Screen& screen, bool animated) override;
  void hide(Screen& screen, bool animated, std::function<void()> gone) override;

  // The screen shown last and still on show, or null.
  FakeScreen* front() const;

 private:
  Rect bounds_;
  RunLoop& runLoop_;
  EventRecorder& events_;
  std::map<const Screen*, std::string> names_;  // loaded and not yet gone
  std::vector<FakeScreen*> shown_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

// A mail composer that is there or not on cue (not, at first). Records "present NAME" and
// "dismiss NAME" under the composer's name; finish() ends the one on show.
class FakeMailComposer final : public MailComposer {
 public:
  FakeMailComposer(std::string name, EventRecorder& events)
      : name_(std::move(name)), events_(events) {}

  bool canSendMail() const override { return available_; }
  void present(const MailMessage& message, bool animated,
               std::function<void(MailComposeResult, Status)> finished) override;
  void dismiss(bool animated) override;

  void setAvailable(bool available) { available_ = available; }
  // The message of the composer on show, or nothing.
  const std::optional<MailMessage>& onScreen() const { return message_; }
  // The person is done with the composer on show: false when none is.
  bool finish(MailComposeResult result);

 private:
  std::string name_;
  EventRecorder& events_;
  bool available_ = false;
  std::optional<MailMessage> message_;
  std::function<void(MailComposeResult, Status)> finished_;
};

}  // namespace zellick::fake
