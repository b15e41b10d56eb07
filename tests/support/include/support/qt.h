#pragma once

// What the Qt tests need beyond the product: animation time that moves only when told, and a
// bounded wait on the event loop.
#include <QAnimationDriver>
#include <QCoreApplication>
#include <QElapsedTimer>

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

// Runs the event loop until `done()` holds or five seconds pass; whether it holds.
template <class F>
bool waitFor(F done) {
  QElapsedTimer t;
  t.start();
  while (!done() && t.elapsed() < 5000) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  return done();
}

}  // namespace zellick::test
