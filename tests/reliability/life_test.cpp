// The real app as a user meets it, checked for lost counts and lost seconds:
//   zellick_life_test crash --app APP [--kills 200] [--seed N]
//     Add is pressed through the window at random moments and SIGKILL comes at a random moment;
//     the count on disk must never be more than the presses of the last 2 s behind the count
//     shown. Reports the largest loss in presses and in seconds.
//   zellick_life_test clock --app APP [--seconds 600] [--stop-at 20] [--stop-for 10] [--load 2]
//     A running clock, across a SIGSTOP and with busy processes beside it: every second it shows
//     comes within 0.2 s of the moment that second really passed.
//   zellick_life_test instance --app APP
//     A second start on the same settings file goes within 1 s and overwrites nothing; the
//     first keeps counting.
//   zellick_life_test records --app APP [--presses 1000] [--seconds 10]
//     Add pressed that often over that long, with the maker's server a stand-in on loopback:
//     every record arrives (Launch, reLaunch and one Count a press); the app's frame times,
//     threads and memory, against the same run with records off, which sends nothing.
//   zellick_life_test exit --app APP
//     200 records in flight to a server that never answers when the window closes: the app is
//     gone within 1 s, the count saved.
//   zellick_life_test more --app APP
//     The stand-in on loopback serves a catalogue of 5 apps: their icons land in the documents
//     folder as ID@2x.png (114 x 114 PNGs), and the More screen, opened with Info, shows each
//     app with its icon.
// APP is zellick_reliability_app. Exit status 0 when every check held.
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QSize>
#include <QThread>

#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <random>
#include <sstream>

#include "harness.h"
#include "services_server.h"

namespace zellick::test {
namespace {

double monotonicMs() {
  timespec t{};
  clock_gettime(CLOCK_MONOTONIC, &t);
  return static_cast<double>(t.tv_sec) * 1000.0 + static_cast<double>(t.tv_nsec) / 1e6;
}

struct Options {
  QString app;
  int kills = 200;
  unsigned seed = std::random_device{}();
  double seconds = 600, stopAt = 20, stopFor = 10;
  int load = 2;
  int presses = 1000;
};

// One line the app printed: "<what> N at MS".
struct Report {
  long long value;
  double ms;
};
std::vector<Report> reports(const QByteArray& out, const char* what) {
  std::vector<Report> found;
  const std::string format = std::string(what) + " %lld at %lf";
  for (const QByteArray& line : out.split('\n')) {
    Report r{};
    if (std::sscanf(line.constData(), format.c_str(), &r.value, &r.ms) == 2) found.push_back(r);
  }
  return found;
}

// The app under test, its output gathered as it comes.
struct App {
  QProcess process;
  QByteArray out;

