#include "platform/qt/settings_defaults.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStringList>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>

namespace zellick::qt {

namespace {

QString key(const std::string& k) { return QString::fromStdString(k); }

const char* statusText(QSettings::Status s) {
  switch (s) {
    case QSettings::NoError: return "no error";
    case QSettings::AccessError: return "cannot be written";
    case QSettings::FormatError: return "has unreadable lines";
  }
  return "unknown error";
}

// INI keeps no types: doubles and bools come back as their text. Integer text stays text
// (readers parse it), so only the forms a double or bool is written in are turned back.
DefaultsValue fromText(const QString& text) {
  if (text == QLatin1String("true")) return true;
  if (text == QLatin1String("false")) return false;
  const QString t = text.trimmed();
  if (t == text && !t.isEmpty() && (t.contains(u'.') || t.contains(u'e') || t.contains(u'E'))) {
    bool ok = false;
    const double d = t.toDouble(&ok);
    if (ok && std::isfinite(d)) return d;
  }
  return text.toStdString();
}

// A writer killed between creating the lock file and writing its id into it leaves an empty
// lock that QSettings honours for 30 s, blocking the next save that long. A live writer holds
// a flock on it and fills it within microseconds; an empty one nobody holds is dead.
void clearDeadEmptyLock(const QString& lockPath, Log& log) {
  constexpr long kGraceMs = 200;
  const QByteArray name = QFile::encodeName(lockPath);
  for (int attempt = 0; attempt < 2; ++attempt) {
    const int fd = ::open(name.constData(), O_RDWR | O_CLOEXEC);
    if (fd < 0) return;
    struct stat st {};
    const bool dead =
        ::fstat(fd, &st) == 0 && st.st_size == 0 && ::flock(fd, LOCK_EX | LOCK_NB) == 0;
    if (!dead) {
      ::close(fd);
      return;
    }
    const long ageMs = static_cast<long>(QDateTime::currentMSecsSinceEpoch()) -
                       (static_cast<long>(st.st_mtim.tv_sec) * 1000 + st.st_mtim.tv_nsec / 1000000);
    if (ageMs >= kGraceMs || attempt == 1) {
      ::unlink(name.constData());
      ::close(fd);
      log.line("Settings: removed the empty lock file of a writer that ended; saving");
      return;
    }
    ::close(fd);
    QThread::msleep(static_cast<unsigned long>(std::clamp(kGraceMs - ageMs, 1L, kGraceMs)));
  }
}

}  // namespace

DefaultsValue fromVariant(const QVariant& v) {
  if (!v.isValid()) return DefaultsArray{};
  switch (v.metaType().id()) {
    case QMetaType::Bool: return v.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar: return static_cast<long long>(v.toLongLong());
    case QMetaType::ULong:
    case QMetaType::ULongLong:
      return static_cast<long long>(std::min<qulonglong>(v.toULongLong(), LLONG_MAX));
    case QMetaType::Double:
    case QMetaType::Float: return v.toDouble();
    case QMetaType::QString: return fromText(v.toString());
    case QMetaType::QByteArray: return v.toByteArray().toStdString();
    case QMetaType::QDateTime: {
      const QDateTime dt = v.toDateTime();
      if (!dt.isValid()) return std::string();
      return Date{static_cast<double>(dt.toMSecsSinceEpoch()) / 1000.0};
    }
    case QMetaType::QStringList: {
      DefaultsArray out;
      for (const QString& s : v.toStringList()) out.push_back(fromText(s));
      return out;
    }
    case QMetaType::QVariantList: {
      DefaultsArray out;
      for (const QVariant& e : v.toList()) out.push_back(fromVariant(e));
      return out;
    }
    default: break;
  }
  // Anything else a hand-edited file can hold (sizes, rects, maps): its text, or nothing.
  return v.canConvert<QString>() ? v.toString().toStdString() : std::string();
}

QVariant toVariant(const DefaultsValue& v) {
  return std::visit(
      [](const auto& x) -> QVariant {
        using T = std::decay_t<decltype(x)>;
        if constexpr (std::is_same_v<T, long long>) {
          return QVariant(static_cast<qlonglong>(x));
        } else if constexpr (std::is_same_v<T, double> || std::is_same_v<T, bool>) {
          return QVariant(x);
        } else if constexpr (std::is_same_v<T, std::string>) {
          return QVariant(QString::fromStdString(x));
        } else if constexpr (std::is_same_v<T, Date>) {
          if (!std::isfinite(x.seconds)) return QVariant(QDateTime());
          return QVariant(
              QDateTime::fromMSecsSinceEpoch(std::llround(x.seconds * 1000.0), Qt::UTC));
        } else {
          QVariantList list;
          list.reserve(static_cast<qsizetype>(x.size()));
          for (const DefaultsValue& e : x) list.push_back(toVariant(e));
          return list;
        }
      },
      static_cast<const DefaultsValue::variant&>(v));
}

QSettingsDefaults::QSettingsDefaults(const QString& filePath, Log& log)
    : path_(filePath), log_(log) {
  open();
  // The file is parsed on the first read: read now so that damage is reported here.
  settings_->allKeys();
  if (settings_->status() != QSettings::NoError) {
    log_.line("Settings: " + path_.toStdString() + " " + statusText(settings_->status()) +
              "; keeping what can be read");
  }
}

QSettingsDefaults::~QSettingsDefaults() = default;

void QSettingsDefaults::open() {
  settings_ = std::make_unique<QSettings>(path_, QSettings::IniFormat);
}

std::optional<DefaultsValue> QSettingsDefaults::objectForKey(const std::string& k) const {
  if (auto it = pending_.find(k); it != pending_.end()) {
    if (!it->second) return std::nullopt;
    return fromVariant(*it->second);
  }
  if (!settings_->contains(key(k))) return std::nullopt;
  return fromVariant(settings_->value(key(k)));
}

void QSettingsDefaults::setObject(const std::string& k, const DefaultsValue& value) {
  pending_[k] = toVariant(value);
}

void QSettingsDefaults::removeObjectForKey(const std::string& k) { pending_[k] = std::nullopt; }

bool QSettingsDefaults::synchronize() {
  if (pending_.empty()) return true;
  QDir().mkpath(QFileInfo(path_).absolutePath());
  // Errors stick to a QSettings, even one made while the file could not be written: start
  // over from the disk so that this try can succeed where an earlier one failed.
  // The lock goes first: the reader replaced below writes back its failed changes as it goes.
  clearDeadEmptyLock(path_ + QStringLiteral(".lock"), log_);
  if (settings_->status() == QSettings::AccessError) open();
  for (const auto& [k, v] : pending_) {
    if (v) {
      settings_->setValue(key(k), *v);
    } else {
      settings_->remove(key(k));
    }
  }
  settings_->sync();
  bool stored = settings_->status() == QSettings::NoError;
  if (!stored && settings_->status() == QSettings::FormatError) {
    // The first error sticks: a damaged file read at start hides how this write went.
    // A fresh reader of the rewritten file tells.
    auto fresh = std::make_unique<QSettings>(path_, QSettings::IniFormat);
    stored = fresh->status() != QSettings::AccessError;
    for (const auto& [k, v] : pending_) stored = stored && fresh->contains(key(k)) == v.has_value();
    if (stored) settings_ = std::move(fresh);
  }
  if (!stored) {
    log_.line("Settings: " + path_.toStdString() + " " + statusText(settings_->status()) +
              "; changes not saved");
    return false;  // the changes stay pending for the next try
  }
  pending_.clear();
  return true;
}

}  // namespace zellick::qt
