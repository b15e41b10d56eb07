// The real app (the same start-up as the product's) with what the reliability harnesses drive:
//   zellick_reliability_app --stress-loop N   N rounds of presses and saves, then quit; 0 runs
//                                             until killed
//   zellick_reliability_app --first-frame     quit (saving, as any quit does) once the screen
//                                             is shown
// Each stress round presses Add (with its release) 1 to 5 times, then resigns active (which
// saves) and becomes active again, printing "stress: saved total N" after the save.
#include <QGuiApplication>
#include <QTimer>

#include <cstdio>
#include <random>

#include "app/zellick_app.h"
#include "ui/first_frame.h"

namespace {

// Quick enough for hundreds of saves a second, slow enough to leave the loop room for events.
constexpr int kRoundIntervalMs = 3;

void startStressLoop(zellick::ZellickViewController& c, zellick::NotificationCenter& n,
                     long long rounds) {
  auto* timer = new QTimer(QCoreApplication::instance());
  timer->setInterval(kRoundIntervalMs);
  auto rng = std::make_shared<std::mt19937>(std::random_device{}());
  auto done = std::make_shared<long long>(0);
  QObject::connect(timer, &QTimer::timeout, timer, [&c, &n, rounds, timer, rng, done] {
    const int presses = std::uniform_int_distribution<int>(1, 5)(*rng);
    for (int i = 0; i < presses; ++i) {
      c.Add();
      c.PlayLetUpSound();
    }
    n.post(zellick::kWillResignActive);
    // The harness takes this line as proof that the count above is on disk.
    std::printf("stress: saved total %d\n", static_cast<int>(c.total));
    std::fflush(stdout);
    n.post(zellick::kDidBecomeActive);
    if (rounds > 0 && ++*done >= rounds) {
      timer->stop();
      QCoreApplication::quit();
    }
  });
  timer->start();
}

}  // namespace

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  const QStringList args = app.arguments();
  bool ok = args.size() == 3 && args[1] == QLatin1String("--stress-loop");
  const long long rounds = ok ? args[2].toLongLong(&ok) : 0;
  const bool firstFrame = args.size() == 2 && args[1] == QLatin1String("--first-frame");
  if (!(ok && rounds >= 0) && !firstFrame) {
    std::fprintf(stderr, "usage: zellick_reliability_app --stress-loop N | --first-frame\n");
    return 2;
  }
  zellick::ZellickApp::identify();
  zellick::ZellickApp zellick(zellick::Environment::fromProcess());
  if (!zellick.launch()) return 1;
  if (firstFrame) {
    zellick::ui::afterFirstFrame(zellick.window(), zellick.window(),
                                 [] { QCoreApplication::quit(); });
  } else {
    startStressLoop(zellick.controller(), zellick.notifications(), rounds);
  }
  return app.exec();
}
