#include <gtest/gtest.h>

#include "platform/fake/memory_defaults.h"
#include "sim/json.h"
#include "sim/simulation.h"

namespace zellick::test {
namespace {

using fake::MemoryDefaults;
using namespace sim;

TEST(DefaultsJson, EveryValueTypeIsKeptAndRoundTripsThroughJsonExactly) {
  const struct {
    const char* title;
    DefaultsValue value;
    const char* json;
  } cases[] = {
      {"integer", 42LL, "42"},
      {"largest integer", 9223372036854775807LL, "9223372036854775807"},
      {"whole double keeps its fraction", 3.0, "3.0"},
      {"double", 0.1, "0.1"},
      {"double with exponent", 1e300, "1e+300"},
      {"bool", true, "true"},
      {"string with escapes", std::string("a\"b\\c\nd\x01"), "\"a\\\"b\\\\c\\nd\\u0001\""},
      {"utf-8 string", std::string("z\xC3\xA4hler"), "\"z\xC3\xA4hler\""},
      {"date", Date{1800000123.456}, "{\"date\":1800000123.456}"},
      {"empty array", DefaultsArray{}, "[]"},
      {"mixed nested array",
       DefaultsArray{1LL, 2.5, false, std::string("x"), Date{5},
                     DefaultsArray{DefaultsArray{}, 0LL}},
       "[1,2.5,false,\"x\",{\"date\":5.0},[[],0]]"},
      {"dictionary of a date and digits kept as text",
       DefaultsArray{DefaultsDictionary{{"date", std::string("soon")}, {"id", std::string("007")}},
                     DefaultsDictionary{}},
       "[{\"date\":\"soon\",\"id\":\"007\"},{}]"},
  };
  MemoryDefaults store;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.title);
    // Equality includes the alternative: 3.0 must not come back as the integer 3.
    store.setObject(c.title, c.value);
    EXPECT_EQ(store.objectForKey(c.title), c.value);
    EXPECT_EQ(toJson(c.value), c.json);
    std::string error;
    auto back = defaultsFromJson(std::string("{\"k\":") + c.json + "}", error);
    ASSERT_TRUE(back) << error;
    EXPECT_EQ(*back, (std::map<std::string, DefaultsValue>{{"k", c.value}}));
  }
}

// The parser's own faults come with line and column; what JSON allows but the defaults cannot
// hold names its key.
TEST(DefaultsJson, MalformedJsonIsRefusedWithWhereAndWhy) {
  const std::string deep = std::string(70, '[') + std::string(70, ']');
  const std::pair<std::string, const char*> cases[] = {
      {"", "line 1, column 1"},
      {"{\"a\":\n  tru}", "line 2, column 6"},
      {"[1]", "expected a JSON object"},
      {"{\"a\":null}", "\"a\": null is not a defaults value"},
      {"{\"a\":{\"x\":null}}", "null is not a defaults value"},
      {"{\"a\":18446744073709551615}", "out of range"},
      {"{\"a\":" + deep + "}", "nested too deeply"},
  };
  for (const auto& [text, message] : cases) {
    std::string error;
    EXPECT_FALSE(defaultsFromJson(text, error)) << text;
    EXPECT_NE(error.find(message), std::string::npos) << text << " gave: " << error;
  }
}

TEST(Simulation, RestartKeepsTheWorldButDropsTheOldProcessTimers) {
  Simulation sim;
  sim.wait(1);
  sim.process().touch("LabelTimer", 1);  // starts memory A's clock
  const TimerRef tick = sim.process().controller().TimerForLabelA;
  ASSERT_TRUE(tick && tick->isValid());
  sim.world().store().setObject("Other", std::string("kept"));
  sim.restart();
  EXPECT_FALSE(tick->isValid());
  EXPECT_DOUBLE_EQ(sim.world().time().now(), 1);
  EXPECT_EQ(sim.world().store().objectForKey("Other"), DefaultsValue(std::string("kept")));
}

}  // namespace
}  // namespace zellick::test
