#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/defaults.h"

namespace zellick::sim {

// User defaults held in memory; values come back exactly as stored.
class MemoryDefaults final : public UserDefaults {
 public:
  MemoryDefaults() = default;
  MemoryDefaults(const MemoryDefaults&) = delete;
  MemoryDefaults& operator=(const MemoryDefaults&) = delete;

  std::optional<DefaultsValue> objectForKey(const std::string& key) const override;
  void setObject(const std::string& key, const DefaultsValue& value) override;
  void removeObjectForKey(const std::string& key) override;
  bool synchronize() override;

  const std::map<std::string, DefaultsValue>& values() const { return values_; }
  void replaceAll(std::map<std::string, DefaultsValue> values) { values_ = std::move(values); }
  int synchronizeCount() const { return syncs_; }

 private:
  std::map<std::string, DefaultsValue> values_;
  int syncs_ = 0;
};

// JSON forms of defaults: arrays as arrays, integers as integers, doubles always with a
// fraction or exponent, strings, bools, and a Date as {"date": seconds}.
std::string toJson(const DefaultsValue& value);
// One line, keys sorted.
std::string toJson(const std::map<std::string, DefaultsValue>& values);
// A JSON string literal, escaped.
std::string jsonQuote(std::string_view text);

// Parses a JSON object of key → value. On failure returns nothing and sets `error` to a
// message with the line and column of the fault.
std::optional<std::map<std::string, DefaultsValue>> defaultsFromJson(std::string_view text,
                                                                     std::string& error);

}  // namespace zellick::sim
