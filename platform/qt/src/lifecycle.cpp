#include "platform/qt/lifecycle.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QWindow>

#include <sys/socket.h>
#include <unistd.h>
#include <csignal>
#include <iterator>
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

QtLifecycle::QtLifecycle(NotificationCenter& notifications, Log& log, QObject* parent)
    : QObject(parent), notifications_(notifications), log_(log) {
  auto* app = QCoreApplication::instance();
  if (app) {
    connect(app, &QCoreApplication::aboutToQuit, this, [this] {
      log_.line("Lifecycle: quitting");
      resignActive();
    });
  }
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
  if (window) window->installEventFilter(this);
}

bool QtLifecycle::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Close && qobject_cast<QWindow*>(watched)) {
    log_.line("Lifecycle: window closing");
    resignActive();
  }
  return QObject::eventFilter(watched, event);
}

void QtLifecycle::applicationStateChanged(Qt::ApplicationState state) {
  if (state == Qt::ApplicationActive) {
    becomeActive();
  } else {
    resignActive();
  }
}

void QtLifecycle::becomeActive() {
  if (!started_ || active_) return;
  active_ = true;
  notifications_.post(kDidBecomeActive);
}

void QtLifecycle::resignActive() {
  if (!active_) return;
  active_ = false;
  notifications_.post(kWillResignActive);
}

void QtLifecycle::onSignal() {
  char buf[16];
  ssize_t n = ::read(g_signalPipe[1], buf, sizeof buf);
  if (n <= 0) return;
  log_.line(std::string("Lifecycle: ") + signalName(buf[n - 1]));
  resignActive();
  QCoreApplication::quit();
}

}  // namespace zellick::qt
