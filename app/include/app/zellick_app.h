#pragma once

#include <QVariantMap>

#include <memory>

#include "app/ZellickAppDelegate.h"
#include "app/command_line.h"
#include "app/counter_screen.h"
#include "app/environment.h"
#include "platform/application.h"
#include "platform/qt/application.h"
#include "platform/qt/bundle.h"
#include "platform/qt/deferred_sound.h"
#include "platform/qt/documents.h"
#include "platform/qt/http.h"
#include "platform/qt/instance_lock.h"
#include "platform/qt/lifecycle.h"
#include "platform/qt/log.h"
#include "platform/qt/settings_defaults.h"
#include "services/apps.h"
#include "services/configuration.h"
#include "services/tracker.h"
#include "ui/font_setup.h"

class QQuickWindow;

namespace zellick {

// The whole app as it runs: the real services, the delegate that starts it, the counter screen
// and the life cycle that saves on the way out. Main thread only; needs a QGuiApplication.
class ZellickApp {
 public:
  // Names the application, which decides where its folders are; before Environment::fromProcess().
  static void identify();

  explicit ZellickApp(Environment environment, CommandLine commandLine = {});
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
  CommandLine commandLine_;
  qt::StderrLog log_;
  Configuration configuration_;
  // The labels draw from the bundled face directly; Qt's text stack, which only the questions
  // use, is set up after the first frame, and a question waits for it.
  ui::FontSetupAhead fontSetup_;
  // The audio stack is loaded after the first frame, or by the first click before it.
  qt::DeferredSoundOutput sound_;
  qt::DirectoryBundle bundle_;
  // Taken before the settings file is opened: it is one app's file.
  std::unique_ptr<qt::InstanceLock> instance_;
  std::unique_ptr<qt::QSettingsDefaults> defaults_;
  // Its replies use only the log; going, it drops what is in flight and waits for no server.
  std::unique_ptr<qt::QtHttpClient> http_;
  std::unique_ptr<orvtracker> tracker_;
  qt::QtClock clock_;
  std::unique_ptr<qt::FolderDocuments> documents_;
  // Goes before the client: replies that come later find it gone.
  std::unique_ptr<orvapps> apps_;
  std::unique_ptr<qt::QtApplication> application_;
  std::unique_ptr<CounterScreen> counter_;
  std::unique_ptr<LifecycleEvents> events_;
  // On the counter's run loop and notifications: it goes before them.
  std::unique_ptr<AdConnect> adConnect_;
  std::unique_ptr<ZellickAppDelegate> delegate_;
  std::unique_ptr<qt::QtLifecycle> lifecycle_;
};

// Ends the process with `code` once the app is gone, without the QGuiApplication's clean-up and
// Qt's exit-time one, which wait for host-name lookups still under way. Sanitised builds return
// `code` instead, so the leak checker sees the whole clean-up.
int endProcess(int code);

}  // namespace zellick
