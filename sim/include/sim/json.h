#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/defaults.h"

namespace zellick::sim {

// User defaults as the scenario driver reads and prints them: one JSON object of key to
// value. Integers are JSON integers, doubles always carry a fraction or an exponent (3.0),
// strings, true/false, arrays, a Date is {"date": seconds} and any other object a dictionary.
// Keys come out sorted.
std::string toJson(const DefaultsValue& value);
std::string toJson(const std::map<std::string, DefaultsValue>& values);

// Parses such an object. On failure returns nothing and sets `error` to a message saying
// where (line and column, or the key) and why.
std::optional<std::map<std::string, DefaultsValue>> defaultsFromJson(std::string_view text,
                                                                     std::string& error);

}  // namespace zellick::sim
