#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace zellick {

// The application's life cycle, posted by the platform (see LifecycleEvents).
inline constexpr const char* kWillResignActive = "UIApplicationWillResignActiveNotification";
inline constexpr const char* kDidBecomeActive = "UIApplicationDidBecomeActiveNotification";
inline constexpr const char* kDidEnterBackground = "UIApplicationDidEnterBackgroundNotification";
inline constexpr const char* kWillEnterForeground = "UIApplicationWillEnterForegroundNotification";
inline constexpr const char* kWillTerminate = "UIApplicationWillTerminateNotification";
inline constexpr const char* kSignificantTimeChange =
    "UIApplicationSignificantTimeChangeNotification";

// Named notifications, delivered synchronously on the posting thread in the order observers
// were added. Observers stay for the centre's lifetime.
class NotificationCenter {
 public:
  NotificationCenter() = default;
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  void addObserver(const std::string& name, std::function<void()> block) {
    observers_[name].push_back(std::move(block));
  }
  void post(const std::string& name) {
    auto it = observers_.find(name);
    if (it == observers_.end()) return;
    auto blocks = it->second;  // an observer may add observers
    for (auto& b : blocks) b();
  }

 private:
  std::map<std::string, std::vector<std::function<void()>>> observers_;
};

}  // namespace zellick
