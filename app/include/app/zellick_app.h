#pragma once

#include <QVariantMap>

#include <memory>

#include "app/counter_screen.h"
#include "app/environment.h"
#include "platform/qt/bundle.h"
#include "platform/qt/deferred_sound.h"
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

  // Shows the counter and makes it active; false (logged) when the screen cannot be built.
  bool launch(const QVariantMap& windowProperties = {});

  QQuickWindow* window() { return counter_.screen().window(); }
  ZellickViewController& controller() { return counter_.controller(); }
  NotificationCenter& notifications() { return counter_.notifications(); }
  Log& log() { return log_; }

 private:
  Environment environment_;
  qt::StderrLog log_;
  // The labels draw from the bundled face directly; Qt's text stack, which only the questions
  // use, is set up after the first frame, and a question waits for it.
  ui::FontSetupAhead fontSetup_;
  qt::QSettingsDefaults defaults_;
  // The audio stack is loaded after the first frame, or by the first click before it.
  qt::DeferredSoundOutput sound_;
  qt::DirectoryBundle bundle_;
  UnsentTracker tracker_;
  CounterScreen counter_;
  std::unique_ptr<qt::QtLifecycle> lifecycle_;
};

}  // namespace zellick
