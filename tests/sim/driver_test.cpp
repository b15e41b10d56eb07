#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "zellick_sim/driver.h"

namespace zellick::sim {
namespace {

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

bool has(const std::vector<std::string>& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

std::string writeFile(const std::string& name, const std::string& text) {
  const std::string path = ::testing::TempDir() + name;
  std::ofstream(path) << text;
  return path;
}

// The value of a top-level number field of a state line.
std::string field(const std::string& state, const std::string& key) {
  const auto at = state.find("\"" + key + "\":");
  if (at == std::string::npos) return "<missing>";
  const auto start = at + key.size() + 3;
  return state.substr(start, state.find_first_of(",}", start) - start);
}

TEST(SimDriver, AddPressRecordsItsEffectsInOrder) {
  Outcome r = run("events\n# a comment\n\npress ButtonAdd  # Add goes down\nwait 0.3\nrelease ButtonAdd\nevents\n");
  EXPECT_EQ(r.status, 0) << r.err;
  auto from = std::find(r.out.begin(), r.out.end(), "t=0 sound Counter Click2");
  ASSERT_NE(from, r.out.end());
  const std::vector<std::string> tail(from, r.out.end());
  EXPECT_EQ(tail, (std::vector<std::string>{"t=0 sound Counter Click2", "t=0 track Count",
                                            "t=0 move ImageView4 y=98.3 duration=0.3",
                                            "t=0.3 sound ButtonLetUp"}));
}

TEST(SimDriver, BadLinesAreReportedAndTheRestStillRuns) {
  const std::pair<const char*, const char*> cases[] = {
      {"bogus", "line 2: unknown command 'bogus'"},
      {"wait", "line 2: expected 'wait SECONDS'"},
      {"wait -1", "line 2: '-1' is not a number of seconds"},
      {"wait 2e6", "line 2: wait at most 1000000 s"},
      {"sleep 1x", "line 2: '1x' is not a number of seconds"},
      {"press Nothing", "line 2: no button named 'Nothing'"},
      {"press LabelTimer", "line 2: no button named 'LabelTimer'"},
      {"touch LabelTimer two", "line 2: 'two' is not a tap count"},
      {"touch Nowhere 1", "line 2: no view named 'Nowhere'"},
      {"answer 0", "line 2: no question on screen"},
      {"state extra", "line 2: expected 'state'"},
  };
  for (const auto& [line, message] : cases) {
    Outcome r = run(std::string("tap ButtonAdd\n") + line + "\nstate\n");
    EXPECT_EQ(r.status, 1) << line;
    EXPECT_NE(r.err.find(message), std::string::npos) << line << " gave: " << r.err;
    ASSERT_FALSE(r.out.empty()) << line;
    EXPECT_EQ(field(r.out.back(), "total"), "1") << line;
  }
}

TEST(SimDriver, StateListsEveryFieldInDeclarationOrder) {
  Outcome r = run("state\n");
  ASSERT_EQ(r.out.size(), 1u);
  const std::string& s = r.out[0];
  const char* keys[] = {
      "t", "ButtonReset", "ButtonAdd", "ButtonA", "ButtonB", "ButtonC", "ButtonInfo", "ButtonMinus",
      "ImageView1", "ImageView2", "ImageView3", "ImageView4", "LabelTimer", "LabelAvg",
      "TimerForLabelA", "TimerForLabelB", "TimerForLabelC", "alertView", "total", "value", "totalA",
      "totalB", "totalC", "buttonId", "previousTotal", "previousValue", "remainder1", "remainder2",
      "remainder3", "remainder4", "timer1", "timer2", "timer3", "timer4", "ResetTimer", "player",
      "IsMinusClicked", "IsResetClicked", "Ahh", "Bhh", "Chh", "Amm", "Bmm", "Cmm", "Ass", "Bss",
      "Css", "hh", "mm", "ss", "tap", "totalForAvgA", "totalForAvgB", "totalForAvgC", "timePassed",
      "isStartedTimerA", "isStartedTimerB", "isStartedTimerC", "CounterArray", "TimerArray",
      "TotalForAvgArray", "dateOfInactive", "prefs", "isTimerA", "isTimerB", "isTimerC",
      "baseImageView", "backgroundTopGap", "backgroundLeftGap", "backgroundWidth",
      "backgroundHeight", "initialPositionOfNumbers", "alert", "views"};
  std::size_t at = 0;
  for (const char* k : keys) {
    const auto next = s.find(std::string(k == std::string("t") ? "{" : ",") + "\"" + k + "\":", at);
    ASSERT_NE(next, std::string::npos) << "missing or out of order: " << k;
    at = next;
  }
  EXPECT_EQ(field(s, "ButtonAdd"), "\"ButtonAdd\"");
  EXPECT_EQ(field(s, "initialPositionOfNumbers"), "199.3");
  EXPECT_NE(s.find("\"LabelAvg\":{\"x\":"), std::string::npos);
}

TEST(SimDriver, ResetAtZeroShowsTheNoticeUntilAnswered) {
  Outcome r = run("tap ButtonReset\nwait 0.2\nstate\nanswer 1\nanswer 0\nstate\nevents\n");
  EXPECT_EQ(r.status, 1);  // "answer 1": the notice has one button
  EXPECT_NE(r.err.find("line 4:"), std::string::npos);
  ASSERT_GE(r.out.size(), 2u);
  EXPECT_NE(r.out[0].find("\"alert\":{\"title\":\"NOTICE\",\"message\":\"Counter is already reset to "
                          "0000\",\"buttons\":[\"OK\"],\"tag\":0}"),
            std::string::npos);
  EXPECT_NE(r.out[1].find("\"alert\":null"), std::string::npos);
  EXPECT_TRUE(has(r.out, "t=0.2 alert NOTICE"));
  EXPECT_TRUE(has(r.out, "t=0.2 answer 0"));
  EXPECT_FALSE(has(r.out, "t=0.2 answer 1"));
}

TEST(SimDriver, DefaultsFileRestartAndSleep) {
  const std::string path = writeFile(
      "zellick_defaults.json",
      "{\"Counters\": [12, 0, 0], \"ButtonId\": 1, \"Timers\": [0,59,50, 0,0,0, 0,0,0, 1,0,0],\n"
      " \"DateOfInactive\": {\"date\": 1800000000.0}, \"TapValue\": 2}");
  // Saved at the epoch; 3725.9 s of sleep before the first activation is caught up.
  Outcome r = run("state\ndefaults\ntap ButtonAdd\nresign\nrestart\nwait 0.5\nstate\n",
              {"--defaults", path});
  ASSERT_EQ(r.status, 0) << r.err;
  ASSERT_EQ(r.out.size(), 3u);
  EXPECT_EQ(field(r.out[0], "totalA"), "12");
  EXPECT_EQ(field(r.out[0], "tap"), "2");
  EXPECT_EQ(r.out[1],
            "{\"ButtonId\":1,\"Counters\":[12,0,0],\"DateOfInactive\":{\"date\":1800000000.0},"
            "\"TapValue\":2,\"Timers\":[0,59,50,0,0,0,0,0,0,1,0,0]}");
  EXPECT_EQ(field(r.out[2], "t"), "0.5");
  EXPECT_EQ(field(r.out[2], "total"), "13");
  EXPECT_EQ(field(r.out[2], "TimerForLabelA"), "true");

  r = run("sleep 3725.9\nactivate\nwait 0.5\nstate\n", {"--defaults", path});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(field(r.out.back(), "Ahh"), "2");
  EXPECT_EQ(field(r.out.back(), "Amm"), "1");
  EXPECT_EQ(field(r.out.back(), "Ass"), "55");
}

TEST(SimDriver, OptionsAndFilesAreChecked) {
  const std::string bad = writeFile("zellick_bad.json", "{\"Counters\": [1, 2,\n");
  const struct {
    std::vector<std::string> args;
    int status;
    const char* message;
  } cases[] = {
      {{"--defaults", bad}, 2, "malformed defaults JSON: line 2"},
      {{"--defaults", "/nonexistent/x.json"}, 2, "cannot read defaults file"},
      {{"--defaults"}, 2, "--defaults needs a file"},
      {{"--screen-height", "300"}, 2, "at least 480"},
      {{"--speed"}, 2, "unknown option '--speed'"},
      {{"/nonexistent/script"}, 2, "cannot read script"},
  };
  for (const auto& c : cases) {
    Outcome r = run("state\n", c.args);
    EXPECT_EQ(r.status, c.status) << c.message;
    EXPECT_TRUE(r.out.empty()) << c.message;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
  }
  Outcome tall = run("state\n", {"--screen-height=568"});
  ASSERT_EQ(tall.status, 0) << tall.err;
  EXPECT_NE(tall.out[0].find("\"bands\":[{\"x\":0,\"y\":0,\"w\":320,\"h\":54,\"color\":\"black\"},"
                             "{\"x\":0,\"y\":514,\"w\":320,\"h\":54,\"color\":\"black\"}]"),
            std::string::npos);
}

}  // namespace
}  // namespace zellick::sim
