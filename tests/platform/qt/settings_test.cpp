#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QThread>

#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/fake/documents.h"
#include "platform/fake/services.h"
#include "platform/fake/time.h"
#include "platform/qt/settings_defaults.h"
#include "services/apps.h"

namespace zellick::test {

using fake::RecordingLog;
using qt::QSettingsDefaults;

namespace {

// QSettings caches files by path inside a process, so every read-back goes through a copy
// that no QSettings has seen: what it yields is what a new process would read.
std::unique_ptr<QSettingsDefaults> reopen(const QTemporaryDir& dir, const QString& path, Log& log) {
  static int n = 0;
  const QString copy = dir.filePath(QString("copy%1.ini").arg(++n));
  if (QFile::exists(path)) {
    EXPECT_TRUE(QFile::copy(path, copy));
  }
  return std::make_unique<QSettingsDefaults>(copy, log);
}

// A log the store's writer thread may write to while the test reads it.
class LockedLog final : public Log {
 public:
  void line(const std::string& text) override {
    std::lock_guard lock(mutex_);
    lines_.push_back(text);
  }
  std::vector<std::string> lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

void writeFile(const QString& path, const QByteArray& bytes) {
  QFile f(path);
  ASSERT_TRUE(f.open(QIODevice::WriteOnly));
  ASSERT_EQ(f.write(bytes), bytes.size());
}

QByteArray readFile(const QString& path) {
  QFile f(path);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Polls `done` for up to five seconds.
bool eventually(const std::function<bool()>& done) {
  QElapsedTimer t;
  t.start();
  while (!done()) {
    if (t.elapsed() > 5000) return false;
    QThread::msleep(5);
  }
  return true;
}

// inotify events on a path since the watch began; `name` keeps only those about that entry of
// a watched folder.
class Watch {
 public:
  Watch(const QString& path, uint32_t mask) : fd_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    EXPECT_GE(inotify_add_watch(fd_, QFile::encodeName(path).constData(), mask), 0);
  }
  ~Watch() { close(fd_); }
  int count(const char* name = nullptr) {
    alignas(inotify_event) char buf[4096];
    for (ssize_t n; (n = read(fd_, buf, sizeof buf)) > 0;) {
      for (ssize_t at = 0; at < n;) {
        const auto* e = reinterpret_cast<const inotify_event*>(buf + at);
        if (!name || (e->len > 0 && std::strcmp(e->name, name) == 0)) ++seen_;
        at += static_cast<ssize_t>(sizeof(inotify_event) + e->len);
      }
    }
    return seen_;
  }

 private:
  int fd_;
  int seen_ = 0;
};

struct RoundTrip {
  const char* key;
  DefaultsValue stored;
  std::optional<DefaultsValue> readBack = {};  // INI keeps no integer type: integers come as text
};

// A fresh reader, as a new process would be, gets every type back, though dead writers' locks
// lay in the way of the saves.
TEST(SettingsDefaults, SavesEveryTypeForAFreshReaderPastDeadLocks) {
  const std::vector<RoundTrip> table = {
      {"Big", 9000000000LL, std::string("9000000000")},
      {"Negative", -7LL, std::string("-7")},
      {"Double", 3.25},
      {"False", false},
      {"Text", std::string("a, b")},
      {"Date", Date{1763860000.123}},
      {"Counters", DefaultsArray{11LL, -22LL},
       DefaultsArray{std::string("11"), std::string("-22")}},
      {"One", DefaultsArray{7LL}},
      {"None", DefaultsArray{}},
      {"Dates", DefaultsArray{Date{0.5}, Date{-86400.25}}},
      // Inside dictionaries every value keeps its type: digits stay text, integers integers,
      // text that reads as a bool or a double stays text.
      {"Entries", DefaultsArray{DefaultsDictionary{{"id", 7LL}, {"code", std::string("0042")}},
                                DefaultsDictionary{{"id", -1LL}, {"code", std::string("true")}},
                                DefaultsDictionary{{"id", 2.5}, {"code", std::string("2.5")}}}},
      {"Entry", DefaultsArray{DefaultsDictionary{{"n", 2147483647LL}}}},
  };
  QTemporaryDir dir;
  RecordingLog log;
  const QString path = dir.filePath("sub/zellick.ini");
  QSettingsDefaults d(path, log);
  for (const auto& row : table) d.setObject(row.key, row.stored);
  EXPECT_FALSE(reopen(dir, path, log)->objectForKey("Big").has_value())
      << "nothing written before synchronize";
  // A writer killed between creating its lock file and filling it must not hold up the next
  // save (QSettings alone waits 30 s on such a file), whether it died just now or long ago.
  const auto saveDespiteDeadLock = [&](int ageSeconds) {
    ASSERT_TRUE(QDir().mkpath(dir.filePath("sub")));  // before the first save makes it
    QFile lock(path + ".lock");
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.setFileTime(QDateTime::currentDateTime().addSecs(-ageSeconds),
                     QFileDevice::FileModificationTime);
    lock.close();
    QElapsedTimer t;
    t.start();
    EXPECT_TRUE(d.synchronize()) << "lock aged " << ageSeconds << " s";
    EXPECT_LT(t.elapsed(), 1000) << "lock aged " << ageSeconds << " s";
  };
  saveDespiteDeadLock(0);

  auto fresh = reopen(dir, path, log);
  for (const auto& row : table) {
    auto got = fresh->objectForKey(row.key);
    ASSERT_TRUE(got.has_value()) << row.key;
    EXPECT_TRUE(*got == row.readBack.value_or(row.stored)) << row.key;
  }
  EXPECT_EQ(fresh->integerForKey("Negative"), -7);
  d.removeObjectForKey("Text");
  saveDespiteDeadLock(60);
  EXPECT_FALSE(reopen(dir, path, log)->objectForKey("Text").has_value());
  EXPECT_EQ(log.lines.size(), 2u) << "one line for each dead lock, nothing else";
}

// Whatever is in the file, reading gives a value or a safe default, the damage is worth at most
// one log line, and the next save repairs the file. Lines that do not parse are reported on
// opening; values that parse but mean nothing are left to whoever reads them.
TEST(SettingsDefaults, CorruptFileReadsWhatItCanAndIsSavedOver) {
  struct Case {
    const char* name;
    const char* content;
    long long buttonId;  // as read before the save
    bool unparsable;
  };
  const Case cases[] = {
      {"binary", "\x01\x02\xff\xfe\n\x7f", 0, true},
      {"bad variant", "[General]\nButtonId=@Variant(\\xff\\xff)\nDateOfInactive=@DateTime(zzz)\n",
       0, false},
      {"junk lines", "[General]\n=====\nButtonId\n\"3\n[[[junk\nButtonId=3\n", 0, true},
      {"unclosed section", "[General\nButtonId=3\n", 3, true},
  };
  for (const Case& c : cases) {
    QTemporaryDir dir;
    RecordingLog log;
    const QString path = dir.filePath("zellick.ini");
    writeFile(path, c.content);
    QSettingsDefaults d(path, log);
    EXPECT_EQ(d.integerForKey("ButtonId"), c.buttonId) << c.name;
    for (const char* k : {"Counters", "ButtonId", "DateOfInactive"}) {
      (void)d.integerForKey(k);
      (void)d.arrayForKey(k);
    }
    EXPECT_LE(log.lines.size(), 1u) << c.name;
    EXPECT_GE(log.lines.size(), c.unparsable ? 1u : 0u)
        << c.name << ": unparsable lines go unlogged";
    d.setObject("ButtonId", 2LL);
    EXPECT_TRUE(d.synchronize()) << c.name;
    EXPECT_EQ(reopen(dir, path, log)->integerForKey("ButtonId"), 2) << c.name;
  }
}

TEST(SettingsDefaults, FailedWriteReportsAndKeepsChangesPending) {
  QTemporaryDir dir;
  writeFile(dir.filePath("file"), {});
  RecordingLog log;
  QSettingsDefaults d(dir.filePath("file/zellick.ini"), log);  // its folder is a plain file
  d.setObject("TapValue", 3LL);
  EXPECT_FALSE(d.synchronize());
  EXPECT_EQ(log.lines.size(), 1u);
  // The next save, once it can be made, carries the change.
  ASSERT_TRUE(QFile::remove(dir.filePath("file")) && QDir().mkpath(dir.filePath("file")));
  EXPECT_TRUE(d.synchronize());
  EXPECT_EQ(reopen(dir, dir.filePath("file/zellick.ini"), log)->integerForKey("TapValue"), 3);
}

// Saves asked for in the background return at once, and many of them make one write that carries
// the latest values. (Keys set from two threads: the catalogue test below.)
TEST(SettingsDefaults, BackgroundSavesCoalesceAndCarryTheLatestValues) {
  QTemporaryDir dir;
  LockedLog log;
  const QString path = dir.filePath("zellick.ini");
  QSettingsDefaults d(path, log);
  // An empty lock file made just now holds the first write back for its grace period.
  writeFile(path + ".lock", {});
  Watch writes(dir.path(), IN_MOVED_TO | IN_CREATE);
  QElapsedTimer t;
  t.start();
  for (long long i = 1; i <= 50; ++i) {
    d.setInteger("TapValue", i);
    d.synchronizeInBackground();
  }
  EXPECT_LT(t.elapsed(), 100) << "the callers waited for the disk";
  EXPECT_TRUE(d.hasUnsavedChanges());
  ASSERT_TRUE(eventually([&] { return !d.hasUnsavedChanges(); }));
  EXPECT_LE(writes.count("zellick.ini"), 2) << "50 requests were not coalesced";
  EXPECT_EQ(reopen(dir, path, log)->integerForKey("TapValue"), 50);

  // A change made while a save is writing is not taken for saved by it.
  const auto inode = [&path] {
    struct stat st {};
    stat(qPrintable(path), &st);
    return st.st_ino;
  };
  const ino_t before = inode();
  d.setObject("Text", std::string(8 << 20, 'x'));  // long enough to write for a while
  d.setInteger("TapValue", 51);
  d.synchronizeInBackground();
  QThread::msleep(10);
  ASSERT_EQ(inode(), before) << "the save ended before the change";
  d.setInteger("TapValue", 52);
  d.synchronizeInBackground();
  ASSERT_TRUE(eventually([&] { return !d.hasUnsavedChanges(); }));
  EXPECT_EQ(d.integerForKey("TapValue"), 52);
  EXPECT_EQ(reopen(dir, path, log)->integerForKey("TapValue"), 52);

  EXPECT_EQ(log.lines().size(), 1u) << "the lock's line only";
}

// A FIFO (a blocking open would hang the start), a folder or a link to either is never opened:
// one line, then the store keeps its values in memory and saves report success without a word.
TEST(SettingsDefaults, PathThatIsNoFileIsNeverOpened) {
  struct Case {
    const char* name;
    const char* kind;  // as the log line says
    std::function<bool(const QString&)> make;
  };
  const Case cases[] = {
      {"FIFO", "a FIFO", [](const QString& p) { return mkfifo(qPrintable(p), 0600) == 0; }},
      {"folder", "a folder", [](const QString& p) { return QDir().mkdir(p); }},
      {"link to a FIFO", "a FIFO",
       [](const QString& p) {
         return mkfifo(qPrintable(p + ".target"), 0600) == 0 && QFile::link(p + ".target", p);
       }},
  };
  for (const Case& c : cases) {
    QTemporaryDir dir;
    LockedLog log;
    const QString path = dir.filePath("zellick.ini");
    ASSERT_TRUE(c.make(path)) << c.name;
    const QStringList before = QDir(dir.path()).entryList(QDir::AllEntries | QDir::System);
    Watch opened(QFileInfo(path).canonicalFilePath(), IN_OPEN | IN_ACCESS | IN_MODIFY);
    QSettingsDefaults d(path, log);
    EXPECT_FALSE(d.objectForKey("ButtonId").has_value()) << c.name;
    d.setInteger("ButtonId", 2);
    EXPECT_TRUE(d.synchronize()) << c.name;
    d.setInteger("TapValue", 3);
    d.synchronizeInBackground();
    EXPECT_TRUE(eventually([&] { return !d.hasUnsavedChanges(); })) << c.name;
    EXPECT_TRUE(d.synchronize()) << c.name;
    EXPECT_EQ(d.integerForKey("ButtonId") * 10 + d.integerForKey("TapValue"), 23) << c.name;
    EXPECT_EQ(opened.count(), 0) << c.name;
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::System), before)
        << c.name << ": something was written beside it";
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u) << c.name;
    EXPECT_NE(lines[0].find(path.toStdString() + " is " + c.kind), std::string::npos) << lines[0];
  }
}

