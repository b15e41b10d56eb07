#include <gtest/gtest.h>

#include "platform/sim/memory_defaults.h"

namespace zellick::sim {
namespace {

TEST(SimDefaults, EveryValueTypeIsKeptAndRoundTripsThroughJsonExactly) {
  const struct {
    const char* title;
    DefaultsValue value;
    const char* json;
  } cases[] = {
      {"integer", 42LL, "42"},
      {"largest integer", 9223372036854775807LL, "9223372036854775807"},
      {"whole double keeps its fraction", 3.0, "3.0"},
      {"double", 0.1, "0.1"},
      {"double with exponent", 1e300, "1.0e+300"},
      {"bool", true, "true"},
      {"string with escapes", std::string("a\"b\\c\nd\x01"), "\"a\\\"b\\\\c\\nd\\u0001\""},
      {"utf-8 string", std::string("z\xC3\xA4hler"), "\"z\xC3\xA4hler\""},
      {"date", Date{1800000123.456}, "{\"date\":1800000123.456}"},
      {"empty array", DefaultsArray{}, "[]"},
      {"mixed nested array",
       DefaultsArray{1LL, 2.5, false, std::string("x"), Date{5}, DefaultsArray{DefaultsArray{}, 0LL}},
       "[1,2.5,false,\"x\",{\"date\":5.0},[[],0]]"},
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

TEST(SimDefaults, MalformedJsonIsRefusedWithWhereAndWhy) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "line 1, column 1: expected a JSON object"},  {"[1]", "line 1, column 1: expected a JSON object"},
      {"{\"a\":1", "expected ',' or '}', found the end"},   {"{\"a\":1,}", "line 1, column 8"},
      {"{\"a\":\n  tru}", "line 2, column 3: expected a value"},
      {"{\"a\":null}", "null is not a defaults value"},     {"{\"a\":{\"x\":1}}", "the only object allowed"},
      {"{\"a\":01}", "expected a value"},                   {"{\"a\":1.}", "expected a value"},
      {"{\"a\":99999999999999999999}", "out of range"},     {"{\"a\":\"open}", "unterminated string"},
      {"{\"a\":\"\\q\"}", "bad escape"},                  {"{\"a\":\"\\ud800\"}", "unpaired surrogate"},
      {"{} x", "unexpected text after the object"},
      {"{\"a\":[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]}",
       "nested too deeply"},
  };
  for (const auto& [text, message] : cases) {
    std::string error;
    EXPECT_FALSE(defaultsFromJson(text, error)) << text;
    EXPECT_NE(error.find(message), std::string::npos) << text << " gave: " << error;
  }
}

}  // namespace
}  // namespace zellick::sim
