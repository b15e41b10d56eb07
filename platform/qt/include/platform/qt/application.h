#pragma once

#include <QString>

#include <memory>

#include "platform/application.h"
#include "platform/log.h"
#include "platform/qt/idle_inhibitor.h"

namespace zellick::qt {

// The application object on a Linux desktop or phone shell: the idle timer is an idle inhibit
// on the session bus, URLs go to the desktop's handlers. Main thread only.
class QtApplication : public Application {
 public:
  explicit QtApplication(Log& log);
  // Connects to the session bus (a handshake the first frame can do without) and from then on
  // keeps the display awake whenever it was asked to.
  void connectToSession();
  void setIdleTimerDisabled(bool disabled) override;
  void openURL(const std::string& url) override;

 private:
  Log& log_;
  bool keepAwake_ = false;
  std::unique_ptr<IdleInhibitor> inhibitor_;
};

}  // namespace zellick::qt
