#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/bundle.h"
#include "platform/defaults.h"
#include "platform/documents.h"
#include "platform/http.h"
#include "platform/log.h"
#include "platform/runloop.h"
#include "services/configuration.h"

namespace zellick {

// The catalogue's keys: the cached list and the moment of the last refresh that stored one.
inline constexpr const char* kMoreAppsKey = "MoreApps";
inline constexpr const char* kLastUpdateKey = "LastUpdate";
// An entry's keys.
inline constexpr const char* kAppIdKey = "appid";
inline constexpr const char* kAppNameKey = "appname";
inline constexpr const char* kAppleIdKey = "appleid";
inline constexpr const char* kPriorityKey = "priority";
// The bundled seed list.
inline constexpr const char* kSeedListName = "orvapps";
inline constexpr const char* kSeedListType = "plist";

inline constexpr double kAppsRefreshInterval = 604800;  // a week
// What a reply may bring; more is dropped.
inline constexpr std::size_t kMaxFeedBytes = std::size_t{8} << 20;
inline constexpr std::size_t kMaxIconBytes = std::size_t{1} << 20;
inline constexpr int kMaxIconDownloads = 8;  // at once
// A list beyond these is not stored: the settings file that keeps it must stay small enough to
// be read back whole at the next start, with the count beside it.
inline constexpr std::size_t kMaxStoredApps = 10000;
inline constexpr std::size_t kMaxStoredTextBytes = std::size_t{1} << 20;
inline constexpr double kFeedTimeout = 60;

// The catalogue of the maker's other apps: a list from the maker's feed, refreshed at most
// weekly, cached in the user defaults, seeded from the bundle, with one icon file per entry in
// the documents folder. The app makes one; every operation may be called from any thread, and
// replies are handled on the HTTP client's thread.
class orvapps {
 public:
  struct Services {
    HttpClient& http;
    UserDefaults& defaults;  // safe from any thread
    Documents& documents;    // icons go here as "ID@2x.png"
    Bundle& bundle;          // holds the seed list
    Clock& clock;            // any thread
    Log& log;                // any thread
  };
  orvapps(Services services, const Configuration& configuration);
  orvapps(const orvapps&) = delete;
  orvapps& operator=(const orvapps&) = delete;
  // Waits for a reply being handled to finish (never for the network); replies that come later
  // are ignored.
  ~orvapps();

  // Starts a refresh when none was stored or the last is a week old or more; returns at once.
  void updateApps();
  // Asks for the feed; its reply is parsed and stored on the HTTP client's thread.
  void startUpdate();
  // The cached list; when there is none, the seed list, stored first. Nothing when neither.
  std::optional<DefaultsArray> getApps();
  // The store link for an app.
  std::string getAppURL(const std::string& appleid) const;
  // Fetches the app's icon into its file, at most kMaxIconDownloads at a time; returns at once.
  void downloadIcon(const std::string& appleid);
  // The icon's file, when there is one.
  std::optional<std::string> getAppIcon(const std::string& appleid) const;

  // A feed's bytes as a download brought them: checked, parsed, sorted and stored, then each
  // entry's icon asked for (a refused list asks for none). The reply's handler; the fuzz target
  // calls it directly.
  void receiveList(const std::string& bytes);

  // The first catalogue made in this process, while it lives; nothing in the app uses it.
  static orvapps* sharedorvapps();
  // True for an id that may name an icon file or go into a URL: 1 to 20 decimal digits.
  static bool isSafeAppleId(const std::string& appleid);
  // The icon file's name for an app.
  static std::string iconFileName(const std::string& appleid);

 private:
  struct Core;
  void pumpIcons();
  void iconArrived(const std::string& appleid, const HttpReply& reply);

  Services services_;
  std::string feedUrl_;
  std::string iconBaseUrl_;
  std::string storeLinkBase_;
  std::shared_ptr<Core> core_;
};

}  // namespace zellick
