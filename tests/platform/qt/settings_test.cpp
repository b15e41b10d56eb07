#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include "platform/fake/services.h"
#include "platform/qt/settings_defaults.h"

namespace zellick::test {

using fake::RecordingLog;
using qt::QSettingsDefaults;

namespace {

// QSettings caches files by path inside a process, so every read-back goes through a copy
// that no QSettings has seen: what it yields is what a new process would read.
std::unique_ptr<QSettingsDefaults> reopen(const QTemporaryDir& dir, const QString& path,
                                          RecordingLog& log) {
  static int n = 0;
  const QString copy = dir.filePath(QString("copy%1.ini").arg(++n));
  if (QFile::exists(path)) {
    EXPECT_TRUE(QFile::copy(path, copy));
  }
  return std::make_unique<QSettingsDefaults>(copy, log);
}

struct RoundTrip {
  const char* key;
  DefaultsValue stored;
  DefaultsValue readBack;  // INI keeps no integer type: integers return as their text
};

// A fresh reader, as a new process would be, gets every type back, though dead writers' locks
// lay in the way of the saves.
TEST(SettingsDefaults, SavesEveryTypeForAFreshReaderPastDeadLocks) {
  const std::vector<RoundTrip> table = {
      {"Big", 9000000000LL, std::string("9000000000")},
      {"Negative", -7LL, std::string("-7")},
      {"Double", 3.25, 3.25},
      {"False", false, false},
      {"Text", std::string("a, b"), std::string("a, b")},
      {"Date", Date{1763860000.123}, Date{1763860000.123}},
      {"Counters", DefaultsArray{11LL, -22LL},
       DefaultsArray{std::string("11"), std::string("-22")}},
      {"One", DefaultsArray{7LL}, DefaultsArray{7LL}},
      {"None", DefaultsArray{}, DefaultsArray{}},
      {"Dates", DefaultsArray{Date{0.5}, Date{-86400.25}},
       DefaultsArray{Date{0.5}, Date{-86400.25}}},
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
    EXPECT_TRUE(*got == row.readBack) << row.key;
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
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(c.content);
    f.close();
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
  QFile blocker(dir.filePath("file"));
  ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
  blocker.close();
  RecordingLog log;
  QSettingsDefaults d(dir.filePath("file/zellick.ini"), log);  // its folder is a plain file
  d.setObject("TapValue", 3LL);
  EXPECT_FALSE(d.synchronize());
  EXPECT_EQ(log.lines.size(), 1u);
  // The next save gets through, though an earlier one failed and a dead writer's lock is left.
  ASSERT_TRUE(blocker.remove());
  ASSERT_TRUE(QDir().mkpath(dir.filePath("file")));
  // Fresh, so QSettings would not yet take it for stale.
  QFile lock(dir.filePath("file/zellick.ini.lock"));
  ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
  lock.close();
  QElapsedTimer t;
  t.start();
  EXPECT_TRUE(d.synchronize());
  EXPECT_LT(t.elapsed(), 1000);
  EXPECT_EQ(reopen(dir, dir.filePath("file/zellick.ini"), log)->integerForKey("TapValue"), 3);
}

}  // namespace
}  // namespace zellick::test
