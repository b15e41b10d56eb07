#pragma once

#include <QObject>

#include <functional>
#include <map>
#include <memory>

#include "platform/runloop.h"

namespace zellick::qt {

class QtRunLoopTimer;

// The main run loop on Qt's event loop: one-shot precise timers on one QObject, so a timer
// may be invalidated or dropped from inside its own callback.
class QtRunLoop : public QObject, public RunLoop {
  Q_OBJECT
 public:
  explicit QtRunLoop(QObject* parent = nullptr);
  QtRunLoop(const QtRunLoop&) = delete;
  QtRunLoop& operator=(const QtRunLoop&) = delete;
  ~QtRunLoop() override;

  // Negative or non-finite intervals fire as soon as possible.
  TimerRef scheduledTimer(double seconds, std::function<void(Timer&)> fire) override;
  void dispatchAfter(double seconds, std::function<void()> work) override;
  void post(std::function<void()> work) override;

  // Timers scheduled and neither fired nor invalidated yet.
  std::size_t pendingCount() const { return pending_.size(); }

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  friend class QtRunLoopTimer;
  void cancel(int id);

  std::map<int, std::shared_ptr<QtRunLoopTimer>> pending_;
};

// Wall-clock time from the operating system.
class QtClock : public Clock {
 public:
  double now() const override;
};

// The system's boot-time clock (CLOCK_BOOTTIME): monotonic, and it counts suspended time.
class BootClock : public MonotonicClock {
 public:
  double now() const override;
};

}  // namespace zellick::qt
