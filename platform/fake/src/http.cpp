#include "platform/fake/http.h"

#include <algorithm>

namespace zellick::fake {

void HttpRules::set(const std::string& pattern, Rule rule) {
  std::erase_if(rules_, [&](const auto& r) { return r.first == pattern; });
  rules_.emplace_back(pattern, std::move(rule));
}

const HttpRules::Rule* HttpRules::match(const std::string& url) const {
  for (auto it = rules_.rbegin(); it != rules_.rend(); ++it)
    if (url.find(it->first) != std::string::npos) return &it->second;
  return nullptr;
}

void FakeHttpClient::send(HttpRequest request, std::function<void(HttpReply)> done) {
  events_.record("http " + request.method + " " + request.url +
                 (request.body.empty() ? "" : " " + request.body));
  const HttpRules::Rule* rule = rules_.match(request.url);
  HttpReply reply;
  double after = 0;
  if (!rule || rule->kind == HttpRules::Kind::Fail) {
    reply.status = Status(Status::Code::Unavailable, "no network");
  } else if (rule->kind == HttpRules::Kind::Hang) {
    reply.status = Status(Status::Code::TimedOut, "no answer");
    after = request.timeout;
  } else if (rule->body.size() > request.maxBodyBytes) {
    reply.status = Status(Status::Code::TooLarge, "the reply is larger than allowed");
  } else {
    reply.code = rule->code;
    reply.body = rule->body;
  }
  runLoop_.dispatchAfter(after, [done = std::move(done), reply = std::move(reply)] {
    if (done) done(reply);
  });
}

}  // namespace zellick::fake
