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
#include <QImage>
#include <QRegularExpression>
#include <QThread>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>
#include <sstream>

#include "harness.h"
#include "services_server.h"

namespace zellick::test {
namespace {

// What the command line set, with the defaults.
struct Options {
  explicit Options(const Args& a)
      : app(a.text("--app")),
        kills(static_cast<int>(a.number("--kills", 200))),
        seed(static_cast<unsigned>(a.number("--seed", std::random_device{}()))),
        seconds(a.number("--seconds", 600)),
        stopAt(a.number("--stop-at", 20)),
        stopFor(a.number("--stop-for", 10)),
        load(static_cast<int>(a.number("--load", 2))),
        presses(static_cast<int>(a.number("--presses", 1000))) {}
  QString app;
  int kills;
  unsigned seed;
  double seconds, stopAt, stopFor;
  int load, presses;
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
  const auto fail = [&failures](int kill, const std::string& why) {
    ++failures;
    std::fprintf(stderr, "kill %d: %s\n", kill, why.c_str());
  };
  for (int kill = 1; kill <= o.kills; ++kill) {
    App app(o.app, env, {"--press-randomly"}, dir.filePath("app.log"));
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
      fail(kill, "the settings file is not whole");
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
    if (reached > steps(onDisk, last) || reached < steps(onDisk, due))
      fail(kill, std::to_string(disk) + " on disk; shown " + std::to_string(last) + ", and " +
                     std::to_string(due) + " 2 s before the kill");
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
  App app(o.app, env, {"--run-clock"}, dir.filePath("app.log"));
  bool ok = app.waitFor("clock started", 20000);
  double startedAt = 0;
  if (ok) {
    std::sscanf(app.out.constData() + app.out.indexOf("clock started"), "clock started at %lf",
                &startedAt);
    app.gather(static_cast<int>(o.stopAt * 1000));
    const double stoppedAt = monotonicMs();
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
      // A second due during the stop (or on its eve: the stop may fall between the tick and its
      // line) is shown when the process runs again.
      const double dueAt = startedAt + static_cast<double>(r.value) * 1000;
      if (r.ms >= resumedAt && r.ms < resumedAt + 1000 && (late < 1.2 || dueAt >= stoppedAt - 200))
        continue;
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

// Prints what did not hold, under the mode's name.
struct Verdict {
  const char* mode;
  bool ok = true;
  void operator()(bool holds, const std::string& what) {
    if (!holds) std::fprintf(stderr, "%s: %s\n", mode, what.c_str());
    ok = ok && holds;
  }
  int status() const { return ok ? 0 : 1; }
};

int instance(const Options& o) {
  QTemporaryDir dir;
  const QString settings = dir.filePath("defaults.ini");
  const QProcessEnvironment env = appEnvironment(dir, settings);
  Verdict check{"instance"};
  App first(o.app, env, {"--press-randomly"}, dir.filePath("first.log"));
  check(first.waitFor("shown", 20000), "the first start counted nothing");
  first.gather(500);
  const double before = monotonicMs();
  App second(o.app, env, {"--press-randomly"}, dir.filePath("second.log"));
  const bool gone = second.process.waitForFinished(1000);
  const double tookMs = monotonicMs() - before;
  first.gather(1000);
  first.end(SIGTERM);
  const std::vector<Report> shown = reports(first.out, "shown");
  const SavedState s = readSaved(settings, dir.path());
  check(gone && second.endedNormally(), "the second start did not end at once, normally");
  check(second.log().contains("already running"), "the second start did not say why it went");
  check(std::any_of(shown.begin(), shown.end(), [&](auto& r) { return r.ms > before + tookMs; }),
        "the first stopped counting");
  check(s.whole() && !shown.empty() && s.counters.at(0) == shown.back().value,
        "the file does not hold the first's last count");
  std::printf("instance: the second start ended after %.0f ms\n", tookMs);
  return check.status();
}

int records(const Options& o) {
  QTemporaryDir dir;
  std::ostringstream quiet;
  standin::ServicesServer server({}, nullptr, &quiet);
  if (!server.start().ok()) return 1;
  Verdict check{"records"};
  for (const bool on : {true, false}) {
    const auto env = appEnvironment(dir, dir.filePath(on ? "on.ini" : "off.ini"), server.baseUrl());
    const size_t before = server.records().size();
    QStringList args{"--press", QString::number(o.presses), QString::number(o.seconds)};
    if (!on) args << "--no-usage-records";
    App app(o.app, env, args, dir.filePath("app.log"));
    const bool ended = app.process.waitForFinished(static_cast<int>(o.seconds * 1000) + 30000);
    app.out += app.process.readAllStandardOutput();
    std::vector<std::string> got = server.records();
    got.erase(got.begin(), got.begin() + static_cast<std::ptrdiff_t>(before));
    int counts = 0, launches = 0;
    for (const std::string& r : got) {
      counts += r.starts_with("appid=17&tag=Count&device=");
      launches += r.starts_with("appid=17&tag=Launch&") || r.starts_with("appid=17&tag=reLaunch&");
    }
    std::printf(
        "records %-3s %d presses over %.0f s: %zu records received (%d Count, %d launch); %s\n",
        on ? "on" : "off", o.presses, o.seconds, got.size(), counts, launches,
        app.out.mid(app.out.indexOf("frames")).trimmed().constData());
    check(ended && counts == (on ? o.presses : 0) && launches == (on ? 2 : 0),
          std::string(on ? "on" : "off") + ": not one Count a press and two launches, or none");
  }
  return check.status();
}

int exitWithRecordsInFlight(const Options& o) {
  QTemporaryDir dir;
  std::ostringstream quiet;
  standin::ServicesServer server({.hangPath = "tracker.php"}, nullptr, &quiet);
  if (!server.start().ok()) return 1;
  const QString settings = dir.filePath("defaults.ini");
  // The ad network's host is a name whose lookup hangs: the exit does not wait for it either.
  QProcessEnvironment env = appEnvironment(dir, settings, server.baseUrl());
  env.insert("ZELLICK_AD_PRIMARY_URL", "https://connect.adnetwork.example/");
  env.insert("LD_PRELOAD", ZELLICK_SLOW_RESOLVER);
  App app(o.app, env, {"--press-then-close", "200"}, dir.filePath("app.log"));
  Verdict check{"exit"};
  check(app.waitFor("closing at", 30000), "the app did not close");
  double closing = 0;
  std::sscanf(app.out.constData() + std::max(0, int(app.out.indexOf("closing at"))),
              "closing at %lf", &closing);
  check(app.end(0, 10000), "the app did not end");  // no signal: closing the window ends it
  const double tookMs = monotonicMs() - closing;
  const SavedState s = readSaved(settings, dir.path());
  check(app.endedNormally() && tookMs < 1000, "the app took " + std::to_string(tookMs) + " ms");
  check(s.whole() && s.counters.at(0) == 200, "the count was not saved");
  std::printf(
      "exit: 200 records in flight to a server that never answers, a host lookup that hangs; the "
      "app was gone %.0f ms after closing\n",
      tookMs);
  return check.status();
}

int more(const Options& o) {
  constexpr int kApps = 5;
  QTemporaryDir dir;
  std::ostringstream quiet;
  standin::ServicesServer server({.apps = kApps}, nullptr, &quiet);
  if (!server.start().ok()) return 1;
  App app(o.app, appEnvironment(dir, dir.filePath("defaults.ini"), server.baseUrl()),
          {"--open-more", QString::number(kApps)}, dir.filePath("app.log"));
  Verdict check{"more"};
  check(app.waitFor("more shown", 30000), "the More screen was not shown");
  app.end(0);
  const QDir documents(dir.filePath("data/Zellick/Zellick/Documents"));
  int icons = 0;
  for (const QString& name : documents.entryList(QDir::Files)) {
    const bool good = QRegularExpression("^[0-9]+@2x\\.png$").match(name).hasMatch() &&
                      QImage(documents.filePath(name), "PNG").size() == QSize(114, 114);
    check(good, name.toStdString() + " is no icon");
    icons += good;
  }
  int shown = 0;
  for (int i = 1; i <= kApps; ++i)
    shown += app.out.contains(QString("row Zellick Sample App %1: icon\n").arg(i).toUtf8());
  check(icons == kApps && shown == kApps, "the app printed:\n" + app.out.toStdString());
  std::printf("more: %d of %d icons in the documents folder, %d of %d apps shown with theirs\n",
              icons, kApps, shown, kApps);
  return check.status();
}

}  // namespace
}  // namespace zellick::test

int main(int argc, char** argv) {
  QCoreApplication qapp(argc, argv);
  using namespace zellick::test;
  const Options o(Args(qapp.arguments(), 2));
  const std::map<QString, int (*)(const Options&)> modes = {{"crash", crash},
                                                            {"clock", clock},
                                                            {"instance", instance},
                                                            {"records", records},
                                                            {"exit", exitWithRecordsInFlight},
                                                            {"more", more}};
  const auto mode = modes.find(qapp.arguments().value(1));
  if (o.app.isEmpty() || mode == modes.end()) {
    std::fprintf(stderr, "usage: %s crash|clock|instance|records|exit|more --app APP [options]\n",
                 argv[0]);
    return 2;
  }
  return mode->second(o);
}
