#include "app/ZellickAppDelegate.h"

namespace zellick {

namespace {

constexpr const char* kReviewTitle = "PLEASE REVIEW \nWe Appreciate Your Feedback";
constexpr const char* kReviewBefore =
    "Would you kindly take a moment to review Zellick?\nIt won't take more than a minute. \n\n"
    "Just click Review Now! and you'll be taken to our page on the iTunes App Store. \n\n"
    "Scroll to the bottom and click the arrow next to the ratings, then click Write a Review. \n"
    "Five star ratings and kind words are greatly appreciated! \n\n"
    "If for any reason you are unhappy with our App, please email us at";
constexpr const char* kReviewAfter =
    " before you write a negative review so that we may address your concerns. If we don't "
    "respond quickly and fix the problem, then tell the world. \n\n"
    "Thanks so much for your review and for purchasing our App.\nOrvanta Development Team";
constexpr int kReviewNowButton = 1;

}  // namespace

ZellickAppDelegate::ZellickAppDelegate(AppDelegateServices services) : services_(services) {}

ZellickAppDelegate::~ZellickAppDelegate() = default;

bool ZellickAppDelegate::applicationDidFinishLaunchingWithOptions() {
  services_.application.setIdleTimerDisabled(true);
  std::weak_ptr<bool> alive = alive_;
  services_.notifications.addObserver(kAdConnectSuccess, [this, alive] {
    if (alive.lock()) adcConnectSuccess();
  });
  services_.notifications.addObserver(kAdConnectFailed, [this, alive] {
    if (alive.lock()) adcConnectFail();
  });
  if (window) {
    window->setRootViewController(viewController);
    window->makeKeyAndVisible();
  }
  services_.adConnect.requestAdConnectWithAppId(services_.configuration.adAppId);
  if (services_.updateApps) services_.updateApps();
  services_.tracker.Track("Launch");
  return true;
}

// Saving the counter is the counter screen's business, from its own observers.
void ZellickAppDelegate::applicationWillResignActive() {}
void ZellickAppDelegate::applicationDidEnterBackground() {}
void ZellickAppDelegate::applicationWillTerminate() {}

void ZellickAppDelegate::applicationWillEnterForeground() {
  services_.application.setIdleTimerDisabled(true);
}

void ZellickAppDelegate::applicationDidBecomeActive() {
  saveCount();
  services_.tracker.Track("reLaunch");
}

void ZellickAppDelegate::applicationSignificantTimeChange() {
  services_.log.line("Significant time changed");
}

void ZellickAppDelegate::saveCount() {
  UserDefaults& d = services_.defaults;
  const long long n = d.integerForKey(kActivationCountKey);
  // The store writes in the background: the activation at start-up never waits for the disk.
  if (n == 0) {
    d.setInteger(kActivationCountKey, 1);
    d.synchronizeInBackground();
    return;
  }
  d.setInteger(kActivationCountKey, n + 1);
  d.synchronizeInBackground();
  // Equal, not at least: the prompt comes once in the app's life.
  if (n + 1 == kReviewPromptActivation) {
    std::weak_ptr<bool> alive = alive_;
    services_.runLoop.scheduledTimer(kReviewPromptDelay, [this, alive](Timer& timer) {
      if (alive.lock()) showReviewOption(timer);
    });
  }
}

void ZellickAppDelegate::showReviewOption(Timer& timer) {
  auto alert = std::make_shared<AlertView>(
      kReviewTitle,
      std::string(kReviewBefore) + " " + services_.configuration.supportEmail + kReviewAfter,
      std::vector<std::string>{"No", "Review Now!"});
  std::weak_ptr<bool> alive = alive_;
  services_.alerts.show(alert, [this, alive](AlertView& a, int index) {
    if (alive.lock()) alertViewClickedButtonAtIndex(a, index);
  });
  timer.invalidate();
}

void ZellickAppDelegate::alertViewClickedButtonAtIndex(AlertView&, int buttonIndex) {
  if (buttonIndex == kReviewNowButton)
    services_.application.openURL(services_.configuration.storePageUrl);
}

void ZellickAppDelegate::adcConnectSuccess() { services_.log.line("Ad Connect Succeeded"); }
void ZellickAppDelegate::adcConnectFail() { services_.log.line("Ad Connect Failed"); }

}  // namespace zellick
