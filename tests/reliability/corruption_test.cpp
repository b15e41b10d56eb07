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
#include <QFileInfo>

#include <sys/resource.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <sstream>

#include "harness.h"

namespace zellick::test {
namespace {

enum class Setup { File, Fifo, Folder, SizeLimit };

struct Case {
  std::string name;
  std::function<QByteArray(QByteArray)> damage;  // the seeded file to what the app starts on
  std::string key{}, expect{};                   // the damaged key and its values (kKeyRows)
  const char* logs = nullptr;                    // a hostile start: what its log line says
  Setup setup = Setup::File;
  bool defaults = false;  // every key comes back as its default
};

// A key's line replaced (or, with no '=', dropped: "KEY missing"), and the key's values after the
// save: "?" only asks for a number, a trailing "+" lets a long array keep its tail, "" as seeded.
const std::pair<const char*, const char*> kKeyRows[] = {
    {"Counters", "0 0 0"},
    {"Counters=11, 22", "11 22 0"},
    {"Counters=11, 22, 33, 44", "11 22 33 +"},
    {"Counters=11, zz, 33", "11 0 33"},
    {"Counters=hello", "0 0 0"},
    {"Counters=@Variant(\\xff\\xff\\xff)", "0 0 0"},
    {"Timers", "0 0 0 0 0 0 0 0 0 0 0 0"},
    {"Timers=1, 2, 3, 4, 5, 6", "1 2 3 4 5 6 0 0 0 0 0 0"},
    {"Timers=1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 77", "1 2 3 4 5 6 7 8 9 0 0 0 +"},
    {"Timers=1, 2, 3, 4, 5, ?, 7, 8, 9, 0, 0, 0", "1 2 3 4 5 0 7 8 9 0 0 0"},
    {"Timers=12", "0 0 0 0 0 0 0 0 0 0 0 0"},
    {"TotalForAvg", "0 0 0"},
    {"TotalForAvg=4, 5", "4 5 0"},
    {"TotalForAvg=4, 5, 6, 7, 8", "4 5 6 +"},
    {"TotalForAvg=\\x1\\x2", "0 0 0"},
    {"ButtonId", "1"},
    {"ButtonId=1, 2", "?"},
    {"ButtonId=@Variant(\\0)", "?"},
    {"TapValue", "1"},
    {"TapValue=three", "?"},
    {"DateOfInactive", ""},
    {"DateOfInactive=5, 6", ""},
    {"DateOfInactive=@DateTime(zz)", ""},
};

// The file with `key`'s line replaced by `line` (or dropped when `line` is empty).
std::function<QByteArray(QByteArray)> setLine(const QByteArray& key, const QByteArray& line) {
  return [=](const QByteArray& text) {
    QList<QByteArray> out;
    for (const QByteArray& l : text.split('\n')) {
      if (!l.startsWith(key + "="))
        out.push_back(l);
      else if (!line.isEmpty())
        out.push_back(line);
    }
    return out.join('\n');
  };
}

std::vector<Case> cases() {
  std::vector<Case> c;
  for (const auto& [line, expect] : kKeyRows) {
    const QByteArray key = QByteArray(line).split('=')[0];
    const bool dropped = key == line;
    c.push_back({dropped ? std::string(line) + " missing" : line, setLine(key, dropped ? "" : line),
                 key.toStdString(), expect});
  }
  const auto whole = [](QByteArray bytes) { return [bytes](QByteArray) { return bytes; }; };
  QByteArray deep = "Counters=@Variant(";
  for (int i = 0; i < 50000; ++i) deep += "\\0\\0\\0\\t\\0\\0\\0\\x1";  // a list of one
  deep += "\\0\\0\\0\\x2\\0\\0\\0\\x1)";
  const auto same = [](QByteArray t) { return t; };
  c.push_back({"junk lines between keys", [](QByteArray t) {
                 return t.replace("\nTapValue=", "\n=====\n\x01\x02 junk\nTapValue=");
               }});
  c.push_back({"junk section at the end",
               [](QByteArray t) { return t + "\n[[[junk\nCounters=9, 9, 9\n"; }});
  c.push_back({"empty file", whole(""), "", "", nullptr, Setup::File, true});
  c.push_back({"binary junk file", whole(QByteArray("\x00\xff\xfe junk\n\x7f=\x01\n", 13)), "", "",
               nullptr, Setup::File, true});
  c.push_back({"50,000 nested lists", setLine("Counters", deep), "", "", "moved aside to",
               Setup::File, true});
  c.push_back({"FIFO", same, "", "", "is a FIFO, not a file", Setup::Fifo});
  c.push_back({"folder", same, "", "", "is a folder, not a file", Setup::Folder});
  c.push_back({"file size limit", same, "", "", "changes not saved", Setup::SizeLimit});
  return c;
}

std::vector<std::string> run(const Case& c, const QString& appPath, const QByteArray& seed,
                             std::string& note) {
  std::vector<std::string> problems;
  QTemporaryDir dir;
  const QString folder = dir.filePath("config"), settings = folder + "/defaults.ini";
  QDir().mkpath(folder);
  const QByteArray prepared = c.damage(seed);
  if (c.setup == Setup::Fifo)
    mkfifo(QFile::encodeName(settings).constData(), 0600);
  else if (c.setup == Setup::Folder)
    QDir().mkpath(settings);
  else
    writeFile(settings, prepared);

  QProcess p;
  p.setProcessEnvironment(appEnvironment(dir, settings));
  if (c.setup == Setup::SizeLimit) {
    p.setChildProcessModifier([] {
      const rlimit r{128, 128};  // room for the lock file, not for the settings
      setrlimit(RLIMIT_FSIZE, &r);
    });
  }
  const double started = QDateTime::currentMSecsSinceEpoch() / 1000.0, startedMs = monotonicMs();
  p.start(appPath, {"--first-frame"});
  const bool finished = p.waitForFinished(30000);
  const double tookMs = monotonicMs() - startedMs;
  const QByteArray err = p.readAllStandardError();
  if (!finished) {
    p.kill();
    p.waitForFinished();
    problems.push_back("the app did not quit within 30 s");
  } else if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
    problems.push_back("the app ended with status " + std::to_string(p.exitCode()));
  } else if (c.logs && tookMs > 2000) {
    problems.push_back("the app took " + std::to_string(tookMs) + " ms");
  }
  if (c.logs && !err.contains(c.logs))
    problems.push_back(std::string("no log line says ") + c.logs);
  if (c.logs) note = std::to_string(static_cast<int>(tookMs)) + " ms";

