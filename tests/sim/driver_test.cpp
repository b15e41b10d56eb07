#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "sim/driver.h"

namespace zellick::test {
namespace {

using namespace sim;

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;

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

// What each command does is pinned by the scenario scripts; here, the script's own syntax.
TEST(SimDriver, CommentsBlankLinesAndWindowsLineEndsChangeNothing) {
  const std::string plain = "events\npress ButtonAdd\nwait 0.3\nrelease ButtonAdd\nevents\n";
  Outcome r =
      run("events\r\n# a comment\n\npress ButtonAdd  # Add goes down\nwait 0.3\r\n"
          "release ButtonAdd\nevents\n");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, run(plain).out);
  EXPECT_THAT(r.out, Contains("t=0.3 sound ButtonLetUp"));
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
  EXPECT_THAT(tall.out[0], HasSubstr("\"backgroundTopGap\":54,"));
}

// The question is modal: the press and the touch under it go nowhere.
TEST(SimDriver, AQuestionTakesNoInputButItsOwnButtons) {
  Outcome r =
      run("tap ButtonReset\nwait 0.2\ntap ButtonAdd\ntouch LabelTimer 1\nstate\n"
          "answer 1\nanswer 0\nstate\n");
  EXPECT_EQ(r.status, 1);  // "answer 1": the notice has one button
  EXPECT_THAT(r.err, HasSubstr("line 6: the question \"NOTICE\" has no button 1"));
  ASSERT_EQ(r.out.size(), 2u);
  EXPECT_THAT(r.out[0], AllOf(HasSubstr("\"TimerForLabelA\":false,"), HasSubstr("\"total\":0,"),
                              HasSubstr("\"alert\":{\"title\":\"NOTICE\"")));
  EXPECT_THAT(r.out[1], HasSubstr("\"alert\":null"));
}

TEST(SimDriver, DefaultsFileScriptFileAndRestart) {
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
}

}  // namespace
}  // namespace zellick::test
