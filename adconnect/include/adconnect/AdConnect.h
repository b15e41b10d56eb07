#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/device.h"
#include "platform/http.h"
#include "platform/log.h"
#include "platform/notifications.h"
#include "platform/runloop.h"
#include "services/configuration.h"

namespace zellick {

// The outcome of a connect, posted on the main thread with no object.
inline constexpr const char* kAdConnectSuccess = "ADC_Connect_Success";
inline constexpr const char* kAdConnectFailed = "ADC_Connect_Failed";

// Key and value pairs in the order they go out.
using AdConnectParameters = std::vector<std::pair<std::string, std::string>>;

// What the client works with. All references outlive it.
struct AdConnectServices {
  HttpClient& http;
  RunLoop& runLoop;                   // the main loop; replies are brought back to it
  NotificationCenter& notifications;  // the outcome goes here; become-active is observed here
  Log& log;
  DeviceFacts device;
  const Configuration& configuration;  // the two base URLs and the app's version
};

// Tells the ad network's web service that the app started or came back to the foreground, and
// posts the outcome. The app makes one; it also holds what is process-wide (the shared instance,
// made by the first request, and the current base URL), so the class operations are members
// here too. Main thread only: a reply, whatever thread the HTTP client gives it on, is handed
// back with RunLoop::post.
class AdConnect {
 public:
  class Connection;   // a request in flight
  class ReplyParser;  // the reader of the reply buffer
  using Attributes = std::vector<std::pair<std::string, std::string>>;

  static constexpr double kTimeoutSeconds = 30;
  static constexpr const char* kLibraryVersion = "7.4.0";
  // A reply longer than this fails as a request does; the buffer stops growing at kMaxBufferBytes.
  static constexpr std::size_t kMaxReplyBytes = 64u << 10;
  static constexpr std::size_t kMaxBufferBytes = 1u << 20;

  explicit AdConnect(AdConnectServices services);
  AdConnect(const AdConnect&) = delete;
  AdConnect& operator=(const AdConnect&) = delete;
  ~AdConnect();  // replies still on their way are dropped

  // Process-wide operations.
  // Makes the shared instance on the first call (later calls keep it and its first id), marks
  // the connect as initial, starts a request and observes become-active once more on every
  // call. Returns the shared instance.
  AdConnect* requestAdConnectWithAppId(const std::string& appId);
  // The same; the password and the version are ignored.
  AdConnect* requestAdConnectWithAppId(const std::string& appId, const std::string& password,
                                       const std::string& version);
  // The shared instance, or null before the first request.
  AdConnect* sharedAdConnect();
  // Swallows the first become-active after a request; any later one starts a request.
  void deviceNotificationReceived();
  // A request whose "app_id" is `actionId`; nothing (and null) before the first request.
  AdConnect* actionComplete(const std::string& actionId);
  void connect() {}
  const std::string& currentBaseURL() const { return baseURL_; }

  // Instance operations.
  AdConnect& initWithAppId(const std::string& appId);
  // Filled in order up to the first value the machine lacks. "lad", the device-integrity flag,
  // is "1" when the app runs with root privileges, else "0".
  AdConnectParameters genericParameters() const;
  // "k=v&k=v", each key and value escaped; null: the shared instance's genericParameters.
  std::string createQueryStringFromDict(const AdConnectParameters* dict) const;
  void connectWithParam(const AdConnectParameters& param);
  // Reads `data` from its start, posting what it finds, up to the first fatal error.
  void startParsing(std::string_view data);
  const std::string& appId() const { return appId_; }
  bool isInitialConnect() const { return isInitialConnect_; }
  void setIsInitialConnect(bool value) { isInitialConnect_ = value; }
  // For the state dump: requests started, and the buffer (none before the first reply byte).
  int32_t connectAttempts() const { return connectAttempts_; }
  const std::optional<std::string>& data() const { return data_; }

  // The request's progress. Caching and trust are settled on the request itself: the cache is
  // never used, and the two service hosts' certificates are taken as presented.
  void connection(Connection& connection, std::string_view didReceiveData);
  void connectionDidFinishLoading(Connection& connection);
  void connection(Connection& connection, const Status& didFailWithError);

  // The reader's events, in document order. Names are as written (prefix included).
  void parser(ReplyParser& parser, const std::string& didStartElement,
              const std::string& namespaceURI, const std::string& qualifiedName,
              const Attributes& attributes);
  void parser(ReplyParser& parser, std::string_view foundCharacters);
  void parser(ReplyParser& parser, const std::string& didEndElement,
              const std::string& namespaceURI, const std::string& qualifiedName);

 private:
  struct Mailbox;
  void replyArrived(const std::shared_ptr<Connection>& connection, HttpReply& reply);

  AdConnectServices services_;
  std::string baseURL_;  // process-wide: the primary base URL until the first fail-over
  bool made_ = false;    // process-wide: the shared instance exists
  std::shared_ptr<Mailbox> mailbox_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);

  // Fields, in declaration order.
  std::string appId_;
  std::optional<std::string> data_;  // every reply of the process, one after another
  std::shared_ptr<Connection> connection_;
  [[maybe_unused]] const void* timeStamp_ = nullptr;  // declared, never used
  std::string currentXMLElement_;                     // the element most recently started
  int32_t connectAttempts_ = 0;                       // never reset
  bool isInitialConnect_ = false;
};

}  // namespace zellick
