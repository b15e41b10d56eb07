#include "platform/defaults.h"

#include <cctype>
#include <climits>
#include <cmath>

namespace zellick {

namespace {

int clampToInt(long double v) {
  if (v >= static_cast<long double>(INT_MAX)) return INT_MAX;
  if (v <= static_cast<long double>(INT_MIN)) return INT_MIN;
  return static_cast<int>(v);
}

std::optional<int> parseLeadingInt(const std::string& s) {
  size_t i = 0;
  while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
  bool negative = false;
  if (i < s.size() && (s[i] == '+' || s[i] == '-')) negative = s[i++] == '-';
  if (i >= s.size() || !std::isdigit(static_cast<unsigned char>(s[i]))) return std::nullopt;
  long double v = 0;
  for (; i < s.size() && std::isdigit(static_cast<unsigned char>(s[i])); ++i) {
    if (v < 1e12L) v = v * 10 + (s[i] - '0');
  }
  return clampToInt(negative ? -v : v);
}

}  // namespace

std::optional<int> intValue(const DefaultsValue& value) {
  if (auto* i = std::get_if<long long>(&value)) return clampToInt(static_cast<long double>(*i));
  if (auto* d = std::get_if<double>(&value)) {
    if (std::isnan(*d)) return std::nullopt;
    return clampToInt(std::trunc(static_cast<long double>(*d)));
  }
  if (auto* b = std::get_if<bool>(&value)) return *b ? 1 : 0;
  if (auto* s = std::get_if<std::string>(&value)) return parseLeadingInt(*s);
  return std::nullopt;
}

long long UserDefaults::integerForKey(const std::string& key) const {
  auto v = objectForKey(key);
  if (!v) return 0;
  if (auto* i = std::get_if<long long>(&*v)) return *i;
  return intValue(*v).value_or(0);
}

std::optional<DefaultsArray> UserDefaults::arrayForKey(const std::string& key) const {
  auto v = objectForKey(key);
  if (!v) return std::nullopt;
  if (auto* a = std::get_if<DefaultsArray>(&*v)) return *a;
  return std::nullopt;
}

}  // namespace zellick
