// Start-up time and peak memory of the app against a minimal Qt Quick window, offscreen.
// Each run forks and execs one program; the time runs from just before fork until the child
// reports its first frame on stdout; the peak is the child's ru_maxrss from wait4. The app runs
// through a launcher that starts it as its main does.
//   zellick_startup_bench [--runs N] [--also "PROGRAM ARGS..."]...
// Each --also program (one that prints "first frame" on its first frame, say an older build)
// is run in the same rounds and gets a row of its own.
// The app keeps rendered artwork in a cache folder (a fresh one here, filled by the warm-up
// run) and ships renderings for its default window; two more rows show first starts: with no
// cache, at the default size and at a size nothing is shipped for, where it renders it all.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>
#include "measure.h"

namespace {

using namespace zellick::bench;

struct Sample {
  double ms = 0;
  double cpuMs = 0;  // user + system time of the whole run, less sensitive to machine load
  long maxRssKb = 0;
};

double monotonicMs() {
  timespec t{};
  clock_gettime(CLOCK_MONOTONIC, &t);
  return t.tv_sec * 1000.0 + t.tv_nsec / 1e6;
}

// Runs `argv` once; false when it fails to show a frame within 30 s.
// `env` entries ("NAME=value") are set in the child only.
bool runOnce(const std::vector<std::string>& args, Sample& out,
             const std::vector<std::string>& env = {}) {
  int fds[2];
  if (pipe(fds) != 0) return false;
  std::vector<char*> argv;
  for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);

