#include "services_server.h"

#include <httplib.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <ostream>

#include "certificate.h"
#include "png.h"

namespace zellick::standin {
namespace {

using Code = Status::Code;
using std::chrono::milliseconds;

const char* const kHost = "127.0.0.1";
constexpr int kMaxApps = 10000;
constexpr int kMaxIconDelayMs = 600000;
constexpr std::uintmax_t kMaxFeedBytes = 16u << 20;
constexpr std::size_t kMaxRecordBytes = 64u << 10;
constexpr int kMaxHugeFeedMiB = 4096;
constexpr int kMaxIconBytes = 64 << 20;
constexpr std::size_t kStreamChunk = 64u << 10;  // what a streamed body is written in
constexpr std::uint32_t kIconSide = 114;         // the @2x size the app stores
// Store identifiers of the generated feed: 9 digits, distinct, for every id up to kMaxApps.
constexpr long kFirstStoreId = 310000000;
constexpr long kStoreIdStep = 7919;
static_assert(kFirstStoreId + kMaxApps * kStoreIdStep < 1000000000);
// Held replies each take a worker until stop, so there are more than the library's default.
constexpr std::size_t kWorkers = 32;
// An idle or half-sent connection is dropped after this, so stop never waits longer.
constexpr time_t kIdleSeconds = 1;

const std::array<std::string, 10> kValueOptions = {
    "--port", "--feed", "--apps",      "--records",    "--slow-icons",
    "--hang", "--cut",  "--huge-feed", "--icon-bytes", "--connect"};
// The hosts the command line's connect listeners name: primary, fallback.
const std::array<const char*, 2> kConnectHosts = {"127.0.0.1", "localhost"};
constexpr std::size_t kHugeReplyBytes = 50'000'000;
constexpr std::size_t kStreamChunkBytes = 4096;
constexpr auto kEndlessPause = milliseconds(10);

const char* const kConnectSuccess =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Response><Success>true</Success></Response>\n";
const char* const kConnectError =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Response><ErrorMessage>Unknown application"
    "</ErrorMessage></Response>\n";

// "success", "error", "drop", "huge", "endless" or "redirect=URL".
bool readConnectReply(const std::string& word, ConnectReply& reply, std::string& redirect) {
  const std::pair<const char*, ConnectReply> names[] = {
      {"success", ConnectReply::Success}, {"error", ConnectReply::Error},
      {"drop", ConnectReply::Drop},       {"huge", ConnectReply::Huge},
      {"endless", ConnectReply::Endless},
  };
  for (const auto& [name, r] : names) {
    if (word == name) {
      reply = r;
      return true;
    }
  }
  if (!word.starts_with("redirect=") || word.size() == 9) return false;
  reply = ConnectReply::Redirect;
  redirect = word.substr(9);
  return true;
}

bool readInt(const std::string& text, int lo, int hi, int& out) {
  int n = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
  if (ec != std::errc() || end != text.data() + text.size() || n < lo || n > hi) return false;
  out = n;
  return true;
}

// Line breaks in a record or a request line would split it: they are written as \r and \n.
std::string oneLine(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (c == '\n')
      out += "\\n";
    else if (c == '\r')
      out += "\\r";
    else
      out += c;
  }
  return out;
}

// Priorities follow no order, so the app's sort shows.
const char* const kFeedHead = "<?xml version=\"1.0\"?>\n<apps>\n";

std::string generatedEntries(int from, int to) {
  std::string xml;
  for (int id = from; id <= to; ++id) {
    const std::string n = std::to_string(id);
    xml += "  <app>\n    <appid>" + n + "</appid>\n    <appname>Zellick Sample App " + n +
           "</appname>\n    <appleid>" + std::to_string(kFirstStoreId + id * kStoreIdStep) +
           "</appleid>\n    <priority>" + std::to_string(id * 53 % 97) + "</priority>\n  </app>\n";
  }
  return xml;
}

std::string generatedFeed(int apps) { return kFeedHead + generatedEntries(1, apps) + "</apps>\n"; }

// A feed that never ends within `size` bytes: the head, then the same hundred entries over and
// over. Written a chunk at a time, so no size costs memory.
void streamHugeFeed(httplib::Response& res, std::size_t size) {
  auto pattern = std::make_shared<const std::string>(generatedEntries(1, 100));
  const std::string head = kFeedHead;
  res.set_content_provider(
      size, "text/xml",
      [pattern, head](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
        std::string chunk;
        chunk.reserve(std::min(length, kStreamChunk));
        for (std::size_t at = offset; chunk.size() < std::min(length, kStreamChunk); ++at) {
          chunk += at < head.size() ? head[at] : (*pattern)[(at - head.size()) % pattern->size()];
        }
        return sink.write(chunk.data(), chunk.size());
      });
}

// The reply as it stands, with its whole length announced but only the first half sent: the
// connection then closes.
void cutShort(httplib::Response& res) {
  auto body = std::make_shared<const std::string>(std::move(res.body));
  const std::string type = res.get_header_value("Content-Type");
  res.body.clear();
  res.headers.erase("Content-Type");
  res.set_content_provider(body->size(), type,
                           [body](std::size_t, std::size_t, httplib::DataSink& sink) {
                             sink.write(body->data(), body->size() / 2);
                             return false;
                           });
}

// Whether `pattern` (a path, or a prefix ending in "/") names `path`.
bool covers(const std::optional<std::string>& pattern, const std::string& path) {
  if (!pattern) return false;
  return pattern->ends_with('/') ? path.size() > pattern->size() && path.starts_with(*pattern)
                                 : path == *pattern;
}

Status readFeed(const std::string& path, std::string& out) {
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) {
    return Status(Code::InvalidArgument, "the feed " + path + " is not a readable file");
  }
  const std::uintmax_t size = std::filesystem::file_size(path, ec);
  if (ec) return Status(Code::Failed, "cannot read the feed " + path + ": " + ec.message());
  if (size > kMaxFeedBytes) {
    return Status(Code::TooLarge,
                  "the feed " + path + " is over " + std::to_string(kMaxFeedBytes) + " bytes");
  }
  std::ifstream in(path, std::ios::binary);
  out.assign(std::istreambuf_iterator<char>(in), {});
  if (!in.is_open() || in.bad()) return Status(Code::Failed, "cannot read the feed " + path);
  return {};
}