// The bytes QSettings writes for `value` under `key`.
QByteArray writtenByQt(const char* key, const QVariant& value) {
  QTemporaryDir dir;
  {
    QSettings s(dir.filePath("w.ini"), QSettings::IniFormat);
    s.setValue(key, value);
  }
  return readFile(dir.filePath("w.ini"));
}

QVariant nestedLists(int depth) {
  QVariant v = 1;
  for (int i = 0; i < depth; ++i) v = QVariantList{v};
  return v;
}

// A file QSettings could not parse safely is moved aside, never over another file, and the
// store starts empty; one QSettings wrote itself is read, with a line for each oddity in it.
TEST(SettingsDefaults, UnsafeFileIsMovedAsideAndLegitOneRead) {
  QByteArray deep = "[General]\nButtonId=2\nDeep=@Variant(";
  for (int i = 0; i < 50000; ++i) deep += "\\0\\0\\0\\t\\0\\0\\0\\x1";  // a list of one
  deep += "\\0\\0\\0\\x2\\0\\0\\0\\x1)\n";
  QVariantList catalogue;
  for (int i = 0; i < 2000; ++i) {
    catalogue << QVariantMap{{"name", QString("Item %1, \"%1\"").arg(i)},
                             {"count", i},
                             {"seen", QDateTime::currentDateTimeUtc()}};
  }
  struct Case {
    const char* name;
    QByteArray bytes;
    bool unsafe;
    std::vector<std::string> lines;  // what the lines say, for a file that is read
    std::function<bool(const QSettingsDefaults&)> reads = [](auto&) { return true; };
  };
  const Case cases[] = {
      {"50,000 nested lists", deep, true, {}},
      {"nested one too deep", writtenByQt("Deep", nestedLists(33)), true, {}},
      {"type we cannot walk", "Size=@Variant(\\0\\0\\0\\x87?\\xc0\\0\\0)\n", true, {}},
      {"not UTF-8", "ButtonId=2\nName=caf\xe9\n", true, {}},
      {"line over 16 MiB", "ButtonId=2\nText=" + QByteArray((16 << 20) + 1, 'x'), true, {}},
      {"file over 32 MiB", "ButtonId=2\n;" + QByteArray(32 << 20, ';'), true, {}},
      {"nested as deep as allowed",
       writtenByQt("Deep", nestedLists(32)),
       false,
       {},
       [](auto& d) { return d.arrayForKey("Deep").has_value(); }},
      {"catalogue of 2,000 maps",
       writtenByQt("Catalogue", catalogue),
       false,
       {},
       [](auto& d) { return d.arrayForKey("Catalogue")->size() == 2000; }},
      {"repeated key",
       "[General]\nButtonId=1\nTapValue=3\n[general]\nButtonId=2\n",
       false,
       {"key \"ButtonId\" is given 2 times in [General]; the last one is used"},
       [](auto& d) { return d.integerForKey("ButtonId") == 2; }},
      {"foreign sections",
       "ButtonId=2\n[Window]\nWidth=3\nHeight=4\n[" + QByteArray(100, 'w') + "]\nX=1\n",
       false,
       {"section \"Window\" holds 2 key(s) the app does not read",
        "section \"" + std::string(80, 'w') + "...\" holds 1 key(s)"},
       [](auto& d) { return d.integerForKey("ButtonId") == 2; }},
  };
  for (const Case& c : cases) {
    QTemporaryDir dir;
    LockedLog log;
    const QString path = dir.filePath("defaults.ini");
    writeFile(path, c.bytes);
    // Files that already bear the names of this second and the next two are never replaced.
    const QDateTime now = QDateTime::currentDateTime();
    QStringList taken;
    for (int s = 0; s < 3; ++s) {
      taken << "defaults.ini.unreadable-" + now.addSecs(s).toString("yyyyMMdd-HHmmss");
      writeFile(dir.filePath(taken.back()), "keep");
    }
    QSettingsDefaults d(path, log);
    QStringList aside = QDir(dir.path()).entryList({"defaults.ini.unreadable-*"});
    for (const QString& name : taken) {
      EXPECT_TRUE(readFile(dir.filePath(name)) == "keep") << c.name;
      aside.removeOne(name);
    }
    const auto lines = log.lines();
    if (c.unsafe) {
      ASSERT_EQ(aside.size(), 1) << c.name;
      EXPECT_TRUE(QRegularExpression(R"(^defaults\.ini\.unreadable-\d{8}-\d{6}-\d+$)")
                      .match(aside[0])
                      .hasMatch())
          << aside[0].toStdString();
      EXPECT_TRUE(readFile(dir.filePath(aside[0])) == c.bytes) << c.name;
      EXPECT_FALSE(QFile::exists(path)) << c.name;
      EXPECT_FALSE(d.objectForKey("ButtonId").has_value()) << c.name;
      ASSERT_EQ(lines.size(), 1u) << c.name;
      EXPECT_NE(lines[0].find(dir.filePath(aside[0]).toStdString()), std::string::npos) << lines[0];
    } else {
      EXPECT_TRUE(aside.isEmpty()) << c.name;
      EXPECT_TRUE(c.reads(d)) << c.name;
      ASSERT_EQ(lines.size(), c.lines.size()) << c.name;
      for (size_t i = 0; i < lines.size(); ++i) {
        EXPECT_NE(lines[i].find(c.lines[i]), std::string::npos) << lines[i];
      }
    }
  }
}

