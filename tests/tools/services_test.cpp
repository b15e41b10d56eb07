// The stand-in for the maker's web services, started in process on a free port and asked over
// loopback as the app will ask it.
#include <QImage>
#include <QTemporaryDir>

#include <httplib.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <latch>
#include <set>
#include <sstream>
#include <thread>

#include "services_server.h"
#include "xml/ZXMLDocument.h"
#include "xml/ZXMLNode.h"

namespace zellick::standin {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::string text(const ZXMLString& s) { return s ? *s : "<nothing>"; }

std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

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

TEST(ServicesTest, GeneratedFeedHoldsNAppsOfFourChildrenAsTheAppReadsThem) {
  for (int n : {0, 1, 7}) {
    SCOPED_TRACE(n);
    Running s({.apps = n});
    auto res = s.http.Get("/apps.php?exc=123");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->get_header_value("Content-Type"), "text/xml");
    EXPECT_TRUE(std::all_of(res->body.begin(), res->body.end(), [](char c) { return c > 0; }));
    auto doc = ZXMLDocument::initWithXMLString(res->body, 0, nullptr);
    ASSERT_TRUE(doc && doc->rootElement());
    const auto apps = doc->rootElement()->elementsForName("app").value_or(ZXMLElementList{});
    ASSERT_EQ(apps.size(), std::size_t(n));
    std::set<std::string> storeIds;
    std::vector<int> priorities;
    for (int i = 0; i < n; ++i) {
      ASSERT_EQ(apps[i]->childCount(), 4u);
      std::string names;
      for (std::size_t k = 0; k < 4; ++k) names += text(apps[i]->childAtIndex(k)->name()) + " ";
      EXPECT_EQ(names, "appid appname appleid priority ");
      EXPECT_EQ(text(apps[i]->childAtIndex(0)->stringValue()), std::to_string(i + 1));
      const std::string storeId = text(apps[i]->childAtIndex(2)->stringValue());
      EXPECT_TRUE(storeId.size() == 9 && storeId.find_first_not_of("0123456789") == storeId.npos)
          << storeId;
      storeIds.insert(storeId);
      priorities.push_back(std::stoi(text(apps[i]->childAtIndex(3)->stringValue())));
    }
    EXPECT_EQ(storeIds.size(), std::size_t(n));
    if (n > 2) {
      EXPECT_FALSE(std::is_sorted(priorities.begin(), priorities.end()));
    }
  }
}

TEST(ServicesTest, FeedFileIsServedByteForByteAndWhatCannotBeServedFailsTheStart) {
  QTemporaryDir dir;
  const std::string feedFile = dir.filePath("feed.xml").toStdString();
  const std::string feed("<apps><app>caf\xE9\0\r\n</app></apps>", 30);
  std::ofstream(feedFile, std::ios::binary) << feed;
  {
    Running s({.feedFile = feedFile});
    auto res = s.http.Get("/apps.php?exc=1");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->body, feed);
    EXPECT_EQ(res->get_header_value("Content-Type"), "text/xml");
  }
  Running taken({});
  const std::pair<const char*, ServicesOptions> refused[] = {
      {"no feed file", {.feedFile = feedFile + ".none"}},
      {"a folder as feed", {.feedFile = dir.path().toStdString()}},
      {"records in no folder", {.recordsFile = dir.filePath("no/records.txt").toStdString()}},
      {"port taken", {.port = taken.server.port()}},
      {"too many apps", {.apps = 10001}},
  };
  for (const auto& [why, options] : refused) {
    ServicesServer server(options);
    EXPECT_FALSE(server.start().ok()) << why;
  }
}

TEST(ServicesTest, IconsArePngsColouredAfterTheirIdAndOtherNamesAre404) {
  Running s({});
  const std::pair<const char*, int> rows[] = {
      {"/icons/1.png", 200},         {"/icons/2.png", 200},
      {"/icons/310007919.png", 200}, {"/icons/12345678901234567890.png", 200},
      {"/icons/.png", 404},          {"/icons/123456789012345678901.png", 404},
      {"/icons/12a.png", 404},       {"/icons/-1.png", 404},
      {"/icons/1.PNG", 404},         {"/icons/1.png.png", 404},
      {"/icons/../apps.php", 404},
  };
  std::set<QRgb> colours;
  for (const auto& [path, status] : rows) {
    auto res = s.http.Get(path);
    ASSERT_TRUE(res) << path;
    EXPECT_EQ(res->status, status) << path;
    if (status != 200) continue;
    EXPECT_EQ(res->get_header_value("Content-Type"), "image/png");
    QImage icon;
    const auto* bytes = reinterpret_cast<const uchar*>(res->body.data());
    ASSERT_TRUE(icon.loadFromData(bytes, int(res->body.size()), "PNG")) << path;
    EXPECT_EQ(icon.size(), QSize(114, 114));
    colours.insert(icon.pixel(0, 0));
  }
  EXPECT_EQ(colours.size(), 4u);
}

