// The real app (the same start-up as the product's) with what the reliability harnesses drive:
//   --stress-loop N    N rounds (0: until killed) of 1 to 5 Add presses, then a resign, which
//                      saves, and a return; "stress: saved total N" once that save is on disk
//   --first-frame      quit (saving, as any quit does) once the screen is shown
//   --press-randomly   click Add through the window at random moments until killed; after each
//                      press "shown N at MS", MS on CLOCK_MONOTONIC in milliseconds
//   --run-clock        click the clock label to start memory A's clock; "clock started at MS",
//                      then "clock S at MS" whenever its seconds change
//   --press N S        click Add N times, evenly over S seconds, then print "frames p99 MS,
//                      threads T, memory KB" (frame intervals meanwhile, peak threads and resident
//                      memory) and quit
//   --press-then-close N   click Add N times at once, print "closing at MS" and close the window
//   --open-more N      once the catalogue holds N entries and N icon files are in the documents
//                      folder, click Info; once the More screen's icons are read, print
//                      "row TEXT: icon" (or ": no icon") for each row on show, then "more shown"
//                      and quit
//   --close-on-input   close the window (as a user quits) when a line or the end comes on stdin
// Any mode may be followed by --no-usage-records, as the app's own switch.
#include <QDir>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSocketNotifier>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <random>

#include "app/zellick_app.h"
#include "harness.h"
#include "services/apps.h"
#include "ui/first_frame.h"

namespace {

using zellick::ZellickApp;
using zellick::test::monotonicMs;

// Quick enough for hundreds of saves a second, slow enough to leave the loop room for events.
constexpr int kRoundIntervalMs = 3;

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
    }
    app.notifications().post(zellick::kDidBecomeActive);
    if (rounds > 0 && ++*done >= rounds) {
      QCoreApplication::quit();
      return false;
    }
    return true;
  });
}

// A finger on `view`'s centre, through the window.
void click(ZellickApp& app, const zellick::View& view) {
  const zellick::Point c = view.frame().center();
  const QPoint at = app.counter().screen().toWindow(QPointF(c.x, c.y)).toPoint();
  QTest::mouseClick(app.window(), Qt::LeftButton, {}, at);
}

void pressRandomly(ZellickApp& app) {
  auto rng = std::make_shared<std::mt19937>(std::random_device{}());
  auto next = std::make_shared<double>(0);
  every(5, [&app, rng, next] {
    if (monotonicMs() < *next) return true;
    click(app, *app.controller().ButtonAdd);
    std::printf("shown %d at %.1f\n", static_cast<int>(app.controller().total), monotonicMs());
    *next = monotonicMs() + std::uniform_int_distribution<int>(20, 250)(*rng);
    return true;
  });
}

long statusField(const char* name) {
  std::ifstream in("/proc/self/status");
  for (std::string line; std::getline(in, line);)
    if (line.rfind(name, 0) == 0) return std::stol(line.substr(line.find(':') + 1));
  return -1;
}

void pressSpread(ZellickApp& app, int presses, double seconds) {
  auto frames = std::make_shared<std::vector<double>>();
  auto peakThreads = std::make_shared<long>(0);
  QObject::connect(app.window(), &QQuickWindow::frameSwapped, app.window(),
                   [frames] { frames->push_back(monotonicMs()); });
  const double start = monotonicMs();
  auto done = std::make_shared<int>(0);
  every(2, [&app, presses, seconds, start, done, frames, peakThreads] {
    *peakThreads = std::max(*peakThreads, statusField("Threads:"));
    if (*done < presses && monotonicMs() >= start + *done * seconds * 1000.0 / presses) {
      click(app, *app.controller().ButtonAdd);
      ++*done;
      return true;
    }
    if (*done < presses) return true;
    std::vector<double> gaps;
    for (size_t i = 1; i < frames->size(); ++i) gaps.push_back((*frames)[i] - (*frames)[i - 1]);
    std::sort(gaps.begin(), gaps.end());
    const double p99 = gaps.empty() ? 0 : gaps[std::min(gaps.size() - 1, gaps.size() * 99 / 100)];
    std::printf("frames p99 %.1f ms over %zu frames, threads %ld, memory %ld kB\n", p99,
                frames->size(), *peakThreads, statusField("VmHWM:"));
    QTimer::singleShot(500, qApp, &QCoreApplication::quit);  // the last records go out
    return false;
  });
}

void pressThenClose(ZellickApp& app, int presses) {
  for (int i = 0; i < presses; ++i) click(app, *app.controller().ButtonAdd);
  std::printf("closing at %.1f\n", monotonicMs());
  app.window()->close();
}

void closeOnInput(ZellickApp& app) {
  auto* input = new QSocketNotifier(0, QSocketNotifier::Read, app.window());
  QObject::connect(input, &QSocketNotifier::activated, app.window(), [&app, input] {
    input->setEnabled(false);
    app.window()->close();
  });
}

