#pragma once

#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "counter/ZellickViewController.h"
#include "platform/notifications.h"
#include "platform/qt/qt_presenters.h"
#include "platform/qt/qt_runloop.h"
#include "platform/qt/qt_screen.h"
#include "services/tracker.h"

namespace zellick {

// Usage records are not sent yet: the network side of the tracker comes later.
class UnsentTracker : public orvtracker {
 public:
  void Track(const std::string&) override {}
};

// What the counter needs from the outside that the caller chooses (real or recording).
struct CounterAppParts {
  UserDefaults& defaults;
  SoundOutput& sound;
  Bundle& bundle;
  Log& log;
  orvtracker& tracker;
};

// The counter screen on Qt with its controller, wired as the app runs it. Main thread only;
// needs a QGuiApplication.
class CounterApp {
 public:
  explicit CounterApp(CounterAppParts parts);
  CounterApp(const CounterApp&) = delete;
  CounterApp& operator=(const CounterApp&) = delete;
  ~CounterApp();

  // Loads the screen and builds the controller on it; false (logged) when the screen does
  // not load or lacks a control the controller needs.
  // `windowProperties` are set on the window as it is created (e.g. its width and height).
  bool load(const QUrl& url = QUrl(QStringLiteral("qrc:/qml/Main.qml")),
            const QVariantMap& windowProperties = {});
  // Where the screen keeps rendered artwork between starts (see QtScreen); before load().
  void setArtworkCacheDir(const QString& dir) { artworkCacheDir_ = dir; }
  // See QtScreen::setShippedArtworkDirs; before load().
  void setShippedArtworkDirs(const QStringList& dirs) { shippedArtworkDirs_ = dirs; }
  // See QtScreen::setBeforeQuestion; before load().
  void setBeforeQuestion(std::function<void()> run) { beforeQuestion_ = std::move(run); }
  // The controller's start: its view is loaded and about to appear.
  void start();
  // Posts become-active, for callers without a life-cycle source of their own.
  void activate();

  ZellickViewController& controller() { return *controller_; }
  QtScreen& screen() { return *screen_; }
  NotificationCenter& notifications() { return notifications_; }
  QtRunLoop& runLoop() { return runLoop_; }

 private:
  CounterAppParts parts_;
  QString artworkCacheDir_;
  QStringList shippedArtworkDirs_;
  std::function<void()> beforeQuestion_;
  QtRunLoop runLoop_;
  QtClock clock_;
  NotificationCenter notifications_;
  std::unique_ptr<LoggingScreenPresenter> screens_;
  std::unique_ptr<QtScreen> screen_;
  std::unique_ptr<ZellickViewController> controller_;
};

// Where bundle resources are looked up, in order: $ZELLICK_BUNDLE, the "bundle" folder next
// to the executable, then the build tree's bundle.
std::vector<std::string> bundleFolders();

}  // namespace zellick
