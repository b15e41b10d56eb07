// The catalogue's refresh as the app runs it: a feed of N entries (2,000 by default) and its N
// icons from the stand-in (its own process, on loopback), through the real HTTP client,
// settings file and documents folder, while the main loop saves the count as the app's
// autosave does (every 100 ms, in the background). Reports, per run: the time until the list
// is stored and until every icon is on disk; the main loop's longest stall (the largest gap of
// a 1 ms timer beyond its interval; the target is none over 16 ms); and over all runs the peak
// threads and peak memory (VmHWM) of this process, against before the first refresh.
//   zellick_apps_bench [--apps N] [--runs R]
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <thread>

#include "measure.h"
#include "platform/fake/services.h"
#include "platform/qt/documents.h"
#include "platform/qt/http.h"
#include "platform/qt/runloop.h"
#include "platform/qt/settings_defaults.h"
#include "services/apps.h"

namespace {

using namespace zellick::bench;

using namespace zellick;

constexpr double kStallTargetMs = 16;
constexpr double kGiveUpMs = 120000;

// The moments the refresh reports: the list stored, whatever failed. Any thread.
struct MarkingLog : Log {
  std::atomic<double> storedAt{0};
  std::atomic<int> failures{0};
  std::mutex mutex;
  std::string firstFailure;
  void line(const std::string& text) override {
    if (text.starts_with("Apps list stored")) storedAt = nowMs();
    if (text.starts_with("Icon for") || text.starts_with("Error") ||
        text.starts_with("Apps list not")) {
      std::lock_guard lock(mutex);
      if (failures++ == 0) firstFailure = text;
    }
  }
};

// The folder, counting the files written whole; the moment the last one of `expected` is.
struct CountingDocuments : Documents {
  explicit CountingDocuments(qt::FolderDocuments& folder, int expected)
      : folder(folder), expected(expected) {}
  Status writeAtomically(const std::string& name, const std::string& bytes) override {
    Status s = folder.writeAtomically(name, bytes);
    if (s.ok() && ++written == expected) allAt = nowMs();
    return s;
  }
  std::optional<std::string> pathForFile(const std::string& name) const override {
    return folder.pathForFile(name);
  }
  std::map<std::string, std::uint64_t> contents() const override { return folder.contents(); }

