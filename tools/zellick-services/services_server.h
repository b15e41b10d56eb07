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
  // The request bodies posted to the tracker so far, as sent, in the order received.
  std::vector<std::string> records() const;

 private:
  // One server socket with its own accept thread; the ad network's HTTPS stand-in will be a
  // second one, an httplib::SSLServer with its own certificate and routes.
  struct Listener {
    std::unique_ptr<httplib::Server> server;
    std::thread thread;
    int port = 0;
  };
  Status startListener(Listener& listener, int port);
  void installMakerRoutes(httplib::Server& server);
  // Sleeps for `d` (without it: until stop()); false once stopping.
  bool pause(std::optional<std::chrono::milliseconds> d);
  void record(const std::string& body);

  ServicesOptions options_;
  std::ostream* recordsOut_;
  std::ostream* log_;
  std::string feed_;
  std::ofstream recordsFile_;
  Listener maker_;
  int port_ = 0;

  mutable std::mutex mutex_;  // guards what follows, and the streams
  std::condition_variable stopping_;
  bool stopped_ = false;
  std::vector<std::string> records_;
};

}  // namespace zellick::standin
