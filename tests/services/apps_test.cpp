// The catalogue of the maker's other apps on the fake network, defaults and documents.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "platform/fake/documents.h"
#include "platform/fake/http.h"
#include "platform/fake/memory_defaults.h"
#include "platform/fake/services.h"
#include "platform/fake/time.h"
#include "services/apps.h"

namespace zellick::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr double kEpoch = 1.8e9;
constexpr const char* kSeedPlist = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><array>
<dict><key>appid</key><integer>-3</integer><key>appname</key><string>Seed</string>
<key>appleid</key><string>0042</string><key>priority</key><integer>1</integer></dict>
</array></plist>)";

using Row = std::array<const char*, 4>;  // the four children's texts, in feed order

std::string feed(const std::vector<Row>& rows) {
  std::string out = "<apps>\n";
  for (const Row& r : rows) {
    out += std::string("  <app><appid>") + r[0] + "</appid><appname>" + r[1] +
           "</appname><appleid>" + r[2] + "</appleid><priority>" + r[3] + "</priority></app>\n";
  }
  return out + "</apps>\n";
}

DefaultsValue entry(long long appid, const char* name, const char* appleid, long long priority) {
  return DefaultsDictionary{{kAppIdKey, appid},
                            {kAppNameKey, std::string(name)},
                            {kAppleIdKey, std::string(appleid)},
                            {kPriorityKey, priority}};
}

