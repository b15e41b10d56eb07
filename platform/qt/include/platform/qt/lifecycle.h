#pragma once

#include <QObject>

#include "platform/application.h"
#include "platform/log.h"

QT_BEGIN_NAMESPACE
class QSocketNotifier;
class QWindow;
QT_END_NAMESPACE

namespace zellick::qt {

// Turns the application's life into LifecycleEvents: Qt's application state; the window hidden
// or minimised (background) and shown again (foreground); and on a desktop the window closing,
// quit, SIGTERM, SIGINT, SIGHUP (the terminal closed), SIGQUIT and session logout, each of which
// resigns (and so saves) before the process ends, and then terminates. The wall clock set, or the
// local date or time zone changed, is a significant time change. Delivers only changes: never
// two resigns or two activations in a row. Main thread only; one instance at a time owns the
// signals.
class QtLifecycle : public QObject {
  Q_OBJECT
 public:
  QtLifecycle(LifecycleEvents& events, Log& log, QObject* parent = nullptr);
  QtLifecycle(const QtLifecycle&) = delete;
  QtLifecycle& operator=(const QtLifecycle&) = delete;
  ~QtLifecycle() override;

  // Delivers the first become-active; changes before it are ignored. Call once the screen is
  // shown.
  void start();
  // Starts telling significant time changes; the first frame can do without it.
  void watchTheTime();
  // Hiding or minimising `window` sends the app to the background, showing it brings it back;
  // closing it resigns active before it goes, even when the application stays up.
  void watchWindow(QWindow* window);
  bool isActive() const { return active_; }

 public slots:
  // Active becomes active; Inactive resigns; Suspended and Hidden also go to the background.
  void applicationStateChanged(Qt::ApplicationState state);
  void becomeActive();
  void resignActive();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void onSignal();
  void enterBackground();
  void enterForeground();
  void terminate(const char* why);

  LifecycleEvents& events_;
  Log& log_;
  bool started_ = false;
  bool active_ = false;
  bool background_ = false;
  bool terminated_ = false;
  QSocketNotifier* signalNotifier_ = nullptr;
};

}  // namespace zellick::qt