TEST(ServicesTest, RecordsArriveAsSentInOrderOnStdoutInTheFileAndInMemory) {
  QTemporaryDir dir;
  const std::string file = dir.filePath("records.txt").toStdString();
  std::ofstream(file) << "earlier\n";
  std::ostringstream out;
  Running s({.recordsFile = file}, &out);
  const std::vector<std::string> sent = {"appid=17&tag=Count&device=Lab's phone|M|S|V|U",
                                         "appid=17&tag=a&b=c|\xC3\xA9", "two\nlines", ""};
  for (const auto& record : sent) {
    auto res = s.http.Post("/tracker.php", record, "application/x-www-form-urlencoded");
    ASSERT_TRUE(res);
    EXPECT_EQ(res->body, "OK");
  }
  ASSERT_EQ(s.server.records(), sent);
  const std::string lines = sent[0] + "\n" + sent[1] + "\ntwo\\nlines\n\n";
  EXPECT_EQ(out.str(), lines);
  EXPECT_EQ(slurp(file), "earlier\n" + lines);

  // Sent at once, none is lost, and none waits for the kernel's one-second retry of a
  // connection the listen backlog had no room for.
  std::set<std::string> burst;
  std::vector<std::thread> senders;
  std::latch ready(33);
  for (int i = 0; i < 32; ++i) {
    burst.insert(std::to_string(i));
    senders.emplace_back([&s, &ready, i] {
      ready.arrive_and_wait();
      httplib::Client("127.0.0.1", s.server.port())
          .Post("/tracker.php", std::to_string(i), "text/plain");
    });
  }
  ready.arrive_and_wait();
  const auto sending = Clock::now();
  for (auto& t : senders) t.join();
  EXPECT_LT(Clock::now() - sending, 900ms);
  const auto all = s.server.records();
  EXPECT_EQ(std::set<std::string>(all.begin() + 4, all.end()), burst);
}

// One HTTPS listener per reply: the primary on 127.0.0.1, the fallback on localhost.
TEST(ServicesTest, ConnectListenersFromTheCommandLine) {
  const std::pair<const char*, std::vector<ConnectReply>> good[] = {
      {"success", {ConnectReply::Success}},
      {"drop,error", {ConnectReply::Drop, ConnectReply::Error}},
      {"huge,endless", {ConnectReply::Huge, ConnectReply::Endless}},
      {"redirect=https://x.example/", {ConnectReply::Redirect}},
  };
  for (const auto& [value, replies] : good) {
    const ParsedArgs p = parseServicesArgs({"--connect", value});
    ASSERT_TRUE(p.status.ok()) << value;
    ASSERT_EQ(p.options.connect.size(), replies.size()) << value;
    for (std::size_t i = 0; i < replies.size(); ++i) {
      EXPECT_EQ(p.options.connect[i].reply, replies[i]) << value;
      EXPECT_EQ(p.options.connect[i].host, i ? "localhost" : "127.0.0.1");
    }
  }
  EXPECT_EQ(parseServicesArgs({"--connect", "redirect=https://x.example/"}).options.connectRedirect,
            "https://x.example/");
  for (const char* bad : {"", "maybe", "success,", "success,error,drop", "redirect="})
    EXPECT_FALSE(parseServicesArgs({"--connect", bad}).status.ok()) << bad;
}

TEST(ServicesTest, HeldRepliesTimeTheClientOutWhileOthersAnswerAndStopEndsThemAtOnce) {
  const std::pair<const char*, ServicesOptions> rows[] = {
      {"/apps.php?exc=1", {.hangPath = "apps.php"}},
      {"/icons/7.png", {.iconDelay = 60s}},
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

// The hostile replies: each announces its length; a cut one brings half of it and the client
// sees the connection break; the huge feed streams every byte; a filled icon is a PNG still.
TEST(ServicesTest, HostileRepliesAnnounceTheirLengthAndBringWhatTheySay) {
  const struct {
    const char* path;
    ServicesOptions options;
    std::size_t announced;  // 0: whatever the plain reply's length is
    bool cut;
    const char* startsWith;
  } rows[] = {
      {"/apps.php", {.cutPath = "apps.php"}, 0, true, "<?xml"},
      {"/icons/7.png", {.cutPath = "icons/"}, 0, true, "\x89PNG"},
      {"/apps.php", {.cutPath = "icons/"}, 0, false, "<?xml"},
      {"/apps.php", {.hugeFeedBytes = 50u << 20}, 50u << 20, false, "<?xml version"},
      {"/icons/7.png", {.iconBytes = 1536u << 10}, 1536u << 10, false, "\x89PNG"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    Running s(row.options);
    std::size_t announced = 0, received = 0;
    std::string head;
    auto res = s.http.Get(
        row.path,
        [&](const httplib::Response& r) {
          announced = r.get_header_value<std::size_t>("Content-Length");
          return true;
        },
        [&](const char* data, std::size_t size) {
          if (head.size() < 16) head.append(data, std::min<std::size_t>(size, 16));
          received += size;
          return true;
        });
    EXPECT_EQ(bool(res), !row.cut);
    if (row.announced) {
      EXPECT_EQ(announced, row.announced);
    }
    EXPECT_EQ(received, row.cut ? announced / 2 : announced);
    EXPECT_TRUE(head.starts_with(row.startsWith)) << head;
  }
  // A filled icon still reads as the picture it was.
  Running filled({.iconBytes = 1536u << 10});
  auto res = filled.http.Get("/icons/7.png");
  ASSERT_TRUE(res);
  QImage icon;
  EXPECT_TRUE(icon.loadFromData(reinterpret_cast<const uchar*>(res->body.data()),
                                int(res->body.size()), "PNG"));
  EXPECT_EQ(icon.size(), QSize(114, 114));
}

}  // namespace
}  // namespace zellick::standin
