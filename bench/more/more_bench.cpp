// Opening the More screen over the counter with a large catalogue, offscreen: the time from the
// Info tap to the first frame that shows the screen (target: 50 ms or less), and memory.
//   zellick_more_bench [--runs N] [--entries N]
// Prepares a settings file whose "MoreApps" holds N entries (2,000 by default), refreshed a
// moment ago so nothing is fetched, and one icon file per entry; then, N runs (15 by default),
// starts the app in a fresh process that, a second after its first frame, taps Info through the
// window, times the frame, waits for the icons, goes Back and opens it again. Prints medians.
// The process running the app is this program again with --child.
#include <QBuffer>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QProcess>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "app/zellick_app.h"
#include "measure.h"
#include "platform/qt/documents.h"
#include "platform/qt/log.h"
#include "platform/qt/settings_defaults.h"
#include "services/apps.h"
#include "ui/first_frame.h"

namespace {

using namespace zellick::bench;

using zellick::ZellickApp;

// Long after the first frame: the work it leaves for later (fonts, sound) is done by then.
constexpr int kBeforeTapMs = 1000;
constexpr int kIconsMs = 1000;

double monotonicMs() {
  static QElapsedTimer clock = [] {
    QElapsedTimer t;
    t.start();
    return t;
  }();
  return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

long statusKb(const char* field) {
  std::ifstream in("/proc/self/status");
  for (std::string line; std::getline(in, line);)
    if (line.rfind(field, 0) == 0) return std::stol(line.substr(line.find(':') + 1));
  return -1;
}

// Times one opening: from just before the tap to the swap of the first frame synchronised after
// it (the scene graph may be drawn on another thread).
class Opening {
 public:
  explicit Opening(QQuickWindow* window) {
    QObject::connect(
        window, &QQuickWindow::afterSynchronizing, window,
        [this] {
          if (tapped_) synced_ = true;
        },
        Qt::DirectConnection);
    QObject::connect(
        window, &QQuickWindow::frameSwapped, window,
        [this] {
          if (synced_ && shownAt_ < 0) shownAt_ = monotonicMs();
        },
        Qt::DirectConnection);
  }
  void tap(QQuickWindow* window, QPoint at) {
    shownAt_ = -1;
    synced_ = false;
    tappedAt_ = monotonicMs();
    tapped_ = true;
    QTest::mouseClick(window, Qt::LeftButton, {}, at);
  }
  void done() { tapped_ = false; }
  bool shown() const { return shownAt_ >= 0; }
  double ms() const { return shownAt_ - tappedAt_; }

 private:
  std::atomic<bool> tapped_{false};
  std::atomic<bool> synced_{false};
  std::atomic<double> shownAt_{-1};
  double tappedAt_ = 0;
};

int child(int argc, char** argv) {
  QGuiApplication qapp(argc, argv);
  ZellickApp::identify();
  zellick::CommandLine quiet;
  quiet.usageRecordsOff = true;
  ZellickApp app(zellick::Environment::fromProcess(), quiet);
  if (app.launch() != ZellickApp::Launch::Shown) return 1;
  QQuickWindow* window = app.window();
  auto opening = std::make_shared<Opening>(window);
  const auto info = [&app] {
    const zellick::Point c = app.controller().ButtonInfo->frame().center();
    return app.counter().screen().toWindow(QPointF(c.x, c.y)).toPoint();
  };
  const auto wait = [](int ms) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
  };
  const auto open = [&]() -> double {
    opening->tap(window, info());
    QElapsedTimer t;
    t.start();
    while (!opening->shown() && t.elapsed() < 5000)
      QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    const double ms = opening->shown() && app.counter().more().screen() ? opening->ms() : -1;
    opening->done();
    return ms;
  };
  int status = 1;
  zellick::ui::afterFirstFrame(window, window, [&] {
    wait(kBeforeTapMs);
    const long before = statusKb("VmRSS:");
    const double first = open();
    const long shown = statusKb("VmRSS:");
    wait(kIconsMs);
    const long icons = statusKb("VmRSS:");
    app.counter().more().dismissModalViewControllerAnimated(false);
    wait(200);
    const double again = open();
    if (first >= 0 && again >= 0) {
      std::printf("first %.2f again %.2f rss %ld %ld %ld peak %ld\n", first, again, before, shown,
                  icons, statusKb("VmHWM:"));
      status = 0;
    }
    std::fflush(stdout);
    qapp.quit();
  });
  qapp.exec();
  return status;
}

// The settings and documents of a catalogue of `entries` apps, each with an icon file.
bool prepare(const QTemporaryDir& dir, int entries) {
  zellick::qt::StderrLog log;
  zellick::DefaultsArray list;
  zellick::qt::FolderDocuments documents(dir.filePath("data/Zellick/Zellick/Documents"));
  for (int i = 0; i < entries; ++i) {
    const std::string id = std::to_string(700000000 + i);
    zellick::DefaultsDictionary entry;
    entry[zellick::kAppIdKey] = static_cast<long long>(i);
    entry[zellick::kAppNameKey] = "Catalogue App " + std::to_string(i);
    entry[zellick::kAppleIdKey] = id;
    entry[zellick::kPriorityKey] = static_cast<long long>(i);
    list.emplace_back(std::move(entry));
    QImage icon(114, 114, QImage::Format_RGB32);
    icon.fill(QColor::fromHsv(i * 37 % 360, 160, 220));
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!icon.save(&buffer, "PNG") ||
        !documents.writeAtomically(zellick::orvapps::iconFileName(id), png.toStdString()).ok())
      return false;
  }
  zellick::qt::QSettingsDefaults settings(dir.filePath("defaults.ini"), log);
  settings.setObject(zellick::kMoreAppsKey, std::move(list));
  settings.setObject(zellick::kLastUpdateKey,
                     zellick::Date{static_cast<double>(QDateTime::currentSecsSinceEpoch())});
  return settings.synchronize();
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i)
    if (std::string(argv[i]) == "--child") return child(argc, argv);
  QCoreApplication qapp(argc, argv);
  const QStringList args = qapp.arguments();
  int runs = 15, entries = 2000;
  for (int i = 1; i + 1 < args.size(); i += 2) {
    if (args[i] == "--runs") runs = std::max(1, args[i + 1].toInt());
    if (args[i] == "--entries") entries = std::max(0, args[i + 1].toInt());
  }
  QTemporaryDir dir;
  if (!prepare(dir, entries)) {
    std::fprintf(stderr, "could not prepare the catalogue\n");
    return 1;
  }
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert("QT_QPA_PLATFORM", "offscreen");
  env.insert("ZELLICK_NO_AUDIO", "1");
  env.insert("ZELLICK_SETTINGS", dir.filePath("defaults.ini"));
  env.insert("XDG_DATA_HOME", dir.filePath("data"));
  env.insert("ZELLICK_ARTWORK_CACHE", dir.filePath("artwork"));
  // Nothing should go out; if something did, it would find nobody on this port.
  env.insert("ZELLICK_MAKER_URL", "http://127.0.0.1:9/");

  std::vector<double> first, again;
  std::vector<long> shownKb, iconsKb, peakKb;
  for (int run = -1; run < runs; ++run) {  // one warm-up run
    QProcess p;
    p.setProcessEnvironment(env);
    p.setProcessChannelMode(QProcess::SeparateChannels);
    p.start(QCoreApplication::applicationFilePath(), {"--child"});
    if (!p.waitForFinished(60000) || p.exitCode() != 0) {
      std::fprintf(stderr, "run %d failed:\n%s\n", run, p.readAllStandardError().constData());
      return 1;
    }
    double f = 0, a = 0;
    long before = 0, shown = 0, icons = 0, peak = 0;
    if (std::sscanf(p.readAllStandardOutput().constData(),
                    "first %lf again %lf rss %ld %ld %ld peak %ld", &f, &a, &before, &shown, &icons,
                    &peak) != 6) {
      std::fprintf(stderr, "run %d printed nothing readable\n", run);
      return 1;
    }
    if (run < 0) continue;
    first.push_back(f);
    again.push_back(a);
    shownKb.push_back(shown - before);
    iconsKb.push_back(icons - before);
    peakKb.push_back(peak);
  }
  std::printf(
      "More screen with %d catalogue entries, offscreen, median of %d runs (target 50 ms)\n",
      entries, runs);
  std::printf("  Info tap to the first frame showing it   %7.1f ms (max %.1f)\n", median(first),
              *std::max_element(first.begin(), first.end()));
  std::printf("  opened again after Back                  %7.1f ms (max %.1f)\n", median(again),
              *std::max_element(again.begin(), again.end()));
  std::printf("  resident memory added, first frame       %7.1f MiB\n", median(shownKb) / 1024.0);
  std::printf("  resident memory added, icons read        %7.1f MiB\n", median(iconsKb) / 1024.0);
  std::printf("  peak resident memory of the app          %7.1f MiB\n", median(peakKb) / 1024.0);
  return 0;
}
