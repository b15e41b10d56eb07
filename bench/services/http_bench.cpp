// The usage tracker's sending, on the stand-in for the maker's web server:
//  1. Track on the caller's thread while the server never answers: cost per call.
//  2. 1,000 records over 10 s, sent (a) as the app sends them, on one network thread of the
//     HTTP client's own, and (b) with a thread of its own per record, each running its request
//     to the end: records received, peak threads, peak memory, the caller's cost per record.
//  3. The client destroyed with 200 records in flight to a server that never answers.
//   zellick_http_bench [--records N] [--seconds S] 2>/dev/null   (the records' log lines)
#include <QCoreApplication>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

#include <time.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>

#include "measure.h"
#include "platform/fake/memory_defaults.h"
#include "platform/fake/services.h"
#include "platform/qt/http.h"
#include "platform/qt/log.h"
#include "services/tracker.h"
#include "services_server.h"

namespace {

using namespace zellick::bench;

using namespace zellick;

// Samples the process's threads and resident memory every 5 ms while it lives.
struct Peaks {
  std::atomic<long> threads{0}, rssKb{0};
  std::atomic<bool> running{true};
  std::thread sampler{[this] {
    while (running) {
      threads = std::max(threads.load(), statusField("Threads:"));
      rssKb = std::max(rssKb.load(), statusField("VmRSS:"));
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }};
  ~Peaks() {
    running = false;
    sampler.join();
  }
};

double percentile(std::vector<double> v, double p) {
  if (v.empty()) return 0;
  std::sort(v.begin(), v.end());
  return v[std::min(v.size() - 1, static_cast<size_t>(p * static_cast<double>(v.size())))];
}

// The other way: a thread per record, each with its own network access manager, waiting for
// its request to end, as a blocking send on a fresh thread would.
class ThreadPerRecordClient : public HttpClient {
 public:
  ~ThreadPerRecordClient() override {
    for (std::thread& t : threads_) t.join();
  }
  void send(HttpRequest request, std::function<void(HttpReply)> done) override {
    threads_.emplace_back([request = std::move(request), done = std::move(done)] {
      QNetworkAccessManager manager;
      QNetworkRequest r{QUrl(QString::fromStdString(request.url))};
      for (const auto& [k, v] : request.headers)
        r.setRawHeader(QByteArray::fromStdString(k), QByteArray::fromStdString(v));
      QNetworkReply* reply = manager.sendCustomRequest(r, QByteArray::fromStdString(request.method),
                                                       QByteArray::fromStdString(request.body));
      QEventLoop loop;
      QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
      QTimer::singleShot(static_cast<int>(request.timeout * 1000), &loop, &QEventLoop::quit);
      loop.exec();
      HttpReply out;
      out.code = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
      out.body = reply->readAll().toStdString();
      delete reply;
      if (done) done(out);
    });
  }

 private:
  std::vector<std::thread> threads_;
};

struct NullLog : Log {
  void line(const std::string&) override {}
};

// Sends `count` records evenly over `seconds` from this (the main) thread, then waits for the
// server to have them all (at most 20 s more).
void spread(HttpClient& http, standin::ServicesServer& server, int count, double seconds,
            const char* title) {
  NullLog log;
  fake::MemoryDefaults defaults;
  orvtracker tracker({http, defaults, log}, {"bench", "PC", "Linux", "1", "UUID"},
                     server.baseUrl());
  const size_t before = server.records().size();
  std::vector<double> cost;
  const long baseKb = statusField("VmRSS:");
  Peaks peaks;
  const double start = nowMs();
  for (int i = 0; i < count; ++i) {
    while (nowMs() < start + i * seconds * 1000.0 / count)
      QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    const double t = nowMs();
    tracker.Track("Count");
    cost.push_back((nowMs() - t) * 1000.0);
  }
  while (server.records().size() - before < static_cast<size_t>(count) &&
         nowMs() < start + (seconds + 20) * 1000)
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  std::printf("  %-34s %5zu of %d  %7ld  %+8.1f MiB  %8.1f us  %8.1f us\n", title,
              server.records().size() - before, count, peaks.threads.load(),
              (peaks.rssKb.load() - baseKb) / 1024.0, percentile(cost, 0.5),
              percentile(cost, 0.99));
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  int records = 1000;
  double seconds = 10;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::string(argv[i]) == "--records") records = std::atoi(argv[i + 1]);
    if (std::string(argv[i]) == "--seconds") seconds = std::atof(argv[i + 1]);
  }
  std::ostringstream quiet;

