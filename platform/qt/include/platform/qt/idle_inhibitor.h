#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include "platform/log.h"

QT_BEGIN_NAMESPACE
class QDBusPendingCallWatcher;
QT_END_NAMESPACE

namespace zellick::qt {

// Keeps the display from dimming, blanking or locking while held, through the desktop portal
// where one answers, else the freedesktop screen saver service. Never waits on the bus: every
// call is asynchronous and its reply arrives on the main thread. Main thread only.
class IdleInhibitor : public QObject {
  Q_OBJECT
 public:
  // `bus` is normally QDBusConnection::sessionBus(); without it, or with no service answering,
  // says so once in `log` and does nothing. The app is named by QCoreApplication's name.
  IdleInhibitor(QDBusConnection bus, Log& log, QObject* parent = nullptr);
  IdleInhibitor(const IdleInhibitor&) = delete;
  IdleInhibitor& operator=(const IdleInhibitor&) = delete;
  ~IdleInhibitor() override;  // releases

  // Takes the inhibit unless one is held or on its way; one lost since (its service went away,
  // or the last try failed) is taken anew. Call at start-up and on each return to the front.
  void inhibit(const QString& reason);
  // Gives it up without waiting for an answer; a take still on its way is given up on arrival.
  void release();

 private:
  // Asks kServices[attempt], then the next ones in turn until one grants it; `errors` holds the
  // refusals so far.
  void take(int attempt, const QString& reason, const QString& errors);
  void onOwnerChanged(const QString& service);
  void sayOnce(const std::string& text);

  QDBusConnection bus_;
  Log& log_;
  QDBusPendingCallWatcher* pending_ = nullptr;  // the take on its way
  int attempt_ = 0;                             // which service it asks
  QDBusMessage release_;  // what gives up the inhibit held; invalid when none is
  bool said_ = false;     // the failure was logged; quiet until a take succeeds
};

}  // namespace zellick::qt
