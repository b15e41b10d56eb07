#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "adconnect/AdConnect.h"
#include "counter/ZellickViewController.h"
#include "platform/application.h"
#include "platform/defaults.h"
#include "platform/log.h"
#include "platform/notifications.h"
#include "platform/runloop.h"
#include "platform/views.h"
#include "services/configuration.h"
#include "services/tracker.h"

namespace zellick {

// What the delegate works with. All references outlive it.
struct AppDelegateServices {
  Application& application;
  RunLoop& runLoop;
  NotificationCenter& notifications;
  UserDefaults& defaults;  // the same store as the counter's
  Log& log;
  AlertPresenter& alerts;
  orvtracker& tracker;
  const Configuration& configuration;
  // The ad network's client, asked to connect at launch; it observes become-active itself.
  AdConnect& adConnect;
  // The catalogue of the maker's other apps, refreshed in the background when due.
  std::function<void()> updateApps;
};

// The activation count, and the review prompt on its seventh value.
inline constexpr const char* kActivationCountKey = "Count";
inline constexpr long long kReviewPromptActivation = 7;
inline constexpr double kReviewPromptDelay = 5.0;

// The application's delegate: starts the app, counts its activations and, on the seventh, asks
// once for a review in the store. It keeps no counter state. Main thread only.
class ZellickAppDelegate : public ApplicationDelegate {
 public:
  explicit ZellickAppDelegate(AppDelegateServices services);
  ZellickAppDelegate(const ZellickAppDelegate&) = delete;
  ZellickAppDelegate& operator=(const ZellickAppDelegate&) = delete;
  ~ZellickAppDelegate() override;

  // The start-up sequence; always true.
  bool applicationDidFinishLaunchingWithOptions();
  void applicationWillResignActive() override;
  void applicationDidEnterBackground() override;
  void applicationWillEnterForeground() override;
  void applicationDidBecomeActive() override;
  void applicationWillTerminate() override;
  void applicationSignificantTimeChange() override;

  void saveCount();
  void showReviewOption(Timer& timer);
  void alertViewClickedButtonAtIndex(AlertView& alert, int buttonIndex);
  void adcConnectSuccess();
  void adcConnectFail();

  // Fields, in declaration order.
  uint64_t backgroundTask = 0;  // declared, never used
  Window* window = nullptr;
  ZellickViewController* viewController = nullptr;

 private:
  AppDelegateServices services_;
  // Deferred work holds a weak reference, so nothing fires into a destroyed delegate.
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace zellick
