#pragma once

#include <QThread>

#include <memory>

#include "platform/http.h"

namespace zellick::qt {

class HttpWorker;

// HTTP and HTTPS on QtNetwork, on one thread of the client's own: every request is queued to it
// and runs there concurrently with the others (Qt keeps up to six connections a host), so a
// caller never waits and a thousand records cost no thousand threads. `done` runs on that
// thread. Destroying the client aborts what is in flight and never waits for a server.
class QtHttpClient : public HttpClient {
 public:
  QtHttpClient();
  QtHttpClient(const QtHttpClient&) = delete;
  QtHttpClient& operator=(const QtHttpClient&) = delete;
  ~QtHttpClient() override;

  void send(HttpRequest request, std::function<void(HttpReply)> done) override;

 private:
  QThread thread_;
  HttpWorker* worker_;  // lives on thread_, deleted there
};

}  // namespace zellick::qt
