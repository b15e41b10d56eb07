#include "adconnect/AdConnect.h"

#include <algorithm>
#include <mutex>

#include "platform/url.h"

namespace zellick {

namespace {

constexpr const char* kConnectPath = "connect";
constexpr int32_t kAttemptsBeforeNoRetry = 2;

// The host of a base URL as a reply's URL names it: no user, no port, no brackets.
std::string hostOf(const std::string& baseUrl) {
  const auto scheme = baseUrl.find("://");
  if (scheme == std::string::npos) return {};
  std::string authority = baseUrl.substr(scheme + 3, baseUrl.find('/', scheme + 3) - scheme - 3);
  if (const auto at = authority.rfind('@'); at != std::string::npos) authority.erase(0, at + 1);
  if (authority.starts_with('[')) return authority.substr(1, authority.find(']') - 1);
  return authority.substr(0, authority.find(':'));
}

}  // namespace

class AdConnect::Connection {};

// Replies come on the HTTP client's thread and go to the main loop only while the client lives.
struct AdConnect::Mailbox {
  std::mutex mutex;
  RunLoop* runLoop;   // guarded; null once the client is gone
  AdConnect* client;  // main thread only
};

AdConnect::AdConnect(AdConnectServices services)
    : services_(std::move(services)),
      baseURL_(services_.configuration.adPrimaryBaseUrl),
      mailbox_(std::make_shared<Mailbox>()) {
  mailbox_->runLoop = &services_.runLoop;
  mailbox_->client = this;
}

AdConnect::~AdConnect() {
  std::lock_guard lock(mailbox_->mutex);
  mailbox_->runLoop = nullptr;
  mailbox_->client = nullptr;
}

AdConnect* AdConnect::requestAdConnectWithAppId(const std::string& appId) {
  if (!made_) {
    initWithAppId(appId);
    made_ = true;
  }
  isInitialConnect_ = true;
  connectWithParam(genericParameters());
  std::weak_ptr<bool> alive = alive_;
  services_.notifications.addObserver(kDidBecomeActive, [this, alive] {
    if (alive.lock()) deviceNotificationReceived();
  });
  return this;
}

AdConnect* AdConnect::requestAdConnectWithAppId(const std::string& appId, const std::string&,
                                                const std::string&) {
  return requestAdConnectWithAppId(appId);
}

AdConnect* AdConnect::sharedAdConnect() { return made_ ? this : nullptr; }

void AdConnect::deviceNotificationReceived() {
  AdConnect* shared = sharedAdConnect();
  if (!shared) return;
  if (shared->isInitialConnect()) {
    // The launch's own become-active: its request went out already.
    shared->setIsInitialConnect(false);
    return;
  }
  shared->connectWithParam(shared->genericParameters());
}

AdConnect* AdConnect::actionComplete(const std::string& actionId) {
  AdConnect* shared = sharedAdConnect();
  if (!shared) return nullptr;
  AdConnectParameters params = shared->genericParameters();
  auto it =
      std::find_if(params.begin(), params.end(), [](const auto& p) { return p.first == "app_id"; });
  if (it != params.end())
    it->second = actionId;
  else
    params.emplace_back("app_id", actionId);
  shared->connectWithParam(params);
  return shared;
}

AdConnect& AdConnect::initWithAppId(const std::string& appId) {
  appId_ = appId;
  connection_.reset();
  connectAttempts_ = 0;
  return *this;
}

AdConnectParameters AdConnect::genericParameters() const {
  const DeviceFacts& d = services_.device;
  const std::pair<const char*, std::optional<std::string>> values[] = {
      {"udid", d.vendorId},
      {"device_type", d.model},
      {"os_version", d.systemVersion},
      {"app_id", appId_},
      {"app_version", services_.configuration.appVersion},
      {"library_version", kLibraryVersion},
      {"country_code", d.countryCode},
      {"language_code", d.languageCode},
      {"lad", d.runsAsRoot ? "1" : "0"},
  };
  AdConnectParameters params;
  // The first missing value ends the list: what follows it is not sent either.
  for (const auto& [key, value] : values) {
    if (!value) break;
    params.emplace_back(key, *value);
  }
  return params;
}

std::string AdConnect::createQueryStringFromDict(const AdConnectParameters* dict) const {
  AdConnectParameters own;
  if (!dict) {
    if (const AdConnect* shared = const_cast<AdConnect*>(this)->sharedAdConnect())
      own = shared->genericParameters();
    dict = &own;
  }
  std::string query;
  for (const auto& [key, value] : *dict) {
    if (!query.empty()) query += '&';
    query += percentEscaped(key, kUrlPunctuation) + "=" + percentEscaped(value, kUrlPunctuation);
  }
  return query;
}

void AdConnect::connectWithParam(const AdConnectParameters& param) {
  // Escaped once more as a whole: a value's "%20" goes out as "%2520", as the service reads it.
  HttpRequest request;
  request.method = "GET";
  request.url = percentEscaped(baseURL_ + kConnectPath + "?" + createQueryStringFromDict(&param),
                               kUrlPunctuation);
  request.timeout = kTimeoutSeconds;
  request.maxBodyBytes = kMaxReplyBytes;
  request.trustedHosts = {hostOf(services_.configuration.adPrimaryBaseUrl),
                          hostOf(services_.configuration.adFallbackBaseUrl)};
  auto connection = std::make_shared<Connection>();
  connection_ = connection;
  ++connectAttempts_;
  services_.http.send(std::move(request), [mailbox = mailbox_, connection](HttpReply reply) {
    std::lock_guard lock(mailbox->mutex);
    if (!mailbox->runLoop) return;
    mailbox->runLoop->post([mailbox, connection, reply = std::move(reply)]() mutable {
      if (mailbox->client) mailbox->client->replyArrived(connection, reply);
    });
  });
}

void AdConnect::replyArrived(const std::shared_ptr<Connection>& connection, HttpReply& reply) {
  if (!reply.status.ok()) {
    if (reply.status.code() == Status::Code::TooLarge)
      services_.log.line("Ad network connect: a reply over " + std::to_string(kMaxReplyBytes) +
                         " bytes; taken as a failed request");
    this->connection(*connection, reply.status);
    return;
  }
  // Whatever the status code: the body is read as the service's answer.
  if (!reply.body.empty()) this->connection(*connection, std::string_view(reply.body));
  connectionDidFinishLoading(*connection);
}

void AdConnect::connection(Connection&, std::string_view didReceiveData) {
  if ((data_ ? data_->size() : 0) + didReceiveData.size() > kMaxBufferBytes) {
    services_.log.line("Ad network connect: the reply buffer is full (" +
                       std::to_string(kMaxBufferBytes) + " bytes); this reply is not kept");
    return;
  }
  if (!data_) data_.emplace();
  data_->append(didReceiveData);
}

void AdConnect::connectionDidFinishLoading(Connection&) {
  connection_.reset();
  // The buffer is never emptied: every reply of the process is read again, from the first.
  if (data_) startParsing(*data_);
}

void AdConnect::connection(Connection&, const Status&) {
  connection_.reset();
  if (connectAttempts_ < kAttemptsBeforeNoRetry) {
    // For the rest of the process, and with fresh parameters (an action's id is not kept).
    baseURL_ = services_.configuration.adFallbackBaseUrl;
    connectWithParam(genericParameters());
    return;
  }
  services_.notifications.post(kAdConnectFailed);
}

void AdConnect::parser(ReplyParser&, const std::string& didStartElement, const std::string&,
                       const std::string&, const Attributes&) {
  currentXMLElement_ = didStartElement;
  if (didStartElement == "ErrorMessage") services_.notifications.post(kAdConnectFailed);
}

void AdConnect::parser(ReplyParser&, std::string_view foundCharacters) {
  // Each delivery as a whole: "true" in pieces is no success.
  if (currentXMLElement_ == "Success" && foundCharacters == "true")
    services_.notifications.post(kAdConnectSuccess);
}

void AdConnect::parser(ReplyParser&, const std::string&, const std::string&, const std::string&) {
  // The last started element stays current.
}

}  // namespace zellick