// A square in a colour taken from the id's hash, with a lighter centre.
std::string iconPng(const std::string& id) {
  std::uint64_t h = 14695981039346656037ull;  // FNV-1a
  for (char c : id) h = (h ^ static_cast<std::uint8_t>(c)) * 1099511628211ull;
  const std::uint8_t base[3] = {std::uint8_t(h >> 16), std::uint8_t(h >> 8), std::uint8_t(h)};
  std::vector<std::uint8_t> rgb;
  rgb.reserve(kIconSide * kIconSide * 3);
  for (std::uint32_t y = 0; y < kIconSide; ++y) {
    for (std::uint32_t x = 0; x < kIconSide; ++x) {
      const auto inside = [](std::uint32_t v) {
        return v >= kIconSide / 4 && v < kIconSide * 3 / 4;
      };
      for (std::uint8_t c : base) rgb.push_back(inside(x) && inside(y) ? (c + 255) / 2 : c);
    }
  }
  return encodeRgbPng(kIconSide, kIconSide, rgb);
}

void configure(httplib::Server& server) {
  // The library's default shares the port (SO_REUSEPORT): a second stand-in on a taken port
  // would split the requests with the first instead of failing to start.
  server.set_socket_options([](socket_t sock) {
    int yes = 1;
    setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
  });
  server.new_task_queue = [] { return new httplib::ThreadPool(kWorkers); };
  // A reply's head and body go out in two writes: without this the body waits for the
  // client's delayed acknowledgement of the head (40 ms on Linux) on every kept-alive request.
  server.set_tcp_nodelay(true);
  server.set_keep_alive_timeout(kIdleSeconds);
  server.set_read_timeout(kIdleSeconds);
  server.set_payload_max_length(kMaxRecordBytes);
}

// The library listens with a backlog of 5: a burst of parallel downloads (the app fetches
// every icon at once) overflows it, and the kernel has the late ones retry a second later.
// Its listening socket is protected; a pointer to member taken here reaches it.
struct ListeningSocket : httplib::Server {
  static void widenBacklog(const httplib::Server& server) {
    ::listen(server.*(&ListeningSocket::svr_sock_), SOMAXCONN);
  }
};

}  // namespace