  struct stat st {};
  const bool statted = lstat(QFile::encodeName(settings).constData(), &st) == 0;
  if (c.setup == Setup::Fifo || c.setup == Setup::Folder) {
    if (!statted || (c.setup == Setup::Fifo ? !S_ISFIFO(st.st_mode) : !S_ISDIR(st.st_mode)))
      problems.push_back("the path was replaced");
  } else if (c.setup == Setup::SizeLimit) {
    if (readFile(settings) != prepared)
      problems.push_back("the file the app could not save over is not as it was");
    // Beside it only the lock that keeps a second app off the file.
    if (QDir(folder).entryList(QDir::Files | QDir::Hidden) !=
        QStringList{"defaults.ini", "defaults.ini.instance"})
      problems.push_back("files were left beside it");
  } else {
    SavedState got = readSaved(settings, dir.path());
    const auto ints = [](const std::string& text) {
      std::vector<int> v;
      std::istringstream in(text);
      for (std::string n; in >> n && n != "+";) v.push_back(std::stoi(n));
      return v;
    };
    std::map<std::string, std::vector<int>> want = {{"Counters", kCounters},
                                                    {"Timers", kTimers},
                                                    {"TotalForAvg", kTotalForAvg},
                                                    {"ButtonId", {kButtonId}},
                                                    {"TapValue", {kTapValue}}};
    if (c.defaults)
      want = {{"Counters", {0, 0, 0}},
              {"Timers", std::vector<int>(12, 0)},
              {"TotalForAvg", {0, 0, 0}},
              {"ButtonId", {1}},
              {"TapValue", {1}}};
    if (c.expect == "?")
      want.erase(c.key);
    else if (want.contains(c.key))
      want[c.key] = ints(c.expect);
    std::map<std::string, std::vector<int>> saved = {{"Counters", got.counters},
                                                     {"Timers", got.timers},
                                                     {"TotalForAvg", got.totalForAvg},
                                                     {"ButtonId", {got.buttonId}},
                                                     {"TapValue", {got.tapValue}}};
    if (c.expect.ends_with("+") && saved[c.key].size() > want[c.key].size()) {
      std::erase_if(got.problems, [](auto& p) { return p.find(" elements") != p.npos; });
      saved[c.key].resize(want[c.key].size());
    }
    // A foreign section is kept by the save, as it should be.
    std::erase_if(got.problems, [](auto& p) { return p.ends_with("the app does not read"); });
    problems.insert(problems.end(), got.problems.begin(), got.problems.end());
    const auto text = [](const std::vector<int>& v) {
      std::string t;
      for (int i : v) t += " " + std::to_string(i);
      return t;
    };
    for (const auto& [key, values] : want) {
      if (got.whole() && saved[key] != values)
        problems.push_back(key + " is" + text(saved[key]) + ", expected" + text(values));
    }
    if (!got.dateOfInactive || std::fabs(got.dateOfInactive->seconds - started) > 60)
      problems.push_back("DateOfInactive is not the time of the save");
    if (c.logs) {
      const QStringList aside = QDir(folder).entryList({"defaults.ini.unreadable-*"});
      if (aside.size() != 1 || readFile(QDir(folder).filePath(aside[0])) != prepared)
        problems.push_back("the file was not moved aside whole");
    }
  }
  if (!problems.empty()) problems.push_back("app log:\n" + err.right(2000).toStdString());
  return problems;
}

}  // namespace
}  // namespace zellick::test

int main(int argc, char** argv) {
  using namespace zellick::test;
  QCoreApplication qapp(argc, argv);
  const std::optional<Args> parsed = rowArgs(qapp, argv[0]);
  if (!parsed) return 2;
  const Args& args = *parsed;
  QTemporaryDir scratch;
  const QByteArray seed = seededSettings(scratch.path());
  const std::vector<Case> all = cases();
  std::vector<std::string> names;
  for (const Case& c : all) names.push_back(c.name);
  return runRows("corruption test", names, args.text("--only"),
                 [&](std::size_t i, std::string& note) {
                   return run(all[i], args.text("--app"), seed, note);
                 });
}
