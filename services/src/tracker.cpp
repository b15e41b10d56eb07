#include "services/tracker.h"

#include <variant>

namespace zellick {

namespace {

constexpr const char* kAppId = "17";
std::atomic<orvtracker*> g_first{nullptr};

// The text as UTF-8, every byte that does not belong to a well-formed character replaced by
// U+FFFD: the record goes out as UTF-8 whatever the device's name holds.
std::string utf8Lossy(const std::string& in) {
  std::string out;
  out.reserve(in.size());
  const auto* s = reinterpret_cast<const unsigned char*>(in.data());
  const size_t n = in.size();
  for (size_t i = 0; i < n;) {
    const unsigned char c = s[i];
    size_t len = c < 0x80           ? 1
                 : (c >> 5) == 0x6  ? 2
                 : (c >> 4) == 0xE  ? 3
                 : (c >> 3) == 0x1E ? 4
                                    : 0;
    bool ok = len > 0 && i + len <= n;
    for (size_t k = 1; ok && k < len; ++k) ok = (s[i + k] & 0xC0) == 0x80;
    if (ok && len > 1) {
      // No overlong forms, no surrogates, nothing beyond U+10FFFF.
      const unsigned cp = len == 2 ? ((c & 0x1Fu) << 6) | (s[i + 1] & 0x3Fu)
                          : len == 3
                              ? ((c & 0x0Fu) << 12) | ((s[i + 1] & 0x3Fu) << 6) | (s[i + 2] & 0x3Fu)
                              : ((c & 0x07u) << 18) | ((s[i + 1] & 0x3Fu) << 12) |
                                    ((s[i + 2] & 0x3Fu) << 6) | (s[i + 3] & 0x3Fu);
      const unsigned least = len == 2 ? 0x80 : len == 3 ? 0x800 : 0x10000;
      ok = cp >= least && cp <= 0x10FFFF && !(cp >= 0xD800 && cp <= 0xDFFF);
    }
    if (ok) {
      out.append(in, i, len);
      i += len;
    } else {
      out += "\xEF\xBF\xBD";
      ++i;
    }
  }
  return out;
}

}  // namespace

orvtracker::orvtracker(Services services, DeviceFacts device, std::string makerBaseUrl)
    : services_(services),
      device_(std::move(device)),
      url_(std::move(makerBaseUrl) + "tracker.php") {
  orvtracker* none = nullptr;
  g_first.compare_exchange_strong(none, this);
}

orvtracker::~orvtracker() {
  orvtracker* self = this;
  g_first.compare_exchange_strong(self, nullptr);
}

orvtracker* orvtracker::sharedInstance() { return g_first.load(); }

bool orvtracker::sending() const {
  if (switchedOff_) return false;
  const std::optional<DefaultsValue> v = services_.defaults.objectForKey(kSendUsageRecordsKey);
  if (!v) return true;
  if (const bool* b = std::get_if<bool>(&*v)) return *b;
  if (const std::string* s = std::get_if<std::string>(&*v)) return *s != "false" && *s != "0";
  return intValue(*v).value_or(1) != 0;
}

void orvtracker::Track(const std::string& tag) {
  if (!sending()) return;
  // Nothing is escaped: the record goes out as the maker's server has always read it.
  postData(std::string("appid=") + kAppId + "&tag=" + tag + "&device=" + device_.name + "|" +
           device_.model + "|" + device_.systemName + "|" + device_.systemVersion + "|" +
           device_.vendorId);
}

void orvtracker::postData(const std::string& record) {
  HttpRequest request;
  request.method = "POST";
  request.url = url_;
  request.body = utf8Lossy(record);
  request.headers = {{"Content-Length", std::to_string(request.body.size())},
                     {"Content-Type", "application/x-www-form-urlencoded"}};
  request.timeout = 60;
  services_.log.line("Sending request: " + record);
  Log& log = services_.log;
  services_.http.send(std::move(request), [&log](const HttpReply& reply) {
    log.line("Response: " + (reply.status.ok() ? utf8Lossy(reply.body) : std::string("(null)")));
  });
}

}  // namespace zellick
