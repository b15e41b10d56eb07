#pragma once

#include <QString>
#include <QVariant>

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/defaults.h"
#include "platform/log.h"

namespace zellick::qt {

// The value as the defaults hand it out, whatever QSettings made of it on disk: integers that
// come back as text stay text (readers parse it), the text forms of doubles ("3.25") and bools
// ("true") turn back into them, except inside dictionaries, which keep every value's type; lists
// become arrays (so does an invalid value, which is what an empty list reads back as), maps
// become dictionaries, date-times become Dates. Never fails.
DefaultsValue fromVariant(const QVariant& v);
// The form a value is stored in: Dates as UTC QDateTime, arrays as QVariantList, dictionaries
// as QVariantMap (which the file keeps with every value's type, integers and text alike).
QVariant toVariant(const DefaultsValue& v);

// User defaults in an INI file through QSettings; every method may be called from any thread.
// The file is checked before QSettings reads it: a path that is not a regular file is never
// touched (the store then lives in memory for the run, and saves report success); a file that
// QSettings could not parse safely (see settings_scan.h) is renamed aside with a time stamp and
// the store starts empty. Each is one log line. What was read (of a damaged file, as far as it
// goes, with one log line) is held in memory; changes stay pending until a save writes all the
// store holds (changes another process made to the file meanwhile are not merged) to a scratch
// file under the file's lock (an empty lock left by a killed writer is cleared rather than
// waited on), checks that it was written whole, and only then renames it over the old one.
class QSettingsDefaults : public UserDefaults {
 public:
  QSettingsDefaults(const QString& filePath, Log& log);
  QSettingsDefaults(const QSettingsDefaults&) = delete;
  QSettingsDefaults& operator=(const QSettingsDefaults&) = delete;
  // Finishes a save under way or asked for, then stops the writer thread.
  ~QSettingsDefaults() override;

  std::optional<DefaultsValue> objectForKey(const std::string& key) const override;
  void setObject(const std::string& key, const DefaultsValue& value) override;
  void removeObjectForKey(const std::string& key) override;
  // True when every pending change is in the file; on failure they stay pending and are logged.
  // Waits for a background save under way.
  bool synchronize() override;
  // Saves on the store's writer thread, a tenth of a second after it is asked; requests made
  // meanwhile make one save.
  void synchronizeInBackground() override;
  // True while some change is not yet known to be in the file.
  bool hasUnsavedChanges() const;

  const QString& filePath() const { return path_; }

 private:
  struct Change {
    std::optional<QVariant> value;  // nothing = removed
    std::uint64_t serial;           // tells a change made during a save from the one it wrote
  };

  void load();
  void change(const std::string& key, std::optional<QVariant> value);
  // One save; lines for the log are added to `lines`, to be written once no lock is held.
  bool save(std::vector<std::string>& lines);
  bool writeFile(const std::map<std::string, QVariant>& all, std::vector<std::string>& lines);
  void runWriter();

  const QString path_;
  Log& log_;
  bool memoryOnly_ = false;  // the path is not a regular file, or an unsafe one stayed in place

  mutable std::mutex mutex_;                // guards what follows up to saving_
  std::map<std::string, QVariant> stored_;  // what the file holds
  std::map<std::string, Change> pending_;
  std::uint64_t serial_ = 0;
  bool saveAsked_ = false;
  bool stopping_ = false;
  std::condition_variable wake_;

  std::mutex saving_;  // one save at a time; held across the disk work, never while logging
  std::thread writer_;
};

}  // namespace zellick::qt
