// The ad network client's reply reader over arbitrary bytes, as replies arrive: the input, cut
// at each NUL byte, is up to eight replies to successive requests (one that starts with 0x01
// comes as a failed request instead), so the buffer grows and is read again from its start each
// time. Also each piece alone, straight to the reader.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <string_view>

#include "adconnect/AdConnect.h"

namespace {

using namespace zellick;

struct QueueLoop : RunLoop {
  std::deque<std::function<void()>> queue;
  TimerRef scheduledTimer(double, std::function<void(Timer&)>) override { std::abort(); }
  void dispatchAfter(double, std::function<void()> work) override { post(std::move(work)); }
  void post(std::function<void()> work) override { queue.push_back(std::move(work)); }
  void drain() {
    while (!queue.empty()) {
      auto work = std::move(queue.front());
      queue.pop_front();
      work();
    }
  }
};

struct HeldHttp : HttpClient {
  std::deque<std::function<void(HttpReply)>> waiting;
  void send(HttpRequest, std::function<void(HttpReply)> done) override {
    waiting.push_back(std::move(done));
  }
};

struct NoLog : Log {
  void line(const std::string&) override {}
};

constexpr std::size_t kMaxReplies = 8;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  QueueLoop loop;
  HeldHttp http;
  NotificationCenter center;
  NoLog log;
  std::size_t posted = 0;
  for (const char* name : {kAdConnectSuccess, kAdConnectFailed})
    center.addObserver(name, [&posted] { ++posted; });
  AdConnect client({http, loop, center, log, {}, Configuration::shipped()});
  client.requestAdConnectWithAppId("fuzz");
  std::string kept;
  std::size_t from = 0;
  for (std::size_t n = 0; n < kMaxReplies && from <= bytes.size(); ++n) {
    const std::size_t end = std::min(bytes.find('\0', from), bytes.size());
    const std::string_view piece = bytes.substr(from, end - from);
    from = end + 1;
    client.startParsing(piece);
    if (http.waiting.empty()) client.actionComplete("again");
    auto done = std::move(http.waiting.front());
    http.waiting.pop_front();
    HttpReply reply;
    if (piece.starts_with('\x01'))
      reply.status = Status(Status::Code::Unavailable, "fuzzed failure");
    else
      reply.body = std::string(piece);
    done(reply);
    loop.drain();
    if (reply.status.ok() && kept.size() + piece.size() <= AdConnect::kMaxBufferBytes)
      kept += piece;
    // The buffer holds every reply received, in order, and nothing else.
    if (client.data().value_or("") != kept) std::abort();
  }
  (void)posted;
  return 0;
}
