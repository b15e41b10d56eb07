// The ad network connect on the simulated network, through the scenario driver as a script
// drives it and through the client's own operations.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "sim/driver.h"

namespace zellick::test {
namespace {

using ::testing::ElementsAreArray;
using ::testing::EndsWith;
using ::testing::HasSubstr;

const std::string kPrimary = "https://connect.adnetwork.example/connect?";
const std::string kFallback = "https://connect-backup.adnetwork.example/connect?";

// The ad network's events of a launch under `rules`, then `script`, shortened ("GET primary",
// "Failed"), and the state that follows.
struct Outcome {
  std::vector<std::string> events;
  std::vector<std::string> urls;
  std::string state;
};
Outcome run(const std::string& rules, const std::string& script,
            std::vector<std::string> args = {}) {
  std::istringstream in(rules + "\nevents\nstate\nrestart\n" + script + "\nevents\nstate\n");
  std::ostringstream out, err;
  EXPECT_EQ(sim::runZellickSim(args, in, out, err), 0) << err.str();
  Outcome r;
  std::istringstream lines(out.str());
  bool launched = false;
  for (std::string l; std::getline(lines, l);) {
    if (l.starts_with("{")) {
      r.state = l;
      launched = true;
    }
    const std::string what = l.substr(l.find(' ') + 1);
    if (!launched || what.starts_with("http POST")) continue;
    if (what.starts_with("http GET ")) {
      r.urls.push_back(what.substr(9));
      r.events.push_back(what.find(kPrimary) == 9 ? "GET primary" : "GET fallback");
    } else if (what.starts_with("notification ADC_Connect_")) {
      r.events.push_back(what.substr(25));
    } else if (what.starts_with("log Ad")) {
      r.events.push_back(what);
    }
  }
  return r;
}

const char* kSuccess = "<Response><Success>true</Success></Response>";

// Fail-over once, for good; later failures and a hang's time-out post at once; status codes are
// not read; each finished request reads every reply of the process, from the first.
TEST(AdConnect, LaunchAndForegroundRequestsWithTheirFailOverAndOutcomes) {
  const struct {
    std::string rules, script;
    std::vector<std::string> events;
    const char* state;
  } cases[] = {
      {"fail connect",
       "wait 0",
       {"GET primary", "GET fallback", "Failed", "log Ad Connect Failed"},
       R"("connectAttempts":2,"isInitialConnect":false,"baseURL":"https://connect-backup.adnetwork.example/","buffer":null)"},
      {"hang connect",
       "wait 30\nwait 30",
       {"GET primary", "GET fallback", "Failed", "log Ad Connect Failed"},
       R"("connectAttempts":2,)"},
      {std::string("fail connect.adnetwork\nrespond connect-backup 500 ") + kSuccess,
       "wait 0\nforeground\nwait 0",
       {"GET primary", "GET fallback", "Success", "log Ad Connect Succeeded", "GET fallback",
        "Success", "log Ad Connect Succeeded"},
       R"("baseURL":"https://connect-backup.adnetwork.example/")"},
      {std::string("respond connect 200 ") + kSuccess,
       "wait 0\nfail connect\nforeground\nwait 0\nbackground\nforeground\nwait 0",
       {"GET primary", "Success", "log Ad Connect Succeeded", "GET primary", "Failed",
        "log Ad Connect Failed", "GET primary", "Failed", "log Ad Connect Failed"},
       R"("connectAttempts":3,"isInitialConnect":false,"baseURL":"https://connect.adnetwork.example/")"},
      // The second reply stands behind the first document, where reading stops.
      {std::string("respond connect 200 ") + kSuccess,
       "wait 0\nrespond connect 200 <ErrorMessage/>\nforeground\nwait 0",
       {"GET primary", "Success", "log Ad Connect Succeeded", "GET primary", "Success",
        "log Ad Connect Succeeded"},
       R"("buffer":"<Response><Success>true</Success></Response><ErrorMessage/>")"},
      {"respond connect 200 <ErrorMessage>no</ErrorMessage>",
       std::string("wait 0\nrespond connect 200 ") + kSuccess + "\nforeground\nwait 0",
       {"GET primary", "Failed", "log Ad Connect Failed", "GET primary", "Failed",
        "log Ad Connect Failed"},
       R"("buffer":"<ErrorMessage>no</ErrorMessage><Response><Success>true</Success></Response>")"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.rules + " / " + c.script);
    const Outcome r = run(c.rules, c.script);
    EXPECT_THAT(r.events, ElementsAreArray(c.events));
    EXPECT_THAT(r.state,
                HasSubstr(R"("adconnect":{"appId":"3f2b9c1e-7a4d-4e8b-9c2f-1d5e6a7b8c9d",)"));
    EXPECT_THAT(r.state, HasSubstr(c.state));
  }
}

// Keys in order up to the first missing value; each part escaped, then the whole URL again.
TEST(AdConnect, QueryStopsAtTheFirstMissingValueAndIsEscapedTwice) {
  const std::string head =
      "udid=5A1C0E2B-7F3D-4E8A-9B6C-0D1E2F3A4B5C&device_type=Simulated%2520PC&os_version=12&"
      "app_id=3f2b9c1e-7a4d-4e8b-9c2f-1d5e6a7b8c9d&app_version=1.0&library_version=7.4.0";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{}, kPrimary + head + "&country_code=US&language_code=en&lad=0"},
      {{"--locale", "fr_CA.UTF-8"}, kPrimary + head + "&country_code=CA&language_code=fr&lad=0"},
      {{"--locale", "C"}, kPrimary + head},
      {{"--locale=de"}, kPrimary + head},
      // "%", a space and UTF-8 escaped twice; reserved characters as they are.
      {{"--device", "N|50% Zähler|Linux|12&x=1/2|U"},
       kPrimary + "udid=U&device_type=50%2525%2520Z%25C3%25A4hler&os_version=12&x=1/2&app_id="},
  };
  for (const auto& [args, url] : cases) {
    const Outcome r = run("", "", args);
    ASSERT_EQ(r.urls.size(), 1u);
    EXPECT_EQ(r.urls[0].substr(0, url.size()), url);
    if (url.ends_with(head)) {
      EXPECT_EQ(r.urls[0], url);
    }
  }
  std::ostringstream out, err;
  std::istringstream none;
  EXPECT_EQ(sim::runZellickSim({"--locale", "english"}, none, out, err), 2);
  EXPECT_THAT(err.str(), HasSubstr("--locale needs"));
}

// Each "Success" text is compared as it is delivered; "ErrorMessage" counts wherever it starts;
// reading ends at the first fatal error and expands no entity.
TEST(AdConnect, RepliesAreReadEventByEventUpToTheFirstFatalError) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"<r><Success>true</Success></r>", {"notification ADC_Connect_Success"}},
      {"<r><Success/>true</r>", {"notification ADC_Connect_Success"}},
      {"<r><Success>tr&#117;e</Success></r>", {}},
      {"<r><Success> true</Success></r>", {}},
      {"<r><Success><![CDATA[true]]></Success></r>", {}},
      {"<r xmlns:p='u'><p:Success>true</p:Success></r>", {}},
      {"<!DOCTYPE r [<!ENTITY t 'true'>]><r><Success>&t;</Success></r>", {}},
      {"true", {}},
      {"", {}},
      {"<r><ErrorMessage/><ErrorMessage>x</ErrorMessage><Success>true</Success></r>",
       {"notification ADC_Connect_Failed", "notification ADC_Connect_Failed",
        "notification ADC_Connect_Success"}},
      {"<r><Success>true</Success><a></r><ErrorMessage/>", {"notification ADC_Connect_Success"}},
      {"<r><Success>true</Success></r><r><ErrorMessage/></r>",
       {"notification ADC_Connect_Success"}},
  };
  sim::Simulation sim;
  for (const auto& [reply, posted] : cases) {
    sim.world().events().takeNew();
    sim.process().adConnect().startParsing(reply);
    std::vector<std::string> seen;
    for (const std::string& e : sim.world().events().takeNew())
      if (e.find(" notification ") != std::string::npos) seen.push_back(e.substr(e.find(' ') + 1));
    EXPECT_THAT(seen, ElementsAreArray(posted)) << reply;
  }
}

