#include <cmath>
#include <stdexcept>

#include "platform/fake/time.h"

namespace zellick::fake {

class VirtualRunLoop::SimTimer final : public Timer {
 public:
  void invalidate() override { valid_ = false; }
  bool isValid() const override { return valid_; }

 private:
  bool valid_ = true;
};

namespace {
double delayOf(double seconds) { return std::isfinite(seconds) && seconds > 0 ? seconds : 0; }
}  // namespace

VirtualRunLoop::~VirtualRunLoop() {
  for (auto& [key, entry] : queue_)
    if (entry.timer) entry.timer->invalidate();
}

TimerRef VirtualRunLoop::scheduledTimer(double seconds, std::function<void(Timer&)> fire) {
  auto timer = std::make_shared<SimTimer>();
  queue_.emplace(std::make_pair(time_.now() + delayOf(seconds), nextSeq_++),
                 Entry{timer, std::move(fire), nullptr});
  return timer;
}

void VirtualRunLoop::dispatchAfter(double seconds, std::function<void()> work) {
  queue_.emplace(std::make_pair(time_.now() + delayOf(seconds), nextSeq_++),
                 Entry{nullptr, nullptr, std::move(work)});
}

std::size_t VirtualRunLoop::advance(double seconds) {
  const double until = time_.now() + delayOf(seconds);
  std::size_t fired = 0;
  std::size_t atThisMoment = 0;
  while (!queue_.empty()) {
    auto it = queue_.begin();
    if (it->first.first > until) break;
    Entry entry = std::move(it->second);
    const double due = it->first.first;
    queue_.erase(it);
    if (entry.timer && !entry.timer->isValid()) continue;
    atThisMoment = due > time_.now() ? 1 : atThisMoment + 1;
    if (atThisMoment > kMaxFiringsAtOneMoment) {
      time_.moveTo(until);
      throw std::runtime_error(
          "run loop: timers keep rescheduling themselves without delay; "
          "gave up after " +
          std::to_string(kMaxFiringsAtOneMoment) + " firings at t=" + std::to_string(due));
    }
    ++fired;
    time_.moveTo(due);
    if (entry.timer) {
      // Fired means no longer valid, even inside its own handler.
      entry.timer->invalidate();
      if (entry.fire) entry.fire(*entry.timer);
    } else if (entry.work) {
      entry.work();
    }
  }
  time_.moveTo(until);
  return fired;
}

void FakeMonotonicClock::suspend(double seconds) {
  if (std::isfinite(seconds) && seconds > 0) suspended_ += seconds;
}

void WallClock::sleep(double seconds) {
  if (std::isfinite(seconds) && seconds > 0) slept_ += seconds;
}

}  // namespace zellick::fake
