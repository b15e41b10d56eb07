#pragma once

#include <QString>
#include <QVariant>

#include <map>
#include <memory>
#include <optional>

#include "platform/defaults.h"
#include "platform/log.h"

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace zellick::qt {

// The value as the defaults hand it out, whatever QSettings made of it on disk: integers that
// come back as text stay text (readers parse it), the text forms of doubles ("3.25") and bools
// ("true") turn back into them, lists become arrays (so does an invalid value, which is what an
// empty list reads back as), date-times become Dates. Never fails.
DefaultsValue fromVariant(const QVariant& v);
// The form a value is stored in: Dates as UTC QDateTime, arrays as QVariantList.
QVariant toVariant(const DefaultsValue& v);

// User defaults in an INI file through QSettings. Changes stay in memory until synchronize(),
// which writes the whole file atomically (temp file and rename, under a lock file; an empty lock
// left by a killed writer is cleared rather than waited on). A damaged file is read as far as
// it goes, with one log line; nothing in it can make a read fail, and the next save replaces it.
class QSettingsDefaults : public UserDefaults {
 public:
  QSettingsDefaults(const QString& filePath, Log& log);
  QSettingsDefaults(const QSettingsDefaults&) = delete;
  QSettingsDefaults& operator=(const QSettingsDefaults&) = delete;
  ~QSettingsDefaults() override;

  std::optional<DefaultsValue> objectForKey(const std::string& key) const override;
  void setObject(const std::string& key, const DefaultsValue& value) override;
  void removeObjectForKey(const std::string& key) override;
  // True when every pending change is in the file; on failure they stay pending and are logged.
  bool synchronize() override;

  const QString& filePath() const { return path_; }
  // Changes not yet confirmed on disk.
  bool hasUnsavedChanges() const { return !pending_.empty(); }

 private:
  void open();

  QString path_;
  Log& log_;
  std::unique_ptr<QSettings> settings_;
  std::map<std::string, std::optional<QVariant>> pending_;  // nothing = removed
};

}  // namespace zellick::qt
