#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "sim/driver.h"

namespace zellick::test {
namespace {

using namespace sim;

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Outcome {
  int status;
  std::vector<std::string> out;
  std::string err;
};

Outcome run(const std::string& script, std::vector<std::string> args = {}) {
  std::istringstream in(script);
  std::ostringstream out, err;
  Outcome r{runZellickSim(args, in, out, err), {}, err.str()};
  std::istringstream lines(out.str());
  for (std::string l; std::getline(lines, l);) r.out.push_back(l);
  return r;
}

std::string writeFile(const std::string& name, const std::string& text) {
  const std::string path = ::testing::TempDir() + name;
  std::ofstream(path) << text;
  return path;
}

TEST(SimDriver, InputRecordsItsEffectsInOrder) {
  // Comments, blank lines and Windows line ends are fine.
  Outcome r =
      run("events\r\n# a comment\n\npress ButtonAdd  # Add goes down\nwait 0.3\nrelease ButtonAdd\n"
          "touch LabelTimer 2\nevents\n");
  EXPECT_EQ(r.status, 0) << r.err;
  // Each record is sent as it is made; records and the ad network aside, the rest is the
  // counter's, in order.
  EXPECT_THAT(r.out, Contains(StartsWith("t=0 http POST https://www.orvanta.example/tracker.php "
                                         "appid=17&tag=Count&device=")));
  std::vector<std::string> own;
  for (const std::string& line : r.out)
    if (line.find(" http ") == std::string::npos && line.find(" log ") == std::string::npos &&
        line.find(" notification ") == std::string::npos)
      own.push_back(line);
  auto from = std::find(own.begin(), own.end(), "t=0 sound Counter Click2");
  ASSERT_GE(own.end() - from, 4);
  EXPECT_THAT(std::vector<std::string>(from, from + 4),
              ElementsAre("t=0 sound Counter Click2", "t=0 track Count",
                          "t=0 move ImageView4 y=98.3 duration=0.3", "t=0.3 sound ButtonLetUp"));
  EXPECT_THAT(r.out, Contains("t=0.3 log tapCount 2"));
  EXPECT_EQ(run("events\nevents\n").out, run("events\n").out);  // only what is new
}

TEST(SimDriver, BadLinesAreSkippedWithAMessageAndBadOptionsStopTheRun) {
  const std::string bad = writeFile("zellick_bad.json", "{\"Counters\": [1, 2,\n");
  const struct {
    std::vector<std::string> args;
    const char *line, *message;
  } cases[] = {
      {{}, "bogus", "line 2: unknown command 'bogus'"},
      {{}, "wait", "line 2: expected 'wait SECONDS'"},
      {{}, "state extra", "line 2: expected 'state'"},
      {{}, "wait -1", "line 2: '-1' is not a number of seconds"},
      {{}, "wait 2e6", "line 2: wait at most 1000000 s"},
      {{}, "sleep 1x", "line 2: '1x' is not a number of seconds"},
      {{}, "press Nothing", "line 2: no button named 'Nothing'"},
      {{}, "release LabelTimer", "line 2: no button named 'LabelTimer'"},
      {{}, "touch LabelTimer two", "line 2: 'two' is not a tap count"},
      {{}, "touch LabelTimer -1", "line 2: '-1' is not a tap count"},
      {{}, "touch Nowhere 1", "line 2: no view named 'Nowhere'"},
      {{}, "answer 0", "line 2: no question on screen"},
      {{"--defaults", bad}, "", "malformed defaults JSON: line 2"},
      {{"--defaults", "/nonexistent/x.json"}, "", "cannot read defaults file"},
      {{"--defaults"}, "", "--defaults needs a file"},
      {{"--screen-height", "300"}, "", "at least 480"},
      {{"--speed"}, "", "unknown option '--speed'"},
      {{"/nonexistent/script"}, "", "cannot read script"},
  };
  for (const auto& c : cases) {
    Outcome r = run(std::string("tap ButtonAdd\n") + c.line + "\nstate\n", c.args);
    EXPECT_THAT(r.err, HasSubstr(c.message)) << c.line;
    if (c.args.empty()) {  // the rest of the script still ran
      EXPECT_EQ(r.status, 1) << c.line;
      ASSERT_FALSE(r.out.empty()) << c.line;
      EXPECT_THAT(r.out.back(), HasSubstr("\"total\":1,")) << c.line;
    } else {  // nothing ran
      EXPECT_EQ(r.status, 2) << c.message;
      EXPECT_TRUE(r.out.empty()) << c.message;
    }
  }
  Outcome tall = run("state\n", {"--screen-height=568"});
  ASSERT_EQ(tall.status, 0) << tall.err;
  EXPECT_THAT(tall.out[0],
              HasSubstr("\"bands\":[{\"x\":0,\"y\":0,\"w\":320,\"h\":54,\"color\":\"black\"},"
                        "{\"x\":0,\"y\":514,\"w\":320,\"h\":54,\"color\":\"black\"}]"));
}

TEST(SimDriver, StateListsEveryFieldInOrderAndTheQuestionOnScreen) {
  // The question is modal: the press and the touch under it go nowhere.
  Outcome r =
      run("tap ButtonReset\nwait 0.2\ntap ButtonAdd\ntouch LabelTimer 1\nstate\nanswer 1\nanswer "
          "0\nstate\nevents\n");
  EXPECT_EQ(r.status, 1);  // "answer 1": the notice has one button
  EXPECT_THAT(r.err, HasSubstr("line 6: the question \"NOTICE\" has no button 1"));
  ASSERT_GE(r.out.size(), 2u);
  std::istringstream keys(
      "t ButtonReset ButtonAdd ButtonA ButtonB ButtonC ButtonInfo ButtonMinus ImageView1 "
      "ImageView2 ImageView3 "
      "ImageView4 LabelTimer LabelAvg TimerForLabelA TimerForLabelB TimerForLabelC alertView total "
      "value totalA "
      "totalB totalC buttonId previousTotal previousValue remainder1 remainder2 remainder3 "
      "remainder4 timer1 timer2 "
      "timer3 timer4 ResetTimer player IsMinusClicked IsResetClicked Ahh Bhh Chh Amm Bmm Cmm Ass "
      "Bss Css hh mm ss "
      "tap totalForAvgA totalForAvgB totalForAvgC timePassed isStartedTimerA isStartedTimerB "
      "isStartedTimerC "
      "CounterArray TimerArray TotalForAvgArray dateOfInactive prefs isTimerA isTimerB isTimerC "
      "baseImageView "
      "backgroundTopGap backgroundLeftGap backgroundWidth backgroundHeight "
      "initialPositionOfNumbers alert views");
  std::size_t at = 0;
  for (std::string k; keys >> k;) {
    at = r.out[0].find((k == "t" ? "{\"" : ",\"") + k + "\":", at);
    ASSERT_NE(at, std::string::npos) << "missing or out of order: " << k;
  }
  EXPECT_THAT(r.out[0], AllOf(HasSubstr("\"ButtonAdd\":\"ButtonAdd\","),
                              HasSubstr("\"TimerForLabelA\":false,"), HasSubstr("\"total\":0,")));
  EXPECT_THAT(
      r.out[0],
      HasSubstr("\"alert\":{\"title\":\"NOTICE\",\"message\":\"Counter is already reset to 0000\","
                "\"buttons\":[\"OK\"],\"tag\":0}"));
  EXPECT_THAT(r.out[1], HasSubstr("\"alert\":null"));
  EXPECT_THAT(r.out, Contains("t=0.2 answer 0"));
}

TEST(SimDriver, DefaultsFileScriptFileRestartAndSleep) {
  const std::string defaults = writeFile(
      "zellick_defaults.json",
      "{\"Counters\": [12, 0, 0], \"ButtonId\": 1, \"Timers\": [0,59,50, 0,0,0, 0,0,0, 1,0,0],\n"
      " \"DateOfInactive\": {\"date\": 1800000000.0}, \"TapValue\": 2}");
  const std::string script = writeFile(
      "zellick_script.txt", "state\ndefaults\ntap ButtonAdd\nresign\nrestart\nwait 0.5\nstate\n");
  Outcome r = run("", {"--defaults", defaults, script});
  ASSERT_EQ(r.status, 0) << r.err;
  ASSERT_EQ(r.out.size(), 3u);
  EXPECT_THAT(r.out[0], AllOf(HasSubstr("\"totalA\":12,"), HasSubstr("\"tap\":2,")));
  EXPECT_EQ(r.out[1],
            "{\"ButtonId\":1,\"Count\":1,\"Counters\":[12,0,0],"
            "\"DateOfInactive\":{\"date\":1800000000.0},"
            "\"TapValue\":2,\"Timers\":[0,59,50,0,0,0,0,0,0,1,0,0]}");
  EXPECT_THAT(r.out[2], AllOf(HasSubstr("{\"t\":0.5,"), HasSubstr("\"total\":13,"),
                              HasSubstr("\"TimerForLabelA\":true")));

  // Saved at the epoch; 3725.9 s of sleep before the activation are caught up.
  r = run("sleep 3725.9\nactivate\nwait 0.5\nstate\n", {"--defaults=" + defaults});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_THAT(r.out.back(),
              AllOf(HasSubstr("\"Ahh\":2,"), HasSubstr("\"Amm\":1,"), HasSubstr("\"Ass\":55,")));
}

}  // namespace
}  // namespace zellick::test
