// Kills the app at random moments while it counts and saves in a loop, and checks after every
// kill that the settings file reads back whole, holding the state before or after the save
// that was in progress.
//
//   zellick_kill_test --app PATH [--kills 200] [--seed N] [--from first-save|start] [--signal
//   kill|term|int|hup|quit]
//
// With term, int, hup or quit the app must end normally after one more save of the state it had:
// the count on disk is then exactly the last one it reported.
#include <QCoreApplication>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <random>

#include "harness.h"

using namespace zellick::test;

int main(int argc, char** argv) {
  QCoreApplication qapp(argc, argv);
  const Args args(qapp.arguments(), 1);
  const int kills = static_cast<int>(args.number("--kills", 200));
  const unsigned seed = static_cast<unsigned>(args.number("--seed", std::random_device{}()));
  // Measure the delay from the start of the process, not from its first save.
  const bool fromStart = args.text("--from") == "start";
  const std::map<QString, int> byName = {{"", SIGKILL},   {"kill", SIGKILL}, {"term", SIGTERM},
                                         {"int", SIGINT}, {"hup", SIGHUP},   {"quit", SIGQUIT}};
  const auto signal = byName.find(args.text("--signal"));
  if (args.text("--app").isEmpty() || kills <= 0 || signal == byName.end()) {
    std::fprintf(stderr,
                 "usage: %s --app PATH [--kills N] [--seed N] [--from first-save|start] [--signal "
                 "kill|term|int|hup|quit]\n",
                 argv[0]);
    return 2;
  }
  const int signo = signal->second;
  std::mt19937 rng(seed);
  std::uniform_int_distribution<int> delayMs(50, 400);

  QTemporaryDir dir;
  const QString settings = dir.filePath("config/Zellick/defaults.ini");
  const QProcessEnvironment env = appEnvironment(dir, settings);
  int whole = 0, failed = 0, before = 0, after = 0, unsaved = 0;
  long long saves = 0;
  std::optional<int> previous;  // the count on disk when this run started
  const double started = monotonicMs();
  const auto fail = [&failed](int kill, const std::string& why) {
    ++failed;
    std::fprintf(stderr, "kill %d: %s\n", kill, why.c_str());
  };

  for (int kill = 1; kill <= kills; ++kill) {
    App app(args.text("--app"), env, {"--stress-loop", "0"}, dir.filePath("app-stderr.log"));
    if (app.process.state() != QProcess::Running) return 1;
    if (!fromStart && !app.waitFor("stress: saved", 20000)) fail(kill, "no save within 20 s");
    QThread::msleep(delayMs(rng));
    if (app.process.state() != QProcess::Running) fail(kill, "the app ended by itself");
    if (!app.end(signo))
      fail(kill, "the app did not end on the signal");
    else if (signo != SIGKILL && !app.endedNormally())
      fail(kill, "the app did not end normally on the signal");

    // The counts the stress loop reported as saved, in order.
    std::vector<int> totals;
    for (const QByteArray& line : app.out.split('\n')) {
      int n = 0;
      if (std::sscanf(line.constData(), "stress: saved total %d", &n) == 1) totals.push_back(n);
    }
    saves += static_cast<long long>(totals.size());
    const SavedState s = readSaved(settings, dir.path());
    if (!s.present) {
      // Only allowed while nothing was ever confirmed saved.
      if (!totals.empty() || previous) fail(kill, "the settings file is gone");
      unsaved += totals.empty() && !previous;
      continue;
    }
    if (!s.whole()) {
      std::string why = "torn read:";
      for (const auto& p : s.problems) why += " [" + p + "]";
      fail(kill, why);
      continue;
    }
    ++whole;
    const int memory = s.buttonId >= 1 && s.buttonId <= 3 ? s.buttonId - 1 : 2;
    const int count = s.counters[memory];
    const int reference = !totals.empty() ? totals.back() : previous.value_or(0);
    const int steps = ((count - reference) % 10000 + 10000) % 10000;  // forward on the wheels
    if (steps == 0) {
      ++before;
    } else if (steps <= 5 && signo == SIGKILL) {
      ++after;
    } else {
      fail(kill, "saved count " + std::to_string(count) + ", last confirmed " +
                     std::to_string(reference));
    }
    unsaved += totals.empty();
    previous = count;
  }
  std::printf(
      "kill test (signal %d): kills=%d whole=%d failed=%d | state before save=%d after save=%d, "
      "runs killed before their first save=%d, confirmed saves=%lld | %.1f s, seed %u, delay "
      "50-400 ms from %s\n",
      signo, kills, whole, failed, before, after, unsaved, saves,
      (monotonicMs() - started) / 1000.0, seed, fromStart ? "process start" : "first save");
  return failed == 0 ? 0 : 1;
}
