// The usage tracker on a recording HTTP client: the record as the maker's server reads it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/fake/memory_defaults.h"
#include "platform/fake/services.h"
#include "services/tracker.h"

namespace zellick::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct RecordingHttp : HttpClient {
  std::vector<HttpRequest> sent;
  std::vector<std::function<void(HttpReply)>> pending;
  void send(HttpRequest request, std::function<void(HttpReply)> done) override {
    sent.push_back(std::move(request));
    pending.push_back(std::move(done));
  }
};

std::string header(const HttpRequest& r, const std::string& name) {
  for (const auto& [k, v] : r.headers)
    if (k == name) return v;
  return "<none>";
}

TEST(Tracker, RecordsGoOutUnescapedWithTheirLengthInBytesUnlessSwitchedOff) {
  const struct {
    const char* name;  // the device's
    std::optional<DefaultsValue> setting;
    bool switchedOff;
    const char* body;  // nothing: neither sent nor logged
  } cases[] = {
      {"Lab's phone", std::nullopt, false, "appid=17&tag=Count&device=Lab's phone|M|S|V|U"},
      {"a&b=c|d", true, false, "appid=17&tag=Count&device=a&b=c|d|M|S|V|U"},
      {"Zähler 計数", std::nullopt, false, "appid=17&tag=Count&device=Zähler 計数|M|S|V|U"},
      // Bytes that are no UTF-8 go out as U+FFFD.
      {"bad\xff", std::nullopt, false, "appid=17&tag=Count&device=bad\xEF\xBF\xBD|M|S|V|U"},
      {"off", false, false, nullptr},
      {"off, as text", std::string("false"), false, nullptr},
      {"the command-line switch", std::nullopt, true, nullptr},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(k.name);
    RecordingHttp http;
    fake::MemoryDefaults defaults;
    fake::RecordingLog log;
    if (k.setting) defaults.setObject(kSendUsageRecordsKey, *k.setting);
    orvtracker tracker({http, defaults, log}, {k.name, "M", "S", "V", "U"}, "http://127.0.0.1:9/");
    tracker.setSwitchedOff(k.switchedOff);
    tracker.Track("Count");
    if (!k.body) {
      EXPECT_THAT(http.sent, IsEmpty());
      EXPECT_THAT(log.lines, IsEmpty());
      continue;
    }
    ASSERT_EQ(http.sent.size(), 1u);
    const HttpRequest& r = http.sent[0];
    EXPECT_EQ(r.method + " " + r.url, "POST http://127.0.0.1:9/tracker.php");
    EXPECT_EQ(r.body, k.body);
    EXPECT_EQ(header(r, "Content-Length"), std::to_string(r.body.size()));
    EXPECT_EQ(header(r, "Content-Type"), "application/x-www-form-urlencoded");
    http.pending[0](HttpReply{Status(Status::Code::TimedOut, "no answer"), 0, {}});
    EXPECT_THAT(log.lines, ElementsAre("Sending request: appid=17&tag=Count&device=" +
                                           std::string(k.name) + "|M|S|V|U",
                                       "Response: (null)"));
  }
}

TEST(Tracker, TheSharedInstanceIsTheFirstMadeWhileItLives) {
  RecordingHttp http;
  fake::MemoryDefaults defaults;
  fake::RecordingLog log;
  EXPECT_EQ(orvtracker::sharedInstance(), nullptr);
  {
    orvtracker first({http, defaults, log}, {}, "http://h.example/");
    orvtracker second({http, defaults, log}, {}, "http://h.example/");
    EXPECT_EQ(orvtracker::sharedInstance(), &first);
  }
  EXPECT_EQ(orvtracker::sharedInstance(), nullptr);
}

}  // namespace
}  // namespace zellick::test