// A second request keeps the first id and observes become-active a second time: of the next
// activation one observer swallows it, the other connects; after that both connect.
TEST(AdConnect, SecondCallKeepsTheIdAndObservesTwiceAndActionsReplaceTheId) {
  sim::Simulation sim;
  sim::Process& p = sim.process();
  const auto gets = [&sim] {
    std::vector<std::string> urls;
    for (const std::string& e : sim.world().events().takeNew())
      if (e.find(" http GET ") != std::string::npos) urls.push_back(e.substr(e.find(" GET ") + 5));
    return urls;
  };
  EXPECT_EQ(gets().size(), 1u);  // the launch's; its become-active was swallowed
  AdConnect* shared = p.adConnect().requestAdConnectWithAppId("other-id", "secret", "2.0");
  EXPECT_EQ(shared, p.adConnect().sharedAdConnect());
  EXPECT_EQ(shared->appId(), "3f2b9c1e-7a4d-4e8b-9c2f-1d5e6a7b8c9d");
  EXPECT_TRUE(shared->isInitialConnect());
  EXPECT_EQ(gets().size(), 1u);
  p.activate();
  EXPECT_EQ(gets().size(), 1u);
  p.activate();
  EXPECT_EQ(gets().size(), 2u);
  EXPECT_EQ(shared->actionComplete("act 1"), shared);
  const auto action = gets();
  ASSERT_EQ(action.size(), 1u);
  EXPECT_THAT(action[0], HasSubstr("&app_id=act%25201&app_version=1.0&"));
  EXPECT_EQ(shared->connectAttempts(), 6);

  // Before any request there is no shared instance: actions do nothing.
  struct : HttpClient {
    void send(HttpRequest, std::function<void(HttpReply)>) override { ADD_FAILURE(); }
  } http;
  fake::RecordingLog log;
  AdConnect unmade({http, p.runLoop(), p.notifications(), log, {}, Configuration::shipped()});
  EXPECT_EQ(unmade.actionComplete("x"), nullptr);
  EXPECT_EQ(unmade.sharedAdConnect(), nullptr);
  EXPECT_EQ(unmade.createQueryStringFromDict(nullptr), "");
  unmade.connect();
  EXPECT_EQ(unmade.connectAttempts(), 0);
}

}  // namespace
}  // namespace zellick::test