// A save the system refuses part-way (here the file size limit, with SIGXFSZ ignored as the app
// does) is reported, leaves the old file whole and nothing beside it, and keeps the changes.
TEST(SettingsDefaults, WriteCutShortKeepsOldFileAndChanges) {
  for (const bool inBackground : {false, true}) {
    QTemporaryDir dir;
    LockedLog log;
    const QString path = dir.filePath("zellick.ini");
    QSettingsDefaults d(path, log);
    d.setInteger("ButtonId", 2);
    ASSERT_TRUE(d.synchronize());
    const QByteArray before = readFile(path);
    const QStringList entries = QDir(dir.path()).entryList(QDir::Files);

    d.setObject("Text", std::string(8000, 'x'));
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 2048;  // room for the lock file, not for the settings
    setrlimit(RLIMIT_FSIZE, &small);
    if (inBackground) {
      d.synchronizeInBackground();
      EXPECT_TRUE(eventually([&] { return log.lines().size() == 1; }));
    } else {
      EXPECT_FALSE(d.synchronize());
    }
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);

    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 1u) << inBackground;
    EXPECT_NE(lines[0].find("changes not saved"), std::string::npos) << lines[0];
    EXPECT_TRUE(d.hasUnsavedChanges()) << inBackground;
    EXPECT_EQ(readFile(path), before) << inBackground;
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), entries) << inBackground;
    EXPECT_TRUE(d.synchronize()) << inBackground;
    EXPECT_EQ(reopen(dir, path, log)->objectForKey("Text"), DefaultsValue(std::string(8000, 'x')));
  }
}

