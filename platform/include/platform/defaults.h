#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zellick {

// A moment in time, seconds since 1970-01-01 UTC (millisecond precision survives storage).
struct Date {
  double seconds = 0;
  bool operator==(const Date&) const = default;
};

struct DefaultsValue;
using DefaultsArray = std::vector<DefaultsValue>;
using DefaultsDictionary = std::map<std::string, DefaultsValue>;

// A property-list value as the user defaults hold it. Stores that lose types on disk hand
// numbers back as strings; readers convert with intValue().
struct DefaultsValue
    : std::variant<long long, double, bool, std::string, Date, DefaultsArray, DefaultsDictionary> {
  using variant::variant;
  bool operator==(const DefaultsValue& o) const {
    return static_cast<const variant&>(*this) == static_cast<const variant&>(o);
  }
};

// The number a value reads as, the way a saved count is read back: integers as they are,
// doubles truncated, numeric text parsed (leading blanks, sign, digits; clamped to 32 bits).
// Nothing for values with no number in them (dates, arrays, dictionaries, non-numeric text).
std::optional<int> intValue(const DefaultsValue& value);

// The app's persistent key-value store. Safe to use from several threads only where an
// implementation says so.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;
  // The value stored under `key`, or nothing when the key is absent.
  virtual std::optional<DefaultsValue> objectForKey(const std::string& key) const = 0;
  virtual void setObject(const std::string& key, const DefaultsValue& value) = 0;
  virtual void removeObjectForKey(const std::string& key) = 0;
  // Writes pending changes to permanent storage; true when they are safely stored.
  virtual bool synchronize() = 0;
  // Writes pending changes soon, on a thread of the store's own, and returns at once; a write
  // that fails is logged by the store and its changes stay pending. Stores without a thread of
  // their own write at once.
  virtual void synchronizeInBackground() { synchronize(); }

  // The integer under `key`; 0 when absent or not a number.
  long long integerForKey(const std::string& key) const;
  void setInteger(const std::string& key, long long value) { setObject(key, value); }
  // The array under `key`; nothing when absent or not an array.
  std::optional<DefaultsArray> arrayForKey(const std::string& key) const;
};

}  // namespace zellick
