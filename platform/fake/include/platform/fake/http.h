#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/fake/recorder.h"
#include "platform/fake/time.h"
#include "platform/http.h"

namespace zellick::fake {

// How the simulated network answers requests whose URL contains a pattern. Kept apart from the
// client, so that a restarted process meets the same network.
class HttpRules {
 public:
  enum class Kind { Respond, Fail, Hang };
  struct Rule {
    Kind kind = Kind::Fail;
    int code = 200;
    std::string body;
  };
  // A later rule for the same pattern replaces it.
  void set(const std::string& pattern, Rule rule);
  // The newest rule whose pattern the URL contains; none: the network is not there.
  const Rule* match(const std::string& url) const;

 private:
  std::vector<std::pair<std::string, Rule>> rules_;  // oldest first
};

// Requests answered by the rules in virtual time: a reply or a failure on the next turn of the
// run loop, a hang only when the request times out. Records "http METHOD URL" (with " BODY"
// when there is one) as each starts. `done` runs on the run loop; what is still in flight when
// the run loop goes never gets its answer.
class FakeHttpClient final : public HttpClient {
 public:
  FakeHttpClient(VirtualRunLoop& runLoop, const HttpRules& rules, EventRecorder& events)
      : runLoop_(runLoop), rules_(rules), events_(events) {}
  void send(HttpRequest request, std::function<void(HttpReply)> done) override;

 private:
  VirtualRunLoop& runLoop_;
  const HttpRules& rules_;
  EventRecorder& events_;
};

}  // namespace zellick::fake