std::string tempFile(const std::string& name, const std::string& text) {
  const std::string path = ::testing::TempDir() + name;
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

struct Catalogue {
  explicit Catalogue(std::map<std::string, std::string> bundleFiles =
                         {{"orvapps.plist", tempFile("orvapps_seed.plist", kSeedPlist)}})
      : runLoop(time),
        events(time),
        http(runLoop, network, events),
        clock(time, kEpoch),
        bundle({}, std::move(bundleFiles)),
        apps({http, defaults, documents, bundle, clock, log}, configuration()) {}

  static Configuration configuration() {
    Configuration c = Configuration::shipped();
    c.makerBaseUrl = "http://maker.example/";
    c.catalogueExclude = "77";
    c.storeWebHost = "https://store.example/";
    return c;
  }
  void serve(const std::string& pattern, const std::string& body, int code = 200) {
    network.set(pattern, {fake::HttpRules::Kind::Respond, code, body});
  }
  // A refresh with `body` as the feed (none: no network).
  void refresh(const std::optional<std::string>& body) {
    if (body) serve("apps.php", *body);
    apps.startUpdate();
    runLoop.advance(1);
  }
  std::vector<std::string> requests(const std::string& part) {
    std::vector<std::string> out;
    for (const auto& e : events.all())
      if (e.find(part) != std::string::npos) out.push_back(e.substr(e.find("http")));
    return out;
  }
  std::optional<DefaultsArray> cached() const { return defaults.arrayForKey(kMoreAppsKey); }

  fake::VirtualTime time;
  fake::VirtualRunLoop runLoop;
  fake::EventRecorder events;
  fake::HttpRules network;
  fake::FakeHttpClient http;
  fake::WallClock clock;
  fake::MemoryDefaults defaults;
  fake::MemoryDocuments documents;
  fake::FakeBundle bundle;
  fake::RecordingLog log;
  orvapps apps;
};

TEST(Apps, RefreshesWhenNoneIsStoredOrTheLastIsAWeekOld) {
  const struct {
    const char* when;
    std::optional<DefaultsValue> lastUpdate;
    bool asks;
  } cases[] = {
      {"never", std::nullopt, true},
      {"exactly a week ago", Date{kEpoch - kAppsRefreshInterval}, true},
      {"6 days 23 hours ago", Date{kEpoch - kAppsRefreshInterval + 3600}, false},
      {"in the future", Date{kEpoch + 10}, false},
      {"not a date", std::string("yesterday"), true},
  };
  for (const auto& c : cases) {
    Catalogue k;
    if (c.lastUpdate) k.defaults.setObject(kLastUpdateKey, *c.lastUpdate);
    k.apps.updateApps();
    EXPECT_EQ(k.requests("apps.php"),
              c.asks ? std::vector<std::string>{"http GET http://maker.example/apps.php?exc=77"}
                     : std::vector<std::string>{})
        << c.when;
  }
}

// What a reply leaves in the cache; replies that yield nothing leave the last list and its date.
TEST(Apps, FeedsAreReadByPositionSortedStablyAndRefusedWhole) {
  const DefaultsArray before{entry(1, "Old", "1", 0)};
  const struct {
    const char* what;
    std::optional<std::string> body;      // nothing: the network fails
    std::optional<DefaultsArray> stored;  // nothing: the cache and its date stay as they were
    const char* logged;
  } cases[] = {
      {"priorities 5, 1, 3 and a tie keeping feed order",
       feed({{"1", "A", "11", "5"},
             {"2", "B", "12", "1"},
             {"3", "C", "13", "3"},
             {"4", "D", "14", "1"}}),
       DefaultsArray{entry(2, "B", "12", 1), entry(4, "D", "14", 1), entry(3, "C", "13", 3),
                     entry(1, "A", "11", 5)},
       "Apps Found: 4"},
      {"three and five children skipped, names first read by position",
       "<r><app><a>1</a><b>x</b><c>2</c></app>"
       "<app><a>1</a><b>x</b><c>2</c><d>3</d><e>4</e></app>"
       "<app><name>Named</name><id>9</id><appleid>19</appleid><p>2</p></app><other/></r>",
       DefaultsArray{entry(0, "9", "19", 2)}, "Appid: Named, Appname: 9, Appleid: 19, Priority: 2"},
      {"integers after blanks and a sign, saturating; text that is no number is 0",
       feed({{" -12abc", "N", "5", "99999999999"}, {"x", "M", "6", "-99999999999"}}),
       DefaultsArray{entry(0, "M", "6", -2147483648LL), entry(-12, "N", "5", 2147483647LL)},
       "Apps Found: 2"},
      {"no app element", "<apps><item/></apps>", std::nullopt, "Apps Found: 0"},
      {"not well-formed", "<apps><app>", std::nullopt, "Cannot create xml document"},
      {"a byte beyond ASCII", feed({{"1", "Z\xC3\xA4hler", "11", "1"}}), std::nullopt,
       "Error occurred while downloading list: the text is not ASCII (byte 0xC3 at offset 40)"},
      {"more entries than are kept",
       feed(std::vector<Row>(kMaxStoredApps + 1, {"1", "A", "", "1"})), std::nullopt,
       "Apps list not stored: 10001 entries, at most 10000"},
      {"no network", std::nullopt, std::nullopt,
       "Error occurred while downloading list: unavailable: no network"},
      {"too long", std::string(kMaxFeedBytes + 1, ' '), std::nullopt,
       "Error occurred while downloading list: the reply is over 8388608 bytes; dropped"},
  };
  for (const auto& c : cases) {
    Catalogue k;
    k.defaults.setObject(kMoreAppsKey, before);
    k.refresh(c.body);
    EXPECT_THAT(k.log.lines, Contains(c.logged)) << c.what;
    EXPECT_EQ(k.cached(), c.stored.value_or(before)) << c.what;
    EXPECT_EQ(k.defaults.objectForKey(kLastUpdateKey),
              c.stored ? std::optional<DefaultsValue>(Date{kEpoch}) : std::nullopt)
        << c.what;
  }
}

// Identifiers become file names and URL paths only when they are plain digits; their entries
// are listed all the same.
TEST(Apps, IconsComeForSafeIdentifiersOnly) {
  Catalogue k;
  k.serve("icons/", "PNG");
  k.serve("icons/13.png", "", 404);
  const std::vector<std::string> hostile = {
      "../x", "/etc/x", "..%2fx", "1/2", "", std::string(10000, '7'), "123456789012345678901"};
  std::vector<Row> rows = {{"1", "A", "11", "1"}, {"2", "B", "12", "2"}, {"3", "C", "13", "3"}};
  for (const std::string& id : hostile) rows.push_back({"9", "H", id.c_str(), "9"});
  k.refresh(feed(rows));
  EXPECT_EQ(k.cached()->size(), rows.size());
  EXPECT_THAT(k.requests("icons/"), ElementsAre("http GET http://maker.example/icons/11.png",
                                                "http GET http://maker.example/icons/12.png",
                                                "http GET http://maker.example/icons/13.png"));
  EXPECT_EQ(k.documents.contents(),
            (std::map<std::string, std::uint64_t>{{"11@2x.png", 3}, {"12@2x.png", 3}}))
      << "an empty reply keeps what there was";
  EXPECT_THAT(k.log.lines, Contains("Appleid \"../x\" is not 1 to 20 decimal digits; listed "
                                    "without an icon"));
  EXPECT_THAT(k.log.lines, Contains("Appleid \"" + std::string(40, '7') +
                                    "...\" is not 1 to 20 decimal digits; listed without an icon"));
  EXPECT_EQ(k.apps.getAppIcon("11"), "documents/11@2x.png");
  for (const char* id : {"13", "../x", "11@2x.png"}) EXPECT_EQ(k.apps.getAppIcon(id), std::nullopt);
  EXPECT_EQ(k.apps.getAppURL("11"),
            "https://store.example/WebObjects/MZStore.woa/wa/viewSoftware?id=11&mt=8");
  EXPECT_EQ(k.apps.getAppURL("1&x=/"),
            "https://store.example/WebObjects/MZStore.woa/wa/viewSoftware?id=1%26x%3D%2F&mt=8");
}

TEST(Apps, AtMostEightIconsAreFetchedAtOnceAndLargeOnesAreDropped) {
  Catalogue k;
  k.network.set("icons/", {fake::HttpRules::Kind::Hang, 0, {}});
  std::vector<std::string> ids;
  std::vector<Row> rows;
  for (int i = 0; i < 20; ++i) ids.push_back(std::to_string(100 + i));
  for (const std::string& id : ids) rows.push_back({"1", "A", id.c_str(), "1"});
  k.refresh(feed(rows));
  EXPECT_EQ(k.requests("icons/").size(), 8u);
  k.serve("icons/", std::string(kMaxIconBytes + 1, 'x'));
  k.runLoop.advance(kFeedTimeout);  // the hanging eight time out, the rest come too large
  EXPECT_EQ(k.requests("icons/").size(), 20u);
  EXPECT_THAT(k.documents.contents(), IsEmpty());
  EXPECT_THAT(k.log.lines, Contains("Icon for 119 dropped: the reply is over 1048576 bytes"));
}

TEST(Apps, TheSeedListFillsAnEmptyCacheWithoutADate) {
  Catalogue seeded;
  const DefaultsArray seed{entry(-3, "Seed", "0042", 1)};
  EXPECT_EQ(seeded.apps.getApps(), seed);
  EXPECT_EQ(seeded.cached(), seed);
  EXPECT_EQ(seeded.defaults.objectForKey(kLastUpdateKey), std::nullopt);

  for (const auto& files : std::vector<std::map<std::string, std::string>>{
           {}, {{"orvapps.plist", tempFile("orvapps_bad.plist", "<plist><dict/></plist>")}}}) {
    Catalogue bare(files);
    EXPECT_EQ(bare.apps.getApps(), std::nullopt);
    EXPECT_EQ(bare.cached(), std::nullopt);
  }
}

TEST(Apps, RepliesAfterTheCatalogueIsGoneAreIgnored) {
  Catalogue k;
  EXPECT_EQ(orvapps::sharedorvapps(), &k.apps);
  k.serve("apps.php", feed({{"1", "A", "11", "1"}}));
  auto gone = std::make_unique<orvapps>(
      orvapps::Services{k.http, k.defaults, k.documents, k.bundle, k.clock, k.log},
      Catalogue::configuration());
  gone->startUpdate();
  gone.reset();
  k.runLoop.advance(1);
  EXPECT_EQ(k.cached(), std::nullopt);
  EXPECT_THAT(k.log.lines, Not(Contains(HasSubstr("Apps Found"))));
}

}  // namespace
}  // namespace zellick::test
