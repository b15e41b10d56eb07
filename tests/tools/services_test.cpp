// The stand-in for the maker's web services: its command line, and what of it the feature suites
// do not already prove (tests/reliability serves feeds, icons, records, --hang, --cut,
// --huge-feed and --icon-bytes to the real app; tests/adconnect asks every --connect reply).
#include <QTemporaryDir>

#include <httplib.h>

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "services_server.h"

namespace zellick::standin {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct Running {
  explicit Running(ServicesOptions options, std::ostream* records = nullptr)
      : server(std::move(options), records),
        status(server.start()),
        http("127.0.0.1", server.port()) {
    EXPECT_TRUE(status.ok()) << status.toString();
    http.set_read_timeout(5, 0);
  }
  ServicesServer server;
  Status status;
  httplib::Client http;
};

std::string describe(const ParsedArgs& p) {
  const ServicesOptions& o = p.options;
  std::ostringstream s;
  s << (p.help ? "help " : "") << "port=" << o.port << " apps=" << o.apps;
  if (o.feedFile) s << " feed=" << *o.feedFile;
  if (o.recordsFile) s << " records=" << *o.recordsFile;
  if (o.hangPath) s << " hang=" << *o.hangPath;
  if (o.cutPath) s << " cut=" << *o.cutPath;
  if (o.hugeFeedBytes) s << " huge=" << o.hugeFeedBytes;
  if (o.iconBytes) s << " icon=" << o.iconBytes;
  if (o.iconDelay.count()) s << " slow=" << o.iconDelay.count();
  for (const auto& c : o.connect) s << " connect=" << int(c.reply) << "@" << c.host;
  if (!o.connectRedirect.empty()) s << " to=" << o.connectRedirect;
  return s.str();
}

// Arguments joined by "|".
TEST(ServicesTest, CommandLine) {
  const auto parse = [](std::string joined) {
    std::vector<std::string> args;
    std::istringstream in(joined);
    for (std::string a; std::getline(in, a, '|');) args.push_back(a);
    if (joined.ends_with('|')) args.emplace_back();
    return parseServicesArgs(args);
  };
  const std::pair<const char*, const char*> accepted[] = {
      {"", "port=0 apps=5"},
      {"-h", "help port=0 apps=5"},
      {"--port|65535|--apps|0", "port=65535 apps=0"},
      {"--feed|f.xml|--records|r.txt", "port=0 apps=5 feed=f.xml records=r.txt"},
      {"--hang|apps.php|--cut|icons/", "port=0 apps=5 hang=apps.php cut=icons/"},
      {"--huge-feed|2|--icon-bytes|7", "port=0 apps=5 huge=2097152 icon=7"},
      {"--slow-icons|600000", "port=0 apps=5 slow=600000"},
      {"--connect|drop,error", "port=0 apps=5 connect=2@127.0.0.1 connect=1@localhost"},
      {"--connect|huge,endless", "port=0 apps=5 connect=3@127.0.0.1 connect=4@localhost"},
      {"--connect|redirect=https://x.example/",
       "port=0 apps=5 connect=5@127.0.0.1 to=https://x.example/"},
      {"--connect|success|--connect|error", "port=0 apps=5 connect=1@127.0.0.1"},
  };
  for (const auto& [args, expected] : accepted) EXPECT_EQ(describe(parse(args)), expected) << args;
  // Unknown, no value, out of range, not a number, empty, exclusive, not a reply, too many hosts.
  std::istringstream refused(
      "--loud;--apps;--port|65536;--apps|10001;--apps|-1;--apps|5x;--slow-icons|600001;"
      "--huge-feed|0;--huge-feed|4097;--icon-bytes|67108865;--hang|;--cut|;--feed|f|--apps|3;"
      "--connect|;--connect|maybe;--connect|success,;--connect|redirect=;"
      "--connect|success,error,drop");
  for (std::string args; std::getline(refused, args, ';');)
    EXPECT_FALSE(parse(args).status.ok()) << args;
}

TEST(ServicesTest, WhatCannotBeServedFailsTheStart) {
  QTemporaryDir dir;
  Running taken({});
  const std::pair<const char*, ServicesOptions> refused[] = {
      {"no feed file", {.feedFile = dir.filePath("none.xml").toStdString()}},
      {"a folder as feed", {.feedFile = dir.path().toStdString()}},
      {"records in no folder", {.recordsFile = dir.filePath("no/records.txt").toStdString()}},
      {"port taken", {.port = taken.server.port()}},
  };
  for (const auto& [why, options] : refused)
    EXPECT_FALSE(ServicesServer(options).start().ok()) << why;
}

// Appended to the file and echoed, one line each: a line break in a record must not split it.
TEST(ServicesTest, RecordsAreAppendedOneLineEach) {
  QTemporaryDir dir;
  const std::string file = dir.filePath("records.txt").toStdString();
  std::ofstream(file) << "earlier\n";
  std::ostringstream out;
  Running s({.recordsFile = file}, &out);
  const std::vector<std::string> sent = {"appid=17&tag=Count", "two\r\nlines"};
  for (const auto& record : sent) EXPECT_TRUE(s.http.Post("/tracker.php", record, "text/plain"));
  EXPECT_EQ(s.server.records(), sent);
  const std::string lines = "appid=17&tag=Count\ntwo\\r\\nlines\n";
  EXPECT_EQ(out.str(), lines);
  std::ifstream in(file, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "earlier\n" + lines);
}

// Slow icons (no feature test uses them) and held replies: the client times out while other
// paths answer, and stop ends what is held at once.
TEST(ServicesTest, HeldRepliesTimeTheClientOutWhileOthersAnswerAndStopEndsThemAtOnce) {
  const std::pair<const char*, ServicesOptions> rows[] = {
      {"/icons/7.png", {.iconDelay = 60s}},
      {"/apps.php?exc=1", {.hangPath = "apps.php"}},
  };
  for (const auto& [path, options] : rows) {
    SCOPED_TRACE(path);
    Running s(options);
    s.http.set_read_timeout(0, 300000);
    const auto asked = Clock::now();
    EXPECT_FALSE(s.http.Get(path));
    EXPECT_GE(Clock::now() - asked, 250ms);
    EXPECT_TRUE(
        httplib::Client("127.0.0.1", s.server.port()).Post("/tracker.php", "x", "text/plain"));
    std::thread patient([&] { httplib::Client("127.0.0.1", s.server.port()).Get(path); });
    std::this_thread::sleep_for(100ms);
    const auto stopping = Clock::now();
    s.server.stop();
    patient.join();
    EXPECT_LT(Clock::now() - stopping, 1s);
  }
}

}  // namespace
}  // namespace zellick::standin
