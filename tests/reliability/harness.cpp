#include "harness.h"
#include "platform/fake/services.h"

#include <QDir>
#include <QFile>

#include "platform/qt/settings_defaults.h"

namespace zellick::test {

QProcessEnvironment appEnvironment(const QTemporaryDir& dir, const QString& settings) {
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  for (const char* folder : {"home", "config", "data", "cache"}) QDir(dir.path()).mkpath(folder);
  env.insert("HOME", dir.filePath("home"));
  env.insert("XDG_CONFIG_HOME", dir.filePath("config"));
  env.insert("XDG_DATA_HOME", dir.filePath("data"));
  env.insert("XDG_CACHE_HOME", dir.filePath("cache"));
  env.insert("ZELLICK_SETTINGS", settings);
  env.insert("QT_QPA_PLATFORM", "offscreen");
  env.insert("QT_QUICK_BACKEND", "software");
  env.insert("ZELLICK_NO_AUDIO", "1");
  return env;
}

std::vector<int> readInts(const zellick::UserDefaults& d, const char* key, size_t length,
                          std::vector<std::string>& problems) {
  std::vector<int> out;
  auto v = d.objectForKey(key);
  if (!v) {
    problems.push_back(std::string(key) + " missing");
    return out;
  }
  auto array = d.arrayForKey(key);
  if (!array) {
    problems.push_back(std::string(key) + " is not an array");
    return out;
  }
  if (array->size() != length) {
    problems.push_back(std::string(key) + " has " + std::to_string(array->size()) + " elements");
  }
  for (const auto& e : *array) {
    auto i = zellick::intValue(e);
    if (!i) problems.push_back(std::string(key) + " has an element with no number");
    out.push_back(i.value_or(0));
  }
  return out;
}

SavedState readSaved(const QString& settings, const QString& scratchDir) {
  SavedState s;
  if (!QFile::exists(settings)) return s;
  s.present = true;
  static int n = 0;
  const QString copy = QDir(scratchDir).filePath(QString("read-%1.ini").arg(++n));
  QFile::remove(copy);
  if (!QFile::copy(settings, copy)) {
    s.problems.push_back("cannot copy the settings file");
    return s;
  }
  zellick::fake::RecordingLog log;
  zellick::qt::QSettingsDefaults d(copy, log);
  for (const auto& l : log.lines) s.problems.push_back("reader: " + l);
  s.counters = readInts(d, "Counters", 3, s.problems);
  s.timers = readInts(d, "Timers", 12, s.problems);
  s.totalForAvg = readInts(d, "TotalForAvg", 3, s.problems);
  for (const char* k : {"ButtonId", "TapValue"}) {
    auto v = d.objectForKey(k);
    if (!v || !zellick::intValue(*v))
      s.problems.push_back(std::string(k) + " missing or not a number");
  }
  s.buttonId = static_cast<int>(d.integerForKey("ButtonId"));
  s.tapValue = static_cast<int>(d.integerForKey("TapValue"));
  auto date = d.objectForKey("DateOfInactive");
  if (date && std::holds_alternative<zellick::Date>(*date)) {
    s.dateOfInactive = std::get<zellick::Date>(*date);
  } else {
    s.problems.push_back("DateOfInactive missing or not a date");
  }
  QFile::remove(copy);
  return s;
}

}  // namespace zellick::test
