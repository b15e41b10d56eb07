// The main run loop on Qt's event loop.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/qt/runloop.h"
#include "support/qt.h"

namespace zellick::test {
namespace {

using qt::QtRunLoop;

TEST(RunLoop, TimersFireOnceInDueOrderAndMaySelfDestruct) {
  QtRunLoop loop;
  std::vector<std::string> fired;
  auto a = loop.scheduledTimer(
      0.03, [&](Timer& t) { fired.push_back(t.isValid() ? "a valid" : "a invalid"); });
  loop.scheduledTimer(0.01, [&](Timer&) { fired.push_back("b"); });
  loop.dispatchAfter(0.02, [&] { fired.push_back("c"); });
  loop.scheduledTimer(0.015, [&](Timer&) { fired.push_back("cancelled"); })->invalidate();
  TimerRef held;
  held = loop.scheduledTimer(0, [&](Timer& t) {
    t.invalidate();
    held.reset();  // the last outside reference goes while it runs
  });
  // A chain of one-shot timers, each scheduling the next, as the clock ticks do.
  int ticks = 0;
  std::function<void(Timer&)> tick = [&](Timer&) {
    if (++ticks < 3) loop.scheduledTimer(0.001, tick);
  };
  loop.scheduledTimer(0.001, tick);
  ASSERT_TRUE(waitFor([&] { return fired.size() >= 3 && ticks == 3 && !held; }));
  EXPECT_EQ(fired, (std::vector<std::string>{"b", "c", "a valid"}));
  EXPECT_FALSE(a->isValid());
  EXPECT_EQ(loop.pendingCount(), 0u);
}

// Work posted from another thread runs on the loop's own thread.
TEST(RunLoop, WorkPostedFromAnyThreadRunsOnTheLoop) {
  QtRunLoop loop;
  std::thread::id ranOn;
  std::thread([&] { loop.post([&] { ranOn = std::this_thread::get_id(); }); }).join();
  ASSERT_TRUE(waitFor([&] { return ranOn != std::thread::id(); }));
  EXPECT_EQ(ranOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace zellick::test
