#pragma once

#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <memory>

#include "counter/ZellickViewController.h"
#include "more/moreView.h"
#include "platform/application.h"
#include "platform/notifications.h"
#include "platform/qt/runloop.h"
#include "services/apps.h"
#include "services/configuration.h"
#include "services/tracker.h"
#include "ui/screen.h"
#include "ui/screen_host.h"

namespace zellick {

// What the counter needs from the outside that the caller chooses (real or recording).
struct CounterParts {
  UserDefaults& defaults;
  SoundOutput& sound;
  Bundle& bundle;
  Log& log;
  orvtracker& tracker;
  // What the More screen, presented from the counter, works with.
  Application& application;
  orvapps& apps;
  const Configuration& configuration;
};

// How the counter's screen is shown.
struct CounterScreenOptions {
  QString artworkCacheDir;               // see ui::QtScreen
  QStringList shippedArtworkDirs;        // see ui::QtScreen
  std::function<void()> beforeQuestion;  // also run before the More screen loads
  QVariantMap windowProperties;          // set on the window as it is created, e.g. its size
};

// The counter screen on Qt with its controller, wired as the app runs it; the More screen comes
// over it (qrc:/qml/MoreScreen.qml), without a mail composer. Main thread only; needs a
// QGuiApplication.
class CounterScreen {
 public:
  explicit CounterScreen(CounterParts parts);
  CounterScreen(const CounterScreen&) = delete;
  CounterScreen& operator=(const CounterScreen&) = delete;
  ~CounterScreen();

  // Loads the screen and builds the controller on it; false (logged) when the screen does
  // not load or lacks a control the controller needs.
  bool load(const CounterScreenOptions& options = {},
            const QUrl& url = QUrl(QStringLiteral("qrc:/qml/Main.qml")));
  // The controller's start where no delegate starts it: the window shows its view.
  void start();
  // Posts become-active, for callers without a life-cycle source of their own.
  void activate();

  ZellickViewController& controller() { return *controller_; }
  ui::QtScreen& screen() { return *screen_; }
  // The More screen's presenter and the host it shows screens on; after a load that succeeded.
  MoreScreenPresenter& more() { return *more_; }
  ui::QtScreenHost& screenHost() { return *host_; }
  Window& window() { return *window_; }
  NotificationCenter& notifications() { return notifications_; }
  qt::QtRunLoop& runLoop() { return runLoop_; }

 private:
  CounterParts parts_;
  qt::QtRunLoop runLoop_;
  qt::QtClock clock_;
  qt::BootClock uptime_;
  NotificationCenter notifications_;
  std::unique_ptr<ui::QtScreen> screen_;
  std::unique_ptr<ui::QtScreenHost> host_;
  std::unique_ptr<MoreScreenPresenter> more_;
  std::unique_ptr<ui::ScreenWindow> window_;
  std::unique_ptr<ZellickViewController> controller_;
};

}  // namespace zellick