  // 1. The caller's cost with the server hanging.
  {
    standin::ServicesOptions o;
    o.hangPath = "tracker.php";
    standin::ServicesServer hanging(o, nullptr, &quiet);
    if (!hanging.start().ok()) return 1;
    qt::QtHttpClient http;
    NullLog log;
    fake::MemoryDefaults defaults;
    orvtracker tracker({http, defaults, log}, {"bench", "PC", "Linux", "1", "UUID"},
                       hanging.baseUrl());
    std::vector<double> cost;
    for (int i = 0; i < 2000; ++i) {
      const double t = nowMs();
      tracker.Track("Count");
      cost.push_back((nowMs() - t) * 1000.0);
      if (i % 50 == 0) QCoreApplication::processEvents();
    }
    std::printf(
        "Track on the caller's thread, the server never answering (2000 calls):\n"
        "  median %.1f us, p99 %.1f us (target: median 20 us at most)\n\n",
        percentile(cost, 0.5), percentile(cost, 0.99));
    // 3. Going with 200 records in flight.
    auto other = std::make_unique<qt::QtHttpClient>();
    HttpRequest r;
    r.method = "POST";
    r.url = hanging.baseUrl() + "tracker.php";
    for (int i = 0; i < 200; ++i) other->send(r, nullptr);
    QThread::msleep(200);  // let them connect and wait
    const double t = nowMs();
    other.reset();
    std::printf(
        "A client destroyed with 200 requests in flight to a server that never answers:\n"
        "  gone after %.1f ms (target: under 1 s)\n\n",
        nowMs() - t);
  }

  // 2b. Records while the server never answers, both ways: what piles up meanwhile.
  {
    standin::ServicesOptions o;
    o.hangPath = "tracker.php";
    standin::ServicesServer hanging(o, nullptr, &quiet);
    if (!hanging.start().ok()) return 1;
    std::printf("200 records over 2 s to a server that never answers (5 s time-out):\n");
    const auto pileUp = [&](HttpClient& http, const char* title) {
      const long baseKb = statusField("VmRSS:"), baseThreads = statusField("Threads:");
      Peaks peaks;
      HttpRequest r;
      r.method = "POST";
      r.url = hanging.baseUrl() + "tracker.php";
      r.timeout = 5;
      const double start = nowMs();
      for (int i = 0; i < 200; ++i) {
        while (nowMs() < start + i * 10.0)
          QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        http.send(r, nullptr);
      }
      QThread::msleep(500);
      std::printf("  %-34s %+5ld threads  %+8.1f MiB\n", title, peaks.threads.load() - baseThreads,
                  (peaks.rssKb.load() - baseKb) / 1024.0);
    };
    {
      qt::QtHttpClient http;
      pileUp(http, "one network thread (the app's)");
    }
    {
      ThreadPerRecordClient http;
      pileUp(http, "a thread per record");
    }
    std::printf("\n");
  }

  // 2. Records over time, both ways.
  standin::ServicesServer server({}, nullptr, &quiet);
  if (!server.start().ok()) return 1;
  std::printf("%d records over %.0f s to the stand-in:\n", records, seconds);
  std::printf("  %-34s %13s  %7s  %12s  %11s  %11s\n", "", "received", "threads", "more memory",
              "send median", "send p99");
  {
    qt::QtHttpClient http;
    spread(http, server, records, seconds, "one network thread (the app's)");
  }
  {
    ThreadPerRecordClient http;
    spread(http, server, records, seconds, "a thread per record");
  }
  return 0;
}
