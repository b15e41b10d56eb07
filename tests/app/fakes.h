#pragma once

// What the Qt tests need beyond the product: a log to read back (shared with the platform
// tests), and animation time that moves only when told.
#include <QAnimationDriver>

#include "recording_log.h"

namespace zellick::test {

class SteppedAnimationDriver : public QAnimationDriver {
 public:
  void step(qint64 ms) {
    elapsed_ += ms;
    advance();
  }
  qint64 elapsed() const override { return elapsed_; }

 protected:
  // Time counts from each start: Qt stops the driver while nothing runs, and a move begun
  // after a pause must not be handed the idle time at once.
  void start() override {
    elapsed_ = 0;
    QAnimationDriver::start();
  }

 private:
  qint64 elapsed_ = 0;
};

}  // namespace zellick::test
