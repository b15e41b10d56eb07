#include "platform/qt/settings_defaults.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSettings>
#include <QStringList>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "platform/qt/settings_scan.h"

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
void clearDeadEmptyLock(const QString& lockPath, std::vector<std::string>& lines) {
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
      lines.push_back("Settings: removed the empty lock file of a writer that ended; saving");
      return;
    }
    ::close(fd);
    QThread::msleep(static_cast<unsigned long>(std::clamp(kGraceMs - ageMs, 1L, kGraceMs)));
  }
}

// What stands at a settings path. Only a regular file is ever opened, and without blocking, so
// that a FIFO or device put in its place cannot hang the start.
struct Probe {
  bool file = false;
  const char* other = nullptr;  // what stands there instead of a file, if anything
  std::string bytes;            // a file's bytes, one beyond the limit at most
};

const char* kindOf(mode_t mode) {
  if (S_ISDIR(mode)) return "a folder";
  if (S_ISFIFO(mode)) return "a FIFO";
  if (S_ISSOCK(mode)) return "a socket";
  if (S_ISCHR(mode) || S_ISBLK(mode)) return "a device";
  return "not a regular file";
}

Probe probe(const QByteArray& name) {
  struct stat st {};
  // Absent, or behind a folder that cannot be searched: a save will tell.
  if (::stat(name.constData(), &st) != 0) return {};
  if (!S_ISREG(st.st_mode)) return {false, kindOf(st.st_mode), {}};
  const int fd = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (fd < 0) return {true, nullptr, {}};  // unreadable: QSettings reads nothing either
  Probe p{true, nullptr, {}};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    p = {false, kindOf(st.st_mode), {}};  // swapped since the stat
  } else {
    p.bytes.reserve(
        std::min<std::size_t>(static_cast<std::size_t>(st.st_size), kMaxSettingsFileBytes) + 1);
    char chunk[1 << 16];
    while (p.bytes.size() <= kMaxSettingsFileBytes) {
      const ssize_t n = ::read(fd, chunk, sizeof chunk);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) break;
      p.bytes.append(chunk, static_cast<std::size_t>(n));
    }
  }
  ::close(fd);
  return p;
}

// Moves the file at `path` aside in its own folder, under its name with the time appended, never
// over another file. The new name, or nothing.
std::optional<QString> moveAside(const QString& path) {
  const QByteArray from = QFile::encodeName(path);
  const QString stamped = path + QStringLiteral(".unreadable-") +
                          QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
  for (int n = 1; n <= 100; ++n) {
    const QString to = n == 1 ? stamped : stamped + QStringLiteral("-%1").arg(n);
    const QByteArray toName = QFile::encodeName(to);
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, toName.constData(), RENAME_NOREPLACE) ==
        0) {
      return to;
    }
    // A file system that cannot refuse to replace: a hard link refuses, then the old name goes.
    if (errno == EINVAL && ::link(from.constData(), toName.constData()) == 0) {
      ::unlink(from.constData());
      return to;
    }
    if (errno != EEXIST) return std::nullopt;
  }
  return std::nullopt;
}

// Whether `name` holds all of an INI file QSettings wrote with `keys` keys. QSettings reports a
// write cut short (a full disk, a file size limit) as a success; what it writes has one line per
// key and ends with a line break, so a cut shows as a missing line or an unfinished one.
bool wholeIni(const QString& name, qsizetype keys) {
  QFile f(name);
  if (!f.open(QIODevice::ReadOnly)) return false;
  const QByteArray text = f.readAll();
  if (text.isEmpty() || !text.endsWith('\n')) return false;
  qsizetype lines = 0;
  for (qsizetype i = 0; i < text.size();) {
    const qsizetype end = text.indexOf('\n', i);
    if (end > i && text[i] != '[') ++lines;
    i = end + 1;
  }
  return lines == keys;
}

// How long a save waits for another process's save to end.
constexpr int kLockWaitMs = 2000;

}  // namespace

