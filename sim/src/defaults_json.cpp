#include <nlohmann/json.hpp>

#include <climits>
#include <cmath>

#include "sim/json.h"

namespace zellick::sim {

namespace {

using nlohmann::json;

// Deeper nesting than any saved state has; deep enough nesting would exhaust the stack.
constexpr int kMaxDepth = 64;

json toJsonValue(const DefaultsValue& value) {
  return std::visit(
      [](const auto& v) -> json {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, double>) {
          return std::isfinite(v) ? json(v) : json(nullptr);
        } else if constexpr (std::is_same_v<T, Date>) {
          return json{{"date", std::isfinite(v.seconds) ? json(v.seconds) : json(nullptr)}};
        } else if constexpr (std::is_same_v<T, DefaultsArray>) {
          json out = json::array();
          for (const DefaultsValue& e : v) out.push_back(toJsonValue(e));
          return out;
        } else if constexpr (std::is_same_v<T, DefaultsDictionary>) {
          json out = json::object();
          for (const auto& [key, e] : v) out[key] = toJsonValue(e);
          return out;
        } else {
          return json(v);
        }
      },
      static_cast<const DefaultsValue::variant&>(value));
}

std::string dump(const json& j) { return j.dump(-1, ' ', false, json::error_handler_t::replace); }

// The value `j` as the defaults hold it; nothing (with `error` set) for what they cannot.
std::optional<DefaultsValue> fromJson(const json& j, int depth, std::string& error) {
  if (depth > kMaxDepth) {
    error = "arrays or objects nested too deeply";
    return std::nullopt;
  }
  switch (j.type()) {
    case json::value_t::number_integer: return static_cast<long long>(j.get<std::int64_t>());
    case json::value_t::number_unsigned: {
      const auto u = j.get<std::uint64_t>();
      if (u > static_cast<std::uint64_t>(LLONG_MAX)) {
        error = "integer " + std::to_string(u) + " is out of range";
        return std::nullopt;
      }
      return static_cast<long long>(u);
    }
    case json::value_t::number_float: return j.get<double>();
    case json::value_t::boolean: return j.get<bool>();
    case json::value_t::string: return j.get<std::string>();
    case json::value_t::array: {
      DefaultsArray out;
      out.reserve(j.size());
      for (const json& e : j) {
        auto v = fromJson(e, depth + 1, error);
        if (!v) return std::nullopt;
        out.push_back(std::move(*v));
      }
      return out;
    }
    case json::value_t::object: {
      // {"date": seconds} is a date; any other object a dictionary.
      if (j.size() == 1 && j.contains("date") && j["date"].is_number())
        return Date{j["date"].get<double>()};
      DefaultsDictionary out;
      for (const auto& [key, e] : j.items()) {
        auto v = fromJson(e, depth + 1, error);
        if (!v) return std::nullopt;
        out.insert_or_assign(key, std::move(*v));
      }
      return out;
    }
    case json::value_t::null: error = "null is not a defaults value"; return std::nullopt;
    default: error = "not a defaults value"; return std::nullopt;
  }
}

}  // namespace

std::string toJson(const DefaultsValue& value) { return dump(toJsonValue(value)); }

std::string toJson(const std::map<std::string, DefaultsValue>& values) {
  json out = json::object();
  for (const auto& [key, value] : values) out[key] = toJsonValue(value);
  return dump(out);
}

std::optional<std::map<std::string, DefaultsValue>> defaultsFromJson(std::string_view text,
                                                                     std::string& error) {
  json doc;
  try {
    doc = json::parse(text);
  } catch (const json::parse_error& e) {
    // "[json.exception.parse_error.101] parse error at line 1, column 8: ..." without the tag.
    std::string what = e.what();
    const auto at = what.find(" at line ");
    error = at == std::string::npos ? what : what.substr(at + 4);
    return std::nullopt;
  }
  if (!doc.is_object()) {
    error = "line 1, column 1: expected a JSON object of defaults";
    return std::nullopt;
  }
  std::map<std::string, DefaultsValue> out;
  for (const auto& [key, value] : doc.items()) {
    std::string why;
    auto v = fromJson(value, 0, why);
    if (!v) {
      error = "value of \"" + key + "\": " + why;
      return std::nullopt;
    }
    out.insert_or_assign(key, std::move(*v));
  }
  return out;
}

}  // namespace zellick::sim
