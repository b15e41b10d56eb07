#pragma once

#include <optional>
#include <string>

#include "platform/defaults.h"

namespace zellick::test {

// Wraps another store and fails on cue; reads always go to the wrapped store.
class FaultyDefaults final : public UserDefaults {
 public:
  explicit FaultyDefaults(UserDefaults& inner) : inner_(inner) {}
  FaultyDefaults(const FaultyDefaults&) = delete;
  FaultyDefaults& operator=(const FaultyDefaults&) = delete;

  // The next `n` synchronize() calls fail without reaching the wrapped store.
  void failNextSynchronize(int n = 1) { failSyncs_ = n; }
  // The next `n` writes (set and remove) are silently dropped.
  void dropNextWrites(int n) { dropWrites_ = n; }

  std::optional<DefaultsValue> objectForKey(const std::string& key) const override {
    return inner_.objectForKey(key);
  }
  void setObject(const std::string& key, const DefaultsValue& value) override {
    if (!dropThisWrite()) inner_.setObject(key, value);
  }
  void removeObjectForKey(const std::string& key) override {
    if (!dropThisWrite()) inner_.removeObjectForKey(key);
  }
  bool synchronize() override {
    if (failSyncs_ == 0) return inner_.synchronize();
    --failSyncs_;
    return false;
  }

 private:
  bool dropThisWrite() { return dropWrites_ > 0 && dropWrites_-- > 0; }

  UserDefaults& inner_;
  int failSyncs_ = 0, dropWrites_ = 0;
};

}  // namespace zellick::test
