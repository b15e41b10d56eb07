#include <gtest/gtest.h>

#include "app/launch_options.h"
#include "fakes.h"

namespace zellick {
namespace {

struct OptionCase {
  QStringList args;
  int stressLoop;
  int width;
  int height;
  bool exitAfterFirstFrame;
  bool silent;
  const char* logged;  // a part of the one log line expected, or nullptr for none
};

TEST(LaunchOptions, ParsesWhatItKnowsAndLogsTheRest) {
  const OptionCase cases[] = {
      {{"zellick"}, -1, 0, 0, false, false, nullptr},
      {{"zellick", "--stress-loop", "200", "--silent"}, 200, 0, 0, false, true, nullptr},
      {{"zellick", "--stress-loop", "0"}, 0, 0, 0, false, false, nullptr},
      {{"zellick", "--stress-loop", "-3"}, -1, 0, 0, false, false, "--stress-loop needs"},
      {{"zellick", "--stress-loop", "many"}, -1, 0, 0, false, false, "--stress-loop needs"},
      {{"zellick", "--stress-loop"}, -1, 0, 0, false, false, "unknown argument --stress-loop"},
      {{"zellick", "--window", "720x1280", "--exit-after-first-frame"}, -1, 720, 1280, true, false, nullptr},
      {{"zellick", "--window", "72x1280"}, -1, 0, 0, false, false, "--window needs"},
      {{"zellick", "--window", "720x"}, -1, 0, 0, false, false, "--window needs"},
      {{"zellick", "--window", "axb"}, -1, 0, 0, false, false, "--window needs"},
      {{"zellick", "--frobnicate"}, -1, 0, 0, false, false, "unknown argument --frobnicate ignored"},
  };
  for (const auto& c : cases) {
    test::RecordingLog log;
    const LaunchOptions o = parseLaunchOptions(c.args, log);
    const std::string what = c.args.join(' ').toStdString();
    EXPECT_EQ(o.stressLoop, c.stressLoop) << what;
    EXPECT_EQ(o.width, c.width) << what;
    EXPECT_EQ(o.height, c.height) << what;
    EXPECT_EQ(o.exitAfterFirstFrame, c.exitAfterFirstFrame) << what;
    EXPECT_EQ(o.silent, c.silent) << what;
    if (c.logged) {
      ASSERT_EQ(log.lines.size(), 1u) << what;
      EXPECT_TRUE(log.has(c.logged)) << what << ": " << log.lines[0];
    } else {
      EXPECT_TRUE(log.lines.empty()) << what;
    }
  }
}

TEST(LaunchOptions, ProcessAgeIsPlausible) {
  const double ms = msSinceProcessStart();
  EXPECT_GE(ms, 0);
  EXPECT_LT(ms, 10 * 60 * 1000.0);
}

}  // namespace
}  // namespace zellick
