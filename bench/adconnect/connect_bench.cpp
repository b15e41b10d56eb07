// The ad network connect's cost on the main thread: starting one request (parameters, escaping,
// the hand-off to the HTTP client), and reading the kept replies when one finishes, for a
// buffer of 1 and of 1,000 replies as the stand-in sends them, and for a first reply of 64 KiB.
//   adconnect_bench [benchmark options]
#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "adconnect/AdConnect.h"
#include "platform/fake/services.h"
#include "platform/qt/http.h"

namespace {

using namespace zellick;

const std::string kReply =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Response><Success>true</Success></Response>\n";

struct Discard : HttpClient {
  void send(HttpRequest, std::function<void(HttpReply)>) override {}
};

// Counts the replies handed back from the HTTP client's thread, and drops them.
struct CountingLoop : RunLoop {
  std::atomic<std::int64_t> posted{0};
  TimerRef scheduledTimer(double, std::function<void(Timer&)>) override { std::abort(); }
  void dispatchAfter(double, std::function<void()>) override { std::abort(); }
  void post(std::function<void()>) override { ++posted; }
};

// Requests go to a closed port on loopback.
struct Client {
  explicit Client(HttpClient& http)
      : config(closedPort()), client({http, loop, center, log, device(), config}) {
    center.addObserver(kAdConnectSuccess, [this] { ++successes; });
  }
  static DeviceFacts device() {
    return {"Bench", "Bench PC", "Debian GNU/Linux", "12", "5A1C0E2B-7F3D-4E8A-9B6C-0D1E2F3A4B5C",
            "CA",    "fr"};
  }
  static Configuration closedPort() {
    Configuration c = Configuration::shipped();
    c.adPrimaryBaseUrl = c.adFallbackBaseUrl = "https://127.0.0.1:9/";
    return c;
  }
  Configuration config;
  CountingLoop loop;
  NotificationCenter center;
  fake::RecordingLog log;
  AdConnect client;
  std::int64_t successes = 0;
};

// What the delegate's launch and each return to the foreground cost the main thread.
void BM_StartRequest(benchmark::State& state) {
  Discard discard;
  qt::QtHttpClient qtHttp;  // the failures it posts back are never read here
  Client c(state.range(0) ? static_cast<HttpClient&>(qtHttp) : discard);
  std::int64_t sent = 0;
  for (auto _ : state) {
    c.client.connectWithParam(c.client.genericParameters());
    if (state.range(0) && ++sent % 256 == 0) {
      state.PauseTiming();  // the network thread catches up, so no backlog competes
      while (c.loop.posted < sent) std::this_thread::sleep_for(std::chrono::microseconds(100));
      state.ResumeTiming();
    }
  }
  state.SetLabel(state.range(0) ? "QtHttpClient" : "HTTP client that drops it");
}
BENCHMARK(BM_StartRequest)->Arg(0)->Arg(1);

// A finished request reads every kept reply from the first: here `range(0)` of them.
void BM_ReadBuffer(benchmark::State& state) {
  Discard discard;
  Client c(discard);
  std::string buffer;
  for (std::int64_t i = 0; i < state.range(0); ++i) buffer += kReply;
  for (auto _ : state) c.client.startParsing(buffer);
  benchmark::DoNotOptimize(c.successes);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(buffer.size()));
  state.SetLabel(std::to_string(buffer.size()) + " bytes, " +
                 std::to_string(c.successes / std::max<std::int64_t>(1, state.iterations())) +
                 " success per read");
}
BENCHMARK(BM_ReadBuffer)->Arg(1)->Arg(1000);

// The most a hostile service makes it read: a first reply of 64 KiB that is one long document,
// behind which 15 more fill the buffer to 1 MiB.
void BM_ReadWorstBuffer(benchmark::State& state) {
  Discard discard;
  Client c(discard);
  std::string first = "<r>";
  while (first.size() + 40 < AdConnect::kMaxReplyBytes) first += "<Success>true</Success>";
  first += "</r>";
  std::string buffer;
  while (buffer.size() + first.size() <= AdConnect::kMaxBufferBytes) buffer += first;
  for (auto _ : state) c.client.startParsing(buffer);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(buffer.size()));
  state.SetLabel(std::to_string(buffer.size()) + " bytes, " +
                 std::to_string(c.successes / std::max<std::int64_t>(1, state.iterations())) +
                 " successes per read");
}
BENCHMARK(BM_ReadWorstBuffer);

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
