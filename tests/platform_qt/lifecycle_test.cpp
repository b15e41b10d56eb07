#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QSessionManager>
#include <QTimer>
#include <QWindow>

#include <csignal>
#include <unistd.h>

#include "platform/qt/lifecycle.h"
#include "recording_log.h"

using zellick::NotificationCenter;
using zellick::qt::QtLifecycle;

namespace {

// Every post in order: 'A' for become-active, 'R' for resign, 'Q' for the quit signal.
struct Recorder {
  NotificationCenter center;
  std::string posts;
  Recorder() {
    center.addObserver(zellick::kDidBecomeActive, [this] { posts += 'A'; });
    center.addObserver(zellick::kWillResignActive, [this] { posts += 'R'; });
  }
};

struct StateCase {
  const char* name;
  bool start;
  std::vector<Qt::ApplicationState> states;
  const char* posts;
};

void PrintTo(const StateCase& c, std::ostream* os) { *os << c.name; }

class StateTable : public testing::TestWithParam<StateCase> {};

// Goes through QGuiApplication's own signal, so the connection is tested too.
TEST_P(StateTable, PostsOnlyTransitions) {
  Recorder r;
  RecordingLog log;
  QtLifecycle life(r.center, log);
  if (GetParam().start) life.start();
  for (auto s : GetParam().states) emit qGuiApp->applicationStateChanged(s);
  EXPECT_EQ(r.posts, GetParam().posts);
}

constexpr auto Active = Qt::ApplicationActive;
constexpr auto Inactive = Qt::ApplicationInactive;
constexpr auto Suspended = Qt::ApplicationSuspended;
constexpr auto Hidden = Qt::ApplicationHidden;

INSTANTIATE_TEST_SUITE_P(
    Lifecycle, StateTable,
    testing::Values(StateCase{"NothingBeforeStart", false, {Active, Inactive, Active}, ""},
                    StateCase{"StartActivatesOnce", true, {Active, Active}, "A"},
                    StateCase{"EveryWayOutResignsOnce", true,
                              {Inactive, Inactive, Active, Suspended, Hidden, Active, Hidden, Inactive}, "ARARAR"}),
    [](const auto& info) { return std::string(info.param.name); });

struct QuitCase {
  const char* name;
  std::function<void(QWindow&, std::string&)> end;  // may mark the posts with '|'
  const char* posts;
};

void PrintTo(const QuitCase& c, std::ostream* os) { *os << c.name; }

class QuitTable : public testing::TestWithParam<QuitCase> {};

// Each way the process ends resigns exactly once, before the application's quit signal.
TEST_P(QuitTable, ResignsOnceBeforeQuitting) {
  Recorder r;
  RecordingLog log;
  QWindow window;
  QtLifecycle life(r.center, log);
  life.watchWindow(&window);
  QObject::connect(qApp, &QCoreApplication::aboutToQuit, [&r] { r.posts += 'Q'; });
  life.start();
  QTimer::singleShot(0, [&] { GetParam().end(window, r.posts); });
  QTimer::singleShot(5000, [] { QCoreApplication::exit(7); });
  EXPECT_EQ(QCoreApplication::exec(), 0);
  QObject::disconnect(qApp, &QCoreApplication::aboutToQuit, nullptr, nullptr);
  EXPECT_EQ(r.posts, GetParam().posts);
}

INSTANTIATE_TEST_SUITE_P(
    Lifecycle, QuitTable,
    testing::Values(QuitCase{"Sigterm", [](QWindow&, std::string&) { ::kill(::getpid(), SIGTERM); }, "ARQ"},
                    QuitCase{"Sigint", [](QWindow&, std::string&) { ::kill(::getpid(), SIGINT); }, "ARQ"},
                    QuitCase{"SessionLogout",
                             [](QWindow&, std::string& posts) {
                               // The session manager the platform gave the application.
                               auto* session = qApp->findChild<QSessionManager*>();
                               ASSERT_NE(session, nullptr);
                               emit qGuiApp->commitDataRequest(*session);
                               posts += '|';
                               QCoreApplication::quit();
                             },
                             "AR|Q"},
                    QuitCase{"WindowClose",
                             [](QWindow& w, std::string& posts) {
                               w.show();  // its activation arrives first
                               QCoreApplication::processEvents();
                               w.close();
                               posts += '|';
                               QCoreApplication::quit();
                             },
                             "AR|Q"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Lifecycle, SignalsGoBackToTheirOldHandlers) {
  {
    Recorder r;
    RecordingLog log;
    QtLifecycle life(r.center, log);
  }
  struct sigaction now {};
  sigaction(SIGTERM, nullptr, &now);
  EXPECT_EQ(now.sa_handler, SIG_DFL);
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication app(argc, argv);
  app.setQuitOnLastWindowClosed(false);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
