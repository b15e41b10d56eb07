#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

#include "platform/runloop.h"

namespace zellick::fake {

// Virtual seconds since the simulation began. Owned by the world, so it keeps running on
// across process restarts; only a run loop's advance moves it.
class VirtualTime {
 public:
  VirtualTime() = default;
  VirtualTime(const VirtualTime&) = delete;
  VirtualTime& operator=(const VirtualTime&) = delete;

  double now() const { return now_; }
  // Never goes backwards: an earlier moment is ignored.
  void moveTo(double t) {
    if (t > now_) now_ = t;
  }

 private:
  double now_ = 0;
};

// A run loop whose time moves only in advance(). Timers fire in due order, ties in the
// order they were scheduled, each with the time set to its due moment.
class VirtualRunLoop final : public RunLoop {
 public:
  explicit VirtualRunLoop(VirtualTime& time) : time_(time) {}
  VirtualRunLoop(const VirtualRunLoop&) = delete;
  VirtualRunLoop& operator=(const VirtualRunLoop&) = delete;
  // Pending timers die with the loop: they report invalid and never fire.
  ~VirtualRunLoop() override;

  TimerRef scheduledTimer(double seconds, std::function<void(Timer&)> fire) override;
  void dispatchAfter(double seconds, std::function<void()> work) override;
  // As dispatchAfter(0): the simulated app has one thread.
  void post(std::function<void()> work) override { dispatchAfter(0, std::move(work)); }

  // Moves time on by `seconds` (negative counts as 0), firing every timer due by then,
  // including ones scheduled meanwhile. Returns how many fired. Throws std::runtime_error
  // when timers keep rescheduling themselves at one moment (a chain that time never ends).
  std::size_t advance(double seconds);

  static constexpr std::size_t kMaxFiringsAtOneMoment = 100'000;

 private:
  class SimTimer;
  struct Entry {
    std::shared_ptr<SimTimer> timer;  // null for dispatched work
    std::function<void(Timer&)> fire;
    std::function<void()> work;
  };

  VirtualTime& time_;
  std::uint64_t nextSeq_ = 0;
  std::map<std::pair<double, std::uint64_t>, Entry> queue_;
};

// The monotonic clock of a simulated machine: virtual time plus every second it spent
// suspended (time the run loop did not turn, although the process never left the foreground).
class FakeMonotonicClock final : public MonotonicClock {
 public:
  explicit FakeMonotonicClock(const VirtualTime& time) : time_(time) {}
  FakeMonotonicClock(const FakeMonotonicClock&) = delete;
  FakeMonotonicClock& operator=(const FakeMonotonicClock&) = delete;

  double now() const override { return time_.now() + suspended_; }
  // Negative or non-finite durations are ignored.
  void suspend(double seconds);

 private:
  const VirtualTime& time_;
  double suspended_ = 0;
};

// Wall-clock time: an epoch plus virtual time plus every second slept (time the app spent
// inactive or not running, during which the run loop did not turn).
class WallClock final : public Clock {
 public:
  WallClock(const VirtualTime& time, double epoch) : time_(time), epoch_(epoch) {}
  WallClock(const WallClock&) = delete;
  WallClock& operator=(const WallClock&) = delete;

  double now() const override { return epoch_ + time_.now() + slept_; }
  // Negative or non-finite durations are ignored.
  void sleep(double seconds);
  double slept() const { return slept_; }

 private:
  const VirtualTime& time_;
  double epoch_;
  double slept_ = 0;
};

}  // namespace zellick::fake
