// libFuzzer entry point: any bytes through the XML layer's parser, then read back, queried and
// serialised. Editing is the unit tests' (tests/xml), which pin its ownership cases.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <libxml/xmlerror.h>

#include "xml/ZXMLDocument.h"
#include "xml/ZXMLNode.h"

namespace {

void quietLog(const std::string&) {}
void quietGeneric(void*, const char*, ...) {}

void read(const ZXMLNodePtr& node, std::size_t& sink) {
  for (const ZXMLString& s : {node->name(), node->stringValue()}) sink += s ? s->size() : 1;
}

// Every node is read, attributes and namespace declarations included.
void walk(const ZXMLNodePtr& node, std::size_t& sink) {
  if (!node) return;
  read(node, sink);
  if (auto* element = dynamic_cast<ZXMLElement*>(node.get())) {
    for (const auto& list : {element->attributes(), element->namespaces()})
      if (list)
        for (const auto& n : *list) read(n, sink);
  }
  for (std::uint32_t i = 0; i < node->childCount(); ++i) walk(node->childAtIndex(i), sink);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool quiet =
      (ZXMLSetLogHandler(quietLog), xmlSetGenericErrorFunc(nullptr, quietGeneric), true);
  (void)quiet;
  // The XML ends at the first NUL: the corpus's .bin inputs carry bytes after it that mean
  // nothing here.
  std::string_view xml(reinterpret_cast<const char*>(data), size);
  xml = xml.substr(0, xml.find('\0'));
  std::optional<ZXMLError> error;
  auto doc = ZXMLDocument::initWithData(xml, 0, &error);
  if (!doc) return 0;
  std::size_t sink = 0;
  walk(doc->rootElement(), sink);
  // Elements, attributes, namespace nodes (which the layer wraps specially), text, and a number.
  for (const char* xpath : {"//*", "//@*", "//namespace::*", "//text()", "count(//*)"})
    if (auto found = doc->nodesForXPath(xpath, &error))
      for (const auto& n : *found) read(n, sink);
  if (auto root = doc->rootElement()) sink += root->XMLString() ? 1 : 0;
  sink += doc->XMLData().value_or("").size();
  (void)sink;  // the reads that fed it are what is exercised
  return 0;
}