  qt::FolderDocuments& folder;
  const int expected;
  std::atomic<int> written{0};
  std::atomic<double> allAt{0};
};

// Nanoseconds this thread has spent waiting for a processor while ready to run.
long long runQueueWaitNs() {
  static const std::string path = "/proc/self/task/" + std::to_string(gettid()) + "/schedstat";
  std::ifstream in(path);
  long long onCpu = 0, waiting = 0;
  in >> onCpu >> waiting;
  return waiting;
}

struct Run {
  double storedMs = -1, iconsMs = -1, stallMs = 0;
  double stallWaitingMs = 0;  // of the longest stall, the time spent waiting for a processor
  int overTarget = 0, iconsOnDisk = 0, failures = 0;
  std::string failure;
};

// A refresh, or with `idleMs` none: the same main loop and autosave alone for that long.
Run refresh(const std::string& baseUrl, int apps, double idleMs = 0) {
  Run out;
  QTemporaryDir dir;
  MarkingLog log;
  qt::QSettingsDefaults defaults(dir.filePath("defaults.ini"), log);
  qt::QtHttpClient http;
  qt::FolderDocuments folder(dir.filePath("Documents"));
  CountingDocuments documents(folder, apps);
  fake::FakeBundle bundle({});
  qt::QtClock clock;
  Configuration configuration = Configuration::shipped();
  configuration.makerBaseUrl = baseUrl;
  orvapps catalogue({http, defaults, documents, bundle, clock, log}, configuration);

  QEventLoop loop;
  QTimer tick;
  tick.setTimerType(Qt::PreciseTimer);
  tick.setInterval(1);
  const double start = nowMs();
  double last = start, lastSave = start;
  long long lastWait = runQueueWaitNs();
  long long count = 0;
  QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
    const double now = nowMs();
    const long long wait = runQueueWaitNs();
    const double stall = now - last - tick.interval();
    if (stall > out.stallMs) {
      out.stallMs = stall;
      out.stallWaitingMs = static_cast<double>(wait - lastWait) / 1e6;
    }
    out.overTarget += stall > kStallTargetMs;
    last = now;
    lastWait = wait;
    if (now - lastSave >= 100) {  // the count's autosave
      lastSave = now;
      ++count;
      defaults.setObject("Counters", DefaultsArray{count, 0LL, 0LL});
      defaults.setObject("Timers", DefaultsArray(12, DefaultsValue(0LL)));
      defaults.setObject("TotalForAvg", DefaultsArray{count, 0LL, 0LL});
      defaults.setInteger("ButtonId", 1);
      defaults.setObject("DateOfInactive", Date{clock.now()});
      defaults.setInteger("TapValue", 1);
      defaults.synchronizeInBackground();
    }
    if (documents.allAt > 0 || log.failures > 0 || now - start > (idleMs > 0 ? idleMs : kGiveUpMs))
      loop.quit();
  });
  tick.start();
  if (idleMs <= 0) catalogue.startUpdate();
  loop.exec();
  tick.stop();
  if (log.storedAt > 0) out.storedMs = log.storedAt - start;
  if (documents.allAt > 0) out.iconsMs = documents.allAt - start;
  out.iconsOnDisk = static_cast<int>(folder.contents().size());
  out.failures = log.failures;
  out.failure = log.firstFailure;
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  int apps = 2000, runs = 3;
  const QStringList args = app.arguments();
  for (int i = 1; i + 1 < args.size(); i += 2) {
    if (args[i] == "--apps") apps = args[i + 1].toInt();
    if (args[i] == "--runs") runs = args[i + 1].toInt();
  }
  if (apps < 1 || apps > 10000 || runs < 1) {
    std::fprintf(stderr, "usage: zellick_apps_bench [--apps 1..10000] [--runs R]\n");
    return 2;
  }
  QProcess server;
  server.setStandardErrorFile(QProcess::nullDevice());
  server.start(ZELLICK_SERVICES, {"--apps", QString::number(apps)});
  QByteArray said;
  while (!said.contains('\n') && server.waitForReadyRead(10000))
    said += server.readAllStandardOutput();
  const int at = said.indexOf("http://");
  if (at < 0) {
    std::fprintf(stderr, "the stand-in did not start\n");
    return 1;
  }
  const std::string baseUrl = said.mid(at).trimmed().toStdString();

  const long threadsBefore = statusField("Threads:"), memoryBefore = statusField("VmHWM:");
  std::atomic<long> peakThreads{0};
  std::atomic<bool> sampling{true};
  std::thread sampler([&] {
    while (sampling) {
      peakThreads = std::max(peakThreads.load(), statusField("Threads:"));
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  });
  std::printf("catalogue refresh: %d entries and %d icons from the stand-in on loopback\n", apps,
              apps);
  bool ok = true;
  double longest = 0;
  for (int r = 1; r <= runs; ++r) {
    const Run run = refresh(baseUrl, apps);
    longest = std::max(longest, run.iconsMs);
    std::printf(
        "  run %d: list stored after %.0f ms, every icon on disk after %.0f ms (%d files); main "
        "loop: longest stall %.1f ms (%.1f ms of it waiting for a processor), %d over %.0f ms\n",
        r, run.storedMs, run.iconsMs, run.iconsOnDisk, run.stallMs, run.stallWaitingMs,
        run.overTarget, kStallTargetMs);
    if (run.failures > 0)
      std::printf("    %d failures, the first: %s\n", run.failures, run.failure.c_str());
    ok = ok && run.iconsOnDisk == apps && run.failures == 0;
  }
  const Run idle = refresh(baseUrl, apps, longest);
  std::printf(
      "  without a refresh, the same autosave for %.0f ms: longest stall %.1f ms (%.1f ms of it "
      "waiting for a processor), %d over %.0f ms\n",
      longest, idle.stallMs, idle.stallWaitingMs, idle.overTarget, kStallTargetMs);
  sampling = false;
  sampler.join();
  std::printf(
      "  peak threads %ld (%ld before; the sampler is one), peak memory (VmHWM) %ld kB (%ld kB "
      "before)\n",
      peakThreads.load(), threadsBefore, statusField("VmHWM:"), memoryBefore);
  server.terminate();
  server.waitForFinished(5000);
  return ok ? 0 : 1;
}
