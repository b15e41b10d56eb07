#include "platform/fake/application.h"

#include <algorithm>

namespace zellick::fake {

std::unique_ptr<Screen> FakeScreenHost::loadScreen(const std::string& nibName,
                                                   const std::vector<ControlSpec>& controls) {
  auto screen = std::make_unique<FakeScreen>(bounds_, controls, events_);
  names_[screen.get()] = nibName;
  return screen;
}

void FakeScreenHost::show(Screen& screen, bool) {
  auto* fake = dynamic_cast<FakeScreen*>(&screen);
  if (!fake || !names_.count(&screen)) return;
  shown_.push_back(fake);
  events_.record("present " + names_[&screen]);
}

void FakeScreenHost::hide(Screen& screen, bool, std::function<void()> gone) {
  shown_.erase(std::remove(shown_.begin(), shown_.end(), &screen), shown_.end());
  events_.record("dismiss " + names_[&screen]);
  names_.erase(&screen);
  std::weak_ptr<bool> alive = alive_;
  runLoop_.post([alive, gone = std::move(gone)] {
    if (alive.lock() && gone) gone();
  });
}

FakeScreen* FakeScreenHost::front() const { return shown_.empty() ? nullptr : shown_.back(); }

void FakeMailComposer::present(const MailMessage& message, bool,
                               std::function<void(MailComposeResult, Status)> finished) {
  message_ = message;
  finished_ = std::move(finished);
  events_.record("present " + name_);
}

void FakeMailComposer::dismiss(bool) {
  if (!message_) return;
  message_.reset();
  events_.record("dismiss " + name_);
}

bool FakeMailComposer::finish(MailComposeResult result) {
  if (!message_ || !finished_) return false;
  auto finished = std::move(finished_);
  finished_ = nullptr;
  finished(result, {});
  return true;
}

}  // namespace zellick::fake
