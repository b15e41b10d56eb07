// The ad network connect over real TLS on loopback: the Qt HTTP client against the stand-in's
// HTTPS listeners, each with a self-signed certificate for its own host name. A CONNECT proxy in
// the test takes every host name to 127.0.0.1, so names, SNI and certificate checks stay real.
#include <QElapsedTimer>
#include <QNetworkProxy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QTcpSocket>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adconnect/AdConnect.h"
#include "platform/fake/services.h"
#include "platform/qt/http.h"
#include "platform/qt/runloop.h"
#include "services_server.h"
#include "support/qt.h"

namespace zellick::test {
namespace {

using standin::ConnectReply;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;

const char* const kHosts[] = {"connect.adnetwork.example", "connect-backup.adnetwork.example",
                              "other.adnetwork.example"};

// "CONNECT host:port" goes to 127.0.0.1:port, whatever the host.
class LoopbackProxy : public QObject {
 public:
  LoopbackProxy() {
    server_.listen(QHostAddress::LocalHost);
    connect(&server_, &QTcpServer::newConnection, this, [this] {
      while (QTcpSocket* in = server_.nextPendingConnection()) tunnel(in);
    });
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), server_.serverPort()));
  }
  ~LoopbackProxy() override { QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy); }

 private:
  void tunnel(QTcpSocket* in) {
    auto* out = new QTcpSocket(in);
    auto head = std::make_shared<QByteArray>();
    connect(in, &QTcpSocket::readyRead, in, [in, out, head] {
      if (out->state() == QAbstractSocket::ConnectedState) return void(out->write(in->readAll()));
      *head += in->readAll();
      const qsizetype end = head->indexOf("\r\n\r\n");
      if (end < 0 || out->state() != QAbstractSocket::UnconnectedState) return;
      const QByteArray target = head->split(' ').value(1);
      out->connectToHost(QHostAddress::LocalHost,
                         target.mid(target.lastIndexOf(':') + 1).toUShort());
      head->remove(0, end + 4);
    });
    connect(out, &QTcpSocket::connected, in, [in, out, head] {
      in->write("HTTP/1.1 200 Connection established\r\n\r\n");
      out->write(*head);
    });
    connect(out, &QTcpSocket::readyRead, in, [in, out] { in->write(out->readAll()); });
    connect(out, &QTcpSocket::errorOccurred, in, [in, out](QAbstractSocket::SocketError) {
      if (out->error() == QAbstractSocket::ConnectionRefusedError)
        in->write("HTTP/1.1 502 Bad Gateway\r\n\r\n");
      in->disconnectFromHost();
    });
    connect(in, &QTcpSocket::disconnected, in, &QObject::deleteLater);
  }

  QTcpServer server_;
};

std::string url(const char* host, int port) {
  return "https://" + std::string(host) + ":" + std::to_string(port) + "/";
}

HttpReply get(HttpClient& http, const std::string& to, std::vector<std::string> trusted) {
  auto got = std::make_shared<std::optional<HttpReply>>();
  HttpRequest request;
  request.url = to;
  request.timeout = 10;
  request.trustedHosts = std::move(trusted);
  http.send(request,
            [got](HttpReply r) { QMetaObject::invokeMethod(qApp, [got, r] { *got = r; }); });
  EXPECT_TRUE(waitFor([&] { return got->has_value(); })) << to;
  return got->value_or(HttpReply{Status(Status::Code::Failed, "no answer"), 0, {}});
}

// Errors are ignored for the listed hosts only, by the name the URL gives; a third host is
// checked as usual; a valid certificate passes for any host.
TEST(AdConnectTls, SelfSignedCertificatesPassForTheTwoServiceHostsOnly) {
  LoopbackProxy proxy;
  // One listener per host name, each with a certificate for its own name.
  standin::ServicesServer s({.connect = {{ConnectReply::Success, kHosts[0]},
                                         {ConnectReply::Success, kHosts[1]},
                                         {ConnectReply::Success, kHosts[2]}}});
  ASSERT_TRUE(s.start().ok());
  const std::vector<std::string> service = {kHosts[0], kHosts[1]};
  const struct {
    std::string url;
    std::vector<std::string> trusted;
    bool ok;
  } cases[] = {
      {url(kHosts[0], s.connectPort(0)), service, true},
      {url(kHosts[1], s.connectPort(1)), service, true},
      {url(kHosts[0], s.connectPort(2)), service, true},  // another name on it: still the chain
      {url("127.0.0.1", s.connectPort(0)), {"127.0.0.1"}, true},
      {url(kHosts[2], s.connectPort(2)), service, false},
      {url(kHosts[2], s.connectPort(0)), service, false},  // a certificate for another name
      {url(kHosts[0], s.connectPort(0)), {"Connect.adnetwork.example"}, false},
      {url(kHosts[0], s.connectPort(0)), {}, false},
  };
  qt::QtHttpClient http;
  for (const auto& c : cases) {
    const HttpReply r = get(http, c.url + "connect", c.trusted);
    EXPECT_EQ(r.status.ok(), c.ok) << c.url << " " << r.status.toString();
    if (c.ok) {
      EXPECT_THAT(r.body, HasSubstr("<Success>true</Success>"));
    } else {
      EXPECT_THAT(r.status.message(), HasSubstr("SSL")) << c.url;
    }
  }
  QSslConfiguration config = QSslConfiguration::defaultConfiguration();
  config.addCaCertificates(
      QSslCertificate::fromData(QByteArray::fromStdString(s.connectCertificate(2))));
  QSslConfiguration::setDefaultConfiguration(config);
  qt::QtHttpClient fresh;
  EXPECT_TRUE(get(fresh, url(kHosts[2], s.connectPort(2)) + "connect", {}).status.ok());
}

