// Hostile feeds and servers against the real app. For each row the app starts on settings that
// hold a good catalogue (and no time of a last refresh, so it refreshes at once) and a count,
// with the stand-in on loopback as the maker's server, and is closed as a user closes it once
// the refresh is handled (or, for a server that never answers, once the app is up). Then:
//  - it ended normally, soon after the close;
//  - the count is intact;
//  - the catalogue is the last good one where the feed is refused, the new one where its entries
//    are kept;
//  - no file was written outside the documents folder but the settings (and their locks), the
//    caches and the id shared by the maker's apps; no icon lies where a hostile id would put it;
//  - the documents folder holds whole icons, one for each id of 1 to 20 digits the kept list
//    has (none where the icons' replies are refused);
//  - the app asked the server for nothing but the feed, records and icons of such ids.
//   zellick_feeds_test --app PATH [--only NAME]
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QThread>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "harness.h"
#include "services/apps.h"
#include "services_server.h"

namespace zellick::test {
namespace {

namespace fs = std::filesystem;

// An entry as the feed gives it, its children in this order.
struct Entry {
  std::string appid, appname, appleid, priority;
};

const std::vector<Entry> kSeedList = {{"901", "Seed One", "900000001", "1"},
                                      {"902", "Seed Two", "900000002", "2"}};
// A good feed lists them out of order: the late one first.
const Entry kLate{"21", "Lap Timer", "512345701", "9"};
const Entry kEarly{"23", "Score Keeper", "512345703", "1"};
const char* const kSettings = "config/Zellick/Zellick/defaults.ini";
const char* const kDocuments = "data/Zellick/Zellick/Documents";
// Lines that end the handling of a feed's reply.
const char* const kHandled[] = {"Apps list stored", "Apps list not stored",
                                "Error occurred while downloading list",
                                "Cannot create xml document", "Cannot get root element"};
constexpr int kSettleMs = 250;        // for icons of a refused list to show, were they asked for
constexpr int kRunBoundMs = 20000;    // from the start to the close
constexpr int kCloseBoundMs = 2000;   // from the close to the end
constexpr int kNeverAnswersMs = 500;  // the app up and asking, the feed unanswered

std::string xmlOf(const Entry& e) {
  return "<app><appid>" + e.appid + "</appid><appname>" + e.appname + "</appname><appleid>" +
         e.appleid + "</appleid><priority>" + e.priority + "</priority></app>";
}

std::string feedOf(const std::vector<std::string>& apps) {
  std::string xml = "<?xml version=\"1.0\"?>\n<apps>\n";
  for (const std::string& a : apps) xml += a + "\n";
  return xml + "</apps>\n";
}

const std::string kGoodFeed = feedOf({xmlOf(kLate), xmlOf(kEarly)});

// Entries of four children each, as short as can be: the count is what is refused.
std::string shortEntries(int n) {
  std::string xml = "<apps>";
  for (int i = 1; i <= n; ++i) {
    const std::string id = std::to_string(i);
    xml += "<app><a>" + id + "</a><b>n</b><c>" + id + "</c><d>1</d></app>";
  }
  return xml + "</apps>";
}

bool safeId(const std::string& id) {
  return QRegularExpression("^[0-9]{1,20}$").match(QString::fromStdString(id)).hasMatch();
}

DefaultsValue stored(const Entry& e) {
  const auto number = [](const std::string& s) -> long long {
    return intValue(DefaultsValue(s)).value_or(0);
  };
  return DefaultsDictionary{{kAppIdKey, number(e.appid)},
                            {kAppNameKey, e.appname},
                            {kAppleIdKey, e.appleid},
                            {kPriorityKey, number(e.priority)}};
}

DefaultsArray storedList(const std::vector<Entry>& entries) {
  DefaultsArray out;
  for (const Entry& e : entries) out.push_back(stored(e));
  return out;
}

struct Row {
  std::string name;
  std::string feed;                          // served as is, unless the modes say otherwise
  standin::ServicesOptions modes = {};       // the server's hostile modes
  std::optional<std::vector<Entry>> kept{};  // the list stored, in order; nothing: refused
  std::string logs{};                        // a line the app must log
  bool iconsArrive = true;                   // the kept list's icons are served whole
  bool answers = true;                       // the feed gets an answer
};

std::vector<Row> rows() {
  const Entry withNonAscii{"21", "Caf\xC3\xA9 Timer", "512345701", "9"};
  const std::string three =
      "<app><appid>3</appid><appname>Three</appname><appleid>512345799"
      "</appleid></app>";
  const std::string five =
      "<app><appid>5</appid><appname>Five</appname><appleid>512345795"
      "</appleid><priority>0</priority><extra/></app>";
  std::vector<std::string> bulky;
  for (int i = 0; i < 20; ++i) {
    bulky.push_back(xmlOf(
        {std::to_string(i), std::string(60000, 'n'), "5123457" + std::to_string(10 + i), "1"}));
  }
  std::vector<Row> out = {
      {"non-ASCII byte", feedOf({xmlOf(withNonAscii)}), {}, {}, "the text is not ASCII"},
      {"not well-formed",
       "<?xml version=\"1.0\"?>\n<apps><app><appid>1</appid></apps>\n",
       {},
       {},
       "Cannot create xml document"},
      {"three children",
       feedOf({xmlOf(kLate), three, xmlOf(kEarly)}),
       {},
       std::vector{kEarly, kLate}},
      {"five children",
       feedOf({xmlOf(kLate), five, xmlOf(kEarly)}),
       {},
       std::vector{kEarly, kLate}},
      // Read by position: the name goes in as the id (no number: 0), the id as the name.
      {"names first",
       feedOf({"<app><appname>Lap Timer</appname><appid>21</appid><appleid>512345701</appleid>"
               "<priority>9</priority></app>"}),
       {},
       std::vector<Entry>{{"Lap Timer", "21", "512345701", "9"}}},
      {"no entries", feedOf({}), {}, {}, "no entry of four children"},
      {"100,000 entries", shortEntries(100000), {}, {}, "Apps list not stored: 100000 entries"},
      {"names past 1 MB", feedOf(bulky), {}, {}, "pass 1048576 bytes"},
      {"50 MB body", "", {.hugeFeedBytes = std::size_t{50} << 20}, {}, "over 8388608 bytes"},
      {"never answers", kGoodFeed, {.hangPath = "apps.php"}, {}, "", true, false},
      {"feed cut off midway",
       kGoodFeed,
       {.cutPath = "apps.php"},
       {},
       "Error occurred while downloading list"},
      {"icons cut off midway",
       kGoodFeed,
       {.cutPath = "icons/"},
       std::vector{kEarly, kLate},
       "Icon for 512345703 not fetched",
       false},
      {"icons over 1 MB",
       kGoodFeed,
       {.iconBytes = std::size_t{1536} << 10},
       std::vector{kEarly, kLate},
       "Icon for 512345701 dropped",
       false},
  };
  // Each beside a good entry, and listed after it: it is stored first.
  for (const std::string& id : {std::string("../x"), std::string("/etc/x"), std::string("..%2fx"),
                                std::string("1/2"), std::string(), std::string(10000, '7')}) {
    const Entry odd{"30", "Odd", id, "5"};
    out.push_back({"appleid \"" + id.substr(0, 12) + (id.size() > 12 ? "...\"" : "\""),
                   feedOf({xmlOf(kLate), xmlOf(odd)}),
                   {},
                   std::vector{odd, kLate},
                   "is not 1 to 20 decimal digits"});
  }
  return out;
}

// Every entry under `root` (symbolic links not followed): its kind, size and change time.
std::map<std::string, std::string> walk(const QString& root) {
  std::map<std::string, std::string> out;
  std::error_code ec;
  const fs::path base(root.toStdString());
  for (auto it = fs::recursive_directory_iterator(base, ec); !ec && it != fs::end(it);
       it.increment(ec)) {
    const fs::file_status st = it->symlink_status();
    std::string what = std::to_string(static_cast<int>(st.type()));
    if (st.type() == fs::file_type::regular) {
      what += " " + std::to_string(it->file_size()) + " " +
              std::to_string(it->last_write_time().time_since_epoch().count());
    }
    out[fs::relative(it->path(), base).string()] = what;
  }
  return out;
}

// Where the app may write: the settings and their locks, the id shared by the maker's apps,
// files right in the documents folder, anything in its caches; and the folders on the way.
bool allowed(const std::string& path, bool folder) {
  const std::string settings = kSettings;
  const std::string documents = std::string(kDocuments) + "/";
  const std::string caches = "cache/Zellick/Zellick/";
  for (const std::string& place : {settings, settings + ".lock", settings + ".instance",
                                   std::string("config/Orvanta/vendor-id"), documents, caches}) {
    if (path == place || (folder && place.starts_with(path + "/"))) return true;
  }
  return (path.starts_with(documents) && path.find('/', documents.size()) == std::string::npos) ||
         path.starts_with(caches);
}

std::vector<std::string> run(const Row& row, const QString& appPath, const QByteArray& seed,
                             std::string& note) {
  std::vector<std::string> problems;
  const auto check = [&problems](bool holds, const std::string& what) {
    if (!holds) problems.push_back(what);
  };
  QTemporaryDir root;
  const QString settings = root.filePath(kSettings), documents = root.filePath(kDocuments);
  QDir().mkpath(QFileInfo(settings).absolutePath());
  writeFile(settings, seed);
  standin::ServicesOptions modes = row.modes;
  modes.feedFile = root.filePath("feed.xml").toStdString();
  std::ofstream(*modes.feedFile, std::ios::binary) << row.feed;
  std::ostringstream requests;
  standin::ServicesServer server(modes, nullptr, &requests);
  if (Status s = server.start(); !s.ok()) return {"the stand-in did not start: " + s.toString()};
  const QProcessEnvironment env = appEnvironment(root, settings, server.baseUrl());
  const auto before = walk(root.path());
  QTemporaryDir logs;  // outside the home, where nothing new may appear
  const double started = monotonicMs();
  App app(appPath, env, {"--close-on-input"}, logs.filePath("app.log"));
  const auto said = [&](const std::string& text) { return app.log().contains(text.c_str()); };
  std::vector<std::string> icons;  // the kept list's ids that may name a file
  for (const Entry& e : row.kept.value_or(std::vector<Entry>{}))
    if (safeId(e.appleid)) icons.push_back(e.appleid);
  const auto settled = [&] {
    for (const std::string& id : icons) {
      if (!said("Icon for " + id + " ") &&
          !QFile::exists(QDir(documents).filePath(QString::fromStdString(id) + "@2x.png")))
        return false;
    }
    return true;
  };
  const auto handled = [&] { return std::any_of(std::begin(kHandled), std::end(kHandled), said); };
  double asking = 0;  // since the app first asked, for a feed that gets no answer
  while (monotonicMs() - started < kRunBoundMs && app.process.state() != QProcess::NotRunning) {
    app.gather(20);
    if (!row.answers) {
      if (!asking && !server.records().empty()) asking = monotonicMs();
      if (asking && monotonicMs() - asking >= kNeverAnswersMs) break;
    } else if (handled() && (!row.kept || settled())) {
      if (!row.kept) QThread::msleep(kSettleMs);
      break;
    }
  }
  const double closing = monotonicMs();
  app.process.write("\n");
  app.process.closeWriteChannel();
  const bool ended = app.end(0);  // no signal: the close above ends it
  note = std::to_string(static_cast<int>(monotonicMs() - started)) + " ms";
  check(monotonicMs() - closing < kCloseBoundMs, "the app took too long to close");
  server.stop();
  check(ended && app.endedNormally(), "the app did not end normally");
  check(row.answers ? handled() : !handled(), "the feed's reply was not handled as it came");
  check(row.logs.empty() || said(row.logs), "no log line says \"" + row.logs + "\"");
  const SavedState saved = readSaved(settings, root.path());
  check(saved.holdsSeed(), "the count is not intact");
  check(saved.catalogue == storedList(row.kept.value_or(kSeedList)),
        row.kept ? "the kept entries are not the list stored" : "the last good list is gone");
  check(saved.refreshed == row.kept.has_value(), "the time of the last refresh is wrong");

  const auto after = walk(root.path());
  for (const auto& [path, what] : after) {
    auto was = before.find(path);
    if (was != before.end() && was->second == what) continue;
    const bool folder = what == std::to_string(static_cast<int>(fs::file_type::directory));
    if (folder && was != before.end()) continue;  // a folder that holds something new
    check(allowed(path, folder), "wrote " + path);
  }
  for (const Entry& e : row.kept.value_or(std::vector<Entry>{})) {
    // Where a file name made of the id would lie, joined naively.
    const QString naive = QDir(documents).filePath(QString::fromStdString(e.appleid) + "@2x.png");
    check(safeId(e.appleid) || !QFileInfo::exists(naive), "an icon lies at " + naive.toStdString());
  }
  QStringList want;
  if (row.iconsArrive)
    for (const std::string& id : icons) want << QString::fromStdString(id) + "@2x.png";
  want.sort();
  const QStringList got =
      QDir(documents).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
  check(got == want, "the documents hold " + got.join(' ').toStdString() + ", not " +
                         want.join(' ').toStdString());
  for (const QString& file : got) {
    const QByteArray png = readFile(QDir(documents).filePath(file));
    check(png.startsWith("\x89PNG\r\n\x1a\n") &&
              png.endsWith(QByteArray("\0\0\0\0IEND\xae\x42\x60\x82", 12)),
          file.toStdString() + " is not a whole PNG");
  }
  static const QRegularExpression asked(
      R"(^[A-Z]+ /(apps\.php\?exc=[0-9]*|tracker\.php|icons/[0-9]{1,20}\.png) [0-9]+$)");
  std::istringstream lines(requests.str());
  for (std::string line; std::getline(lines, line);)
    check(asked.match(QString::fromStdString(line)).hasMatch(), "the app asked for " + line);
  if (!problems.empty())
    problems.push_back("app log (end):\n" + app.log().right(1500).toStdString());
  return problems;
}

}  // namespace
}  // namespace zellick::test

int main(int argc, char** argv) {
  using namespace zellick;
  using namespace zellick::test;
  QCoreApplication qapp(argc, argv);
  const std::optional<Args> parsed = rowArgs(qapp, argv[0]);
  if (!parsed) return 2;
  const Args& args = *parsed;
  QTemporaryDir scratch;
  const QByteArray seed = seededSettings(scratch.path(), {{kMoreAppsKey, storedList(kSeedList)}});
  const std::vector<Row> all = rows();
  std::vector<std::string> names;
  for (const Row& row : all) names.push_back(row.name);
  return runRows("feeds test", names, args.text("--only"), [&](std::size_t i, std::string& note) {
    return run(all[i], args.text("--app"), seed, note);
  });
}
