#include "services/apps.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <vector>

#include "platform/property_list.h"
#include "platform/url.h"
#include "xml/ZXMLDocument.h"

namespace zellick {

namespace {

std::atomic<orvapps*> g_first{nullptr};

constexpr std::size_t kMaxAppleIdDigits = 20;
// How much of an odd value a log line quotes.
constexpr std::size_t kQuoteLimit = 40;

// A value from outside as one log line shows it: control bytes escaped, cut short when long.
std::string forLog(const std::string& text, std::size_t limit = std::string::npos) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (out.size() >= limit) {
      out += "...";
      break;
    }
    const auto c = static_cast<unsigned char>(text[i]);
    if (c < 0x20 || c == 0x7f) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", c);
      out += escaped;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

// An "%@" of the text, or "(null)" for none.
std::string shown(const ZXMLString& s) { return s ? forLog(*s) : "(null)"; }

long long priorityOf(const DefaultsValue& entry) {
  const auto* d = std::get_if<DefaultsDictionary>(&entry);
  if (!d) return 0;
  auto it = d->find(kPriorityKey);
  return it == d->end() ? 0 : intValue(it->second).value_or(0);
}

}  // namespace

struct orvapps::Core {
  std::mutex handling;  // held while a reply is handled; the destructor takes it last
  bool gone = false;

