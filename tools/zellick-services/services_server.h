#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <fstream>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/status.h"

namespace httplib {
class Server;
}

namespace zellick::standin {

// How the ad network's stand-in answers "connect".
enum class ConnectReply {
  Success,   // <Success>true</Success>
  Error,     // an <ErrorMessage>
  Drop,      // the connection is closed before the TLS handshake ends
  Huge,      // a 50 MB reply
  Endless,   // a reply that never ends
  Redirect,  // 302 to ServicesOptions::connectRedirect
};
// One HTTPS listener for the ad network's "connect", with a self-signed certificate made at
// start for `host` (a DNS name or an IPv4 address).
struct ConnectListenerOptions {
  ConnectReply reply = ConnectReply::Success;
  std::string host = "127.0.0.1";
};

// What the stand-in serves. Paths are relative to the base URL ("apps.php", "icons/7.png").
struct ServicesOptions {
  int port = 0;                              // 0: any free port
  std::optional<std::string> feedFile{};     // served as is instead of the generated feed
  int apps = 5;                              // entries in the generated feed
  std::optional<std::string> recordsFile{};  // every record is appended to it as one line
  std::chrono::milliseconds iconDelay{0};    // before each icon reply
  // Paths below are a path, or a prefix ending in "/" ("icons/") for every path under it.
  std::optional<std::string> hangPath{};  // requests for it get no answer until stop
  // Replies for it announce their whole length, send the first half and close the connection.
  std::optional<std::string> cutPath{};
  std::size_t hugeFeedBytes = 0;  // when set, the feed is this long: generated, streamed
  std::size_t iconBytes = 0;      // when set, each icon is filled up to this size after its end
  std::vector<ConnectListenerOptions> connect{};  // the ad network's hosts: primary, fallback...
  std::string connectRedirect{};                  // where ConnectReply::Redirect points
};

// The command line: options, or --help, or what is wrong with it.
struct ParsedArgs {
  Status status;
  bool help = false;
  ServicesOptions options;
};
ParsedArgs parseServicesArgs(const std::vector<std::string>& args);
std::string servicesUsage();

// The maker's web services on 127.0.0.1: the catalogue feed, icons and the usage tracker.
// Each record is written to `records` as one line when given; `log` gets one line per request.
// Both streams must outlive the server.
class ServicesServer {
 public:
  explicit ServicesServer(ServicesOptions options, std::ostream* records = nullptr,
                          std::ostream* log = nullptr);
  ServicesServer(const ServicesServer&) = delete;
  ServicesServer& operator=(const ServicesServer&) = delete;
  ~ServicesServer();  // stops

  // Reads the feed file, opens the records file, binds and returns once requests are served.
  // Call once.
  Status start();
  // Ends every connection, the held ones included, and returns when no handler runs.
  void stop();

  int port() const { return port_; }
  std::string baseUrl() const;  // "http://127.0.0.1:PORT/"
  // For each connect listener: "https://HOST:PORT/", its port, its certificate (PEM).
  std::string connectUrl(std::size_t i) const;
  int connectPort(std::size_t i) const { return connect_.at(i).port; }
  std::string connectCertificate(std::size_t i) const { return connect_.at(i).certificatePem; }
  // The targets ("/connect?...") each connect listener was asked for, in order.
  std::vector<std::string> connectRequests(std::size_t i) const;
  // The request bodies posted to the tracker so far, as sent, in the order received.
  std::vector<std::string> records() const;

 private:
  // One server socket with its own accept thread: the maker's over HTTP, the ad network's
  // over HTTPS (an httplib::SSLServer with its own certificate and routes).
  struct Listener {
    std::unique_ptr<httplib::Server> server;
    std::thread thread;
    int port = 0;
    std::string certificatePem;      // HTTPS only
    std::vector<std::string> asked;  // guarded by mutex_
  };
  Status startListener(Listener& listener, int port);
  Status startConnectListener(std::size_t i);
  void installHang(httplib::Server& server);
  void installLogger(httplib::Server& server);
  void installMakerRoutes(httplib::Server& server);
  void installConnectRoute(httplib::Server& server, std::size_t i);
  // Sleeps for `d` (without it: until stop()); false once stopping.
  bool pause(std::optional<std::chrono::milliseconds> d);
  void record(const std::string& body);

  ServicesOptions options_;
  std::ostream* recordsOut_;
  std::ostream* log_;
  std::string feed_;
  std::ofstream recordsFile_;
  Listener maker_;
  std::vector<Listener> connect_;
  int port_ = 0;

  mutable std::mutex mutex_;  // guards what follows, and the streams
  std::condition_variable stopping_;
  bool stopped_ = false;
  std::vector<std::string> records_;
};

}  // namespace zellick::standin
