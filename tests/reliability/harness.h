#pragma once
// Shared by the reliability harnesses: running the app in a private home, reading its settings.

#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryDir>

#include <optional>
#include <string>
#include <vector>

#include "platform/defaults.h"
#include "platform/log.h"

namespace zellick::test {

// Offscreen, silent, with HOME and the config, data and cache folders inside `dir` ("home",
// "config", "data", "cache"), and the settings at `settings`.
QProcessEnvironment appEnvironment(const QTemporaryDir& dir, const QString& settings);

// The six keys as a fresh reader in a new process would see them.
struct SavedState {
  bool present = false;               // the file exists
  std::vector<std::string> problems;  // why it is not whole; empty when whole
  std::vector<int> counters, timers, totalForAvg;
  int buttonId = 0, tapValue = 0;
  std::optional<zellick::Date> dateOfInactive;
  bool whole() const { return present && problems.empty(); }
};

// Reads through a copy, so QSettings' per-path cache cannot hand back an earlier read.
SavedState readSaved(const QString& settings, const QString& scratchDir);

// Elements of `key` as ints; a problem is noted for a missing key, a non-array, a wrong length
// or an element with no number.
std::vector<int> readInts(const zellick::UserDefaults& d, const char* key, size_t length,
                          std::vector<std::string>& problems);

}  // namespace zellick::test
