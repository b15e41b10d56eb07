#include <gtest/gtest.h>

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include "platform/qt/settings_defaults.h"
#include "recording_log.h"

using zellick::Date;
using zellick::DefaultsArray;
using zellick::DefaultsValue;
using zellick::qt::QSettingsDefaults;

namespace zellick {
// Readable failures: the value as text, arrays in brackets, dates marked.
void PrintTo(const DefaultsValue& v, std::ostream* os) {
  std::visit(
      [os](const auto& x) {
        using T = std::decay_t<decltype(x)>;
        if constexpr (std::is_same_v<T, Date>) {
          *os << "Date(" << std::fixed << x.seconds << ")";
        } else if constexpr (std::is_same_v<T, DefaultsArray>) {
          *os << "[";
          for (const auto& e : x) {
            PrintTo(e, os);
            *os << " ";
          }
          *os << "]";
        } else if constexpr (std::is_same_v<T, std::string>) {
          *os << '"' << x << '"';
        } else {
          *os << x;
        }
      },
      static_cast<const DefaultsValue::variant&>(v));
}
}  // namespace zellick

namespace {

// QSettings caches files by path inside a process, so every read-back goes through a copy
// that no QSettings has seen: what it yields is what a new process would read.
std::unique_ptr<QSettingsDefaults> reopen(const QTemporaryDir& dir, const QString& path, RecordingLog& log) {
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

TEST(SettingsDefaults, EveryTypeReadsBackInAFreshReader) {
  const std::vector<RoundTrip> table = {
      {"Int", 42LL, std::string("42")},
      {"Negative", -7LL, std::string("-7")},
      {"Big", 9000000000LL, std::string("9000000000")},
      {"Double", 3.25, 3.25},
      {"True", true, true},
      {"False", false, false},
      {"Text", std::string("a, b"), std::string("a, b")},
      {"Empty text", std::string(), std::string()},
      {"Date", Date{1763860000.123}, Date{1763860000.123}},
      {"Counters", DefaultsArray{11LL, -22LL, 4000000000LL},
       DefaultsArray{std::string("11"), std::string("-22"), std::string("4000000000")}},
      {"One", DefaultsArray{7LL}, DefaultsArray{7LL}},
      {"None", DefaultsArray{}, DefaultsArray{}},
      {"Nested", DefaultsArray{DefaultsArray{1LL}, std::string("x")},
       DefaultsArray{DefaultsArray{1LL}, std::string("x")}},
      {"Dates", DefaultsArray{Date{0.5}, Date{-86400.25}}, DefaultsArray{Date{0.5}, Date{-86400.25}}},
  };
  QTemporaryDir dir;
  RecordingLog log;
  const QString path = dir.filePath("sub/zellick.ini");
  QSettingsDefaults d(path, log);
  for (const auto& row : table) d.setObject(row.key, row.stored);
  EXPECT_EQ(*d.objectForKey("Int"), DefaultsValue(42LL));  // pending values read as set
  ASSERT_TRUE(d.synchronize());

  auto fresh = reopen(dir, path, log);
  for (const auto& row : table) {
    auto got = fresh->objectForKey(row.key);
    ASSERT_TRUE(got.has_value()) << row.key;
    EXPECT_EQ(*got, row.readBack) << row.key;
  }
  EXPECT_EQ(fresh->integerForKey("Negative"), -7);
  EXPECT_EQ(fresh->arrayForKey("Counters")->size(), 3u);
  EXPECT_TRUE(log.lines.empty());
}

TEST(SettingsDefaults, NothingReachesTheFileBeforeSynchronize) {
  QTemporaryDir dir;
  RecordingLog log;
  const QString path = dir.filePath("zellick.ini");
  QSettingsDefaults d(path, log);
  d.setObject("Kept", 1LL);
  d.setObject("Gone", 2LL);
  ASSERT_TRUE(d.synchronize());

  d.setObject("Kept", 5LL);
  d.removeObjectForKey("Gone");
  EXPECT_FALSE(d.objectForKey("Gone").has_value());
  EXPECT_EQ(reopen(dir, path, log)->integerForKey("Kept"), 1);
  EXPECT_TRUE(reopen(dir, path, log)->objectForKey("Gone").has_value());

  ASSERT_TRUE(d.synchronize());
  auto fresh = reopen(dir, path, log);
  EXPECT_EQ(fresh->integerForKey("Kept"), 5);
  EXPECT_FALSE(fresh->objectForKey("Gone").has_value());
}

struct Damaged {
  const char* name;
  const char* content;
  const char* key;
  std::optional<DefaultsValue> expect;
};

void PrintTo(const Damaged& c, std::ostream* os) { *os << c.name; }

class DamagedFile : public testing::TestWithParam<Damaged> {};

// Whatever is in the file, reading gives a value or nothing, and the next save repairs the file.
TEST_P(DamagedFile, ReadsWhatItCanAndSavesOverIt) {
  QTemporaryDir dir;
  RecordingLog log;
  const QString path = dir.filePath("zellick.ini");
  QFile f(path);
  ASSERT_TRUE(f.open(QIODevice::WriteOnly));
  f.write(GetParam().content);
  f.close();

  QSettingsDefaults d(path, log);
  EXPECT_EQ(d.objectForKey(GetParam().key), GetParam().expect);
  for (const char* k : {"Counters", "Timers", "ButtonId", "DateOfInactive", "TapValue"}) {
    (void)d.objectForKey(k);
    (void)d.integerForKey(k);
    (void)d.arrayForKey(k);
  }
  d.setObject("ButtonId", 2LL);
  EXPECT_TRUE(d.synchronize());
  EXPECT_EQ(reopen(dir, path, log)->integerForKey("ButtonId"), 2);
}

INSTANTIATE_TEST_SUITE_P(
    SettingsDefaults, DamagedFile,
    testing::Values(
        Damaged{"Binary", "\x01\x02\xff\xfe\n\x7f", "Counters", std::nullopt},
        Damaged{"NoSectionHeader", "Counters=1, 2, 3\n", "Counters",
                DefaultsArray{std::string("1"), std::string("2"), std::string("3")}},
        Damaged{"BadVariant", "[General]\nCounters=@Variant(\\xff\\xff)\n", "Counters", DefaultsArray{}},
        Damaged{"BadDate", "[General]\nDateOfInactive=@DateTime(zzz)\n", "DateOfInactive", DefaultsArray{}},
        Damaged{"WrongType", "[General]\nButtonId=1, 2\n", "ButtonId",
                DefaultsArray{std::string("1"), std::string("2")}},
        Damaged{"Text", "[General]\nTapValue=three\n", "TapValue", std::string("three")},
        Damaged{"UnbalancedQuote", "[General]\nTapValue=\"3\n", "TapValue", std::string("3\n")},
        Damaged{"LinesWithoutValues", "[General]\n=====\nButtonId\n\nTapValue=2\n", "TapValue",
                std::string("2")},
        Damaged{"StraySection", "[General]\nTapValue=2\n[[[junk\nButtonId=3\n", "ButtonId", std::nullopt}),
    [](const auto& info) { return std::string(info.param.name); });

// A writer killed between creating its lock file and filling it must not hold up the next save
// (QSettings alone waits 30 s on such a file).
TEST(SettingsDefaults, EmptyLockOfADeadWriterDoesNotBlock) {
  for (const int ageSeconds : {0, 60}) {
    QTemporaryDir dir;
    RecordingLog log;
    const QString path = dir.filePath("zellick.ini");
    QFile lock(path + ".lock");
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.setFileTime(QDateTime::currentDateTime().addSecs(-ageSeconds), QFileDevice::FileModificationTime);
    lock.close();
    QSettingsDefaults d(path, log);
    d.setObject("TapValue", 2LL);
    QElapsedTimer t;
    t.start();
    EXPECT_TRUE(d.synchronize());
    EXPECT_LT(t.elapsed(), 1000) << "lock aged " << ageSeconds << " s";
    EXPECT_EQ(reopen(dir, path, log)->integerForKey("TapValue"), 2);
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
  EXPECT_EQ(d.integerForKey("TapValue"), 3);

  ASSERT_TRUE(blocker.remove());  // the next save gets through, though an earlier one failed
  EXPECT_TRUE(d.synchronize());
  EXPECT_EQ(reopen(dir, dir.filePath("file/zellick.ini"), log)->integerForKey("TapValue"), 3);
}

}  // namespace
