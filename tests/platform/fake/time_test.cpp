#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "platform/fake/numbers.h"
#include "platform/fake/time.h"

namespace zellick::test {
namespace {

using namespace fake;

// Run-loop scenarios in a small notation, one step per word: "a@0.3" schedules timer a in
// 0.3 s, "a@0.1>b@0.2" makes a schedule b 0.2 s after it fires, "~d@0.2" dispatches work d,
// "!a" invalidates a, "+1" advances the loop by 1 s. Firings are listed as "name@time".
TEST(VirtualRunLoop, FiresInDueOrderOnlyWhenAdvanced) {
  const struct {
    const char *title, *steps, *fired;
    double endTime;
  } cases[] = {
      {"due order", "a@.3 b@.1 c@.2 +1", "b@0.1 c@0.2 a@0.3", 1},
      {"ties keep scheduling order, dispatches included", "a@.2 ~d@.2 b@.2 +.2",
       "a@0.2 d@0.2 b@0.2", .2},
      {"nothing early, due at the end of the window fires", "a@.5 +.4 +.1", "a@0.5", .5},
      {"a follow-up inside the window fires in the same advance", "a@.1>b@.14 +.3", "a@0.1 b@0.24",
       .3},
      {"a follow-up beyond the window waits", "a@.1>b@.5 +.3", "a@0.1", .3},
      {"a follow-up after 0 s comes after earlier ties", "a@.2>b@0 c@.2 +.2", "a@0.2 c@0.2 b@0.2",
       .2},
      {"a 0 s timer waits for the next advance, even advance(0)", "a@0 +0", "a@0", 0},
      {"negative delays count as 0", "+1 a@-5 +0", "a@1", 1},
      {"invalidated timers never fire", "a@.1 b@.2 !a +1", "b@0.2", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.title);
    VirtualTime time;
    VirtualRunLoop loop(time);
    std::string fired;
    std::map<std::string, TimerRef> timers;
    auto note = [&](const std::string& name) {
      fired += (fired.empty() ? "" : " ") + name + "@" + formatNumber(time.now());
    };
    auto delay = [](const std::string& step) { return std::stod(step.substr(step.find('@') + 1)); };
    std::function<void(const std::string&)> schedule = [&](const std::string& step) {
      const auto then = step.find('>');
      const std::string name = step.substr(0, step.find('@')),
                        child = then == step.npos ? "" : step.substr(then + 1);
      timers[name] = loop.scheduledTimer(delay(step.substr(0, then)), [&, name, child](Timer& t) {
        EXPECT_FALSE(t.isValid()) << name << " still valid while firing";
        note(name);
        if (!child.empty()) schedule(child);
      });
    };
    std::istringstream steps(c.steps);
    for (std::string s; steps >> s;) {
      if (s[0] == '+')
        loop.advance(std::stod(s.substr(1)));
      else if (s[0] == '!')
        timers.at(s.substr(1))->invalidate();
      else if (s[0] == '~')
        loop.dispatchAfter(delay(s), [&, s] { note(s.substr(1, s.find('@') - 1)); });
      else
        schedule(s);
    }
    EXPECT_EQ(fired, c.fired);
    EXPECT_DOUBLE_EQ(time.now(), c.endTime);
  }
}

TEST(VirtualRunLoop, InvalidatedTimersAreNotWaitedForAndPendingOnesDieWithTheLoop) {
  VirtualTime time;
  TimerRef orphan;
  {
    VirtualRunLoop loop(time);
    orphan = loop.scheduledTimer(5, [](Timer&) {});
    loop.scheduledTimer(3, [](Timer&) {})->invalidate();
    EXPECT_EQ(loop.pending(), 1u);
    EXPECT_EQ(loop.nextDue(), 5.0);
    EXPECT_TRUE(orphan->isValid());
  }
  EXPECT_FALSE(orphan->isValid());
}

TEST(VirtualRunLoop, RunawayChainIsStoppedButALongTickingWaitIsNot) {
  VirtualTime time;
  VirtualRunLoop loop(time);
  std::function<void(Timer&)> again = [&](Timer&) { loop.scheduledTimer(0, again); };
  loop.scheduledTimer(0, again);
  EXPECT_THROW(loop.advance(1), std::runtime_error);
  EXPECT_DOUBLE_EQ(time.now(), 1);

  VirtualRunLoop ticking(time);
  std::function<void(Timer&)> tick = [&](Timer&) { ticking.scheduledTimer(1, tick); };
  ticking.scheduledTimer(1, tick);
  const std::size_t n = 2 * VirtualRunLoop::kMaxFiringsAtOneMoment;
  EXPECT_EQ(ticking.advance(static_cast<double>(n)), n);
}

TEST(WallClock, SleepMovesTheWallButNotTheRunLoop) {
  VirtualTime time;
  VirtualRunLoop loop(time);
  WallClock clock(time, 1000);
  int ticks = 0;
  loop.scheduledTimer(2, [&](Timer&) { ++ticks; });
  // Sleeps: 5 s, a negative one that is ignored, and a quarter second.
  const struct {
    bool sleep;
    double seconds, wall;
    int ticks;
  } steps[] = {{false, 1, 1001, 0},
               {true, 5, 1006, 0},
               {true, -3, 1006, 0},
               {false, 1, 1007, 1},
               {true, 0.25, 1007.25, 1}};
  for (const auto& s : steps) {
    if (s.sleep)
      clock.sleep(s.seconds);
    else
      loop.advance(s.seconds);
    EXPECT_DOUBLE_EQ(clock.now(), s.wall) << s.seconds;
    EXPECT_EQ(ticks, s.ticks) << s.seconds;
  }
  EXPECT_DOUBLE_EQ(time.now(), 2);
}

TEST(FormatNumber, EventFormatting) {
  const std::pair<double, const char*> cases[] = {
      {0, "0"},           {0.14, "0.14"},      {98.29999999999998, "98.3"},
      {-810.7, "-810.7"}, {2.0, "2"},          {100, "100"},
      {-0.0004, "0"},     {12.3456, "12.346"}, {1800000000.5, "1800000000.5"}};
  for (const auto& [v, text] : cases) EXPECT_EQ(formatNumber(v), text) << v;
}

}  // namespace
}  // namespace zellick::test
