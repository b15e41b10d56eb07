#pragma once

#include <QVariantMap>

#include <memory>

#include "app/counter_screen.h"
#include "app/environment.h"
#include "platform/qt/bundle.h"
#include "platform/qt/deferred_sound.h"
#include "platform/qt/instance_lock.h"
#include "platform/qt/lifecycle.h"
#include "platform/qt/log.h"
#include "platform/qt/settings_defaults.h"
#include "ui/font_setup.h"

class QQuickWindow;

namespace zellick {

// Usage records are not sent yet: the network side of the tracker comes later.
class UnsentTracker : public orvtracker {
 public:
  void Track(const std::string&) override {}
};

// The whole app as it runs: the real services, the counter screen and the life cycle that
// saves on the way out. Main thread only; needs a QGuiApplication.
class ZellickApp {
 public:
  // Names the application, which decides where its folders are; before Environment::fromProcess().
  static void identify();

  explicit ZellickApp(Environment environment);
  ZellickApp(const ZellickApp&) = delete;
  ZellickApp& operator=(const ZellickApp&) = delete;
  ~ZellickApp();

  enum class Launch {
    Shown,           // the counter is on screen and active
    AlreadyRunning,  // another process runs on the same settings file; it was asked to the front
    Failed,          // the screen could not be built (logged)
  };
  Launch launch(const QVariantMap& windowProperties = {});

  // After a launch that showed the counter.
  CounterScreen& counter() { return *counter_; }
  QQuickWindow* window() { return counter_->screen().window(); }
  ZellickViewController& controller() { return counter_->controller(); }
  NotificationCenter& notifications() { return counter_->notifications(); }
  qt::QSettingsDefaults& settings() { return *defaults_; }
  Log& log() { return log_; }

 private:
  void comeToTheFront();

  Environment environment_;
  qt::StderrLog log_;
  // The labels draw from the bundled face directly; Qt's text stack, which only the questions
  // use, is set up after the first frame, and a question waits for it.
  ui::FontSetupAhead fontSetup_;
  // The audio stack is loaded after the first frame, or by the first click before it.
  qt::DeferredSoundOutput sound_;
  qt::DirectoryBundle bundle_;
  UnsentTracker tracker_;
  // Taken before the settings file is opened: it is one app's file.
  std::unique_ptr<qt::InstanceLock> instance_;
  std::unique_ptr<qt::QSettingsDefaults> defaults_;
  std::unique_ptr<CounterScreen> counter_;
  std::unique_ptr<qt::QtLifecycle> lifecycle_;
};

}  // namespace zellick
