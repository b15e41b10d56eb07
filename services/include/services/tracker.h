#pragma once

#include <atomic>
#include <string>

#include "platform/defaults.h"
#include "platform/device.h"
#include "platform/http.h"
#include "platform/log.h"

namespace zellick {

// The user-defaults key that, set to false, keeps every usage record from being sent.
inline constexpr const char* kSendUsageRecordsKey = "SendUsageRecords";

// The usage tracker: one small record to the maker's web server for each notable action.
// Fire-and-forget: Track never waits and never learns the outcome; the server's answer is only
// logged. There is no queue, no retry and no storage of unsent records.
class orvtracker {
 public:
  struct Services {
    HttpClient& http;
    UserDefaults& defaults;  // read for kSendUsageRecordsKey at each record
    Log& log;                // any thread
  };
  // `makerBaseUrl` ends in "/"; records go to its "tracker.php".
  orvtracker(Services services, DeviceFacts device, std::string makerBaseUrl);
  orvtracker(const orvtracker&) = delete;
  orvtracker& operator=(const orvtracker&) = delete;
  virtual ~orvtracker();

  // Formats the record for `tag` on the caller's thread and hands it to postData; returns at
  // once. Nothing is formatted or sent while records are switched off.
  virtual void Track(const std::string& tag);
  // Sends `record` as a form-encoded POST; the reply comes on the HTTP client's thread and is
  // logged as "Response: ...".
  void postData(const std::string& record);

  // Switches records off for this run, whatever the user defaults say.
  void setSwitchedOff(bool off) { switchedOff_ = off; }
  // The first tracker made in this process, while it lives; nothing in the app uses it.
  static orvtracker* sharedInstance();

 private:
  bool sending() const;

  Services services_;
  DeviceFacts device_;
  std::string url_;
  std::atomic<bool> switchedOff_ = false;
};

}  // namespace zellick