// The catalogue refreshed on another thread (as the HTTP client's is) while the main thread
// saves the count again and again: every file the main thread's saves leave has both, and a
// fresh reader finds the last of each with their types (digits of an id stay text, with their
// leading zero).
TEST(SettingsDefaults, CatalogueRefreshedBesideTheCountKeepsBothWithTheirTypes) {
  constexpr int kEntries = 300, kRounds = 20;
  std::vector<std::string> feeds;
  std::vector<DefaultsArray> lists;  // what each feed must leave, sorted by priority
  for (int round = 0; round < kRounds; ++round) {
    std::string xml = "<apps>";
    DefaultsArray sorted;
    for (long long i = 1; i <= kEntries; ++i) {
      const std::string id = std::to_string(i), name = "App " + id + "/" + std::to_string(round),
                        appleid = "0" + std::to_string(310000000 + i);
      xml += "<app><appid>" + id + "</appid><appname>" + name + "</appname><appleid>" + appleid +
             "</appleid><priority>" + std::to_string(kEntries - i) + "</priority></app>";
      sorted.insert(sorted.begin(), DefaultsDictionary{{kAppIdKey, i},
                                                       {kAppNameKey, name},
                                                       {kAppleIdKey, appleid},
                                                       {kPriorityKey, kEntries - i}});
    }
    feeds.push_back(xml + "</apps>");
    lists.push_back(std::move(sorted));
  }
  struct NoNetwork : HttpClient {
    void send(HttpRequest, std::function<void(HttpReply)>) override {}
  } http;
  QTemporaryDir dir;
  LockedLog log;
  const QString path = dir.filePath("zellick.ini");
  QSettingsDefaults d(path, log);
  fake::MemoryDocuments documents;
  fake::FakeBundle bundle({});
  fake::VirtualTime time;
  fake::WallClock clock(time, 1800000000);
  fake::RecordingLog appsLog;  // the refresh thread's alone
  orvapps apps({http, d, documents, bundle, clock, appsLog}, Configuration::shipped());
  std::atomic<int> refreshed{0};
  std::thread refresh([&] {
    for (const std::string& feed : feeds) {
      apps.receiveList(feed);
      ++refreshed;
    }
  });
  long long count = 0;
  int checked = 0;
  while (refreshed < kRounds) {
    ++count;
    d.setObject("Counters", DefaultsArray{count, count % 7, 0LL});
    d.setInteger("ButtonId", 1 + count % 3);
    if (count % 10 != 0) {
      d.synchronizeInBackground();
      continue;
    }
    const bool stored = refreshed > 0;
    ASSERT_TRUE(d.synchronize());
    auto fresh = reopen(dir, path, log);
    const auto counters = fresh->arrayForKey("Counters");
    ASSERT_TRUE(counters && intValue(counters->at(0)) == count) << count;
    if (stored) {
      const auto list = fresh->arrayForKey(kMoreAppsKey);
      ASSERT_TRUE(list && std::find(lists.begin(), lists.end(), *list) != lists.end()) << count;
      ++checked;
    }
  }
  refresh.join();
  ASSERT_TRUE(d.synchronize());
  auto fresh = reopen(dir, path, log);
  EXPECT_EQ(fresh->arrayForKey(kMoreAppsKey), lists.back());
  EXPECT_EQ(fresh->integerForKey("ButtonId"), 1 + count % 3);
  EXPECT_EQ(fresh->arrayForKey("Counters"),
            (DefaultsArray{std::to_string(count), std::to_string(count % 7), std::string("0")}));
  EXPECT_TRUE(std::holds_alternative<Date>(fresh->objectForKey(kLastUpdateKey).value_or(0LL)));
  EXPECT_TRUE(log.lines().empty());
  EXPECT_GT(checked, 0) << "the count was never saved while a list was stored";
}

}  // namespace
}  // namespace zellick::test
