#include "platform/fake/memory_defaults.h"

namespace zellick::fake {

std::optional<DefaultsValue> MemoryDefaults::objectForKey(const std::string& key) const {
  auto it = values_.find(key);
  if (it == values_.end()) return std::nullopt;
  return it->second;
}

void MemoryDefaults::setObject(const std::string& key, const DefaultsValue& value) {
  values_.insert_or_assign(key, value);
}

void MemoryDefaults::removeObjectForKey(const std::string& key) { values_.erase(key); }

bool MemoryDefaults::synchronize() {
  ++syncs_;
  return true;
}

}  // namespace zellick::fake
