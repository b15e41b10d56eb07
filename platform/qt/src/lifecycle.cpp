#include "platform/qt/lifecycle.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QEvent>
#include <QFileSystemWatcher>
#include <QGuiApplication>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QTimer>
#include <QWindow>

#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <climits>
#include <csignal>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>

namespace zellick::qt {

namespace {

// The write end is all a signal handler touches.
int g_signalPipe[2] = {-1, -1};
// The signals that end the app as a quit does: resign (and so save) first.
constexpr int kEndingSignals[] = {SIGTERM, SIGINT, SIGHUP, SIGQUIT};
struct sigaction g_old[std::size(kEndingSignals)]{};

const char* signalName(int signo) {
  switch (signo) {
    case SIGINT: return "SIGINT";
    case SIGHUP: return "SIGHUP";
    case SIGQUIT: return "SIGQUIT";
    default: return "SIGTERM";
  }
}

void onTerminationSignal(int signo) {
  const auto byte = static_cast<char>(signo);
  [[maybe_unused]] ssize_t n = ::write(g_signalPipe[0], &byte, 1);
}

}  // namespace

QtLifecycle::QtLifecycle(LifecycleEvents& events, Log& log, QObject* parent)
    : QObject(parent), events_(events), log_(log) {
  auto* app = QCoreApplication::instance();
  if (app) connect(app, &QCoreApplication::aboutToQuit, this, [this] { terminate("quitting"); });
  if (auto* gui = qobject_cast<QGuiApplication*>(app)) {
    connect(gui, &QGuiApplication::applicationStateChanged, this,
            &QtLifecycle::applicationStateChanged);
#if QT_CONFIG(sessionmanager)
    connect(gui, &QGuiApplication::commitDataRequest, this, [this](QSessionManager&) {
      log_.line("Lifecycle: session ending");
      resignActive();
    });
#endif
  }

  if (g_signalPipe[0] != -1) {
    log_.line("Lifecycle: another instance handles the ending signals");
    return;
  }
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, g_signalPipe) != 0) {
    log_.line(
        "Lifecycle: no socket pair for signals; SIGTERM, SIGINT, SIGHUP and SIGQUIT will not save");
    g_signalPipe[0] = g_signalPipe[1] = -1;
    return;
  }
  signalNotifier_ = new QSocketNotifier(g_signalPipe[1], QSocketNotifier::Read, this);
  connect(signalNotifier_, &QSocketNotifier::activated, this, &QtLifecycle::onSignal);
  struct sigaction sa {};
  sa.sa_handler = onTerminationSignal;
  sigemptyset(&sa.sa_mask);
  sa.sa_flags = SA_RESTART;
  for (size_t i = 0; i < std::size(kEndingSignals); ++i)
    sigaction(kEndingSignals[i], &sa, &g_old[i]);
}

QtLifecycle::~QtLifecycle() {
  if (!signalNotifier_) return;
  for (size_t i = 0; i < std::size(kEndingSignals); ++i)
    sigaction(kEndingSignals[i], &g_old[i], nullptr);
  delete signalNotifier_;
  ::close(g_signalPipe[0]);
  ::close(g_signalPipe[1]);
  g_signalPipe[0] = g_signalPipe[1] = -1;
}

void QtLifecycle::start() {
  started_ = true;
  becomeActive();
}

void QtLifecycle::watchWindow(QWindow* window) {
  if (!window) return;
  window->installEventFilter(this);
  connect(window, &QWindow::visibilityChanged, this, [this](QWindow::Visibility v) {
    if (v == QWindow::Hidden || v == QWindow::Minimized) {
      enterBackground();
    } else if (background_) {
      enterForeground();
      if (QGuiApplication::applicationState() == Qt::ApplicationActive) becomeActive();
    }
  });
}

bool QtLifecycle::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Close && qobject_cast<QWindow*>(watched)) {
    log_.line("Lifecycle: window closing");
    resignActive();
  }
  return QObject::eventFilter(watched, event);
}

void QtLifecycle::applicationStateChanged(Qt::ApplicationState state) {
  switch (state) {
    case Qt::ApplicationActive:
      if (background_) enterForeground();
      becomeActive();
      break;
    case Qt::ApplicationInactive: resignActive(); break;
    case Qt::ApplicationSuspended:
    case Qt::ApplicationHidden: enterBackground(); break;
  }
}

void QtLifecycle::becomeActive() {
  if (!started_ || active_ || background_ || terminated_) return;
  active_ = true;
  events_.didBecomeActive();
}

void QtLifecycle::resignActive() {
  if (!active_) return;
  active_ = false;
  events_.willResignActive();
}

void QtLifecycle::enterBackground() {
  if (!started_ || background_ || terminated_) return;
  resignActive();
  background_ = true;
  events_.didEnterBackground();
}

void QtLifecycle::enterForeground() {
  if (!background_ || terminated_) return;
  background_ = false;
  events_.willEnterForeground();
}

void QtLifecycle::terminate(const char* why) {
  if (terminated_) return;
  log_.line(std::string("Lifecycle: ") + why);
  resignActive();
  terminated_ = true;
  if (started_) events_.willTerminate();
}

void QtLifecycle::onSignal() {
  char buf[16];
  ssize_t n = ::read(g_signalPipe[1], buf, sizeof buf);
  if (n <= 0) return;
  terminate(signalName(buf[n - 1]));
  QCoreApplication::quit();
}

// The wall clock set (a timer on it cancelled by any setting), the local date changed (a timer
// to the next midnight) or the time zone changed (its file replaced).
void QtLifecycle::watchTheTime() {
  const int fd = ::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
  if (fd >= 0) {
    const auto arm = [fd] {
      itimerspec far{};
      far.it_value.tv_sec = std::numeric_limits<time_t>::max() / 2;
      return ::timerfd_settime(fd, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &far, nullptr) == 0;
    };
    if (arm()) {
      auto* notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
      connect(notifier, &QSocketNotifier::activated, this, [this, fd, arm] {
        uint64_t expirations = 0;
        // A cancelled read (ECANCELED) is the clock being set; either way, watch again.
        [[maybe_unused]] const ssize_t n = ::read(fd, &expirations, sizeof expirations);
        arm();
        events_.significantTimeChange();
      });
      connect(notifier, &QObject::destroyed, [fd] { ::close(fd); });
    } else {
      ::close(fd);
    }
  }
  auto* midnight = new QTimer(this);
  midnight->setSingleShot(true);
  const auto untilMidnight = [] {
    const QDateTime now = QDateTime::currentDateTime();
    return std::max<qint64>(1000,
                            now.msecsTo(QDateTime(now.date().addDays(1), QTime(0, 0))) + 1000);
  };
  connect(midnight, &QTimer::timeout, this, [this, midnight, untilMidnight] {
    events_.significantTimeChange();
    midnight->start(static_cast<int>(std::min<qint64>(untilMidnight(), INT_MAX)));
  });
  midnight->start(static_cast<int>(std::min<qint64>(untilMidnight(), INT_MAX)));
  auto* zone = new QFileSystemWatcher(this);
  zone->addPath(QStringLiteral("/etc/localtime"));
  connect(zone, &QFileSystemWatcher::fileChanged, this, [this, zone](const QString& path) {
    // A replaced file drops out of the watch: take it in again.
    if (!zone->files().contains(path)) zone->addPath(path);
    events_.significantTimeChange();
  });
}

}  // namespace zellick::qt