  App(const Options& o, const QProcessEnvironment& env, const QString& mode, const QString& log,
      QStringList more = {}) {
    process.setProcessEnvironment(env);
    process.setStandardErrorFile(log, QIODevice::Append);
    process.start(o.app, QStringList{mode} + more);
    process.waitForStarted(10000);
  }
  pid_t pid() { return static_cast<pid_t>(process.processId()); }
  void gather(int ms) {
    QElapsedTimer t;
    t.start();
    do {
      process.waitForReadyRead(std::max<qint64>(1, ms - t.elapsed()));
      out += process.readAllStandardOutput();
    } while (t.elapsed() < ms && process.state() == QProcess::Running);
  }
  bool waitFor(const char* text, int ms) {
    QElapsedTimer t;
    t.start();
    while (!out.contains(text) && t.elapsed() < ms && process.state() == QProcess::Running)
      gather(50);
    return out.contains(text);
  }
  void end(int signo) {
    ::kill(pid(), signo);
    process.waitForFinished(10000);
    out += process.readAllStandardOutput();
  }
};

int steps(long long from, long long to) {
  return static_cast<int>(((to - from) % 10000 + 10000) % 10000);
}

int crash(const Options& o) {
  QTemporaryDir dir;
  const QString settings = dir.filePath("defaults.ini");
  const QProcessEnvironment env = appEnvironment(dir, settings);
  std::mt19937 rng(o.seed);
  std::uniform_int_distribution<int> lifeMs(300, 3000);
  int failures = 0, maxPresses = 0;
  double maxSeconds = 0;
  long long onDisk = 0;
  for (int kill = 1; kill <= o.kills; ++kill) {
    App app(o, env, "--press-randomly", dir.filePath("app.log"));
    if (!app.waitFor("shown", 20000)) {
      std::fprintf(stderr, "kill %d: no press within 20 s\n", kill);
      return 1;
    }
    app.gather(lifeMs(rng));
    const double killedAt = monotonicMs();
    app.end(SIGKILL);
    const std::vector<Report> shown = reports(app.out, "shown");
    const SavedState s = readSaved(settings, dir.path());
    if (!s.whole()) {
      ++failures;
      std::fprintf(stderr, "kill %d: the settings file is not whole\n", kill);
      continue;
    }
    const long long disk = s.counters.at(0);
    // What had to be on disk: the count shown 2 s before the kill, or where this run began.
    long long due = onDisk;
    for (const Report& r : shown)
      if (r.ms <= killedAt - 2000) due = r.value;
    const long long last = shown.empty() ? onDisk : shown.back().value;
    const int lost = steps(disk, last);
    const int reached = steps(onDisk, disk);
    if (reached > steps(onDisk, last)) {
      ++failures;
      std::fprintf(stderr, "kill %d: %lld on disk, more than the %lld shown\n", kill, disk, last);
    } else if (reached < steps(onDisk, due)) {
      ++failures;
      std::fprintf(stderr, "kill %d: %lld on disk, %lld was shown 2 s before the kill\n", kill,
                   disk, due);
    }
    // How long ago the first count not on disk was shown.
    double lostMs = 0;
    for (const Report& r : shown)
      if (steps(disk, r.value) >= 1 && steps(disk, r.value) <= lost) {
        lostMs = killedAt - r.ms;
        break;
      }
    maxPresses = std::max(maxPresses, lost);
    maxSeconds = std::max(maxSeconds, lostMs / 1000.0);
    onDisk = disk;
  }
  std::printf("crash: %d kills, %d failures; the largest loss %d presses, %.2f s\n", o.kills,
              failures, maxPresses, maxSeconds);
  return failures == 0 ? 0 : 1;
}

int clock(const Options& o) {
  QTemporaryDir dir;
  const QProcessEnvironment env = appEnvironment(dir, dir.filePath("defaults.ini"));
  std::vector<pid_t> busy;
  for (int i = 0; i < o.load; ++i) {
    const pid_t pid = fork();
    if (pid == 0) {
      for (volatile unsigned long n = 0;;) n = n + 1;
    }
    busy.push_back(pid);
  }
  App app(o, env, "--run-clock", dir.filePath("app.log"));
  bool ok = app.waitFor("clock started", 20000);
  double startedAt = 0;
  if (ok) {
    std::sscanf(app.out.constData() + app.out.indexOf("clock started"), "clock started at %lf",
                &startedAt);
    app.gather(static_cast<int>(o.stopAt * 1000));
    ::kill(app.pid(), SIGSTOP);
    QThread::msleep(static_cast<unsigned long>(o.stopFor * 1000));
    const double resumedAt = monotonicMs();
    ::kill(app.pid(), SIGCONT);
    app.gather(static_cast<int>((o.seconds - o.stopAt - o.stopFor) * 1000));
    app.end(SIGTERM);

    double worst = 0;
    long long lastSecond = 0;
    for (const Report& r : reports(app.out, "clock")) {
      if (r.value == 0) continue;
      const double late = (r.ms - startedAt) / 1000.0 - static_cast<double>(r.value);
      lastSecond = r.value;
      // The second shown first after the stop comes when the process runs again.
      if (r.ms >= resumedAt && r.ms < resumedAt + 1000 && late < 1.2) continue;
      worst = std::max(worst, std::abs(late));
      if (late > 0.2 || late < -0.05) {
        ok = false;
        std::fprintf(stderr, "clock: second %lld shown %.3f s after it passed\n", r.value, late);
      }
    }
    std::printf(
        "clock: %.0f s with %d busy processes and a %.0f s stop; %lld s counted; every "
        "second within %.3f s of its moment\n",
        o.seconds, o.load, o.stopFor, lastSecond, worst);
  }
  for (const pid_t pid : busy) ::kill(pid, SIGKILL);
  for (const pid_t pid : busy) waitpid(pid, nullptr, 0);
  return ok ? 0 : 1;
}

int instance(const Options& o) {
  QTemporaryDir dir;
  const QString settings = dir.filePath("defaults.ini");
  const QProcessEnvironment env = appEnvironment(dir, settings);
  App first(o, env, "--press-randomly", dir.filePath("first.log"));
  bool ok = first.waitFor("shown", 20000);
  first.gather(500);
  const double before = monotonicMs();
  App second(o, env, "--press-randomly", dir.filePath("second.log"));
  const bool gone = second.process.waitForFinished(1000);
  const double tookMs = monotonicMs() - before;
  first.gather(1000);
  const std::vector<Report> shownAfter = [&] {
    std::vector<Report> after;
    for (const Report& r : reports(first.out, "shown"))
      if (r.ms > before + tookMs) after.push_back(r);
    return after;
  }();
  first.end(SIGTERM);
  QFile log(dir.filePath("second.log"));
  log.open(QIODevice::ReadOnly);
  const QByteArray said = log.readAll();
  const SavedState s = readSaved(settings, dir.path());
  const std::vector<Report> shown = reports(first.out, "shown");
  const auto check = [&ok](bool holds, const char* what) {
    if (!holds) std::fprintf(stderr, "instance: %s\n", what);
    ok = ok && holds;
  };
  check(gone && second.process.exitCode() == 0, "the second start did not end at once, normally");
  check(said.contains("already running"), "the second start did not say why it went");
  check(!shownAfter.empty(), "the first stopped counting");
  check(s.whole() && !shown.empty() && s.counters.at(0) == shown.back().value,
        "the file does not hold the first's last count");
  std::printf("instance: the second start ended after %.0f ms (%s)\n", tookMs,
              ok ? "ok" : "failed");
  return ok ? 0 : 1;
}

int records(const Options& o) {
  QTemporaryDir dir;
  std::ostringstream quiet;
  standin::ServicesServer server({}, nullptr, &quiet);
  if (!server.start().ok()) return 1;
  bool ok = true;
  for (const bool on : {true, false}) {
    QProcessEnvironment env = appEnvironment(dir, dir.filePath(on ? "on.ini" : "off.ini"));
    env.insert("ZELLICK_MAKER_URL", QString::fromStdString(server.baseUrl()));
    const size_t before = server.records().size();
    QStringList more{QString::number(o.presses), QString::number(o.seconds)};
    if (!on) more << "--no-usage-records";
    App app(o, env, "--press", dir.filePath("app.log"), more);
    const bool ended = app.process.waitForFinished(static_cast<int>(o.seconds * 1000) + 30000);
    app.out += app.process.readAllStandardOutput();
    std::vector<std::string> got = server.records();
    got.erase(got.begin(), got.begin() + static_cast<std::ptrdiff_t>(before));
    int counts = 0, launches = 0;
    for (const std::string& r : got) {
      counts += r.rfind("appid=17&tag=Count&device=", 0) == 0;
      launches +=
          r.rfind("appid=17&tag=Launch&", 0) == 0 || r.rfind("appid=17&tag=reLaunch&", 0) == 0;
    }
    const int wantCounts = on ? o.presses : 0, wantLaunches = on ? 2 : 0;
    const QByteArray stats = app.out.mid(app.out.indexOf("frames")).trimmed();
    std::printf(
        "records %-3s %d presses over %.0f s: %zu records received (%d Count, %d launch); %s\n",
        on ? "on" : "off", o.presses, o.seconds, got.size(), counts, launches, stats.constData());
    if (!ended || counts != wantCounts || launches != wantLaunches) {
      ok = false;
      std::fprintf(stderr, "records %s: want %d Count and %d launch records\n", on ? "on" : "off",
                   wantCounts, wantLaunches);
    }
  }
  return ok ? 0 : 1;
}

int exitWithRecordsInFlight(const Options& o) {
  QTemporaryDir dir;
  std::ostringstream quiet;
  standin::ServicesOptions hanging;
  hanging.hangPath = "tracker.php";
  standin::ServicesServer server(hanging, nullptr, &quiet);
  if (!server.start().ok()) return 1;
  const QString settings = dir.filePath("defaults.ini");
  QProcessEnvironment env = appEnvironment(dir, settings);
  env.insert("ZELLICK_MAKER_URL", QString::fromStdString(server.baseUrl()));
  App app(o, env, "--press-then-close", dir.filePath("app.log"), {"200"});
  bool ok = app.waitFor("closing at", 30000);
  double closing = 0;
  if (ok)
    std::sscanf(app.out.constData() + app.out.indexOf("closing at"), "closing at %lf", &closing);
  // Gathering its output may already have seen it end, and waiting then reports no end.
  ok = ok && (app.process.state() == QProcess::NotRunning || app.process.waitForFinished(10000));
  const double tookMs = monotonicMs() - closing;
  const SavedState s = readSaved(settings, dir.path());
  ok = ok && app.process.exitStatus() == QProcess::NormalExit && app.process.exitCode() == 0 &&
       tookMs < 1000 && s.whole() && s.counters.at(0) == 200;
  std::printf(
      "exit: 200 records in flight to a server that never answers; the app was gone %.0f ms "
      "after closing, the count saved (%s)\n",
      tookMs, ok ? "ok" : "failed");
  return ok ? 0 : 1;
}

// The size a PNG file's header gives, or nothing for a file that is no PNG.
std::optional<QSize> pngSize(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
  const QByteArray head = file.read(24);
  if (head.size() < 24 || !head.startsWith("\x89PNG\r\n\x1a\n") || head.mid(12, 4) != "IHDR")
    return std::nullopt;
  const auto word = [&](int at) {
    return static_cast<int>(
        static_cast<quint8>(head[at]) << 24 | static_cast<quint8>(head[at + 1]) << 16 |
        static_cast<quint8>(head[at + 2]) << 8 | static_cast<quint8>(head[at + 3]));
  };
  return QSize(word(16), word(20));
}

int more(const Options& o) {
  constexpr int kApps = 5;
  QTemporaryDir dir;
  std::ostringstream quiet;
  standin::ServicesOptions options;
  options.apps = kApps;
  standin::ServicesServer server(options, nullptr, &quiet);
  if (!server.start().ok()) return 1;
  QProcessEnvironment env = appEnvironment(dir, dir.filePath("defaults.ini"));
  env.insert("XDG_DATA_HOME", dir.filePath("data"));
  env.insert("ZELLICK_MAKER_URL", QString::fromStdString(server.baseUrl()));
  App app(o, env, "--open-more", dir.filePath("app.log"), {QString::number(kApps)});
  bool ok = app.waitFor("more shown", 30000);
  app.process.waitForFinished(10000);

  const QDir documents(dir.filePath("data/Zellick/Zellick/Documents"));
  int icons = 0;
  for (const QString& name : documents.entryList(QDir::Files)) {
    const bool good = QRegularExpression("^[0-9]+@2x\\.png$").match(name).hasMatch() &&
                      pngSize(documents.filePath(name)) == QSize(114, 114);
    if (!good) std::fprintf(stderr, "more: %s is no icon\n", qPrintable(name));
    icons += good;
  }
  int shown = 0;
  for (int i = 1; i <= kApps; ++i)
    shown += app.out.contains(QString("row Zellick Sample App %1: icon\n").arg(i).toUtf8());
  ok = ok && icons == kApps && shown == kApps;
  std::printf(
      "more: %d of %d icons in the documents folder, %d of %d apps shown with theirs (%s)\n", icons,
      kApps, shown, kApps, ok ? "ok" : "failed");
  if (!ok) std::fprintf(stderr, "the app printed:\n%s", app.out.constData());
  return ok ? 0 : 1;
}

}  // namespace
}  // namespace zellick::test

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  using namespace zellick::test;
  const QStringList args = app.arguments();
  Options o;
  for (int i = 2; i + 1 < args.size(); i += 2) {
    const QString& k = args[i];
    const QString& v = args[i + 1];
    if (k == "--app") o.app = v;
    if (k == "--kills") o.kills = v.toInt();
    if (k == "--seed") o.seed = v.toUInt();
    if (k == "--seconds") o.seconds = v.toDouble();
    if (k == "--stop-at") o.stopAt = v.toDouble();
    if (k == "--stop-for") o.stopFor = v.toDouble();
    if (k == "--load") o.load = v.toInt();
    if (k == "--presses") o.presses = v.toInt();
  }
  const QString what = args.value(1);
  if (o.app.isEmpty()) {
    std::fprintf(stderr, "usage: %s crash|clock|instance|records|exit|more --app APP [options]\n",
                 argv[0]);
    return 2;
  }
  if (what == "crash") return crash(o);
  if (what == "clock") return clock(o);
  if (what == "instance") return instance(o);
  if (what == "records") return records(o);
  if (what == "exit") return exitWithRecordsInFlight(o);
  if (what == "more") return more(o);
  std::fprintf(stderr, "unknown harness '%s'\n", qPrintable(what));
  return 2;
}
