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
#include <QElapsedTimer>
#include <QProcess>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <random>

#include "harness.h"

namespace {

struct Options {
  QString app;
  int kills = 200;
  unsigned seed = std::random_device{}();
  bool fromStart = false;  // measure the delay from the start of the process, not its first save
  int signal = SIGKILL;
};

bool parse(const QStringList& args, Options& o) {
  for (int i = 1; i < args.size(); ++i) {
    const bool more = i + 1 < args.size();
    if (args[i] == "--app" && more) {
      o.app = args[++i];
    } else if (args[i] == "--kills" && more) {
      o.kills = args[++i].toInt();
    } else if (args[i] == "--seed" && more) {
      o.seed = args[++i].toUInt();
    } else if (args[i] == "--from" && more) {
      o.fromStart = args[++i] == "start";
    } else if (args[i] == "--signal" && more) {
      const QString s = args[++i];
      o.signal = s == "term"   ? SIGTERM
                 : s == "int"  ? SIGINT
                 : s == "hup"  ? SIGHUP
                 : s == "quit" ? SIGQUIT
                               : SIGKILL;
    } else {
      return false;
    }
  }
  return !o.app.isEmpty() && o.kills > 0;
}

// The counts the stress loop reported as saved, in order.
std::vector<int> savedTotals(const QByteArray& out) {
  std::vector<int> totals;
  for (const QByteArray& line : out.split('\n')) {
    int n = 0;
    if (std::sscanf(line.constData(), "stress: saved total %d", &n) == 1) totals.push_back(n);
  }
  return totals;
}

// Steps forward from `from` to `to` on the four-digit wheel.
int stepsBetween(int from, int to) { return ((to - from) % 10000 + 10000) % 10000; }

int currentCount(const zellick::test::SavedState& s) {
  const int memory = s.buttonId >= 1 && s.buttonId <= 3 ? s.buttonId - 1 : 2;
  return s.counters.size() == 3 ? s.counters[memory] : -1;
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  Options o;
  if (!parse(app.arguments(), o)) {
    std::fprintf(stderr,
                 "usage: %s --app PATH [--kills N] [--seed N] [--from first-save|start] [--signal "
                 "kill|term|int|hup|quit]\n",
                 argv[0]);
    return 2;
  }
  std::mt19937 rng(o.seed);
  std::uniform_int_distribution<int> delayMs(50, 400);

  QTemporaryDir dir;
  const QString settings = dir.filePath("config/Zellick/defaults.ini");
  const QProcessEnvironment env = zellick::test::appEnvironment(dir, settings);

  int whole = 0, torn = 0, wrongCount = 0, died = 0, hung = 0, before = 0, after = 0, unsaved = 0;
  long long saves = 0;
  std::optional<int> previous;  // the count on disk when this run started
  QElapsedTimer clock;
  clock.start();

  for (int kill = 1; kill <= o.kills; ++kill) {
    QProcess p;
    p.setProcessEnvironment(env);
    p.setStandardErrorFile(dir.filePath("app-stderr.log"));
    p.start(o.app, {"--stress-loop", "0"});
    if (!p.waitForStarted(10000)) {
      std::fprintf(stderr, "kill %d: the app did not start: %s\n", kill,
                   qPrintable(p.errorString()));
      return 1;
    }
    QByteArray out;
    if (!o.fromStart) {
      QElapsedTimer wait;
      wait.start();
      while (!out.contains("stress: saved") && p.state() == QProcess::Running &&
             wait.elapsed() < 20000) {
        p.waitForReadyRead(100);
        out += p.readAllStandardOutput();
      }
      if (!out.contains("stress: saved")) {
        ++hung;
        std::fprintf(stderr, "kill %d: no save reported %.1f s after the start\n", kill,
                     wait.elapsed() / 1000.0);
      }
    }
    QThread::msleep(delayMs(rng));
    if (p.state() != QProcess::Running) {
      ++died;
      std::fprintf(stderr, "kill %d: the app ended by itself (exit %d)\n", kill, p.exitCode());
    }
    ::kill(static_cast<pid_t>(p.processId()), o.signal);
    if (!p.waitForFinished(10000)) {
      ++died;
      std::fprintf(stderr, "kill %d: the app did not end on the signal\n", kill);
      p.kill();
      p.waitForFinished();
    } else if (o.signal != SIGKILL &&
               (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)) {
      ++died;
      std::fprintf(stderr, "kill %d: the app did not end normally on the signal\n", kill);
    }
    out += p.readAllStandardOutput();

    const std::vector<int> totals = savedTotals(out);
    saves += static_cast<long long>(totals.size());
    const zellick::test::SavedState s = zellick::test::readSaved(settings, dir.path());
    if (!s.present) {
      // Only allowed while nothing was ever confirmed saved.
      if (!totals.empty() || previous) {
        ++torn;
        std::fprintf(stderr, "kill %d: the settings file is gone\n", kill);
      } else {
        ++unsaved;
      }
      continue;
    }
    if (!s.whole()) {
      ++torn;
      std::fprintf(stderr, "kill %d: torn read:", kill);
      for (const auto& why : s.problems) std::fprintf(stderr, " [%s]", why.c_str());
      std::fprintf(stderr, "\n");
      continue;
    }
    ++whole;
    const int count = currentCount(s);
    const int reference = !totals.empty() ? totals.back() : previous.value_or(0);
    const int steps = stepsBetween(reference, count);
    if (steps == 0) {
      ++before;
    } else if (steps <= 5 && o.signal == SIGKILL) {
      ++after;
    } else {
      ++wrongCount;
      std::fprintf(stderr, "kill %d: saved count %d, last confirmed %d (%zu saves this run)\n",
                   kill, count, reference, totals.size());
    }
    if (totals.empty()) ++unsaved;
    previous = count;
  }

  const double seconds = clock.elapsed() / 1000.0;
  std::printf(
      "kill test (signal %d): kills=%d whole=%d torn=%d wrong-count=%d ended-early=%d "
      "no-save-in-20s=%d | state before save=%d "
      "after save=%d, runs killed before their first save=%d, confirmed saves=%lld | %.1f s, seed "
      "%u, "
      "delay 50-400 ms from %s\n",
      o.signal, o.kills, whole, torn, wrongCount, died, hung, before, after, unsaved, saves,
      seconds, o.seed, o.fromStart ? "process start" : "first save");
  return torn == 0 && wrongCount == 0 && died == 0 && hung == 0 ? 0 : 1;
}
