#include "platform/qt/idle_inhibitor.h"

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QVariantMap>

#include <iterator>
#include <utility>

namespace zellick::qt {

namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kScreenSaver[] = "org.freedesktop.ScreenSaver";
constexpr uint kPortalIdleFlag = 8;

// Asked in this order until one grants the inhibit; the portal comes first.
struct Service {
  const char* name;
  const char* path;
  const char* interface;
};
constexpr Service kServices[] = {
    {kPortal, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Inhibit"},
    {kScreenSaver, "/org/freedesktop/ScreenSaver", kScreenSaver},
    {kScreenSaver, "/ScreenSaver", kScreenSaver},  // where some desktops keep it
};
constexpr int kServiceCount = int(std::size(kServices));
constexpr int kPortalAttempt = 0;

QDBusMessage inhibitCall(int attempt, const QString& reason) {
  const Service& s = kServices[attempt];
  QDBusMessage call = QDBusMessage::createMethodCall(s.name, s.path, s.interface, "Inhibit");
  if (attempt == kPortalAttempt) {
    call << QString() << kPortalIdleFlag << QVariantMap{{QStringLiteral("reason"), reason}};
  } else {
    call << QCoreApplication::applicationName() << reason;
  }
  return call;
}

// The call that gives back what `reply` granted: the portal's request is closed, the screen
// saver's cookie handed back. Invalid, with `error` set, when the reply is an error or not of the
// expected type.
QDBusMessage releaseCall(int attempt, const QDBusPendingCall& reply, QString& error) {
  const Service& s = kServices[attempt];
  if (attempt == kPortalAttempt) {
    const QDBusPendingReply<QDBusObjectPath> handle = reply;
    if (handle.isError()) {
      error = handle.error().message();
      return {};
    }
    return QDBusMessage::createMethodCall(s.name, handle.value().path(),
                                          "org.freedesktop.portal.Request", "Close");
  }
  const QDBusPendingReply<uint> cookie = reply;
  if (cookie.isError()) {
    error = cookie.error().message();
    return {};
  }
  return QDBusMessage::createMethodCall(s.name, s.path, s.interface, "UnInhibit") << cookie.value();
}

bool valid(const QDBusMessage& m) { return m.type() != QDBusMessage::InvalidMessage; }

}  // namespace

IdleInhibitor::IdleInhibitor(QDBusConnection bus, Log& log, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), log_(log) {
  if (!bus_.isConnected()) return;
  auto* watcher = new QDBusServiceWatcher(this);
  watcher->setConnection(bus_);
  watcher->setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  watcher->setWatchedServices({kPortal, kScreenSaver});
  connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &IdleInhibitor::onOwnerChanged);
}

IdleInhibitor::~IdleInhibitor() { release(); }

void IdleInhibitor::inhibit(const QString& reason) {
  if (!bus_.isConnected()) {
    sayOnce("Idle inhibit: no session bus (" + bus_.lastError().message().toStdString() +
            "); the screen may dim");
    return;
  }
  if (pending_ || valid(release_)) return;
  take(0, reason, {});
}

void IdleInhibitor::release() {
  if (valid(release_)) bus_.send(std::exchange(release_, QDBusMessage()));
  if (!pending_) return;
  // The take on its way may outlive this object: whatever it grants is given back on arrival.
  QDBusPendingCallWatcher* watcher = std::exchange(pending_, nullptr);
  watcher->disconnect(this);
  watcher->setParent(QCoreApplication::instance());
  connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
          [bus = bus_, attempt = attempt_](QDBusPendingCallWatcher* w) {
            QString error;
            const QDBusMessage giveBack = releaseCall(attempt, *w, error);
            if (valid(giveBack)) bus.send(giveBack);
            w->deleteLater();
          });
}

void IdleInhibitor::take(int attempt, const QString& reason, const QString& errors) {
  attempt_ = attempt;
  pending_ = new QDBusPendingCallWatcher(bus_.asyncCall(inhibitCall(attempt, reason)), this);
  connect(pending_, &QDBusPendingCallWatcher::finished, this,
          [this, reason, errors](QDBusPendingCallWatcher* w) {
            pending_ = nullptr;
            w->deleteLater();
            QString error;
            release_ = releaseCall(attempt_, *w, error);
            const Service& s = kServices[attempt_];
            const QString all = errors + "; " + s.name + " " + s.path + ": " + error;
            if (valid(release_)) {
              said_ = false;
            } else if (attempt_ + 1 < kServiceCount) {
              take(attempt_ + 1, reason, all);
            } else {
              sayOnce("Idle inhibit: no service took it, the screen may dim" + all.toStdString());
            }
          });
}

void IdleInhibitor::onOwnerChanged(const QString& service) {
  // The services tie an inhibit to the connection of the process that granted it.
  if (!valid(release_) || release_.service() != service) return;
  release_ = QDBusMessage();
  log_.line("Idle inhibit: " + service.toStdString() + " went away with the inhibit");
}

void IdleInhibitor::sayOnce(const std::string& text) {
  if (std::exchange(said_, true)) return;
  log_.line(text);
}

}  // namespace zellick::qt