std::string servicesUsage() {
  const std::string side = std::to_string(kIconSide);
  return "usage: zellick-services [--port P] [--feed FILE | --apps N] [--records FILE]\n"
         "                        [--slow-icons MS] [--hang PATH] [--cut PATH]\n"
         "                        [--huge-feed MIB] [--icon-bytes N]\n"
         "Stands in for the maker's web services at http://" +
         std::string(kHost) +
         ":PORT/:\n"
         "  GET  apps.php       the catalogue feed (any query)\n"
         "  GET  icons/ID.png   a " +
         side + "x" + side +
         " PNG coloured after ID (1 to 20 digits)\n"
         "  POST tracker.php    a usage record: one line on stdout, replies OK\n"
         "Options:\n"
         "  --port P            the port; 0 (default) picks a free one\n"
         "  --feed FILE         serve FILE as the feed, bytes untouched\n"
         "  --apps N            generate a feed of N entries (default " +
         std::to_string(ServicesOptions{}.apps) + ", at most " + std::to_string(kMaxApps) +
         ")\n"
         "  --records FILE      append every record to FILE, one per line\n"
         "  --slow-icons MS     wait MS milliseconds before each icon reply\n"
         "  --hang PATH         never answer requests for PATH (e.g. tracker.php) until stopped\n"
         "  --cut PATH          replies for PATH announce their length, send half and close\n"
         "  --huge-feed MIB     the feed is MIB mebibytes of entries that never close, streamed\n"
         "  --icon-bytes N      each icon is filled with zero bytes up to N bytes\n"
         "  --connect REPLY[,REPLY]\n"
         "                      the ad network's GET connect over HTTPS (a self-signed "
         "certificate\n"
         "                      made at start): the primary at https://127.0.0.1:PORT/ and, with\n"
         "                      a second REPLY, the fallback at https://localhost:PORT/; REPLY is\n"
         "                      success, error, drop (no connection), huge (50 MB), endless or\n"
         "                      redirect=URL\n"
         "A PATH ending in / (e.g. icons/) names every path under it.\n"
         "A line break in a record is written as \\n (\\r). SIGINT or SIGTERM stops it.\n";
}

ParsedArgs parseServicesArgs(const std::vector<std::string>& args) {
  ParsedArgs out;
  auto fail = [&out](const std::string& why) {
    out.status = Status(Code::InvalidArgument, why);
    return out;
  };
  bool appsGiven = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& name = args[i];
    if (name == "--help" || name == "-h") {
      out.help = true;
      continue;
    }
    if (std::find(kValueOptions.begin(), kValueOptions.end(), name) == kValueOptions.end()) {
      return fail("unknown option " + name);
    }
    if (i + 1 == args.size()) return fail(name + " needs a value");
    const std::string& value = args[++i];
    int n = 0;
    if (name == "--feed")
      out.options.feedFile = value;
    else if (name == "--records")
      out.options.recordsFile = value;
    else if (name == "--hang" && !value.empty())
      out.options.hangPath = value;
    else if (name == "--cut" && !value.empty())
      out.options.cutPath = value;
    else if (name == "--huge-feed" && readInt(value, 1, kMaxHugeFeedMiB, n))
      out.options.hugeFeedBytes = std::size_t(n) << 20;
    else if (name == "--icon-bytes" && readInt(value, 1, kMaxIconBytes, n))
      out.options.iconBytes = std::size_t(n);
    else if (name == "--connect") {
      out.options.connect.clear();
      for (std::size_t from = 0; from <= value.size();) {
        const auto comma = std::min(value.find(',', from), value.size());
        ConnectListenerOptions listener;
        if (out.options.connect.size() == kConnectHosts.size() ||
            !readConnectReply(value.substr(from, comma - from), listener.reply,
                              out.options.connectRedirect))
          return fail("bad value for --connect: '" + value + "'");
        listener.host = kConnectHosts[out.options.connect.size()];
        out.options.connect.push_back(listener);
        from = comma + 1;
      }
    } else if (name == "--port" && readInt(value, 0, 65535, n))
      out.options.port = n;
    else if (name == "--apps" && readInt(value, 0, kMaxApps, n)) {
      out.options.apps = n;
      appsGiven = true;
    } else if (name == "--slow-icons" && readInt(value, 0, kMaxIconDelayMs, n)) {
      out.options.iconDelay = milliseconds(n);
    } else {
      return fail("bad value for " + name + ": '" + value + "'");
    }
  }
  if (appsGiven && out.options.feedFile) return fail("--feed and --apps exclude each other");
  return out;
}

ServicesServer::ServicesServer(ServicesOptions options, std::ostream* records, std::ostream* log)
    : options_(std::move(options)), recordsOut_(records), log_(log) {
  for (auto* path : {&options_.hangPath, &options_.cutPath}) {
    if (*path && !(*path)->starts_with('/')) *path = "/" + **path;
  }
}

ServicesServer::~ServicesServer() { stop(); }

std::string ServicesServer::baseUrl() const {
  return "http://" + std::string(kHost) + ":" + std::to_string(port_) + "/";
}

std::vector<std::string> ServicesServer::records() const {
  std::lock_guard lock(mutex_);
  return records_;
}

