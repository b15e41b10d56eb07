// The ad network connect on the simulated network, through the scenario driver as a script
// drives it and through the client's own operations.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "sim/driver.h"

namespace zellick::test {
namespace {

using ::testing::ElementsAreArray;
using ::testing::HasSubstr;

const std::string kPrimary = "https://connect.adnetwork.example/connect?";

// A launch under `rules`, then `script`: the connect requests' URLs, the ad network's events
// shortened ("primary", "fallback", "Success", "Failed"), and the last state.
struct Outcome {
  std::vector<std::string> urls, events;
  std::string state;
};
Outcome run(const std::string& rules, const std::string& script,
            const std::vector<std::string>& args = {}) {
  std::istringstream in(rules + "\nevents\nstate\nrestart\n" + script + "\nevents\nstate\n");
  std::ostringstream out, err;
  EXPECT_EQ(sim::runZellickSim(args, in, out, err), 0) << err.str();
  Outcome r;
  std::istringstream lines(out.str());
  for (std::string l; std::getline(lines, l);) {
    if (l.starts_with("{")) r.state = l;
    if (r.state.empty()) continue;  // the process the restart replaced
    if (const auto get = l.find(" http GET ");
        get != std::string::npos && l.find("/connect?") != std::string::npos) {
      r.urls.push_back(l.substr(get + 10));
      r.events.push_back(r.urls.back().starts_with(kPrimary) ? "primary" : "fallback");
    } else if (const auto n = l.find(" notification ADC_Connect_"); n != std::string::npos) {
      r.events.push_back(l.substr(n + 26));
    }
  }
  return r;
}

const std::string kSuccess = "<Response><Success>true</Success></Response>";

// Fail-over once, for good; later failures and a time-out post at once; status codes are not
// read; each finished request reads every reply of the process from the first, up to the first
// fatal error (here: the second document).
TEST(AdConnect, LaunchAndForegroundRequestsWithTheirFailOverAndOutcomes) {
  const struct {
    std::string rules, script;
    const char* events;
    std::string state;
  } cases[] = {
      {"fail connect", "wait 0", "primary fallback Failed",
       R"("connectAttempts":2,"isInitialConnect":false,)"
       R"("baseURL":"https://connect-backup.adnetwork.example/","buffer":null})"},
      {"hang connect", "wait 30\nwait 30", "primary fallback Failed", R"("connectAttempts":2,)"},
      {"fail connect.adnetwork\nrespond connect-backup 500 " + kSuccess,
       "wait 0\nforeground\nwait 0", "primary fallback Success fallback Success",
       R"("baseURL":"https://connect-backup.adnetwork.example/")"},
      {"respond connect 200 " + kSuccess,
       "wait 0\nfail connect\nforeground\nwait 0\nbackground\nforeground\nwait 0",
       "primary Success primary Failed primary Failed",
       R"("connectAttempts":3,"isInitialConnect":false,"baseURL":"https://connect.adnetwork.example/")"},
      {"respond connect 200 " + kSuccess,
       "wait 0\nrespond connect 200 <ErrorMessage/>\nforeground\nwait 0",
       "primary Success primary Success", R"("buffer":")" + kSuccess + R"(<ErrorMessage/>")"},
      {"respond connect 200 <ErrorMessage>no</ErrorMessage>",
       "wait 0\nrespond connect 200 " + kSuccess + "\nforeground\nwait 0",
       "primary Failed primary Failed",
       R"("buffer":"<ErrorMessage>no</ErrorMessage>)" + kSuccess + "\""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.rules + " / " + c.script);
    const Outcome r = run(c.rules, c.script);
    std::string events;
    for (const std::string& e : r.events) events += (events.empty() ? "" : " ") + e;
    EXPECT_EQ(events, c.events);
    EXPECT_THAT(r.state,
                HasSubstr(R"("adconnect":{"appId":"3f2b9c1e-7a4d-4e8b-9c2f-1d5e6a7b8c9d",)"));
    EXPECT_THAT(r.state, HasSubstr(c.state));
  }
}

// Keys in order up to the first missing value; each part escaped, then the whole URL again.
TEST(AdConnect, QueryStopsAtTheFirstMissingValueAndIsEscapedTwice) {
  const std::string head =
      kPrimary +
      "udid=5A1C0E2B-7F3D-4E8A-9B6C-0D1E2F3A4B5C&device_type=Simulated%2520PC&os_version=12&"
      "app_id=3f2b9c1e-7a4d-4e8b-9c2f-1d5e6a7b8c9d&app_version=1.0&library_version=7.4.0";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{}, head + "&country_code=US&language_code=en&lad=0"},
      {{"--locale", "fr_CA.UTF-8"}, head + "&country_code=CA&language_code=fr&lad=0"},
      {{"--locale", "C"}, head},
      {{"--locale=de"}, head},
      // "%", a space and UTF-8 escaped twice; reserved characters as they are.
      {{"--device", "N|50% Zähler|Linux|12&x=1/2|U", "--locale", "C"},
       kPrimary + "udid=U&device_type=50%2525%2520Z%25C3%25A4hler&os_version=12&x=1/2&app_id=3f2b"
                  "9c1e-7a4d-4e8b-9c2f-1d5e6a7b8c9d&app_version=1.0&library_version=7.4.0"},
  };
  for (const auto& [args, url] : cases)
    EXPECT_THAT(run("", "", args).urls, ElementsAreArray({url}));
  std::ostringstream out, err;
  std::istringstream none;
  EXPECT_EQ(sim::runZellickSim({"--locale", "english"}, none, out, err), 2);
}

// Each "Success" text is compared as it is delivered; "ErrorMessage" counts wherever it starts;
// reading ends at the first fatal error and expands no entity.
TEST(AdConnect, RepliesAreReadEventByEventUpToTheFirstFatalError) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"<r><Success>true</Success></r>", {"Success"}},
      {"<r><Success/>true</r>", {"Success"}},
      {"<r><Success>tr&#117;e</Success></r>", {}},
      {"<r><Success> true</Success></r>", {}},
      {"<r><Success><![CDATA[true]]></Success></r>", {}},
      {"<r xmlns:p='u'><p:Success>true</p:Success></r>", {}},
      {"<!DOCTYPE r [<!ENTITY t 'true'>]><r><Success>&t;</Success></r>", {}},
      {"true", {}},
      {"", {}},
      {"<r><ErrorMessage/><ErrorMessage>x</ErrorMessage><Success>true</Success></r>",
       {"Failed", "Failed", "Success"}},
      {"<r><Success>true</Success><a></r><ErrorMessage/>", {"Success"}},
      {"<r><Success>true</Success></r><r><ErrorMessage/></r>", {"Success"}},
  };
  sim::Simulation sim;
  for (const auto& [reply, posted] : cases) {
    sim.world().events().takeNew();
    sim.process().adConnect().startParsing(reply);
    std::vector<std::string> seen;
    for (const std::string& e : sim.world().events().takeNew())
      if (const auto n = e.find(" notification ADC_Connect_"); n != std::string::npos)
        seen.push_back(e.substr(n + 26));
    EXPECT_THAT(seen, ElementsAreArray(posted)) << reply;
  }
}