void runClock(ZellickApp& app) {
  click(app, *app.controller().LabelTimer);
  std::printf("clock started at %.1f\n", monotonicMs());
  auto shown = std::make_shared<long long>(-1);
  every(5, [&app, shown] {
    const zellick::ZellickViewController& c = app.controller();
    const long long seconds = 3600LL * c.Ahh + 60LL * c.Amm + c.Ass;
    if (seconds != *shown) {
      *shown = seconds;
      std::printf("clock %lld at %.1f\n", seconds, monotonicMs());
    }
    return true;
  });
}

// The items named `name` under `item`, in the order met.
void findAll(QQuickItem* item, const char* name, std::vector<QQuickItem*>& found) {
  if (item->objectName() == name) found.push_back(item);
  for (QQuickItem* child : item->childItems()) findAll(child, name, found);
}

QQuickItem* findChild(QQuickItem* item, const char* name) {
  std::vector<QQuickItem*> found;
  findAll(item, name, found);
  return found.empty() ? nullptr : found.front();
}

void openMore(ZellickApp& app, long long entries) {
  const QDir documents(zellick::Environment::fromProcess().documentsFolder);
  auto clicked = std::make_shared<bool>(false);
  every(50, [&app, entries, documents, clicked] {
    if (!*clicked) {
      const auto list = app.settings().arrayForKey(zellick::kMoreAppsKey);
      if (!list || static_cast<long long>(list->size()) != entries ||
          documents.entryList({"*@2x.png"}, QDir::Files).size() != entries)
        return true;
      click(app, *app.controller().ButtonInfo);
      *clicked = true;
      return true;
    }
    std::vector<QQuickItem*> rows;
    findAll(app.window()->contentItem(), "TableRow", rows);
    std::erase_if(rows, [](QQuickItem* row) { return !row->isVisible(); });
    // Icon files are read off the main thread: wait until none is loading.
    for (QQuickItem* row : rows)
      if (findChild(row, "CellIcon")->property("status").toInt() == 2 /* Loading */) return true;
    if (rows.empty()) return true;
    std::sort(rows.begin(), rows.end(), [](QQuickItem* a, QQuickItem* b) {
      return a->mapToScene({0, 0}).y() < b->mapToScene({0, 0}).y();
    });
    for (QQuickItem* row : rows) {
      const bool icon = findChild(row, "CellIcon")->property("status").toInt() == 1 /* Ready */;
      std::printf("row %s: %s\n",
                  qPrintable(findChild(row, "CellText")->property("text").toString()),
                  icon ? "icon" : "no icon");
    }
    std::printf("more shown\n");
    QCoreApplication::quit();
    return false;
  });
}

}  // namespace

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // each line reaches the harness as it is printed
  QStringList args = app.arguments();
  zellick::CommandLine commandLine;
  if (args.size() > 2 && args.back() == QLatin1String("--no-usage-records")) {
    commandLine.usageRecordsOff = true;
    args.removeLast();
  }
  const QString mode = args.value(1);
  bool ok = true, okToo = true;
  const long long n = args.size() >= 3 ? args[2].toLongLong(&ok) : 0;
  const double seconds = args.size() == 4 ? args[3].toDouble(&okToo) : 0;
  // Each mode with the count of its arguments and the least first number it takes.
  const std::map<QString, std::pair<int, long long>> modes = {
      {"--stress-loop", {1, 0}}, {"--press", {2, 1}},         {"--press-then-close", {1, 0}},
      {"--open-more", {1, 1}},   {"--first-frame", {0, 0}},   {"--press-randomly", {0, 0}},
      {"--run-clock", {0, 0}},   {"--close-on-input", {0, 0}}};
  const auto known = modes.find(mode);
  if (known == modes.end() || args.size() != 2 + known->second.first || !ok || !okToo ||
      n < known->second.second || (args.size() == 4 && seconds <= 0)) {
    std::fprintf(stderr,
                 "usage: zellick_reliability_app --stress-loop N | --first-frame | "
                 "--press-randomly | --run-clock | --press N SECONDS | --press-then-close N | "
                 "--open-more N | --close-on-input [--no-usage-records]\n");
    return 2;
  }
  ZellickApp::identify();
  // Ends as the app's own main does.
  const int code = [&] {
    ZellickApp zellick(zellick::Environment::fromProcess(), commandLine);
    const ZellickApp::Launch launched = zellick.launch();
    if (launched != ZellickApp::Launch::Shown)
      return launched == ZellickApp::Launch::AlreadyRunning ? 0 : 1;
    // Input goes through the window once it is shown, as a finger's would.
    zellick::ui::afterFirstFrame(zellick.window(), zellick.window(), [&zellick, mode, n, seconds] {
      if (mode == "--first-frame") QCoreApplication::quit();
      if (mode == "--stress-loop") stressLoop(zellick, n);
      if (mode == "--press-randomly") pressRandomly(zellick);
      if (mode == "--run-clock") runClock(zellick);
      if (mode == "--press") pressSpread(zellick, static_cast<int>(n), seconds);
      if (mode == "--press-then-close") pressThenClose(zellick, static_cast<int>(n));
      if (mode == "--open-more") openMore(zellick, n);
      if (mode == "--close-on-input") closeOnInput(zellick);
    });
    return app.exec();
  }();
  return zellick::endProcess(code);
}
