#include "support/faulty_defaults.h"

namespace zellick::test {

bool FaultyDefaults::dropThisWrite() {
  if (dropAll_ || dropWrites_ > 0) {
    if (dropWrites_ > 0) --dropWrites_;
    ++dropped_;
    return true;
  }
  return false;
}

void FaultyDefaults::setObject(const std::string& key, const DefaultsValue& value) {
  if (!dropThisWrite()) inner_.setObject(key, value);
}

void FaultyDefaults::removeObjectForKey(const std::string& key) {
  if (!dropThisWrite()) inner_.removeObjectForKey(key);
}

bool FaultyDefaults::synchronize() {
  ++syncCalls_;
  if (failAllSyncs_ || failSyncs_ > 0) {
    if (failSyncs_ > 0) --failSyncs_;
    ++syncFailures_;
    return false;
  }
  return inner_.synchronize();
}

}  // namespace zellick::test