namespace {

// `typed`: the value was stored with its type (inside a dictionary, which the file keeps in
// binary form), so its text is text, whatever it looks like.
DefaultsValue convert(const QVariant& v, bool typed) {
  if (!v.isValid()) return DefaultsArray{};
  const auto text = [typed](const QString& s) {
    return typed ? DefaultsValue(s.toStdString()) : fromText(s);
  };
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
    case QMetaType::QString: return text(v.toString());
    case QMetaType::QByteArray: return v.toByteArray().toStdString();
    case QMetaType::QDateTime: {
      const QDateTime dt = v.toDateTime();
      if (!dt.isValid()) return std::string();
      return Date{static_cast<double>(dt.toMSecsSinceEpoch()) / 1000.0};
    }
    case QMetaType::QStringList: {
      DefaultsArray out;
      for (const QString& s : v.toStringList()) out.push_back(text(s));
      return out;
    }
    case QMetaType::QVariantList: {
      DefaultsArray out;
      for (const QVariant& e : v.toList()) out.push_back(convert(e, typed));
      return out;
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
      // A hash reads as a map: the dictionary orders its keys either way.
      DefaultsDictionary out;
      const QVariantMap map = v.toMap();
      for (auto it = map.cbegin(); it != map.cend(); ++it)
        out.insert_or_assign(it.key().toStdString(), convert(it.value(), true));
      return out;
    }
    default: break;
  }
  // Anything else a hand-edited file can hold (sizes, rects): its text, or nothing.
  return v.canConvert<QString>() ? v.toString().toStdString() : std::string();
}

}  // namespace

DefaultsValue fromVariant(const QVariant& v) { return convert(v, false); }

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
        } else if constexpr (std::is_same_v<T, DefaultsArray>) {
          QVariantList list;
          list.reserve(static_cast<qsizetype>(x.size()));
          for (const DefaultsValue& e : x) list.push_back(toVariant(e));
          return list;
        } else {
          QVariantMap map;
          for (const auto& [k, e] : x) map.insert(QString::fromStdString(k), toVariant(e));
          return map;
        }
      },
      static_cast<const DefaultsValue::variant&>(v));
}

QSettingsDefaults::QSettingsDefaults(const QString& filePath, Log& log)
    : path_(filePath), log_(log) {
  load();
  writer_ = std::thread([this] { runWriter(); });
}

QSettingsDefaults::~QSettingsDefaults() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  writer_.join();
}

void QSettingsDefaults::load() {
  const std::string shown = path_.toStdString();
  const Probe found = probe(QFile::encodeName(path_));
  if (found.other) {
    log_.line("Settings: " + shown + " is " + found.other +
              ", not a file; settings are kept in memory for this run");
    memoryOnly_ = true;
    return;
  }
  if (!found.file) return;
  const SettingsScan scan = scanSettings(found.bytes);
  for (const std::string& note : scan.notes) log_.line("Settings: " + shown + ": " + note);
  if (!scan.unsafe.empty()) {
    const auto aside = moveAside(path_);
    const int error = errno;
    if (aside) {
      log_.line("Settings: " + shown + " " + scan.unsafe + "; moved aside to " +
                aside->toStdString() + ", starting afresh");
    } else {
      log_.line("Settings: " + shown + " " + scan.unsafe + " and cannot be moved aside (" +
                std::strerror(error) + "); settings are kept in memory for this run");
      memoryOnly_ = true;
    }
    return;
  }
  QSettings settings(path_, QSettings::IniFormat);
  for (const QString& k : settings.allKeys()) stored_[k.toStdString()] = settings.value(k);
  if (settings.status() != QSettings::NoError) {
    log_.line("Settings: " + shown + " " + statusText(settings.status()) +
              "; keeping what can be read");
  }
}

std::optional<DefaultsValue> QSettingsDefaults::objectForKey(const std::string& k) const {
  std::optional<QVariant> v;
  {
    std::lock_guard lock(mutex_);
    if (auto it = pending_.find(k); it != pending_.end()) {
      v = it->second.value;
    } else if (auto s = stored_.find(k); s != stored_.end()) {
      v = s->second;
    }
  }
  if (!v) return std::nullopt;
  return fromVariant(*v);
}

void QSettingsDefaults::setObject(const std::string& k, const DefaultsValue& value) {
  change(k, toVariant(value));
}

void QSettingsDefaults::removeObjectForKey(const std::string& k) { change(k, std::nullopt); }

void QSettingsDefaults::change(const std::string& k, std::optional<QVariant> value) {
  std::lock_guard lock(mutex_);
  pending_[k] = Change{std::move(value), ++serial_};
}

bool QSettingsDefaults::hasUnsavedChanges() const {
  std::lock_guard lock(mutex_);
  return !pending_.empty();
}

bool QSettingsDefaults::synchronize() {
  std::vector<std::string> lines;
  const bool saved = save(lines);
  for (const std::string& l : lines) log_.line(l);
  return saved;
}

