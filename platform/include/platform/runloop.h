#pragma once

#include <functional>
#include <memory>

namespace zellick {

// A one-shot timer on the main run loop. Valid until it has fired or was invalidated.
class Timer {
 public:
  virtual ~Timer() = default;
  // Cancels the timer; harmless after it fired or when called twice.
  virtual void invalidate() = 0;
  virtual bool isValid() const = 0;
};

// Shared because both the run loop (until it fires) and the holder's field refer to it;
// an empty pointer in a timer field means "not running".
using TimerRef = std::shared_ptr<Timer>;

// The main thread's run loop: the only source of deferred work for the controllers.
class RunLoop {
 public:
  virtual ~RunLoop() = default;
  // Fires `fire` once, `seconds` from now, passing the timer itself. Never returns null.
  virtual TimerRef scheduledTimer(double seconds, std::function<void(Timer&)> fire) = 0;
  // Calls `work` once on the main loop after `seconds`; cannot be cancelled.
  virtual void dispatchAfter(double seconds, std::function<void()> work) = 0;
  // Calls `work` once on the main loop, soon; the only call here that any thread may make. Work
  // still waiting when the loop goes never runs.
  virtual void post(std::function<void()> work) = 0;
};

// Wall-clock time, in seconds since 1970-01-01 UTC. Keeps going while the app is inactive.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual double now() const = 0;
};

// Seconds from an arbitrary origin on a clock that never goes back and keeps counting while
// the process is stopped or the machine sleeps: for how long something took, not what time it
// is. Any thread.
class MonotonicClock {
 public:
  virtual ~MonotonicClock() = default;
  virtual double now() const = 0;
};

}  // namespace zellick
