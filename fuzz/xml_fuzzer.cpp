// libFuzzer entry point: parses arbitrary bytes, then walks, edits, serialises and queries the
// result, staying within the layer's contract: wrappers are fetched afresh after every edit.
// The bytes up to the first NUL are the XML; those after it (or a hash of the input when there
// are none) choose the edits.
#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include "xml/ZXMLDocument.h"
#include "xml/ZXMLNode.h"

namespace {

void quietLog(const std::string&) {}
void quietGeneric(void*, const char*, ...) {}

struct Choices {
  const std::uint8_t* bytes;
  std::size_t size;
  std::size_t pos = 0;
  std::uint64_t state;
  std::uint32_t next(std::uint32_t bound) {
    if (bound == 0) return 0;
    std::uint32_t v;
    if (pos < size) {
      v = bytes[pos++];
    } else {
      state = state * 6364136223846793005ULL + 1442695040888963407ULL;
      v = static_cast<std::uint32_t>(state >> 33);
    }
    return v % bound;
  }
  template <class T>
  const T& pick(const std::vector<T>& v) {
    return v[next(static_cast<std::uint32_t>(v.size()))];
  }
};

constexpr std::size_t kWalkBudget = 400;

void touch(const ZXMLString& s, std::size_t& sink) { sink += s ? s->size() : 1; }

void readNode(const ZXMLNodePtr& node, std::size_t& sink) {
  if (!node) return;
  touch(node->name(), sink);
  touch(node->localName(), sink);
  touch(node->prefix(), sink);
  touch(node->URI(), sink);
  touch(node->stringValue(), sink);
  touch(node->XMLString(), sink);
  sink += node->description().size() + static_cast<std::size_t>(node->kind()) + node->childCount();
  sink += node->isEqual(node.get()) + node->hash() % 7;
}

void walk(const ZXMLNodePtr& node, std::size_t& budget, std::size_t& sink,
          std::vector<std::string>& names, std::vector<std::string>& uris) {
  if (!node || budget == 0) return;
  --budget;
  readNode(node, sink);
  if (auto n = node->name(); n && names.size() < 32) names.push_back(*n);
  if (auto u = node->URI(); u && uris.size() < 16) uris.push_back(*u);
  if (auto* element = dynamic_cast<ZXMLElement*>(node.get())) {
    if (auto attrs = element->attributes())
      for (const auto& a : *attrs) {
        readNode(a, sink);
        if (auto n = a->name()) {
          sink += element->attributeForName(*n) != nullptr;
          if (auto u = a->URI())
            sink += element->attributeForLocalName(*a->localName(), *u) != nullptr;
        }
      }
    if (auto nss = element->namespaces())
      for (const auto& ns : *nss) {
        readNode(ns, sink);
        if (auto v = ns->stringValue()) {
          touch(element->resolvePrefixForNamespaceURI(*v), sink);
          if (uris.size() < 16) uris.push_back(*v);
        }
      }
    if (auto n = node->name()) {
      if (auto found = element->elementsForName(*n)) sink += found->size();
      if (auto u = node->URI()) {
        if (auto found = element->elementsForLocalName(*node->localName(), *u))
          sink += found->size();
      }
    }
  }
  const std::size_t count = node->childCount();
  for (std::uint32_t i = 0; i < count && budget; ++i)
    walk(node->childAtIndex(i), budget, sink, names, uris);
  sink += node->childAtIndex(static_cast<std::uint32_t>(count)) == nullptr;
  if (auto copy = node->copyWithZone()) sink += copy->isEqual(node.get());
}

// Grafting an ancestor into its own subtree doubles the tree; past this size the case
// stops growing it, so every input finishes in bounded time.
constexpr std::size_t kMaxNodes = 1500;

std::size_t countNodes(xmlNodePtr node, std::size_t limit) {
  std::size_t n = 0;
  for (xmlNodePtr c = node; c && n < limit; c = c->next) {
    ++n;
    if (c->type == XML_ELEMENT_NODE && c->children) n += countNodes(c->children, limit - n);
  }
  return n;
}

void collectElements(const ZXMLNodePtr& node, std::vector<ZXMLElementPtr>& out) {
  if (!node || out.size() >= 64) return;
  if (auto element = std::dynamic_pointer_cast<ZXMLElement>(node)) out.push_back(element);
  if (auto kids = node->children())
    for (const auto& k : *kids) collectElements(k, out);
}

void query(const ZXMLNode& node, Choices& c, const std::vector<std::string>& names,
           const std::vector<std::string>& uris, std::size_t& sink) {
  // "|"-separated (none uses the union); the last is no XPath at all.
  static const std::vector<std::string> fixed = [] {
    std::vector<std::string> out;
    std::istringstream in(
        "/|//*|//@*|//namespace::*|//text()|count(//*)|string(.)|..|.|*|node()|//_def_ns:*|//p:*|"
        "name(/*)|/*/*[1]|//comment()|//processing-instruction()|1 div 0|][");
    for (std::string e; std::getline(in, e, '|');) out.push_back(e);
    return out;
  }();
  std::string expression = c.pick(fixed);
  if (!names.empty() && c.next(2)) expression = "//" + c.pick(names);
  std::optional<ZXMLError> error;
  std::optional<ZXMLNodeList> result;
  if (c.next(2) && !uris.empty()) {
    ZXMLNamespaceMap map{{"p", c.pick(uris)}, {"_def_ns", c.pick(uris)}};
    result = node.nodesForXPath(expression, &map, &error);
  } else {
    result = node.nodesForXPath(expression, &error);
  }
  if (result) {
    for (const auto& n : *result) readNode(n, sink);
  } else if (error) {
    sink += static_cast<std::size_t>(error->code) + error->userInfo.size();
  }
}

void edit(ZXMLDocument& doc, Choices& c, const ZXMLElementPtr& standalone,
          const std::vector<std::string>& names, const std::vector<std::string>& uris,
          std::size_t& sink) {
  std::vector<ZXMLElementPtr> elements;
  collectElements(doc.rootElement(), elements);
  if (elements.empty()) return;
  ZXMLElement& target = *c.pick(elements);
  const std::string name = names.empty() ? "n" : c.pick(names);
  const std::string uri = uris.empty() ? "urn:z" : c.pick(uris);
  static const std::vector<std::string> prefixes = {"p", "q", "", "xml", "_def_ns", "a"};
  const bool full = countNodes(doc.rootElement()->XMLNode(), kMaxNodes) >= kMaxNodes;
  std::uint32_t op = c.next(16);
  if (full && op <= 5) op = 6;
  switch (op) {
    case 0:
      if (auto e = ZXMLNode::elementWithName(name)) target.addChild(*e);
      break;
    case 1:
      if (auto e = ZXMLNode::elementWithName(name, ZXMLURI{uri})) target.addChild(*e);
      break;
    case 2:
      if (auto e = ZXMLNode::elementWithName(name, std::string_view("t&amp;"))) target.addChild(*e);
      break;
    case 3:
      if (auto t = ZXMLNode::textWithStringValue("x")) target.addChild(*t);
      break;
    case 4:
      target.addChild(*c.pick(elements));
      break;  // graft a copy of any element, maybe an ancestor
    case 5:
      if (standalone) target.addChild(*standalone);
      break;
    case 6:
      if (auto kids = target.children()) target.removeChild(*c.pick(*kids));
      break;
    case 7:
      if (auto kids = target.children()) {
        ZXMLNodePtr kid = c.pick(*kids);
        ZXMLNodePtr grandchild = kid->childAtIndex(0);  // borrowed; valid while kid lives
        kid->setShouldFreeXMLNode(true);
        target.removeChild(*kid);
        readNode(kid, sink);
        readNode(grandchild, sink);
        query(*kid, c, names, uris, sink);
      }
      break;
    case 8:
      if (auto a = ZXMLNode::attributeWithName(name, "v")) target.addChild(*a);
      break;
    case 9:
      if (auto a = ZXMLNode::attributeWithName(name, uri, "w")) target.addAttribute(*a);
      break;
    case 10: {
      ZXMLElement& other = *c.pick(elements);
      if (auto attrs = other.attributes()) target.addAttribute(*c.pick(*attrs));
      break;
    }
    case 11:
      if (auto ns = ZXMLNode::namespaceWithName(c.pick(prefixes), uri)) target.addNamespace(*ns);
      break;
    case 12: {
      std::vector<ZXMLNodePtr> keep;
      if (auto nss = target.namespaces())
        for (const auto& ns : *nss)
          if (c.next(2)) keep.push_back(ns);
      if (auto ns = ZXMLNode::namespaceWithName(c.pick(prefixes), uri)) keep.push_back(ns);
      target.setNamespaces(keep);
      break;
    }
    case 13: {
      static const std::vector<std::string> values = {"",     "plain", "a &amp; b", "&undefined;",
                                                      "<x/>", "&#65;"};
      const std::string& value = c.pick(values);
      switch (c.next(4)) {
        case 0: target.setStringValue(value); break;
        case 1:
          if (auto kids = target.children()) c.pick(*kids)->setStringValue(value);
          break;
        case 2:
          if (auto attrs = target.attributes()) c.pick(*attrs)->setStringValue(value);
          break;
        default:
          if (auto nss = target.namespaces()) c.pick(*nss)->setStringValue(value);
          break;
      }
      break;
    }
    case 14: {
      // A detached copy: query it (the temporary document must go away again) and edit it.
      auto copy = std::dynamic_pointer_cast<ZXMLElement>(target.copyWithZone());
      if (!copy) break;
      query(*copy, c, names, uris, sink);
      if (auto kid = copy->childAtIndex(0)) query(*kid, c, names, uris, sink);
      if (auto e = ZXMLNode::elementWithName(name, ZXMLURI{uri})) copy->addChild(*e);
      if (auto kids = copy->children()) copy->removeChild(*c.pick(*kids));
      touch(copy->XMLString(), sink);
      sink += copy->isEqual(&target);
      if (auto d = ZXMLDocument::initWithRootElement(*copy))
        sink += d->XMLData().value_or("").size();
      break;
    }
    default: query(target, c, names, uris, sink); break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool quiet = [] {
    ZXMLSetLogHandler(quietLog);
    xmlSetGenericErrorFunc(nullptr, quietGeneric);
    return true;
  }();
  (void)quiet;
  if (size > 32 * 1024) return 0;

  const auto* chars = reinterpret_cast<const char*>(data);
  const std::size_t split = std::find(chars, chars + size, '\0') - chars;
  const std::string_view xml(chars, split);
  std::uint64_t seed =
      ZXMLStringsCache::hash(reinterpret_cast<const xmlChar*>(std::string(xml).c_str()));
  Choices c{data + std::min(size, split + 1), size - std::min(size, split + 1), 0, seed};

  std::size_t sink = 0;
  std::vector<std::string> names, uris;
  const auto walkAll = [&sink](const ZXMLNodePtr& node, std::vector<std::string>& names,
                               std::vector<std::string>& uris) {
    std::size_t budget = kWalkBudget;
    walk(node, budget, sink, names, uris);
  };
  std::optional<ZXMLError> error;
  auto standalone = ZXMLElement::initWithXMLString(xml, &error);
  if (standalone) {
    walkAll(standalone, names, uris);
    query(*standalone, c, names, uris, sink);
  }
  auto doc = ZXMLDocument::initWithData(xml, 0, &error);
  if (!doc) return 0;
  walkAll(doc->rootElement(), names, uris);
  for (const char* xpath : {"//namespace::*", "//*", "/node()"}) {
    std::optional<ZXMLError> qerror;
    if (auto result = doc->nodesForXPath(xpath, &qerror))
      for (const auto& n : *result) readNode(n, sink);
  }
  const std::uint32_t edits = 4 + c.next(24);
  for (std::uint32_t i = 0; i < edits; ++i) {
    edit(*doc, c, standalone, names, uris, sink);
    if (c.next(4) == 0) touch(doc->rootElement() ? doc->rootElement()->XMLString() : nullptr, sink);
  }
  std::vector<std::string> laterNames, laterUris;
  walkAll(doc->rootElement(), laterNames, laterUris);
  sink += doc->XMLData().value_or("").size();
  if (auto root = doc->rootElement())
    if (auto copy = ZXMLDocument::initWithRootElement(*root))
      sink += copy->XMLData().value_or("").size();
  if (c.next(3) == 0) {
    doc->setVersion(c.next(2) ? std::optional<std::string_view>("1.1") : std::nullopt);
    doc->setCharacterEncoding(c.next(2) ? std::optional<std::string_view>("ISO-8859-1")
                                        : std::nullopt);
    sink += doc->XMLData().value_or("").size();
  }
  (void)sink;  // the calls that fed it are what is exercised
  return 0;
}
