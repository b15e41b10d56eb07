#include "harness.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <csignal>
#include <cstdio>
#include <ctime>

#include "platform/fake/services.h"
#include "platform/qt/settings_defaults.h"
#include "services/apps.h"

namespace zellick::test {

double monotonicMs() {
  timespec t{};
  clock_gettime(CLOCK_MONOTONIC, &t);
  return static_cast<double>(t.tv_sec) * 1000.0 + static_cast<double>(t.tv_nsec) / 1e6;
}

Args::Args(const QStringList& args, int first) {
  for (int i = first; i + 1 < args.size(); i += 2) values[args[i]] = args[i + 1];
}

double Args::number(const char* key, double fallback) const {
  bool ok = false;
  const double v = values.value(key).toDouble(&ok);
  return ok ? v : fallback;
}

std::optional<Args> rowArgs(const QCoreApplication& qapp, const char* program) {
  Args args(qapp.arguments(), 1);
  if (!args.text("--app").isEmpty()) return args;
  std::fprintf(stderr, "usage: %s --app PATH [--only NAME]\n", program);
  return std::nullopt;
}

QProcessEnvironment appEnvironment(const QTemporaryDir& dir, const QString& settings,
                                   const std::string& makerUrl) {
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
  // Every service on loopback: a port nobody listens on refuses at once, no name is looked up.
  const QString refused = QStringLiteral("http://127.0.0.1:9/");
  env.insert("ZELLICK_MAKER_URL", makerUrl.empty() ? refused : QString::fromStdString(makerUrl));
  env.insert("ZELLICK_AD_PRIMARY_URL", refused);
  env.insert("ZELLICK_AD_FALLBACK_URL", refused);
  return env;
}

App::App(const QString& path, const QProcessEnvironment& env, const QStringList& args,
         const QString& log)
    : logFile(log) {
  process.setProcessEnvironment(env);
  process.setStandardErrorFile(log, QIODevice::Append);
  process.start(path, args);
  if (!process.waitForStarted(10000))
    std::fprintf(stderr, "the app did not start: %s\n", qPrintable(process.errorString()));
}

void App::gather(int ms) {
  QElapsedTimer t;
  t.start();
  do {
    process.waitForReadyRead(std::max<qint64>(1, ms - t.elapsed()));
    out += process.readAllStandardOutput();
  } while (t.elapsed() < ms && process.state() == QProcess::Running);
}

bool App::waitFor(const char* text, int ms) {
  QElapsedTimer t;
  t.start();
  while (!out.contains(text) && t.elapsed() < ms && process.state() == QProcess::Running) {
    process.waitForReadyRead(50);
    out += process.readAllStandardOutput();
  }
  return out.contains(text);
}

bool App::end(int signo, int ms) {
  if (process.state() != QProcess::NotRunning) ::kill(pid(), signo);
  // Gathering may already have seen it end, and waiting then reports no end.
  const bool ended = process.state() == QProcess::NotRunning || process.waitForFinished(ms);
  out += process.readAllStandardOutput();
  if (!ended) {
    process.kill();
    process.waitForFinished();
  }
  return ended;
}

bool App::endedNormally() const {
  return process.state() == QProcess::NotRunning && process.exitStatus() == QProcess::NormalExit &&
         process.exitCode() == 0;
}

QByteArray App::log() const { return readFile(logFile); }

void writeFile(const QString& path, const QByteArray& bytes) {
  QFile f(path);
  if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
    std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
}

QByteArray readFile(const QString& path) {
  QFile f(path);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QByteArray seededSettings(const QString& scratchDir, const DefaultsDictionary& extra) {
  const QString path = QDir(scratchDir).filePath("seed.ini");
  QFile::remove(path);
  const auto array = [](const std::vector<int>& v) {
    DefaultsArray a;
    for (int i : v) a.emplace_back(std::in_place_type<long long>, i);
    return a;
  };
  {
    fake::RecordingLog log;
    qt::QSettingsDefaults d(path, log);
    d.setObject("Counters", array(kCounters));
    d.setObject("Timers", array(kTimers));
    d.setObject("TotalForAvg", array(kTotalForAvg));
    d.setInteger("ButtonId", kButtonId);
    d.setObject("DateOfInactive", Date{1700000000.5});
    d.setInteger("TapValue", kTapValue);
    for (const auto& [key, value] : extra) d.setObject(key, value);
    d.synchronize();
  }
  return readFile(path);
}

bool SavedState::holdsSeed() const {
  return whole() && counters == kCounters && timers == kTimers && totalForAvg == kTotalForAvg &&
         buttonId == kButtonId && tapValue == kTapValue;
}

namespace {

std::vector<int> readInts(const UserDefaults& d, const char* key, size_t length,
                          std::vector<std::string>& problems) {
  std::vector<int> out;
  const auto array = d.arrayForKey(key);
  if (!array) {
    problems.push_back(std::string(key) + (d.objectForKey(key) ? " is not an array" : " missing"));
    return out;
  }
  if (array->size() != length)
    problems.push_back(std::string(key) + " has " + std::to_string(array->size()) + " elements");
  for (const auto& e : *array) {
    auto i = intValue(e);
    if (!i) problems.push_back(std::string(key) + " has an element with no number");
    out.push_back(i.value_or(0));
  }
  return out;
}

}  // namespace

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
  {
    fake::RecordingLog log;
    qt::QSettingsDefaults d(copy, log);
    for (const auto& l : log.lines) s.problems.push_back("reader: " + l);
    s.counters = readInts(d, "Counters", 3, s.problems);
    s.timers = readInts(d, "Timers", 12, s.problems);
    s.totalForAvg = readInts(d, "TotalForAvg", 3, s.problems);
    for (const char* k : {"ButtonId", "TapValue"}) {
      auto v = d.objectForKey(k);
      if (!v || !intValue(*v)) s.problems.push_back(std::string(k) + " missing or not a number");
    }
    s.buttonId = static_cast<int>(d.integerForKey("ButtonId"));
    s.tapValue = static_cast<int>(d.integerForKey("TapValue"));
    s.catalogue = d.arrayForKey(kMoreAppsKey);
    s.refreshed = d.objectForKey(kLastUpdateKey).has_value();
    auto date = d.objectForKey("DateOfInactive");
    if (date && std::holds_alternative<Date>(*date))
      s.dateOfInactive = std::get<Date>(*date);
    else
      s.problems.push_back("DateOfInactive missing or not a date");
  }
  QFile::remove(copy);
  return s;
}

int runRows(const char* title, const std::vector<std::string>& names, const QString& only,
            const std::function<std::vector<std::string>(std::size_t, std::string&)>& check) {
  int ran = 0, failed = 0;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!only.isEmpty() && only.toStdString() != names[i]) continue;
    ++ran;
    std::string note;
    const std::vector<std::string> problems = check(i, note);
    std::printf("%-28s %s  %s\n", names[i].c_str(), problems.empty() ? "ok" : "FAILED",
                note.c_str());
    for (const std::string& p : problems) std::printf("    %s\n", p.c_str());
    std::fflush(stdout);
    failed += !problems.empty();
  }
  std::printf("%s: rows=%d passed=%d failed=%d\n", title, ran, ran - failed, failed);
  return failed == 0 && ran > 0 ? 0 : 1;
}

}  // namespace zellick::test
