// Parses a generated catalogue feed of 20,000 entries and reads every entry the way the
// catalogue does, with the XML layer, with raw libxml2 and with pugixml.
#include <cstdlib>
#include <string>

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#ifdef ZELLICK_BENCH_PUGIXML
#include <pugixml.hpp>
#endif

#include "xml/ZXMLDocument.h"
#include "xml/ZXMLNode.h"

namespace {

constexpr int kEntries = 20000;

const std::string& feed() {
  static const std::string text = [] {
    std::string s = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<apps>\n";
    for (int i = 0; i < kEntries; ++i) {
      const std::string id = std::to_string(i);
      s += "<app>\n  <appid>" + id + "</appid>\n  <appname>Hand Counter Companion " + id +
           "</appname>\n  <appleid>" + std::to_string(300000000 + i * 7) +
           "</appleid>\n  <priority>" + std::to_string(i % 10) + "</priority>\n</app>\n";
    }
    s += "</apps>\n";
    return s;
  }();
  return text;
}

// What the catalogue keeps per entry, folded into a checksum all three readers must agree on.
struct Entry {
  long appid = 0, priority = 0;
  std::string appname, appleid;
};
struct Sum {
  long ids = 0;
  std::size_t chars = 0;
  int entries = 0;
  void add(const Entry& e) {
    ids += e.appid * 31 + e.priority;
    chars += e.appname.size() + e.appleid.size();
    ++entries;
  }
  bool operator==(const Sum&) const = default;
};

void assign(Entry& e, std::string_view field, std::string value) {
  if (field == "appid")
    e.appid = std::strtol(value.c_str(), nullptr, 10);
  else if (field == "appname")
    e.appname = std::move(value);
  else if (field == "appleid")
    e.appleid = std::move(value);
  else if (field == "priority")
    e.priority = std::strtol(value.c_str(), nullptr, 10);
}

Sum readWithLayer(const std::string& xml) {
  Sum sum;
  auto doc = ZXMLDocument::initWithXMLString(xml, 0, nullptr);
  if (!doc) return sum;
  auto root = doc->rootElement();
  auto apps = root ? root->elementsForName("app") : std::nullopt;
  if (!apps) return sum;
  for (const auto& app : *apps) {
    Entry e;
    const auto count = static_cast<std::uint32_t>(app->childCount());
    for (std::uint32_t i = 0; i < count; ++i) {
      auto child = app->childAtIndex(i);
      auto name = child->name();
      auto value = child->stringValue();
      if (name && value) assign(e, *name, *value);
    }
    sum.add(e);
  }
  return sum;
}

Sum readWithLibxml2(const std::string& xml) {
  Sum sum;
  xmlDocPtr doc = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                                XML_PARSE_NOCDATA | XML_PARSE_NOBLANKS);
  if (!doc) return sum;
  xmlNodePtr root = xmlDocGetRootElement(doc);
  for (xmlNodePtr app = root ? root->children : nullptr; app; app = app->next) {
    if (app->type != XML_ELEMENT_NODE || !xmlStrEqual(app->name, BAD_CAST "app")) continue;
    Entry e;
    for (xmlNodePtr child = app->children; child; child = child->next) {
      xmlChar* content = xmlNodeGetContent(child);
      if (!content) continue;
      assign(e, reinterpret_cast<const char*>(child->name), reinterpret_cast<const char*>(content));
      xmlFree(content);
    }
    sum.add(e);
  }
  xmlFreeDoc(doc);
  return sum;
}

#ifdef ZELLICK_BENCH_PUGIXML
Sum readWithPugixml(const std::string& xml) {
  Sum sum;
  pugi::xml_document doc;
  if (!doc.load_buffer(xml.data(), xml.size())) return sum;
  for (pugi::xml_node app : doc.document_element().children("app")) {
    Entry e;
    for (pugi::xml_node child : app.children()) assign(e, child.name(), child.child_value());
    sum.add(e);
  }
  return sum;
}
#endif

template <Sum (*Read)(const std::string&)>
void BM_FeedParseAndWalk(benchmark::State& state) {
  const std::string& xml = feed();
  const Sum expected = readWithLibxml2(xml);
  if (expected.entries != kEntries || !(Read(xml) == expected)) {
    state.SkipWithError("reader disagrees with raw libxml2");
    return;
  }
  for (auto _ : state) {
    Sum s = Read(xml);
    benchmark::DoNotOptimize(s);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(xml.size()));
  state.counters["feed_bytes"] = static_cast<double>(xml.size());
}

}  // namespace

BENCHMARK_TEMPLATE(BM_FeedParseAndWalk, readWithLibxml2)
    ->Name("FeedParseAndWalk/raw_libxml2")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_FeedParseAndWalk, readWithLayer)
    ->Name("FeedParseAndWalk/ZXMLDocument")
    ->Unit(benchmark::kMillisecond);
#ifdef ZELLICK_BENCH_PUGIXML
BENCHMARK_TEMPLATE(BM_FeedParseAndWalk, readWithPugixml)
    ->Name("FeedParseAndWalk/pugixml")
    ->Unit(benchmark::kMillisecond);
#endif

int main(int argc, char** argv) {
  xmlInitParser();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  xmlCleanupParser();
  return 0;
}
