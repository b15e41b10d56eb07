#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/status.h"

namespace zellick {

struct HttpRequest {
  std::string method = "GET";
  std::string url;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  double timeout = 60;                   // seconds until it fails as timed out
  std::size_t maxBodyBytes = 16u << 20;  // a longer reply fails as too large
  // Hosts (exact, case-sensitive names) whose certificate chain is taken as presented when it
  // fails the checks; every other host, a redirect's target included, is checked as usual.
  std::vector<std::string> trustedHosts;
};

// What came back: a whole reply, whatever its status code, or a failure (no reply, or one that
// broke off before its end), with no body.
struct HttpReply {
  Status status;  // ok when a reply came whole; else unavailable, timed out, too large, failed...
  int code = 0;   // the reply's status code
  std::string body;
};

// Sends requests without ever blocking its caller. Any thread may send.
class HttpClient {
 public:
  virtual ~HttpClient() = default;
  // Starts `request`. `done` runs once, later, with what came back, on a thread of the client's
  // own (never inside send()); requests still in flight when the client goes are dropped, and
  // their `done` never runs.
  virtual void send(HttpRequest request, std::function<void(HttpReply)> done) = 0;
};

}  // namespace zellick