// The whole client: fail-over from a primary that refuses, drops, overflows, never ends or
// redirects to a third host reaches the fallback; one that never answers holds nothing up.
TEST(AdConnectTls, FailOverReachesTheFallbackAndNothingHoldsUpTheExit) {
  LoopbackProxy proxy;
  QTcpServer silent;  // accepts, never answers
  ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
  standin::ServicesServer third({.connect = {{ConnectReply::Success, kHosts[2]}}});
  ASSERT_TRUE(third.start().ok());
  enum Primary { Listening, Closed, Silent };
  const struct {
    Primary where;
    ConnectReply primary, fallback;
    std::vector<std::string> posted;
    std::size_t primaryAsked, fallbackAsked;
  } cases[] = {
      {Listening, ConnectReply::Success, ConnectReply::Error, {kAdConnectSuccess}, 1, 0},
      {Closed, ConnectReply::Success, ConnectReply::Success, {kAdConnectSuccess}, 0, 1},
      {Listening, ConnectReply::Drop, ConnectReply::Error, {kAdConnectFailed}, 0, 1},
      {Listening, ConnectReply::Huge, ConnectReply::Success, {kAdConnectSuccess}, 1, 1},
      {Listening, ConnectReply::Endless, ConnectReply::Success, {kAdConnectSuccess}, 1, 1},
      {Listening, ConnectReply::Redirect, ConnectReply::Success, {kAdConnectSuccess}, 1, 1},
      {Silent, ConnectReply::Success, ConnectReply::Success, {}, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    standin::ServicesServer s(
        {.connect = {{c.primary, kHosts[0]}, {c.fallback, kHosts[1]}},
         .connectRedirect = url(kHosts[2], third.connectPort(0)) + "connect"});
    ASSERT_TRUE(s.start().ok());
    Configuration config = Configuration::shipped();
    config.adPrimaryBaseUrl = c.where == Closed   ? url("127.0.0.1", 9)
                              : c.where == Silent ? url(kHosts[0], silent.serverPort())
                                                  : url(kHosts[0], s.connectPort(0));
    config.adFallbackBaseUrl = url(kHosts[1], s.connectPort(1));

    qt::QtRunLoop loop;
    NotificationCenter center;
    fake::RecordingLog log;
    auto http = std::make_unique<qt::QtHttpClient>();
    auto client =
        std::make_unique<AdConnect>(AdConnectServices{*http, loop, center, log, {}, config});
    std::vector<std::string> posted;
    for (const char* name : {kAdConnectSuccess, kAdConnectFailed})
      center.addObserver(name, [&posted, name] { posted.push_back(name); });
    client->requestAdConnectWithAppId("id");
    EXPECT_EQ(waitFor([&] { return !posted.empty(); }), !c.posted.empty());
    EXPECT_THAT(posted, ElementsAreArray(c.posted));
    // Qt asks again for the URL it was redirected from, whatever becomes of the redirect.
    if (c.primary == ConnectReply::Redirect) {
      EXPECT_GE(s.connectRequests(0).size(), c.primaryAsked);
    } else {
      EXPECT_EQ(s.connectRequests(0).size(), c.primaryAsked);
    }
    EXPECT_EQ(s.connectRequests(1).size(), c.fallbackAsked);
    EXPECT_EQ(third.connectRequests(0).size(), 0u);  // the redirect ends in its handshake
    EXPECT_EQ(log.lines.size(),
              c.primary == ConnectReply::Huge || c.primary == ConnectReply::Endless);
    QElapsedTimer exit;
    exit.start();
    client.reset();
    http.reset();
    EXPECT_LT(exit.elapsed(), 1000);
  }
}

}  // namespace
}  // namespace zellick::test
