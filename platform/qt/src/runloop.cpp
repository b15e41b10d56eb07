#include "platform/qt/runloop.h"

#include <QDateTime>
#include <QPointer>
#include <QTimerEvent>

#include <time.h>

#include <cmath>
#include <limits>

namespace zellick::qt {

class QtRunLoopTimer : public Timer {
 public:
  QtRunLoopTimer(QtRunLoop* loop, std::function<void(Timer&)> fire)
      : loop_(loop), fire_(std::move(fire)) {}

  void invalidate() override {
    if (!valid_) return;
    valid_ = false;
    if (loop_ && id_ != 0) loop_->cancel(id_);
    id_ = 0;
  }
  bool isValid() const override { return valid_; }

  void fire() {
    id_ = 0;
    // Still valid while its callback runs, invalid once it returns (a one-shot timer).
    auto work = std::move(fire_);
    if (work) work(*this);
    valid_ = false;
  }

  QPointer<QtRunLoop> loop_;
  std::function<void(Timer&)> fire_;
  int id_ = 0;
  bool valid_ = true;
};

namespace {

int toMilliseconds(double seconds) {
  if (!std::isfinite(seconds) || seconds <= 0) return 0;
  const double ms = std::round(seconds * 1000.0);
  const double cap = std::numeric_limits<int>::max();
  return ms >= cap ? std::numeric_limits<int>::max() : static_cast<int>(ms);
}

}  // namespace

QtRunLoop::QtRunLoop(QObject* parent) : QObject(parent) {}

QtRunLoop::~QtRunLoop() {
  for (auto& [id, timer] : pending_) {
    killTimer(id);
    timer->id_ = 0;
    timer->loop_ = nullptr;
  }
}

TimerRef QtRunLoop::scheduledTimer(double seconds, std::function<void(Timer&)> fire) {
  auto timer = std::make_shared<QtRunLoopTimer>(this, std::move(fire));
  const int id = startTimer(toMilliseconds(seconds), Qt::PreciseTimer);
  if (id == 0) {
    // No timer slot left: the timer stays pending forever rather than firing early.
    return timer;
  }
  timer->id_ = id;
  pending_.emplace(id, timer);
  return timer;
}

void QtRunLoop::dispatchAfter(double seconds, std::function<void()> work) {
  scheduledTimer(seconds, [work = std::move(work)](Timer&) {
    if (work) work();
  });
}

void QtRunLoop::post(std::function<void()> work) {
  QMetaObject::invokeMethod(
      this, [work = std::move(work)] { work(); }, Qt::QueuedConnection);
}

void QtRunLoop::cancel(int id) {
  killTimer(id);
  pending_.erase(id);
}

void QtRunLoop::timerEvent(QTimerEvent* event) {
  const int id = event->timerId();
  killTimer(id);
  auto it = pending_.find(id);
  if (it == pending_.end()) return;
  std::shared_ptr<QtRunLoopTimer> timer = std::move(it->second);
  pending_.erase(it);
  timer->fire();  // `timer` keeps it alive even if its holder drops it in the callback
}

double BootClock::now() const {
  timespec t{};
  clock_gettime(CLOCK_BOOTTIME, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

double QtClock::now() const {
  return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

}  // namespace zellick::qt
