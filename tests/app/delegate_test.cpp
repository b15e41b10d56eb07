// The application's delegate on the deterministic platform, as the scenario driver runs it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/simulation.h"

namespace zellick::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::Not;

// The events of one kind ("track", "open", "awake", "log", "alert"), without their time.
std::vector<std::string> only(sim::Simulation& sim, const std::string& kind) {
  std::vector<std::string> out;
  for (const std::string& e : sim.world().events().takeNew()) {
    const std::string what = e.substr(e.find(' ') + 1);
    if (what.starts_with(kind)) out.push_back(what);
  }
  return out;
}

// Activations, cold starts and returns from the background alike, counted under "Count"; the
// seventh brings the review prompt 5 s later, and no later one ever does.
TEST(AppDelegate, TheSeventhActivationAsksOnceForAReview) {
  for (const int answer : {0, 1}) {  // "No", "Review Now!"
    SCOPED_TRACE(answer);
    sim::Simulation sim;
    sim.start();
    for (long long n = 1; n <= 9; ++n) {
      if (n > 1 && n % 2) sim.restart();  // a cold start
      if (n > 1 && !(n % 2)) {            // a return from the background
        sim.process().background();
        sim.process().foreground();
      }
      EXPECT_EQ(sim.world().store().objectForKey("Count"), DefaultsValue(n));
      sim.wait(4.99);
      EXPECT_EQ(sim.process().alerts().onScreen(), nullptr);
      sim.wait(0.02);
      const AlertView* prompt = sim.process().alerts().onScreen();
      ASSERT_EQ(prompt != nullptr, n == 7) << "activation " << n;
      if (!prompt) continue;
      EXPECT_EQ(prompt->title, "PLEASE REVIEW \nWe Appreciate Your Feedback");
      EXPECT_THAT(prompt->message, HasSubstr("please email us at support@orvanta.example before"));
      EXPECT_EQ(prompt->buttons, (std::vector<std::string>{"No", "Review Now!"}));
      only(sim, "");
      ASSERT_FALSE(sim.process().answer(answer));
      const std::vector<std::string> opened = only(sim, "open");
      EXPECT_EQ(opened.size(), static_cast<size_t>(answer)) << "only Review Now! opens the store";
      if (answer) {
        EXPECT_EQ(opened[0], "open " + Configuration::shipped().storePageUrl);
      }
    }
  }
}

// A cold start sends Launch, then reLaunch; a return from the background only reLaunch, and it
// keeps the screen awake again. The ad network's outcome and a change of the time are logged.
TEST(AppDelegate, LaunchRecordsKeepingAwakeAndWhatIsOnlyLogged) {
  sim::Simulation sim;
  sim.start();
  EXPECT_THAT(only(sim, "track"), ElementsAreArray({"track Launch", "track reLaunch"}));
  sim.process().background();
  EXPECT_THAT(only(sim, "awake"), ElementsAreArray<std::string>({}));
  sim.process().foreground();
  const auto after = sim.world().events().takeNew();
  EXPECT_THAT(after, Contains(HasSubstr(" awake")));
  EXPECT_THAT(after, Contains(HasSubstr(" track reLaunch")));
  EXPECT_THAT(after, Not(Contains(HasSubstr(" track Launch"))));
  for (const char* name : {"ADC_Connect_Success", "ADC_Connect_Failed"})
    sim.process().notifications().post(name);
  sim.process().delegate().applicationSignificantTimeChange();
  EXPECT_THAT(only(sim, "log"),
              ElementsAreArray({"log Ad Connect Succeeded", "log Ad Connect Failed",
                                "log Significant time changed"}));
}

}  // namespace
}  // namespace zellick::test
