#pragma once

#include <optional>
#include <string>

#include "platform/defaults.h"

namespace zellick::test {

// Wraps another store and fails on cue: synchronize() reports failure, or writes (set and
// remove) are silently dropped. Reads always go to the wrapped store.
class FaultyDefaults final : public UserDefaults {
 public:
  explicit FaultyDefaults(UserDefaults& inner) : inner_(inner) {}
  FaultyDefaults(const FaultyDefaults&) = delete;
  FaultyDefaults& operator=(const FaultyDefaults&) = delete;

  // The next `n` synchronize() calls fail (without reaching the wrapped store).
  void failNextSynchronize(int n = 1) { failSyncs_ = n; }
  // Every synchronize() fails until switched off.
  void failAllSynchronize(bool on) { failAllSyncs_ = on; }
  // The next `n` writes are dropped.
  void dropNextWrites(int n) { dropWrites_ = n; }
  // Every write is dropped until switched off.
  void dropAllWrites(bool on) { dropAll_ = on; }

  int synchronizeCalls() const { return syncCalls_; }
  int failedSynchronizes() const { return syncFailures_; }
  int droppedWrites() const { return dropped_; }

  std::optional<DefaultsValue> objectForKey(const std::string& key) const override {
    return inner_.objectForKey(key);
  }
  void setObject(const std::string& key, const DefaultsValue& value) override;
  void removeObjectForKey(const std::string& key) override;
  bool synchronize() override;

 private:
  bool dropThisWrite();

  UserDefaults& inner_;
  int failSyncs_ = 0;
  bool failAllSyncs_ = false;
  int dropWrites_ = 0;
  bool dropAll_ = false;
  int syncCalls_ = 0;
  int syncFailures_ = 0;
  int dropped_ = 0;
};

}  // namespace zellick::test
