#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/defaults.h"

namespace zellick::fake {

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

}  // namespace zellick::fake