  const double start = monotonicMs();
  const pid_t pid = fork();
  if (pid < 0) return false;
  if (pid == 0) {
    for (const auto& e : env) putenv(const_cast<char*>(e.c_str()));
    dup2(fds[1], STDOUT_FILENO);
    close(fds[0]);
    close(fds[1]);
    const int devnull = open("/dev/null", O_WRONLY);
    if (devnull >= 0) dup2(devnull, STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(fds[1]);
  std::string seen;
  double frame = -1;
  pollfd p{fds[0], POLLIN, 0};
  while (frame < 0 && monotonicMs() - start < 30000) {
    if (poll(&p, 1, 100) <= 0) continue;
    char buf[256];
    const ssize_t n = read(fds[0], buf, sizeof buf);
    if (n <= 0) break;
    seen.append(buf, static_cast<size_t>(n));
    if (seen.find("first frame") != std::string::npos) frame = monotonicMs();
  }
  close(fds[0]);
  if (frame < 0) kill(pid, SIGKILL);
  int status = 0;
  rusage usage{};
  wait4(pid, &status, 0, &usage);
  out.ms = frame - start;
  out.maxRssKb = usage.ru_maxrss;
  out.cpuMs = (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000.0 +
              (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000.0;
  return frame >= 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  int runs = 15;
  std::vector<std::vector<std::string>> also;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--runs") == 0) {
      runs = std::max(1, std::atoi(argv[i + 1]));
    } else if (std::strcmp(argv[i], "--also") == 0) {
      std::istringstream words(argv[i + 1]);
      also.emplace_back();
      for (std::string w; words >> w;) also.back().push_back(w);
    }
  }

  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  setenv("ZELLICK_NO_AUDIO", "1", 1);
  char settings[] = "/tmp/zellick-bench-XXXXXX";
  const int fd = mkstemp(settings);
  if (fd >= 0) close(fd);
  setenv("ZELLICK_SETTINGS", settings, 1);
  char artwork[] = "/tmp/zellick-bench-art-XXXXXX";
  if (mkdtemp(artwork)) setenv("ZELLICK_ARTWORK_CACHE", artwork, 1);
  const std::vector<std::string> uncached = {"ZELLICK_ARTWORK_CACHE=off"};
  const std::vector<std::string> otherSize = {ZELLICK_LAUNCHER, "--window", "400x720"};

  const std::vector<std::string> app = {ZELLICK_LAUNCHER};
  const std::vector<std::string> minimal = {ZELLICK_MINIMAL_WINDOW};

  std::vector<double> appMs, minMs, appCpu, minCpu, coldMs, coldCpu, renderMs, renderCpu;
  std::vector<long> appKb, minKb, coldKb, renderKb;
  std::vector<std::vector<Sample>> alsoSamples(also.size());
  // Alternate the programs so drifts in machine load hit all alike; one warm-up run each.
  for (int i = -1; i < runs; ++i) {
    Sample a, m, c, r;
    if (!runOnce(app, a) || !runOnce(minimal, m) || !runOnce(app, c, uncached) ||
        !runOnce(otherSize, r, uncached)) {
      std::fprintf(
          stderr,
          "run %d failed (app %.0f ms, minimal %.0f ms, uncached %.0f ms, rendering %.0f ms)\n", i,
          a.ms, m.ms, c.ms, r.ms);
      unlink(settings);
      std::error_code ignored;
      std::filesystem::remove_all(artwork, ignored);
      return 1;
    }
    for (std::size_t k = 0; k < also.size(); ++k) {
      Sample s;
      if (!runOnce(also[k], s)) {
        std::fprintf(stderr, "run %d of %s failed\n", i, also[k].front().c_str());
        return 1;
      }
      if (i >= 0) alsoSamples[k].push_back(s);
    }
    if (i < 0) continue;
    appMs.push_back(a.ms);
    appCpu.push_back(a.cpuMs);
    minCpu.push_back(m.cpuMs);
    minMs.push_back(m.ms);
    appKb.push_back(a.maxRssKb);
    minKb.push_back(m.maxRssKb);
    coldMs.push_back(c.ms);
    coldCpu.push_back(c.cpuMs);
    coldKb.push_back(c.maxRssKb);
    renderMs.push_back(r.ms);
    renderCpu.push_back(r.cpuMs);
    renderKb.push_back(r.maxRssKb);
  }
  unlink(settings);
  std::error_code ignored;
  std::filesystem::remove_all(artwork, ignored);

  const double am = median(appMs), mm = median(minMs);
  const long ak = median(appKb), mk = median(minKb);
  const double ac = median(appCpu), mc = median(minCpu);
  std::printf("start-up to first frame, offscreen, median of %d runs (targets 1.30x)\n", runs);
  std::printf("                 first frame      CPU (whole run)   peak RSS\n");
  std::printf("  zellick        %8.1f ms     %8.1f ms       %7.1f MiB\n", am, ac, ak / 1024.0);
  std::printf("  minimal window %8.1f ms     %8.1f ms       %7.1f MiB\n", mm, mc, mk / 1024.0);
  std::printf("  ratio          %8.2fx       %8.2fx         %7.2fx\n", am / mm, ac / mc,
              static_cast<double>(ak) / static_cast<double>(mk));
  const auto row = [&](const char* title, const std::vector<double>& ms,
                       const std::vector<double>& cpu, const std::vector<long>& kb) {
    const double t = median(ms), c = median(cpu);
    const long k = median(kb);
    std::printf("  %s\n", title);
    std::printf("                 %8.1f ms     %8.1f ms       %7.1f MiB\n", t, c, k / 1024.0);
    std::printf("  ratio          %8.2fx       %8.2fx         %7.2fx\n", t / mm, c / mc,
                static_cast<double>(k) / static_cast<double>(mk));
  };
  row("zellick, first start (no artwork cache; the shipped renderings serve)", coldMs, coldCpu,
      coldKb);
  row("zellick, first start at 400 x 720, where all artwork is rendered", renderMs, renderCpu,
      renderKb);
  for (std::size_t k = 0; k < also.size(); ++k) {
    std::vector<double> ms, cpu;
    std::vector<long> kb;
    for (const Sample& s : alsoSamples[k]) {
      ms.push_back(s.ms);
      cpu.push_back(s.cpuMs);
      kb.push_back(s.maxRssKb);
    }
    row(also[k].front().c_str(), ms, cpu, kb);
  }
  return 0;
}
