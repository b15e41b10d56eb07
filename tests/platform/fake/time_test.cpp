// The virtual run loop's ordering rules, which every feature test and sim transcript stands on.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>
#include <string>

#include "platform/fake/numbers.h"
#include "platform/fake/time.h"

namespace zellick::test {
namespace {

using namespace fake;

// Run-loop scenarios in a small notation, one step per word: "a@0.3" schedules timer a in
// 0.3 s, "a@0.1>b@0.2" makes a schedule b 0.2 s after it fires, "~d@0.2" dispatches work d,
// "!a" invalidates a (also as a's follow-up: "c@.1>!a"), "+1" advances the loop by 1 s. Firings are
// listed as "name@time".
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
      {"negative delays count as 0, and time never goes back", "+1 a@-5 +-1", "a@1", 1},
      {"invalidated timers never fire", "a@.1 b@.2 !a +1", "b@0.2", 1},
      {"nor one invalidated by a tie that fired first", "a@.2>!b b@.2 +1", "a@0.2", 1},
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
        if (child.starts_with('!'))
          timers.at(child.substr(1))->invalidate();
        else if (!child.empty())
          schedule(child);
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

// The guard against a 0 s chain that would hang every test must not trip on a long wait with
// a clock ticking.
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

}  // namespace
}  // namespace zellick::test
