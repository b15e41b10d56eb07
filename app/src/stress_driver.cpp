#include "app/stress_driver.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>
#include <random>

namespace zellick {

namespace {
// Quick enough for hundreds of saves a second, slow enough to leave the loop room for events.
constexpr int kRoundIntervalMs = 3;
}  // namespace

void startStressLoop(ZellickViewController& c, NotificationCenter& n, int iterations) {
  auto* timer = new QTimer(QCoreApplication::instance());
  timer->setInterval(kRoundIntervalMs);
  auto rng = std::make_shared<std::mt19937>(std::random_device{}());
  auto rounds = std::make_shared<long long>(0);
  QObject::connect(timer, &QTimer::timeout, timer, [&c, &n, iterations, timer, rng, rounds] {
    const int presses = std::uniform_int_distribution<int>(1, 5)(*rng);
    for (int i = 0; i < presses; ++i) {
      c.Add();
      c.PlayLetUpSound();
    }
    n.post(kWillResignActive);
    // The harness takes this line as proof that the count above is on disk.
    std::printf("stress: saved total %d\n", static_cast<int>(c.total));
    std::fflush(stdout);
    n.post(kDidBecomeActive);
    if (iterations > 0 && ++*rounds >= iterations) {
      timer->stop();
      timer->deleteLater();
      QCoreApplication::quit();
    }
  });
  timer->start();
}

}  // namespace zellick
