#include <gtest/gtest.h>

#include <cctype>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/sim/numbers.h"
#include "platform/sim/time.h"

namespace zellick::sim {
namespace {

// One step of a run-loop scenario. A timer named in `child` is scheduled by `name` when it
// fires, `childDelay` after that moment.
struct Step {
  enum Kind { Schedule, Dispatch, Invalidate, Advance } kind;
  std::string name;
  double seconds = 0;
  std::string child = {};
  double childDelay = 0;
};

struct LoopCase {
  const char* title;
  std::vector<Step> steps;
  std::vector<std::string> fired;  // "name@t", in firing order
  double endTime;
};

void PrintTo(const LoopCase& c, std::ostream* os) { *os << c.title; }

class LoopScenario : public ::testing::TestWithParam<LoopCase> {};

TEST_P(LoopScenario, FiresInDueOrderAtDueTimes) {
  VirtualTime time;
  VirtualRunLoop loop(time);
  std::vector<std::string> fired;
  std::map<std::string, TimerRef> timers;
  std::function<void(const std::string&, double, const std::string&, double)> schedule;
  schedule = [&](const std::string& name, double delay, const std::string& child, double childDelay) {
    timers[name] = loop.scheduledTimer(delay, [&, name, child, childDelay](Timer& t) {
      EXPECT_FALSE(t.isValid()) << name << " still valid while firing";
      fired.push_back(name + "@" + formatNumber(time.now()));
      if (!child.empty()) schedule(child, childDelay, "", 0);
    });
  };
  for (const Step& s : GetParam().steps) {
    switch (s.kind) {
      case Step::Schedule: schedule(s.name, s.seconds, s.child, s.childDelay); break;
      case Step::Dispatch:
        loop.dispatchAfter(s.seconds, [&, name = s.name] {
          fired.push_back(name + "@" + formatNumber(time.now()));
        });
        break;
      case Step::Invalidate: timers.at(s.name)->invalidate(); break;
      case Step::Advance: loop.advance(s.seconds); break;
    }
  }
  EXPECT_EQ(fired, GetParam().fired);
  EXPECT_DOUBLE_EQ(time.now(), GetParam().endTime);
}

INSTANTIATE_TEST_SUITE_P(
    SimRunLoop, LoopScenario,
    ::testing::Values(
        LoopCase{"due order",
                 {{Step::Schedule, "a", 0.3}, {Step::Schedule, "b", 0.1}, {Step::Schedule, "c", 0.2},
                  {Step::Advance, "", 1}},
                 {"b@0.1", "c@0.2", "a@0.3"},
                 1},
        LoopCase{"ties keep scheduling order, dispatches included",
                 {{Step::Schedule, "a", 0.2}, {Step::Dispatch, "d", 0.2}, {Step::Schedule, "b", 0.2},
                  {Step::Advance, "", 0.2}},
                 {"a@0.2", "d@0.2", "b@0.2"},
                 0.2},
        LoopCase{"nothing early, fires exactly at the end of the window",
                 {{Step::Schedule, "a", 0.5}, {Step::Advance, "", 0.4}, {Step::Advance, "", 0.1}},
                 {"a@0.5"},
                 0.5},
        LoopCase{"a follow-up inside the window fires in the same advance",
                 {{Step::Schedule, "a", 0.1, "b", 0.14}, {Step::Advance, "", 0.3}},
                 {"a@0.1", "b@0.24"},
                 0.3},
        LoopCase{"a follow-up beyond the window waits",
                 {{Step::Schedule, "a", 0.1, "b", 0.5}, {Step::Advance, "", 0.3}},
                 {"a@0.1"},
                 0.3},
        LoopCase{"a follow-up after 0 s fires at the same moment",
                 {{Step::Schedule, "a", 0.2, "b", 0}, {Step::Schedule, "c", 0.2}, {Step::Advance, "", 0.2}},
                 {"a@0.2", "c@0.2", "b@0.2"},
                 0.2},
        LoopCase{"a 0 s timer waits for the next advance, even advance(0)",
                 {{Step::Schedule, "a", 0}, {Step::Advance, "", 0}},
                 {"a@0"},
                 0},
        LoopCase{"negative delays count as 0",
                 {{Step::Advance, "", 1}, {Step::Schedule, "a", -5}, {Step::Advance, "", 0}},
                 {"a@1"},
                 1},
        LoopCase{"invalidated timers never fire",
                 {{Step::Schedule, "a", 0.1}, {Step::Schedule, "b", 0.2}, {Step::Invalidate, "a"},
                  {Step::Advance, "", 1}},
                 {"b@0.2"},
                 1}),
    [](const auto& info) {
      std::string n = info.param.title;
      for (char& c : n)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
      return n;
    });

TEST(SimRunLoop, ValidOnlyWhilePendingAndDiesWithTheLoop) {
  VirtualTime time;
  TimerRef fired, orphan;
  {
    VirtualRunLoop loop(time);
    fired = loop.scheduledTimer(1, [](Timer&) {});
    orphan = loop.scheduledTimer(5, [](Timer&) {});
    EXPECT_TRUE(fired->isValid());
    EXPECT_EQ(loop.pending(), 2u);
    EXPECT_EQ(loop.nextDue(), 1.0);
    loop.advance(1);
    EXPECT_FALSE(fired->isValid());
    EXPECT_TRUE(orphan->isValid());
    orphan->invalidate();
    orphan->invalidate();
    EXPECT_EQ(loop.pending(), 0u);
    orphan = loop.scheduledTimer(5, [](Timer&) {});
  }
  EXPECT_FALSE(orphan->isValid());
}

TEST(SimRunLoop, RunawayChainIsStoppedNotLooped) {
  VirtualTime time;
  VirtualRunLoop loop(time);
  std::function<void(Timer&)> again = [&](Timer&) { loop.scheduledTimer(0, again); };
  loop.scheduledTimer(0, again);
  EXPECT_THROW(loop.advance(1), std::runtime_error);
  EXPECT_DOUBLE_EQ(time.now(), 1);

  // A long wait over a ticking clock is many firings, but each at a later moment.
  VirtualRunLoop ticking(time);
  std::size_t ticks = 0;
  std::function<void(Timer&)> tick = [&](Timer&) {
    ++ticks;
    ticking.scheduledTimer(1, tick);
  };
  ticking.scheduledTimer(1, tick);
  EXPECT_EQ(ticking.advance(2 * VirtualRunLoop::kMaxFiringsAtOneMoment), 2 * VirtualRunLoop::kMaxFiringsAtOneMoment);
  EXPECT_EQ(ticks, 2 * VirtualRunLoop::kMaxFiringsAtOneMoment);
}

TEST(SimWallClock, SleepMovesTheWallButNotTheRunLoop) {
  VirtualTime time;
  VirtualRunLoop loop(time);
  WallClock clock(time, 1000);
  int ticks = 0;
  loop.scheduledTimer(2, [&](Timer&) { ++ticks; });
  struct {
    bool sleep;
    double seconds;
    double wall;
    int ticks;
  } steps[] = {{false, 1, 1001, 0}, {true, 5, 1006, 0}, {true, -3, 1006, 0},
               {false, 1, 1007, 1}, {true, 0.25, 1007.25, 1}};
  for (const auto& s : steps) {
    if (s.sleep) clock.sleep(s.seconds);
    else loop.advance(s.seconds);
    EXPECT_DOUBLE_EQ(clock.now(), s.wall);
    EXPECT_EQ(ticks, s.ticks);
  }
  EXPECT_DOUBLE_EQ(time.now(), 2);
}

TEST(SimNumbers, EventFormatting) {
  const std::pair<double, const char*> cases[] = {
      {0, "0"},          {0.14, "0.14"},        {199.30041152263374, "199.3"},
      {-810.7, "-810.7"}, {0.15, "0.15"},       {2.0, "2"},
      {100, "100"},      {-0.0, "0"},           {-0.0004, "0"},
      {12.3456, "12.346"}, {1800000000.5, "1800000000.5"}, {98.29999999999998, "98.3"},
  };
  for (const auto& [v, text] : cases) EXPECT_EQ(formatNumber(v), text) << v;
}

}  // namespace
}  // namespace zellick::sim
