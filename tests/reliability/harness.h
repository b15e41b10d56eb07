#pragma once
// Shared by the reliability harnesses: the command line, the app in a private home with its
// output as it comes, the settings it starts on and what a new process reads back, and rows of
// checks.
#include <QCoreApplication>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/defaults.h"

namespace zellick::test {

double monotonicMs();

// The "--key value" pairs of a command line from `first` on.
struct Args {
  Args(const QStringList& args, int first);
  QString text(const char* key) const { return values.value(key); }
  double number(const char* key, double fallback) const;
  QMap<QString, QString> values;
};

// The command line of a table of rows: --app PATH [--only NAME]. Null (and the usage said) when
// --app is missing.
std::optional<Args> rowArgs(const QCoreApplication& qapp, const char* program);

// Offscreen, silent, with HOME and the config, data and cache folders inside `dir`, the settings
// at `settings`, the maker's server at `makerUrl` when one is given and every other service on a
// loopback port that refuses.
QProcessEnvironment appEnvironment(const QTemporaryDir& dir, const QString& settings,
                                   const std::string& makerUrl = {});

// The app under test: stdout gathered as it comes, stderr (too much to hold) appended to `log`.
struct App {
  App(const QString& path, const QProcessEnvironment& env, const QStringList& args,
      const QString& log);
  pid_t pid() const { return static_cast<pid_t>(process.processId()); }
  void gather(int ms);                     // for `ms`, or until it ends
  bool waitFor(const char* text, int ms);  // until stdout holds `text`
  bool end(int signo, int ms = 10000);     // sends `signo` (0: none); whether it ended
  bool endedNormally() const;
  QByteArray log() const;
  QProcess process;
  QByteArray out;
  QString logFile;
};

// What the harnesses seed the settings with; no clock runs, so nothing is caught up on start.
inline const std::vector<int> kCounters{11, 22, 33}, kTotalForAvg{4, 5, 6},
    kTimers{1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0};
constexpr int kButtonId = 2, kTapValue = 3;

// The bytes of a settings file holding the seed and `extra`, as the store writes it.
QByteArray seededSettings(const QString& scratchDir, const DefaultsDictionary& extra = {});
void writeFile(const QString& path, const QByteArray& bytes);
QByteArray readFile(const QString& path);

// The six keys as a fresh reader in a new process would see them.
struct SavedState {
  bool present = false;               // the file exists
  std::vector<std::string> problems;  // why it is not whole; empty when whole
  std::vector<int> counters, timers, totalForAvg;
  int buttonId = 0, tapValue = 0;
  std::optional<zellick::Date> dateOfInactive;
  std::optional<DefaultsArray> catalogue;  // the More screen's list, when there is one
  bool refreshed = false;                  // the time of the last refresh is kept
  bool whole() const { return present && problems.empty(); }
  bool holdsSeed() const;
};

// Reads through a copy, so QSettings' per-path cache cannot hand back an earlier read; a problem
// is noted for each key missing, of the wrong type or length, or with an element that is no
// number.
SavedState readSaved(const QString& settings, const QString& scratchDir);

// Runs `check` on each row (or on the one named `only`) and prints ok or what went wrong, with
// the note it leaves; exit status 0 when rows ran and every one held.
int runRows(const char* title, const std::vector<std::string>& names, const QString& only,
            const std::function<std::vector<std::string>(std::size_t, std::string& note)>& check);

}  // namespace zellick::test
