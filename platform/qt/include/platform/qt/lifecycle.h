#pragma once

#include <QObject>

#include "platform/log.h"
#include "platform/notifications.h"

QT_BEGIN_NAMESPACE
class QSocketNotifier;
class QWindow;
QT_END_NAMESPACE

namespace zellick::qt {

// Turns the application's activity into kDidBecomeActive / kWillResignActive posts: Qt's
// application state, and on a desktop the window closing, quit, SIGTERM, SIGINT, SIGHUP (the
// terminal closed), SIGQUIT and session logout, each of which resigns (and so saves) before the
// process ends. Posts only on a change: never two resigns or two activations in a row. Main
// thread only; one instance at a time owns those signals.
class QtLifecycle : public QObject {
  Q_OBJECT
 public:
  QtLifecycle(NotificationCenter& notifications, Log& log, QObject* parent = nullptr);
  QtLifecycle(const QtLifecycle&) = delete;
  QtLifecycle& operator=(const QtLifecycle&) = delete;
  ~QtLifecycle() override;

  // Posts the first become-active; state changes before it are ignored. Call once the screen is
  // built.
  void start();
  // Closing `window` resigns active before it goes, even when the application stays up.
  void watchWindow(QWindow* window);
  bool isActive() const { return active_; }

 public slots:
  // Active becomes active; Inactive, Suspended and Hidden resign.
  void applicationStateChanged(Qt::ApplicationState state);
  void becomeActive();
  void resignActive();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void onSignal();

  NotificationCenter& notifications_;
  Log& log_;
  bool started_ = false;
  bool active_ = false;
  QSocketNotifier* signalNotifier_ = nullptr;
};

}  // namespace zellick::qt
