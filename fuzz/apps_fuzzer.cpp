// libFuzzer entry point: any bytes through the catalogue's whole refresh as a reply would bring
// them (checked, parsed, validated, sorted, stored in memory defaults, icons asked for), then
// what must hold whatever the feed: a stored list is within bounds and sorted by priority, icons
// are asked for only for a stored list, and only by ids that may name a file.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include <libxml/xmlerror.h>

#include "platform/fake/documents.h"
#include "platform/fake/memory_defaults.h"
#include "platform/fake/services.h"
#include "platform/fake/time.h"
#include "services/apps.h"
#include "xml/ZXMLError.h"

namespace {

using namespace zellick;

struct AskedFor : HttpClient {
  std::vector<std::string> urls;
  void send(HttpRequest request, std::function<void(HttpReply)>) override {
    urls.push_back(std::move(request.url));
  }
};

struct Quiet : Log {
  void line(const std::string&) override {}
};
void quietLine(const std::string&) {}
void quietParser(void*, const char*, ...) {}

const std::string kIcons = "http://maker.example/icons/";

// An entry as the defaults must hold it: four values of their types, numbers within 32 bits.
std::optional<long long> priorityOfWhole(const DefaultsValue& entry) {
  const auto* d = std::get_if<DefaultsDictionary>(&entry);
  if (!d || d->size() != 4) return std::nullopt;
  for (const char* key : {kAppIdKey, kAppNameKey, kAppleIdKey, kPriorityKey})
    if (!d->contains(key)) return std::nullopt;
  const auto* id = std::get_if<long long>(&d->at(kAppIdKey));
  const auto* priority = std::get_if<long long>(&d->at(kPriorityKey));
  if (!id || !priority || std::max(*id, *priority) > INT32_MAX ||
      std::min(*id, *priority) < INT32_MIN ||
      !std::holds_alternative<std::string>(d->at(kAppNameKey)) ||
      !std::holds_alternative<std::string>(d->at(kAppleIdKey)))
    return std::nullopt;
  return *priority;
}

bool digits(const std::string& id) {
  return !id.empty() && id.size() <= 20 && id.find_first_not_of("0123456789") == id.npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool quiet = [] {
    ZXMLSetLogHandler(quietLine);
    xmlSetGenericErrorFunc(nullptr, quietParser);
    return true;
  }();
  (void)quiet;
  AskedFor http;
  fake::MemoryDefaults defaults;
  fake::MemoryDocuments documents;
  fake::FakeBundle bundle({});
  fake::VirtualTime time;
  fake::WallClock clock(time, 0);
  Quiet log;
  Configuration configuration;
  configuration.makerBaseUrl = "http://maker.example/";
  orvapps({http, defaults, documents, bundle, clock, log}, configuration)
      .receiveList(std::string(reinterpret_cast<const char*>(data), size));

  const auto list = defaults.arrayForKey(kMoreAppsKey);
  std::vector<long long> priorities;
  for (const DefaultsValue& entry : list.value_or(DefaultsArray{})) {
    if (!priorityOfWhole(entry)) std::abort();
    priorities.push_back(*priorityOfWhole(entry));
  }
  if (list && (list->empty() || list->size() > kMaxStoredApps ||
               !std::is_sorted(priorities.begin(), priorities.end())))
    std::abort();
  if (!list && !http.urls.empty()) std::abort();
  for (const std::string& url : http.urls) {
    const std::string id = url.substr(std::min(url.size(), kIcons.size()));
    if (!url.starts_with(kIcons) || !id.ends_with(".png") || !digits(id.substr(0, id.size() - 4)))
      std::abort();
  }
  return 0;
}
