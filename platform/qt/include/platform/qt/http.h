#pragma once

#include <QThread>

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/http.h"

namespace zellick::qt {

class HttpWorker;

// HTTP and HTTPS on QtNetwork, on one thread of the client's own: every request is queued to it
// and runs there concurrently with the others (Qt keeps up to six connections a host), so a
// caller never waits and a thousand records cost no thousand threads. `done` runs on that
// thread. Destroying the client aborts what is in flight and never waits for a server.
// Requests sent before start() wait for it: the network stack (and TLS) is set up then, so the
// app's first frame does not share the processor with it. A reply that breaks off before its
// end fails: replies are asked for unencoded (unless a request names an encoding), since Qt
// takes a compressed one that broke off for whole.
class QtHttpClient : public HttpClient {
 public:
  // Started at once unless told to wait for start().
  explicit QtHttpClient(bool startNow = true);
  QtHttpClient(const QtHttpClient&) = delete;
  QtHttpClient& operator=(const QtHttpClient&) = delete;
  ~QtHttpClient() override;

  void send(HttpRequest request, std::function<void(HttpReply)> done) override;
  // Starts the network thread and sends what waited; harmless to repeat. Main thread.
  void start();

 private:
  void post(HttpRequest request, std::function<void(HttpReply)> done);

  QThread thread_;
  HttpWorker* worker_;  // lives on thread_, deleted there
  std::mutex mutex_;
  bool started_ = false;
  std::vector<std::pair<HttpRequest, std::function<void(HttpReply)>>> waiting_;
};

}  // namespace zellick::qt