Status ServicesServer::start() {
  if (options_.apps < 0 || options_.apps > kMaxApps) {
    return Status(Code::InvalidArgument,
                  "the feed can hold 0 to " + std::to_string(kMaxApps) + " entries");
  }
  if (options_.feedFile) {
    if (Status s = readFeed(*options_.feedFile, feed_); !s.ok()) return s;
  } else {
    feed_ = generatedFeed(options_.apps);
  }
  if (options_.recordsFile) {
    recordsFile_.open(*options_.recordsFile, std::ios::app | std::ios::binary);
    if (!recordsFile_) {
      return Status(Code::Failed, "cannot append to the records file " + *options_.recordsFile);
    }
  }
  maker_.server = std::make_unique<httplib::Server>();
  configure(*maker_.server);
  installMakerRoutes(*maker_.server);
  if (Status s = startListener(maker_, options_.port); !s.ok()) return s;
  port_ = maker_.port;
  connect_.resize(options_.connect.size());
  for (std::size_t i = 0; i < connect_.size(); ++i) {
    if (Status s = startConnectListener(i); !s.ok()) return s;
  }
  return {};
}

Status ServicesServer::startConnectListener(std::size_t i) {
  const ConnectListenerOptions& o = options_.connect[i];
  if (o.reply == ConnectReply::Redirect && options_.connectRedirect.empty())
    return Status(Code::InvalidArgument, "a redirect needs somewhere to point");
  SelfSigned made = makeSelfSigned(o.host);
  if (!made.certificate) return Status(Code::Failed, "cannot make a certificate for " + o.host);
  const bool drop = o.reply == ConnectReply::Drop;
  auto server = std::make_unique<httplib::SSLServer>([&made, drop](SSL_CTX& ctx) {
    SSL_CTX_set_min_proto_version(&ctx, TLS1_2_VERSION);
    if (drop) {
      // The peer sees its connection end in the middle of the handshake.
      SSL_CTX_set_client_hello_cb(
          &ctx,
          [](SSL* ssl, int*, void*) {
            ::shutdown(SSL_get_fd(ssl), SHUT_RDWR);
            return static_cast<int>(SSL_CLIENT_HELLO_ERROR);
          },
          nullptr);
    }
    return SSL_CTX_use_certificate(&ctx, made.certificate.get()) == 1 &&
           SSL_CTX_use_PrivateKey(&ctx, made.key.get()) == 1;
  });
  if (!server->is_valid()) return Status(Code::Failed, "cannot set up TLS for " + o.host);
  connect_[i].certificatePem = made.pem;
  configure(*server);
  // A client that stops reading a stream holds its worker no longer than this, nor stop().
  server->set_write_timeout(kIdleSeconds);
  installHang(*server);
  installConnectRoute(*server, i);
  installLogger(*server);
  connect_[i].server = std::move(server);
  return startListener(connect_[i], 0);
}

std::string ServicesServer::connectUrl(std::size_t i) const {
  return "https://" + options_.connect.at(i).host + ":" + std::to_string(connect_.at(i).port) + "/";
}

std::vector<std::string> ServicesServer::connectRequests(std::size_t i) const {
  std::lock_guard lock(mutex_);
  return connect_.at(i).asked;
}

Status ServicesServer::startListener(Listener& listener, int port) {
  httplib::Server& server = *listener.server;
  const int bound =
      port == 0 ? server.bind_to_any_port(kHost) : (server.bind_to_port(kHost, port) ? port : -1);
  if (bound < 0) {
    return Status(Code::Unavailable,
                  "cannot listen on " + std::string(kHost) + ":" + std::to_string(port));
  }
  listener.port = bound;
  ListeningSocket::widenBacklog(server);
  // The library offers no wait for readiness, and stop() before it runs would be lost.
  auto ended = std::make_shared<std::atomic<bool>>(false);
  listener.thread = std::thread([&server, ended] {
    server.listen_after_bind();
    *ended = true;
  });
  while (!server.is_running() && !*ended) std::this_thread::sleep_for(milliseconds(1));
  if (!server.is_running()) {
    listener.thread.join();
    return Status(Code::Failed, "the server on port " + std::to_string(bound) + " ended at once");
  }
  return {};
}

void ServicesServer::stop() {
  {
    std::lock_guard lock(mutex_);
    stopped_ = true;
  }
  stopping_.notify_all();
  std::vector<Listener*> listeners = {&maker_};
  for (Listener& l : connect_) listeners.push_back(&l);
  // All told first, so their idle connections run out together.
  for (Listener* listener : listeners)
    if (listener->thread.joinable()) listener->server->stop();
  for (Listener* listener : listeners)
    if (listener->thread.joinable()) listener->thread.join();
}

