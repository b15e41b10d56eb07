#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QSessionManager>
#include <QTimer>
#include <QWindow>

#include <unistd.h>
#include <csignal>
#include <cstring>
#include <functional>
#include <string>

#include "platform/fake/services.h"
#include "platform/qt/lifecycle.h"

namespace zellick::test {

using fake::RecordingLog;
using qt::QtLifecycle;

namespace {

// Each way the process ends resigns exactly once and terminates, before the application's quit
// signal ('|' marks where the test itself quits), and the handlers found before are back
// afterwards. State
// changes go through QGuiApplication's own signal, so the connection is tested too: before
// start() they post nothing, after it only transitions.
TEST(Lifecycle, PostsOnlyTransitionsAndEveryWayOutResignsOnceBeforeQuitting) {
  struct Case {
    const char* name;
    std::function<void(QWindow&)> end;
    const char* posts;
  };
  const auto states = [](std::initializer_list<Qt::ApplicationState> list) {
    for (auto s : list) emit qGuiApp->applicationStateChanged(s);
  };
  const Case cases[] = {
      {"SIGTERM", [](QWindow&) { ::kill(::getpid(), SIGTERM); }, "ARTQ"},
      {"SIGINT", [](QWindow&) { ::kill(::getpid(), SIGINT); }, "ARTQ"},
      {"SIGHUP", [](QWindow&) { ::kill(::getpid(), SIGHUP); }, "ARTQ"},
      {"SIGQUIT", [](QWindow&) { ::kill(::getpid(), SIGQUIT); }, "ARTQ"},
      {"session logout",
       [](QWindow&) {
         // The session manager the platform gave the application.
         auto* session = qApp->findChild<QSessionManager*>();
         ASSERT_NE(session, nullptr);
         emit qGuiApp->commitDataRequest(*session);
       },
       "AR|TQ"},
      {"window close",
       [](QWindow& w) {
         w.show();  // its activation arrives first
         QCoreApplication::processEvents();
         w.close();
       },
       "ARB|TQ"},
      {"state changes",
       [&](QWindow&) {
         states({Qt::ApplicationActive, Qt::ApplicationInactive, Qt::ApplicationInactive,
                 Qt::ApplicationActive, Qt::ApplicationSuspended, Qt::ApplicationHidden,
                 Qt::ApplicationActive, Qt::ApplicationHidden});
       },
       "ARARBFARB|TQ"}};
  const int ending[] = {SIGTERM, SIGINT, SIGHUP, SIGQUIT};
  for (int signo : ending) std::signal(signo, SIG_IGN);
  for (const Case& c : cases) {
    // Every post in order: 'A' become-active, 'R' resign, 'B' background, 'F' foreground,
    // 'T' terminate, 'Q' the application's quit signal.
    NotificationCenter center;
    LifecycleEvents events(center);
    std::string posts;
    const std::pair<const char*, char> letters[] = {{kDidBecomeActive, 'A'},
                                                    {kWillResignActive, 'R'},
                                                    {kDidEnterBackground, 'B'},
                                                    {kWillEnterForeground, 'F'},
                                                    {kWillTerminate, 'T'}};
    for (const auto& [name, letter] : letters)
      center.addObserver(name, [&posts, l = letter] { posts += l; });
    {
      RecordingLog log;
      QWindow window;
      QtLifecycle life(events, log);
      life.watchWindow(&window);
      const auto quit =
          QObject::connect(qApp, &QCoreApplication::aboutToQuit, [&] { posts += 'Q'; });
      states({Qt::ApplicationActive, Qt::ApplicationInactive, Qt::ApplicationActive});
      life.start();
      QTimer::singleShot(0, &window, [&] {
        c.end(window);
        if (std::strchr(c.posts, '|')) {
          posts += '|';
          QCoreApplication::quit();
        }
      });
      QTimer::singleShot(5000, &window, [] { QCoreApplication::exit(7); });
      EXPECT_EQ(QCoreApplication::exec(), 0) << c.name;
      QObject::disconnect(quit);
    }
    EXPECT_EQ(posts, c.posts) << c.name;
    for (const int signo : ending) {
      struct sigaction now {};
      sigaction(signo, nullptr, &now);
      EXPECT_EQ(now.sa_handler, SIG_IGN)
          << c.name << ": handler of signal " << signo << " not restored";
    }
  }
  for (int signo : ending) std::signal(signo, SIG_DFL);
}

}  // namespace

}  // namespace zellick::test

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication app(argc, argv);
  app.setQuitOnLastWindowClosed(false);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