void QSettingsDefaults::synchronizeInBackground() {
  {
    std::lock_guard lock(mutex_);
    saveAsked_ = true;
  }
  wake_.notify_all();
}

namespace {
constexpr std::chrono::milliseconds kGatherRequests{100};
}  // namespace

void QSettingsDefaults::runWriter() {
  std::unique_lock lock(mutex_);
  for (;;) {
    wake_.wait(lock, [this] { return saveAsked_ || stopping_; });
    if (!saveAsked_) return;
    // Requests that follow within a moment go into the same save: a burst is one write, and
    // the save asked for at start-up comes after the first frame rather than beside it.
    wake_.wait_for(lock, kGatherRequests, [this] { return stopping_; });
    saveAsked_ = false;
    lock.unlock();
    std::vector<std::string> lines;
    save(lines);
    for (const std::string& l : lines) log_.line(l);
    lock.lock();
  }
}

bool QSettingsDefaults::save(std::vector<std::string>& lines) {
  std::lock_guard saving(saving_);
  std::map<std::string, QVariant> all;
  std::map<std::string, std::uint64_t> taken;  // the changes this save writes
  const auto takeChanges = [&] {
    std::lock_guard lock(mutex_);
    all = stored_;
    for (const auto& [k, c] : pending_) {
      if (c.value) {
        all[k] = *c.value;
      } else {
        all.erase(k);
      }
      taken[k] = c.serial;
    }
  };
  {
    std::lock_guard lock(mutex_);
    if (pending_.empty()) return true;
  }
  if (memoryOnly_) {
    takeChanges();
  } else {
    QDir().mkpath(QFileInfo(path_).absolutePath());
    const QString lockPath = path_ + QStringLiteral(".lock");
    clearDeadEmptyLock(lockPath, lines);
    QLockFile lock(lockPath);
    if (!lock.tryLock(kLockWaitMs)) {
      lines.push_back("Settings: " + path_.toStdString() +
                      (lock.error() == QLockFile::LockFailedError
                           ? " is being saved by another process"
                           : " cannot be written (its lock file cannot be made)") +
                      "; changes not saved");
      return false;
    }
    takeChanges();  // as late as can be, so that this save carries the latest values
    if (!writeFile(all, lines)) return false;  // the changes stay pending for the next try
  }
  std::lock_guard lock(mutex_);
  stored_ = std::move(all);
  for (const auto& [k, serial] : taken) {
    if (auto it = pending_.find(k); it != pending_.end() && it->second.serial == serial) {
      pending_.erase(it);
    }
  }
  return true;
}

// The whole file is written afresh from memory to a scratch file beside it, checked, and renamed
// over it: QSettings would rename a file cut short into place itself.
bool QSettingsDefaults::writeFile(const std::map<std::string, QVariant>& all,
                                  std::vector<std::string>& lines) {
  const QByteArray target = QFile::encodeName(path_);
  const QString scratch = path_ + QStringLiteral(".saving");
  const QByteArray scratchName = QFile::encodeName(scratch);
  // Left by a killed writer: the lock held here says no one else is writing them.
  ::unlink(scratchName.constData());
  QFile::remove(scratch + QStringLiteral(".lock"));
  qsizetype keys = 0;
  QSettings::Status status;
  {
    QSettings settings(scratch, QSettings::IniFormat);
    settings.clear();  // whatever QSettings' cache still holds of an earlier save
    for (const auto& [k, v] : all) settings.setValue(key(k), v);
    settings.sync();
    status = settings.status();
    keys = settings.allKeys().size();
  }
  std::string why;
  if (status != QSettings::NoError) {
    why = statusText(status);
  } else if (keys == 0) {  // nothing left to keep: no file
    ::unlink(scratchName.constData());
    if (::unlink(target.constData()) == 0 || errno == ENOENT) return true;
    why = std::string("cannot be removed: ") + std::strerror(errno);
  } else if (!wholeIni(scratch, keys)) {
    why = "was written short (disk full or file too large)";
  } else if (::rename(scratchName.constData(), target.constData()) != 0) {
    why = std::string("cannot be replaced: ") + std::strerror(errno);
  } else {
    return true;
  }
  ::unlink(scratchName.constData());
  lines.push_back("Settings: " + path_.toStdString() + " " + why + "; changes not saved");
  return false;
}

}  // namespace zellick::qt