bool ServicesServer::pause(std::optional<milliseconds> d) {
  std::unique_lock lock(mutex_);
  const auto stopped = [this] { return stopped_; };
  if (!d) stopping_.wait(lock, stopped);
  return !stopping_.wait_for(lock, d.value_or(milliseconds(0)), stopped);
}

void ServicesServer::record(const std::string& body) {
  const std::string line = oneLine(body);
  std::lock_guard lock(mutex_);
  records_.push_back(body);
  if (recordsOut_) *recordsOut_ << line << std::endl;
  if (recordsFile_.is_open() && !(recordsFile_ << line << std::endl) && log_) {
    *log_ << "zellick-services: cannot write the records file; records go on in memory"
          << std::endl;
    recordsFile_.close();
  }
}

void ServicesServer::installHang(httplib::Server& server) {
  server.set_pre_routing_handler([this](const httplib::Request& req, httplib::Response& res) {
    if (!covers(options_.hangPath, req.path)) {
      return httplib::Server::HandlerResponse::Unhandled;
    }
    pause(std::nullopt);  // the client gives up first, or the server stops
    res.status = 503;
    return httplib::Server::HandlerResponse::Handled;
  });
}

void ServicesServer::installLogger(httplib::Server& server) {
  server.set_logger([this](const httplib::Request& req, const httplib::Response& res) {
    if (!log_) return;
    std::lock_guard lock(mutex_);
    *log_ << req.method << ' ' << oneLine(req.target) << ' ' << res.status << std::endl;
  });
}

void ServicesServer::installConnectRoute(httplib::Server& server, std::size_t i) {
  server.Get("/connect", [this, i](const httplib::Request& req, httplib::Response& res) {
    {
      std::lock_guard lock(mutex_);
      connect_[i].asked.push_back(req.target);
    }
    // Streams stop when the client goes (a write fails) or the server stops.
    const auto stream = [this](std::size_t offset, httplib::DataSink& sink) {
      const std::string chunk(kStreamChunkBytes, ' ');
      return pause(offset ? kEndlessPause : milliseconds(0)) &&
             sink.write(chunk.data(), chunk.size());
    };
    switch (options_.connect[i].reply) {
      case ConnectReply::Success: res.set_content(kConnectSuccess, "text/xml"); break;
      case ConnectReply::Error: res.set_content(kConnectError, "text/xml"); break;
      case ConnectReply::Drop:  // never reached: the handshake fails
        res.status = 503;
        break;
      case ConnectReply::Huge:
        res.set_content_provider(
            kHugeReplyBytes, "text/xml",
            [this](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
              // A success, then blanks: read to its end, it would be one.
              std::string chunk(std::min(length, kStreamChunkBytes), ' ');
              if (offset == 0) chunk.replace(0, std::strlen(kConnectSuccess), kConnectSuccess);
              return pause(milliseconds(0)) && sink.write(chunk.data(), chunk.size());
            });
        break;
      case ConnectReply::Endless:
        // Not a text type, which the library would compress into next to nothing.
        res.set_chunked_content_provider("application/octet-stream", stream);
        break;
      case ConnectReply::Redirect: res.set_redirect(options_.connectRedirect); break;
    }
  });
}

void ServicesServer::installMakerRoutes(httplib::Server& server) {
  using httplib::Request;
  using httplib::Response;
  installHang(server);
  server.Get("/apps.php", [this](const Request&, Response& res) {
    if (options_.hugeFeedBytes > 0) {
      streamHugeFeed(res, options_.hugeFeedBytes);
    } else {
      res.set_content(feed_, "text/xml");
    }
  });
  server.Get(R"(/icons/(\d{1,20})\.png)", [this](const Request& req, Response& res) {
    if (options_.iconDelay.count() > 0 && !pause(options_.iconDelay)) {
      res.status = 503;
      return;
    }
    std::string png = iconPng(req.matches[1].str());
    if (png.size() < options_.iconBytes) png.resize(options_.iconBytes, '\0');
    res.set_content(png, "image/png");
  });
  server.set_post_routing_handler([this](const Request& req, Response& res) {
    if (covers(options_.cutPath, req.path) && !res.body.empty()) cutShort(res);
  });
  server.Post("/tracker.php", [this](const Request& req, Response& res) {
    record(req.body);
    res.set_content("OK", "text/plain");
  });
  installLogger(server);
}

}  // namespace zellick::standin