  std::mutex icons;  // guards what follows
  std::deque<std::string> waiting;
  int running = 0;
};

orvapps::orvapps(Services services, const Configuration& configuration)
    : services_(services),
      feedUrl_(configuration.makerBaseUrl + "apps.php?exc=" + configuration.catalogueExclude),
      iconBaseUrl_(configuration.makerBaseUrl + "icons/"),
      storeLinkBase_(configuration.storeWebHost + "WebObjects/MZStore.woa/wa/viewSoftware?id="),
      core_(std::make_shared<Core>()) {
  orvapps* none = nullptr;
  g_first.compare_exchange_strong(none, this);
}

orvapps::~orvapps() {
  {
    std::lock_guard lock(core_->handling);
    core_->gone = true;
  }
  orvapps* self = this;
  g_first.compare_exchange_strong(self, nullptr);
}

orvapps* orvapps::sharedorvapps() { return g_first.load(); }

bool orvapps::isSafeAppleId(const std::string& appleid) {
  return !appleid.empty() && appleid.size() <= kMaxAppleIdDigits &&
         std::all_of(appleid.begin(), appleid.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string orvapps::iconFileName(const std::string& appleid) { return appleid + "@2x.png"; }

void orvapps::updateApps() {
  if (auto last = services_.defaults.objectForKey(kLastUpdateKey)) {
    // A value that is not a date counts as no refresh at all.
    if (const auto* date = std::get_if<Date>(&*last);
        date && date->seconds + kAppsRefreshInterval > services_.clock.now()) {
      return;
    }
  }
  startUpdate();
}

void orvapps::startUpdate() {
  HttpRequest request;
  request.url = feedUrl_;
  request.timeout = kFeedTimeout;
  request.maxBodyBytes = kMaxFeedBytes;
  std::weak_ptr<Core> weak = core_;
  services_.http.send(std::move(request), [this, weak](const HttpReply& reply) {
    auto core = weak.lock();
    if (!core) return;
    std::lock_guard lock(core->handling);
    if (core->gone) return;
    if (!reply.status.ok()) {
      const std::string why = reply.status.code() == Status::Code::TooLarge
                                  ? format("the reply is over %zu bytes; dropped", kMaxFeedBytes)
                                  : reply.status.toString();
      services_.log.line("Error occurred while downloading list: " + why);
      return;
    }
    receiveList(reply.body);
  });
}

void orvapps::receiveList(const std::string& bytes) {
  Log& log = services_.log;
  // Read as ASCII text, as the feed is meant to be: any other byte fails the download.
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto c = static_cast<unsigned char>(bytes[i]);
    if (c > 127) {
      log.line(
          format("Error occurred while downloading list: the text is not ASCII (byte 0x%02X "
                 "at offset %zu)",
                 c, i));
      return;
    }
  }
  auto document = ZXMLDocument::initWithXMLString(bytes, 0, nullptr);
  if (!document) {
    log.line("Cannot create xml document");
    return;
  }
  auto root = document->rootElement();
  if (!root) {
    log.line("Cannot get root element");
    return;
  }
  const ZXMLElementList apps = root->elementsForName("app").value_or(ZXMLElementList{});
  log.line(
      format("Apps Found: %d", static_cast<int>(std::min<std::size_t>(apps.size(), INT32_MAX))));
  if (apps.size() > kMaxStoredApps) {
    log.line(format("Apps list not stored: %zu entries, at most %zu", apps.size(), kMaxStoredApps));
    return;
  }

  DefaultsArray list;
  list.reserve(apps.size());
  std::vector<std::string> icons;  // asked for once the list is kept: a refused one brings none
  std::size_t textBytes = 0;
  for (const ZXMLElementPtr& app : apps) {
    if (app->childCount() != 4) continue;
    ZXMLString text[4];
    for (std::uint32_t i = 0; i < 4; ++i) {
      if (auto child = app->childAtIndex(i)) text[i] = child->stringValue();
    }
    log.line("Appid: " + shown(text[0]) + ", Appname: " + shown(text[1]) +
             ", Appleid: " + shown(text[2]) + ", Priority: " + shown(text[3]));
    const auto value = [&](int i) { return text[i] ? *text[i] : std::string(); };
    const auto number = [&](int i) -> long long {
      return intValue(DefaultsValue(value(i))).value_or(0);
    };
    DefaultsDictionary entry{{kAppIdKey, number(0)},
                             {kAppNameKey, value(1)},
                             {kAppleIdKey, value(2)},
                             {kPriorityKey, number(3)}};
    textBytes += value(1).size() + value(2).size();
    if (textBytes > kMaxStoredTextBytes) {
      log.line(
          format("Apps list not stored: its names and ids pass %zu bytes", kMaxStoredTextBytes));
      return;
    }
    list.emplace_back(std::in_place_type<DefaultsDictionary>, std::move(entry));
    icons.push_back(value(2));
  }
  if (list.empty()) {
    log.line("Apps list not stored: no entry of four children");
    return;
  }

  std::stable_sort(list.begin(), list.end(), [](const DefaultsValue& a, const DefaultsValue& b) {
    return priorityOf(a) < priorityOf(b);
  });
  services_.defaults.setObject(kMoreAppsKey, std::move(list));
  services_.defaults.setObject(kLastUpdateKey, Date{services_.clock.now()});
  services_.defaults.synchronize();
  log.line(format("Apps list stored: %zu entries", icons.size()));
  for (const std::string& appleid : icons) downloadIcon(appleid);
}

std::optional<DefaultsArray> orvapps::getApps() {
  if (auto cached = services_.defaults.arrayForKey(kMoreAppsKey)) return cached;
  auto path = services_.bundle.pathForResource(kSeedListName, kSeedListType);
  std::optional<DefaultsArray> seed = path ? arrayWithContentsOfFile(*path) : std::nullopt;
  if (!seed) return std::nullopt;
  services_.defaults.setObject(kMoreAppsKey, *seed);
  // The main thread asks for the list: the disk is written behind it.
  services_.defaults.synchronizeInBackground();
  return seed;
}

std::string orvapps::getAppURL(const std::string& appleid) const {
  return storeLinkBase_ +
         (isSafeAppleId(appleid) ? appleid : percentEscaped(appleid, kUnreservedPunctuation)) +
         "&mt=8";
}

void orvapps::downloadIcon(const std::string& appleid) {
  if (!isSafeAppleId(appleid)) {
    services_.log.line("Appleid \"" + forLog(appleid, kQuoteLimit) +
                       "\" is not 1 to 20 decimal digits; listed without an icon");
    return;
  }
  {
    std::lock_guard lock(core_->icons);
    core_->waiting.push_back(appleid);
  }
  pumpIcons();
}

void orvapps::pumpIcons() {
  for (;;) {
    std::string appleid;
    {
      std::lock_guard lock(core_->icons);
      if (core_->waiting.empty() || core_->running >= kMaxIconDownloads) return;
      appleid = std::move(core_->waiting.front());
      core_->waiting.pop_front();
      ++core_->running;
    }
    HttpRequest request;
    request.url = iconBaseUrl_ + appleid + ".png";
    request.timeout = kFeedTimeout;
    request.maxBodyBytes = kMaxIconBytes;
    std::weak_ptr<Core> weak = core_;
    services_.http.send(std::move(request), [this, weak, appleid](const HttpReply& reply) {
      auto core = weak.lock();
      if (!core) return;
      std::lock_guard lock(core->handling);
      if (core->gone) return;
      iconArrived(appleid, reply);
      {
        std::lock_guard icons(core->icons);
        --core->running;
      }
      pumpIcons();
    });
  }
}

void orvapps::iconArrived(const std::string& appleid, const HttpReply& reply) {
  if (reply.status.code() == Status::Code::TooLarge) {
    services_.log.line(
        format("Icon for %s dropped: the reply is over %zu bytes", appleid.c_str(), kMaxIconBytes));
    return;
  }
  if (!reply.status.ok()) {
    services_.log.line("Icon for " + appleid + " not fetched: " + reply.status.toString());
    return;
  }
  // Whatever came back is kept, whatever its status code; an empty body keeps the icon there
  // was.
  if (reply.body.empty()) return;
  const Status written = services_.documents.writeAtomically(iconFileName(appleid), reply.body);
  if (!written.ok()) {
    services_.log.line("Icon for " + appleid + " not saved: " + written.toString());
  }
}

std::optional<std::string> orvapps::getAppIcon(const std::string& appleid) const {
  if (!isSafeAppleId(appleid)) return std::nullopt;
  return services_.documents.pathForFile(iconFileName(appleid));
}

}  // namespace zellick
