#include "platform/qt/application.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDesktopServices>
#include <QUrl>

namespace zellick::qt {

namespace {
QString reason() { return QCoreApplication::applicationName() + QStringLiteral(" is counting"); }
}  // namespace

QtApplication::QtApplication(Log& log) : log_(log) {}

void QtApplication::connectToSession() {
  if (inhibitor_) return;
  inhibitor_ = std::make_unique<IdleInhibitor>(QDBusConnection::sessionBus(), log_);
  if (keepAwake_) inhibitor_->inhibit(reason());
}

void QtApplication::setIdleTimerDisabled(bool disabled) {
  keepAwake_ = disabled;
  if (!inhibitor_) return;
  if (disabled) {
    inhibitor_->inhibit(reason());
  } else {
    inhibitor_->release();
  }
}

void QtApplication::openURL(const std::string& url) {
  const QUrl u(QString::fromStdString(url), QUrl::StrictMode);
  if (!u.isValid() || u.scheme().isEmpty()) {
    log_.line("Not a URL to open: " + url);
    return;
  }
  if (!QDesktopServices::openUrl(u)) log_.line("Nothing on this system opens " + url);
}

}  // namespace zellick::qt