// A second request keeps the first id and observes become-active a second time: of the next
// activation one observer swallows it, the other connects; after that both connect. An action
// replaces the id; before any request there is no shared instance and actions do nothing.
TEST(AdConnect, SecondCallKeepsTheIdAndObservesTwiceAndActionsReplaceTheId) {
  sim::Simulation sim;
  sim::Process& p = sim.process();
  const auto gets = [&sim] {
    std::vector<std::string> urls;
    for (const std::string& e : sim.world().events().takeNew())
      if (e.find(" http GET ") != std::string::npos && e.find("/connect?") != std::string::npos)
        urls.push_back(e);
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
  EXPECT_THAT(gets(), ElementsAreArray({HasSubstr("&app_id=act%25201&app_version=1.0&")}));
  EXPECT_EQ(shared->connectAttempts(), 6);

  struct : HttpClient {
    void send(HttpRequest, std::function<void(HttpReply)>) override { ADD_FAILURE(); }
  } http;
  fake::RecordingLog log;
  AdConnect unmade({http, p.runLoop(), p.notifications(), log, {}, Configuration::shipped()});
  EXPECT_EQ(unmade.actionComplete("x"), nullptr);
  EXPECT_EQ(unmade.sharedAdConnect(), nullptr);
  EXPECT_EQ(unmade.createQueryStringFromDict(nullptr), "");
}

}  // namespace
}  // namespace zellick::test
