// Keeping the screen awake, against stand-ins for the portal and the screen saver service on the
// private session bus this test is started in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QStringList>

#include <memory>
#include <string>

#include "platform/fake/services.h"
#include "platform/qt/idle_inhibitor.h"

namespace zellick::test {
namespace {

using fake::RecordingLog;
using qt::IdleInhibitor;

enum Role {
  kPortal = 1,
  kScreenSaver = 2,       // at /org/freedesktop/ScreenSaver
  kShortScreenSaver = 4,  // at /ScreenSaver only
  kBadCookie = 8,         // the screen saver answers Inhibit with a string
};

// Every service a case asks for, on one connection of its own. Records "+N" for each inhibit
// granted as the services expect it asked ("+rN" for a portal request), "-N" for each one given
// back, and anything else in full. A restart is a new connection: the old grants die with it.
class FakeServices final : public QDBusVirtualObject {
 public:
  FakeServices(int roles, QStringList& calls) : roles_(roles), calls_(calls) {}
  ~FakeServices() override { stop(); }

  void restart() {
    stop();
    static int connections = 0;
    name_ = QStringLiteral("fake%1").arg(++connections);
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name_);
    const auto serve = [&](const char* service, const char* path) {
      ASSERT_TRUE(bus.registerVirtualObject(path, this, QDBusConnection::SubPath));
      ASSERT_TRUE(bus.registerService(service));
    };
    if (roles_ & kPortal)
      serve("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop");
    if (roles_ & (kScreenSaver | kBadCookie)) {
      serve("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver");
    }
    if (roles_ & kShortScreenSaver) serve("org.freedesktop.ScreenSaver", "/ScreenSaver");
  }

  bool handleMessage(const QDBusMessage& m, const QDBusConnection& bus) override {
    QStringList args;
    for (const QVariant& a : m.arguments()) {
      if (!a.canConvert<QDBusArgument>()) {
        args << a.toString();
        continue;
      }
      const auto map = qdbus_cast<QVariantMap>(a);
      for (auto i = map.begin(); i != map.end(); ++i) args << i.key() + "=" + i.value().toString();
    }
    const QString call =
        m.interface() + "." + m.member() + " " + m.signature() + " " + args.join(",");
    QDBusMessage reply = m.createReply();
    if (call == "org.freedesktop.portal.Inhibit.Inhibit sua{sv} ,8,reason=Counting") {
      const QString n = QString::number(++grants_);
      calls_ << "+r" + n;
      reply << QVariant::fromValue(QDBusObjectPath(m.path() + "/request/r" + n));
    } else if (call == "org.freedesktop.portal.Request.Close  ") {
      calls_ << "-" + m.path().section('/', -1);
    } else if (call == "org.freedesktop.ScreenSaver.Inhibit ss Zellick,Counting") {
      calls_ << "+" + QString::number(++grants_);
      if (roles_ & kBadCookie)
        reply << QStringLiteral("not a cookie");
      else
        reply << uint(grants_);
    } else if (call.startsWith("org.freedesktop.ScreenSaver.UnInhibit u ")) {
      calls_ << "-" + args.value(0);
    } else {
      calls_ << m.path() + " " + call;
    }
    return bus.send(reply);
  }
  QString introspect(const QString&) const override { return {}; }

  void stop() {
    if (name_.isEmpty()) return;
    QDBusConnection::disconnectFromBus(name_);
    name_.clear();
  }

 private:
  int roles_;
  QStringList& calls_;
  QString name_;
  int grants_ = 0;
};

// Runs the event loop until nothing new has happened for a while: on a private bus an answer
// takes well under a millisecond.
template <class F>
void settle(F seen) {
  QElapsedTimer quiet;
  quiet.start();
  for (auto last = seen(); quiet.elapsed() < 200;) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    if (auto now = seen(); now != last) {
      last = now;
      quiet.restart();
    }
  }
}

// Script: 'i' inhibit, 'r' release, 'd' destroy the inhibitor, 'k' (re)start the services, 'x'
// stop them, 'p' another portal comes and goes; a space lets everything in flight land first.
TEST(IdleInhibitor, HoldsOneInhibitTakesALostOneAnewAndGivesItBack) {
  ASSERT_FALSE(qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
      << "run under dbus-run-session";
  QCoreApplication::setApplicationName("Zellick");
  struct Case {
    const char* name;
    int roles;
    bool up;  // the services run from the start
    const char* script;
    const char* calls;
    const char* logs;  // a part of each line logged, '|' between lines
  };
  const Case cases[] = {
      {"one inhibit however often asked; given back with its cookie", kScreenSaver, true,
       "i i p i r", "+1 -1", ""},
      {"service restarted: a new one on re-assert; destruction gives it back", kScreenSaver, true,
       "i k i i d", "+1 +2 -2", "ScreenSaver went away"},
      {"screen saver at /ScreenSaver only", kShortScreenSaver, true, "i r i d", "+1 -1 +2 -2", ""},
      {"portal first: its request is closed", kPortal | kScreenSaver, true, "i i r", "+r1 -r1", ""},
      {"portal restarted", kPortal, true, "i k i d", "+r1 +r2 -r2", "portal.Desktop went away"},
      {"released or destroyed before the grant arrives", kPortal, true, "ir id", "+r1 -r1 +r2 -r2",
       ""},
      {"no service: said once; taken once one has come; said again once it has gone", kScreenSaver,
       false, "i i k i r x i i", "+1 -1", "no service took it|no service took it"},
      {"a cookie of the wrong type holds nothing", kBadCookie, true, "i i r", "+1 +2",
       "ScreenSaver: Unexpected reply signature"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    QStringList calls;
    FakeServices services(c.roles, calls);
    if (c.up) services.restart();
    RecordingLog log;
    auto inhibitor = std::make_unique<IdleInhibitor>(QDBusConnection::sessionBus(), log);
    const auto seen = [&] {
      return calls.join(" ").toStdString() + "|" + std::to_string(log.lines.size());
    };
    for (const char* s = c.script; *s; ++s) {
      switch (*s) {
        case 'i': inhibitor->inhibit("Counting"); break;
        case 'r': inhibitor->release(); break;
        case 'd': inhibitor.reset(); break;
        case 'k': services.restart(); break;
        case 'x': services.stop(); break;
        case 'p': {
          FakeServices portal(kPortal, calls);
          portal.restart();
          settle(seen);
          break;
        }
        case ' ': settle(seen); break;
      }
    }
    settle(seen);
    EXPECT_EQ(calls.join(" ").toStdString(), c.calls);
    const QStringList logs = QString(c.logs).split('|', Qt::SkipEmptyParts);
    EXPECT_EQ(log.lines.size(), size_t(logs.size()));
    for (size_t i = 0; i < log.lines.size(); ++i) {
      EXPECT_THAT(log.lines[i], testing::HasSubstr(logs.value(i, "nothing").toStdString()));
    }
  }
}

// Run by its own ctest entry, with no bus address, runtime folder or display in the environment.
TEST(IdleInhibitor, WithoutASessionBusSaysSoOnce) {
  if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) {
    GTEST_SKIP() << "needs a process without a session bus";
  }
  RecordingLog log;
  {
    IdleInhibitor inhibitor(QDBusConnection::sessionBus(), log);
    inhibitor.inhibit("Counting");
    inhibitor.inhibit("Counting");
    inhibitor.release();
    inhibitor.inhibit("Counting");
    settle([&] { return log.lines.size(); });
  }
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_THAT(log.lines[0], testing::HasSubstr("no session bus"));
}

}  // namespace
}  // namespace zellick::test
