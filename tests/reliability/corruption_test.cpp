// Starts the app on hand-damaged settings files: every key missing, of the wrong type, short,
// long or holding garbage, and whole files of junk. The app must start, quit normally (which
// saves), and the saved file must keep every value that was intact, with 0 for the elements
// that were missing or unreadable. Hostile starts (a value nested past what Qt's parser can
// take, a FIFO or a folder in the file's place, a file size limit below the file's size) must
// be over within 2 s, with their log line, leaving the path as it was (or the file moved aside).
//
//   zellick_corruption_test --app PATH [--only NAME]
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <sys/resource.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <map>

#include "harness.h"
#include "platform/fake/services.h"
#include "platform/qt/settings_defaults.h"

namespace {

using Ints = std::vector<int>;

const Ints kCounters{11, 22, 33};
const Ints kTimers{1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0};  // no clock running: no catch-up
const Ints kTotalForAvg{4, 5, 6};
const int kButtonId = 2;
const int kTapValue = 3;
const qint64 kHostileDeadlineMs = 2000;

// What the saved file must hold under a key after the app ran; nothing = the key was damaged
// beyond a rule (a scalar of the wrong type), so only its presence is checked.
struct Expect {
  std::optional<Ints> ints;
  bool extraAllowed = false;  // a long array may keep its tail
};

enum class Setup { File, Fifo, Folder };

struct Case {
  const char* name;
  std::function<QByteArray(QByteArray)> damage;
  std::map<std::string, Expect> expect;  // keys not named here must come back as they were
  const char* key = nullptr;             // the key damaged, looked for in the log
  // A hostile start: what stands at the path, the file size limit the app runs under (0: none),
  // and what its log line says.
  Setup setup = Setup::File;
  rlim_t fileSizeLimit = 0;
  const char* logs = nullptr;
  bool hostile() const { return logs != nullptr; }
};

// The file with `key`'s line replaced by `line` (or dropped when `line` is empty).
std::function<QByteArray(QByteArray)> setLine(const char* key, const char* line) {
  return [key = QByteArray(key), line = QByteArray(line)](QByteArray text) {
    QList<QByteArray> out;
    for (const QByteArray& l : text.split('\n')) {
      if (l.startsWith(key + "=")) {
        if (!line.isEmpty()) out.push_back(line);
      } else {
        out.push_back(l);
      }
    }
    return out.join('\n');
  };
}

std::function<QByteArray(QByteArray)> replaceAll(QByteArray with) {
  return [with](QByteArray) { return with; };
}

std::vector<Case> cases() {
  const Expect zeros3{Ints{0, 0, 0}};
  const Expect zeros12{Ints(12, 0)};
  const Expect anyScalar{};
  std::vector<Case> c = {
      {"Counters missing", setLine("Counters", ""), {{"Counters", zeros3}}, "Counters"},
      {"Counters short",
       setLine("Counters", "Counters=11, 22"),
       {{"Counters", {Ints{11, 22, 0}}}},
       "Counters"},
      {"Counters long",
       setLine("Counters", "Counters=11, 22, 33, 44"),
       {{"Counters", {kCounters, true}}},
       "Counters"},
      {"Counters garbage element",
       setLine("Counters", "Counters=11, zz, 33"),
       {{"Counters", {Ints{11, 0, 33}}}},
       "Counters"},
      {"Counters wrong type",
       setLine("Counters", "Counters=hello"),
       {{"Counters", zeros3}},
       "Counters"},
      {"Counters garbage",
       setLine("Counters", "Counters=@Variant(\\xff\\xff\\xff)"),
       {{"Counters", zeros3}},
       "Counters"},
      {"Timers missing", setLine("Timers", ""), {{"Timers", zeros12}}, "Timers"},
      {"Timers short",
       setLine("Timers", "Timers=1, 2, 3, 4, 5, 6"),
       {{"Timers", {Ints{1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0, 0}}}},
       "Timers"},
      {"Timers long",
       setLine("Timers", "Timers=1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 77"),
       {{"Timers", {kTimers, true}}},
       "Timers"},
      {"Timers garbage element",
       setLine("Timers", "Timers=1, 2, 3, 4, 5, ?, 7, 8, 9, 0, 0, 0"),
       {{"Timers", {Ints{1, 2, 3, 4, 5, 0, 7, 8, 9, 0, 0, 0}}}},
       "Timers"},
      {"Timers wrong type", setLine("Timers", "Timers=12"), {{"Timers", zeros12}}, "Timers"},
      {"TotalForAvg missing", setLine("TotalForAvg", ""), {{"TotalForAvg", zeros3}}, "TotalForAvg"},
      {"TotalForAvg short",
       setLine("TotalForAvg", "TotalForAvg=4, 5"),
       {{"TotalForAvg", {Ints{4, 5, 0}}}},
       "TotalForAvg"},
      {"TotalForAvg long",
       setLine("TotalForAvg", "TotalForAvg=4, 5, 6, 7, 8"),
       {{"TotalForAvg", {kTotalForAvg, true}}},
       "TotalForAvg"},
      {"TotalForAvg garbage",
       setLine("TotalForAvg", "TotalForAvg=\\x1\\x2"),
       {{"TotalForAvg", zeros3}},
       "TotalForAvg"},
      {"ButtonId missing", setLine("ButtonId", ""), {{"ButtonId", {Ints{1}}}}, "ButtonId"},
      {"ButtonId wrong type",
       setLine("ButtonId", "ButtonId=1, 2"),
       {{"ButtonId", anyScalar}},
       "ButtonId"},
      {"ButtonId garbage",
       setLine("ButtonId", "ButtonId=@Variant(\\0)"),
       {{"ButtonId", anyScalar}},
       "ButtonId"},
      {"TapValue missing", setLine("TapValue", ""), {{"TapValue", {Ints{1}}}}, "TapValue"},
      {"TapValue garbage",
       setLine("TapValue", "TapValue=three"),
       {{"TapValue", anyScalar}},
       "TapValue"},
      {"DateOfInactive missing", setLine("DateOfInactive", ""), {}, "DateOfInactive"},
      {"DateOfInactive wrong type",
       setLine("DateOfInactive", "DateOfInactive=5, 6"),
       {},
       "DateOfInactive"},
      {"DateOfInactive garbage",
       setLine("DateOfInactive", "DateOfInactive=@DateTime(zz)"),
       {},
       "DateOfInactive"},
      {"junk lines between keys",
       [](QByteArray t) { return t.replace("\nTapValue=", "\n=====\n\x01\x02 junk\nTapValue="); },
       {}},
      {"junk section at the end",
       [](QByteArray t) { return t + "\n[[[junk\nCounters=9, 9, 9\n"; },
       {}},
  };
  QByteArray deep = "Counters=@Variant(";
  for (int i = 0; i < 50000; ++i) deep += "\\0\\0\\0\\t\\0\\0\\0\\x1";  // a list of one
  deep += "\\0\\0\\0\\x2\\0\\0\\0\\x1)";
  Case empty{"empty file", replaceAll(""), {}};
  Case junk{"binary junk file", replaceAll(QByteArray("\x00\xff\xfe junk\n\x7f=\x01\n", 13)), {}};
  Case nested{"50,000 nested lists", setLine("Counters", deep), {}, "Counters"};
  nested.logs = "moved aside to";
  for (Case* whole : {&empty, &junk, &nested}) {
    whole->expect = {{"Counters", zeros3},
                     {"Timers", zeros12},
                     {"TotalForAvg", zeros3},
                     {"ButtonId", {Ints{1}}},
                     {"TapValue", {Ints{1}}}};
    c.push_back(*whole);
  }
  c.push_back({"FIFO", {}, {}, nullptr, Setup::Fifo, 0, "is a FIFO, not a file"});
  c.push_back({"folder", {}, {}, nullptr, Setup::Folder, 0, "is a folder, not a file"});
  Case limited{"file size limit", [](QByteArray t) { return t; }, {}};
  limited.fileSizeLimit = 128;  // room for the lock file, not for the settings
  limited.logs = "changes not saved";
  c.push_back(limited);
  return c;
}

QByteArray baseFile(const QTemporaryDir& dir) {
  const QString path = dir.filePath("base.ini");
  zellick::fake::RecordingLog log;
  zellick::qt::QSettingsDefaults d(path, log);
  auto array = [](const Ints& v) {
    zellick::DefaultsArray a;
    for (int i : v) a.emplace_back(std::in_place_type<long long>, i);
    return a;
  };
  d.setObject("Counters", array(kCounters));
  d.setObject("Timers", array(kTimers));
  d.setObject("TotalForAvg", array(kTotalForAvg));
  d.setInteger("ButtonId", kButtonId);
  d.setObject("DateOfInactive", zellick::Date{1700000000.5});
  d.setInteger("TapValue", kTapValue);
  d.synchronize();
  QFile f(path);
  f.open(QIODevice::ReadOnly);
  return f.readAll();
}

// Problems with `key` in the saved file against what was expected of it.
void check(const zellick::UserDefaults& d, const std::string& key, const Ints& original,
           const Expect& e, std::vector<std::string>& problems) {
  std::vector<std::string> found;
  Ints got;
  if (original.size() > 1) {
    got = zellick::test::readInts(d, key.c_str(), original.size(), found);
    if (e.extraAllowed && got.size() > original.size()) {
      std::erase_if(found,
                    [](const std::string& p) { return p.find(" elements") != std::string::npos; });
      got.resize(original.size());
    }
  } else {
    auto v = d.objectForKey(key);
    if (!v || !zellick::intValue(*v)) {
      found.push_back(key + " missing or not a number");
    } else {
      got = {*zellick::intValue(*v)};
    }
  }
  problems.insert(problems.end(), found.begin(), found.end());
  if (!found.empty() || !e.ints) return;
  if (got != *e.ints) {
    std::string text = key + " is";
    for (int i : got) text += " " + std::to_string(i);
    text += ", expected";
    for (int i : *e.ints) text += " " + std::to_string(i);
    problems.push_back(text);
  }
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  QString appPath, only;
  const QStringList args = app.arguments();
  for (int i = 1; i + 1 < args.size(); i += 2) {
    if (args[i] == "--app") appPath = args[i + 1];
    if (args[i] == "--only") only = args[i + 1];
  }
  if (appPath.isEmpty()) {
    std::fprintf(stderr, "usage: %s --app PATH [--only NAME]\n", argv[0]);
    return 2;
  }

  QTemporaryDir dir;
  const QByteArray base = baseFile(dir);
  const std::map<std::string, Ints> originals = {{"Counters", kCounters},
                                                 {"Timers", kTimers},
                                                 {"TotalForAvg", kTotalForAvg},
                                                 {"ButtonId", {kButtonId}},
                                                 {"TapValue", {kTapValue}}};
  int failed = 0, ran = 0, logged = 0;
  for (const Case& c : cases()) {
    if (!only.isEmpty() && only != c.name) continue;
    ++ran;
    const QString settings = dir.filePath(QString("case%1/defaults.ini").arg(ran));
    QTemporaryDir home;
    const QString folder = QFileInfo(settings).absolutePath();
    QDir().mkpath(folder);
    const QByteArray prepared = c.setup == Setup::File ? c.damage(base) : QByteArray();
    if (c.setup == Setup::Fifo) {
      mkfifo(QFile::encodeName(settings).constData(), 0600);
    } else if (c.setup == Setup::Folder) {
      QDir().mkpath(settings);
    } else {
      QFile f(settings);
      f.open(QIODevice::WriteOnly);
      f.write(prepared);
      f.close();
    }

    QProcess p;
    p.setProcessEnvironment(zellick::test::appEnvironment(home, settings));
    if (c.fileSizeLimit) {
      p.setChildProcessModifier([limit = c.fileSizeLimit] {
        const rlimit r{limit, limit};
        setrlimit(RLIMIT_FSIZE, &r);
      });
    }
    const double started = QDateTime::currentMSecsSinceEpoch() / 1000.0;
    QElapsedTimer took;
    took.start();
    p.start(appPath, {"--first-frame"});
    const bool finished = p.waitForFinished(30000);
    const qint64 tookMs = took.elapsed();
    const QByteArray err = p.readAllStandardError();

    std::vector<std::string> problems;
    if (!finished) {
      p.kill();
      p.waitForFinished();
      problems.push_back("the app did not quit within 30 s");
    } else if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
      problems.push_back("the app ended with status " + std::to_string(p.exitCode()) +
                         (p.exitStatus() == QProcess::CrashExit ? " (crash)" : ""));
    } else if (c.hostile() && tookMs > kHostileDeadlineMs) {
      problems.push_back("the app took " + std::to_string(tookMs) + " ms");
    }
    if (c.logs && !err.contains(c.logs))
      problems.push_back(std::string("no log line says ") + c.logs);
    const bool mentioned = c.key && err.contains(c.key);
    if (mentioned) ++logged;

    struct stat st {};
    const bool statted = lstat(QFile::encodeName(settings).constData(), &st) == 0;
    if (c.setup != Setup::File) {
      if (!statted || (c.setup == Setup::Fifo ? !S_ISFIFO(st.st_mode) : !S_ISDIR(st.st_mode)))
        problems.push_back("the path was replaced");
    } else if (c.fileSizeLimit) {
      QFile saved(settings);
      if (!saved.open(QIODevice::ReadOnly) || saved.readAll() != prepared)
        problems.push_back("the file the app could not save over is not as it was");
      // Beside it only the lock that keeps a second app off the file.
      if (QDir(folder).entryList(QDir::Files | QDir::Hidden) !=
          QStringList{"defaults.ini", "defaults.ini.instance"})
        problems.push_back("files were left beside it");
    } else {
      zellick::fake::RecordingLog log;
      zellick::qt::QSettingsDefaults d(settings, log);
      for (const auto& [key, original] : originals) {
        auto e = c.expect.find(key);
        check(d, key, original, e == c.expect.end() ? Expect{original} : e->second, problems);
      }
      auto date = d.objectForKey("DateOfInactive");
      if (!date || !std::holds_alternative<zellick::Date>(*date) ||
          std::fabs(std::get<zellick::Date>(*date).seconds - started) > 60) {
        problems.push_back("DateOfInactive is not the time of the save");
      }
      if (c.hostile()) {
        const QStringList aside = QDir(folder).entryList({"defaults.ini.unreadable-*"});
        QFile moved(aside.isEmpty() ? QString() : QDir(folder).filePath(aside[0]));
        if (aside.size() != 1 || !moved.open(QIODevice::ReadOnly) || moved.readAll() != prepared)
          problems.push_back("the file was not moved aside whole");
      }
    }

    std::printf("%-28s %s%s%s\n", c.name, problems.empty() ? "ok" : "FAILED",
                c.key ? (mentioned ? "  (logged)" : "  (no log line names the key)") : "",
                c.hostile() ? ("  (" + std::to_string(tookMs) + " ms)").c_str() : "");
    for (const auto& why : problems) std::printf("    %s\n", why.c_str());
    if (!problems.empty()) {
      ++failed;
      std::printf("    app log:\n%s\n", err.right(2000).constData());
    }
  }
  std::printf("corruption test: cases=%d passed=%d failed=%d, logged the damaged key in %d\n", ran,
              ran - failed, failed, logged);
  return failed == 0 && ran > 0 ? 0 : 1;
}
