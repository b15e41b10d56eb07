// The real app (the same start-up as the product's) with what the reliability harnesses drive:
//   --stress-loop N    N rounds (0: until killed) of 1 to 5 Add presses, then a resign, which
//                      saves, and a return; "stress: saved total N" once that save is on disk
//   --first-frame      quit (saving, as any quit does) once the screen is shown
//   --press-randomly   click Add through the window at random moments until killed; after each
//                      press "shown N at MS", MS on CLOCK_MONOTONIC in milliseconds
//   --run-clock        click the clock label to start memory A's clock; "clock started at MS",
//                      then "clock S at MS" whenever its seconds change
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTest>
#include <QTimer>

#include <time.h>

#include <cstdio>
#include <random>

#include "app/zellick_app.h"
#include "ui/first_frame.h"

namespace {

using zellick::ZellickApp;

// Quick enough for hundreds of saves a second, slow enough to leave the loop room for events.
constexpr int kRoundIntervalMs = 3;

double monotonicMs() {
  timespec t{};
  clock_gettime(CLOCK_MONOTONIC, &t);
  return static_cast<double>(t.tv_sec) * 1000.0 + static_cast<double>(t.tv_nsec) / 1e6;
}

void every(int ms, std::function<bool()> step) {
  auto* timer = new QTimer(QCoreApplication::instance());
  timer->setInterval(ms);
  QObject::connect(timer, &QTimer::timeout, timer, [timer, step = std::move(step)] {
    if (!step()) timer->stop();
  });
  timer->start();
}

void stressLoop(ZellickApp& app, long long rounds) {
  auto rng = std::make_shared<std::mt19937>(std::random_device{}());
  auto done = std::make_shared<long long>(0);
  every(kRoundIntervalMs, [&app, rounds, rng, done] {
    zellick::ZellickViewController& c = app.controller();
    const int presses = std::uniform_int_distribution<int>(1, 5)(*rng);
    for (int i = 0; i < presses; ++i) {
      c.Add();
      c.PlayLetUpSound();
    }
    app.notifications().post(zellick::kWillResignActive);
    // The harness takes this line as proof that the count above is on disk.
    if (!app.settings().hasUnsavedChanges()) {
      std::printf("stress: saved total %d\n", static_cast<int>(c.total));
      std::fflush(stdout);
    }
    app.notifications().post(zellick::kDidBecomeActive);
    if (rounds > 0 && ++*done >= rounds) {
      QCoreApplication::quit();
      return false;
    }
    return true;
  });
}

// Where a finger goes on `view`: its centre, in window coordinates.
QPoint centreOf(ZellickApp& app, const zellick::View& view) {
  const zellick::Point c = view.frame().center();
  return app.counter().screen().toWindow(QPointF(c.x, c.y)).toPoint();
}

void pressRandomly(ZellickApp& app) {
  auto rng = std::make_shared<std::mt19937>(std::random_device{}());
  auto next = std::make_shared<double>(0);
  every(5, [&app, rng, next] {
    if (monotonicMs() < *next) return true;
    const QPoint add = centreOf(app, *app.controller().ButtonAdd);
    QTest::mousePress(app.window(), Qt::LeftButton, {}, add);
    QTest::mouseRelease(app.window(), Qt::LeftButton, {}, add);
    std::printf("shown %d at %.1f\n", static_cast<int>(app.controller().total), monotonicMs());
    std::fflush(stdout);
    *next = monotonicMs() + std::uniform_int_distribution<int>(20, 250)(*rng);
    return true;
  });
}

void runClock(ZellickApp& app) {
  QTest::mouseClick(app.window(), Qt::LeftButton, {}, centreOf(app, *app.controller().LabelTimer));
  std::printf("clock started at %.1f\n", monotonicMs());
  std::fflush(stdout);
  auto shown = std::make_shared<long long>(-1);
  every(5, [&app, shown] {
    const zellick::ZellickViewController& c = app.controller();
    const long long seconds = 3600LL * c.Ahh + 60LL * c.Amm + c.Ass;
    if (seconds != *shown) {
      *shown = seconds;
      std::printf("clock %lld at %.1f\n", seconds, monotonicMs());
      std::fflush(stdout);
    }
    return true;
  });
}

}  // namespace

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  const QStringList args = app.arguments();
  const QString mode = args.value(1);
  bool ok = true;
  const long long rounds = args.size() == 3 ? args[2].toLongLong(&ok) : 0;
  const bool known = (mode == "--stress-loop" && args.size() == 3 && ok && rounds >= 0) ||
                     (args.size() == 2 && (mode == "--first-frame" || mode == "--press-randomly" ||
                                           mode == "--run-clock"));
  if (!known) {
    std::fprintf(stderr,
                 "usage: zellick_reliability_app --stress-loop N | --first-frame | "
                 "--press-randomly | --run-clock\n");
    return 2;
  }
  ZellickApp::identify();
  ZellickApp zellick(zellick::Environment::fromProcess());
  const ZellickApp::Launch launched = zellick.launch();
  if (launched != ZellickApp::Launch::Shown)
    return launched == ZellickApp::Launch::AlreadyRunning ? 0 : 1;
  // Input goes through the window once it is shown, as a finger's would.
  zellick::ui::afterFirstFrame(zellick.window(), zellick.window(), [&zellick, mode, rounds] {
    if (mode == "--first-frame") QCoreApplication::quit();
    if (mode == "--stress-loop") stressLoop(zellick, rounds);
    if (mode == "--press-randomly") pressRandomly(zellick);
    if (mode == "--run-clock") runClock(zellick);
  });
  return app.exec();
}
