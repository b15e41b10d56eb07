// Reading side of elements: namespaces, attributes and the name-based look-ups.
#include <libxml/parser.h>

#include "ZXMLInternal.h"
#include "xml/ZXMLNode.h"

using namespace zxml_detail;

ZXMLElementPtr ZXMLElement::initWithXMLString(std::string_view string, ZXMLErrorOut error) {
  ensureParser();
  if (string.size() > static_cast<std::size_t>(INT32_MAX)) {
    setError(error, -1);
    return nullptr;
  }
  xmlDocPtr doc = xmlReadMemory(string.data(), static_cast<int>(string.size()), nullptr, nullptr,
                                kParseOptions);
  xmlNodePtr root = doc ? xmlDocGetRootElement(doc) : nullptr;
  xmlNodePtr copy = root ? xmlCopyNode(root, 1) : nullptr;
  if (doc) xmlFreeDoc(doc);
  if (!copy) {
    ZXMLLog("element not made: the text has no root element");
    setError(error, -1);
    return nullptr;
  }
  return std::make_shared<ZXMLElement>(copy, true);
}

ZXMLNodeListPtr ZXMLElement::namespaces() const {
  if (!isElementNode()) return nullptr;
  auto list = std::make_shared<ZXMLNodeList>();
  for (xmlNsPtr ns = xmlNode_->nsDef; ns; ns = ns->next) {
    if (ns->prefix && xmlStrEqual(ns->prefix, BAD_CAST "xml")) continue;
    list->push_back(nodeBorrowingXMLNode(reinterpret_cast<xmlNodePtr>(ns)));
  }
  if (list->empty()) return nullptr;
  return list;
}

ZXMLNodeListPtr ZXMLElement::attributes() const {
  if (cachedAttributes_ || !isElementNode() || !xmlNode_->properties) return cachedAttributes_;
  auto list = std::make_shared<ZXMLNodeList>();
  for (xmlAttrPtr a = xmlNode_->properties; a; a = a->next)
    list->push_back(nodeBorrowingXMLNode(reinterpret_cast<xmlNodePtr>(a)));
  cachedAttributes_ = std::move(list);
  return cachedAttributes_;
}

std::optional<ZXMLElementList> ZXMLElement::elementsForName(std::string_view name) const {
  if (!isElementNode()) return std::nullopt;
  if (auto prefix = prefixForName(name)) {
    xmlNsPtr ns = xmlSearchNs(xmlNode_->doc, xmlNode_, x(*prefix));
    if (ns && ns->href)
      return elementsForLocalName(*localNameForName(name), reinterpret_cast<const char*>(ns->href));
  }
  ZXMLNodeListPtr list = children();
  if (!list) return std::nullopt;
  ZXMLElementList found;
  for (const ZXMLNodePtr& child : *list) {
    if (child->nodeType() != XML_ELEMENT_NODE) continue;
    ZXMLString childName = child->name();
    if (childName && *childName == name)
      found.push_back(std::static_pointer_cast<ZXMLElement>(child));
  }
  if (found.empty()) return std::nullopt;
  return found;
}

std::optional<ZXMLElementList> ZXMLElement::elementsForLocalName(std::string_view localName,
                                                                 std::string_view URI) const {
  if (!isElementNode()) return std::nullopt;
  ZXMLNodeListPtr list = children();
  if (!list) return std::nullopt;
  const std::string uri = cstr(URI);
  const std::string plain = cstr(localName);
  const std::string placeholder = placeholderName(URI, *localNameForName(localName));

  xmlNsPtr expectedNs = xmlSearchNsByHref(xmlNode_->doc, xmlNode_, x(uri));
  const std::string* expectedName = expectedNs ? &plain : &placeholder;

  ZXMLElementList found;
  for (const ZXMLNodePtr& child : *list) {
    xmlNodePtr c = child->XMLNode();
    if (!c || c->type != XML_ELEMENT_NODE) continue;
    xmlNsPtr childExpectedNs = expectedNs;
    const std::string* childExpectedName = expectedName;
    if (c->nsDef) {
      // The child may rebind the URI to a declaration of its own.
      xmlNsPtr again = xmlSearchNsByHref(c->doc, c, x(uri));
      if (again != expectedNs) {
        childExpectedNs = again;
        childExpectedName = again ? &plain : &placeholder;
      }
    }
    if (c->ns == childExpectedNs && xmlStrEqual(c->name, x(*childExpectedName)))
      found.push_back(std::static_pointer_cast<ZXMLElement>(child));
  }
  if (found.empty()) return std::nullopt;
  return found;
}

ZXMLNodePtr ZXMLElement::attributeForXMLNode(xmlAttrPtr attribute) const {
  if (!attribute) return nullptr;
  ZXMLNodeListPtr list = attributes();
  if (!list) return nullptr;
  for (const ZXMLNodePtr& a : *list)
    if (a->XMLNode() == reinterpret_cast<xmlNodePtr>(attribute)) return a;
  return nullptr;
}

ZXMLNodePtr ZXMLElement::attributeForName(std::string_view name) const {
  if (!isElementNode()) return nullptr;
  const std::string full = cstr(name);
  xmlAttrPtr attr = xmlHasProp(xmlNode_, x(full));
  if (!attr) {
    if (auto prefix = prefixForName(name)) {
      xmlNsPtr ns = xmlSearchNs(xmlNode_->doc, xmlNode_, x(*prefix));
      const std::string local = *localNameForName(name);
      attr = xmlHasNsProp(xmlNode_, x(local), ns ? ns->href : nullptr);
    } else {
      attr = xmlHasNsProp(xmlNode_, x(full), nullptr);
    }
  }
  return attributeForXMLNode(attr);
}

ZXMLNodePtr ZXMLElement::attributeForLocalName(std::string_view localName,
                                               std::string_view URI) const {
  if (!isElementNode()) return nullptr;
  const std::string local = cstr(localName);
  const std::string uri = cstr(URI);
  xmlAttrPtr attr = xmlHasNsProp(xmlNode_, x(local), x(uri));
  if (!attr) {
    const std::string placeholder = placeholderName(URI, *localNameForName(localName));
    attr = xmlHasProp(xmlNode_, x(placeholder));
  }
  return attributeForXMLNode(attr);
}

ZXMLString ZXMLElement::resolvePrefixForNamespaceURI(std::string_view namespaceURI) const {
  if (!isElementNode()) return nullptr;
  const std::string uri = cstr(namespaceURI);
  xmlNsPtr ns = xmlSearchNsByHref(xmlNode_->doc, xmlNode_, x(uri));
  if (!ns) return nullptr;
  return ns->prefix ? stringFromXMLString(ns->prefix) : emptyString();
}
