// Reading side of the node wrapper: names, text, children, equality, serialisation.
#include "xml/ZXMLNode.h"

#include <cstdio>
#include <cstring>
#include <typeinfo>

#include "ZXMLInternal.h"

using namespace zxml_detail;

const ZXMLString& zxml_detail::emptyString() {
  static const ZXMLString empty = std::make_shared<const std::string>();
  return empty;
}

namespace {

// The Unicode White_Space property, ASCII white space and line ends included.
bool isWhiteSpace(char32_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

// The character the bytes encode when they are exactly one well-formed UTF-8 sequence of
// at most three bytes (enough for all white space); nothing otherwise.
std::optional<char32_t> decodeOne(std::string_view s) {
  const auto b = [&](std::size_t i) { return static_cast<unsigned char>(s[i]); };
  const auto tail = [&](std::size_t i) { return (b(i) & 0xC0) == 0x80; };
  if (s.size() == 1 && b(0) < 0x80) return b(0);
  if (s.size() == 2 && b(0) >= 0xC2 && b(0) <= 0xDF && tail(1))
    return (b(0) & 0x1Fu) << 6 | (b(1) & 0x3Fu);
  if (s.size() == 3 && (b(0) & 0xF0) == 0xE0 && tail(1) && tail(2)) {
    const char32_t c = (b(0) & 0x0Fu) << 12 | (b(1) & 0x3Fu) << 6 | (b(2) & 0x3Fu);
    if (c >= 0x800) return c;  // shorter forms are malformed
  }
  return std::nullopt;
}

// Bytes of the white space character at the front (or back) of the text; 0 if there is none.
std::size_t whiteSpaceAt(std::string_view text, bool front) {
  for (std::size_t n = 1; n <= 3 && n <= text.size(); ++n) {
    const auto c = decodeOne(front ? text.substr(0, n) : text.substr(text.size() - n));
    if (c && isWhiteSpace(*c)) return n;
  }
  return 0;
}

}  // namespace

ZXMLNamespaceSubstitutionMap::~ZXMLNamespaceSubstitutionMap() {
  for (xmlNsPtr ns : removed) xmlFreeNs(ns);
}

ZXMLNode::ZXMLNode(xmlNodePtr node, bool shouldFreeXMLNode)
    : xmlNode_(node), shouldFreeXMLNode_(shouldFreeXMLNode) {
  ensureParser();
}

ZXMLNode::~ZXMLNode() {
  if (shouldFreeXMLNode_ && xmlNode_) {
    if (xmlNode_->type == XML_NAMESPACE_DECL) {
      xmlFreeNs(reinterpret_cast<xmlNsPtr>(xmlNode_));
    } else if (isDocumentType(xmlNode_->type)) {
      xmlFreeDoc(reinterpret_cast<xmlDocPtr>(xmlNode_));
    } else {
      // A consumed node still hanging in a tree would leave a dangling link behind.
      if (hasNodeLayout(xmlNode_)) xmlUnlinkNode(xmlNode_);
      xmlFreeNode(xmlNode_);
    }
    xmlNode_ = nullptr;
    if (holderDoc_) xmlFreeDoc(holderDoc_);
    holderDoc_ = nullptr;
  }
}

ZXMLNodePtr ZXMLNode::nodeConsumingXMLNode(xmlNodePtr node) {
  if (!node) return nullptr;
  if (node->type == XML_ELEMENT_NODE) return std::make_shared<ZXMLElement>(node, true);
  return std::make_shared<ZXMLNode>(node, true);
}

ZXMLNodePtr ZXMLNode::nodeBorrowingXMLNode(xmlNodePtr node) {
  if (!node) return nullptr;
  if (node->type == XML_ELEMENT_NODE) return std::make_shared<ZXMLElement>(node, false);
  return std::make_shared<ZXMLNode>(node, false);
}

std::optional<std::string> ZXMLNode::localNameForName(std::optional<std::string_view> name) {
  if (!name) return std::nullopt;
  const auto colon = name->find(':');
  if (colon == std::string_view::npos || colon + 1 == name->size()) return std::string(*name);
  return std::string(name->substr(colon + 1));
}

std::optional<std::string> ZXMLNode::prefixForName(std::optional<std::string_view> name) {
  if (!name) return std::nullopt;
  const auto colon = name->find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  return std::string(name->substr(0, colon));
}

ZXMLString ZXMLNode::stringFromXMLString(const xmlChar* bytes) const {
  if (!bytes) return nullptr;
  if (xmlNode_ && (xmlNode_->type == XML_ELEMENT_NODE || xmlNode_->type == XML_ATTRIBUTE_NODE ||
                   xmlNode_->type == XML_TEXT_NODE)) {
    if (ZXMLStringsCache* cache = ZXMLStringsCache::of(xmlNode_->doc)) return cache->intern(bytes);
  }
  return std::make_shared<const std::string>(reinterpret_cast<const char*>(bytes));
}

ZXMLString ZXMLNode::stringValue() const {
  if (!xmlNode_) return nullptr;
  if (isNamespaceRecord()) return stringFromXMLString(reinterpret_cast<xmlNsPtr>(xmlNode_)->href);
  // An element holding exactly one text node (the common case of a feed) needs no copy.
  if (xmlNode_->type == XML_ELEMENT_NODE) {
    xmlNodePtr only = xmlNode_->children;
    if (!only) return stringFromXMLString(BAD_CAST "");
    if (only->next == nullptr && only->type == XML_TEXT_NODE && only->content)
      return stringFromXMLString(only->content);
  }
  xmlChar* content = xmlNodeGetContent(xmlNode_);
  if (!content) return nullptr;
  ZXMLString out = stringFromXMLString(content);
  xmlFree(content);
  return out;
}

void ZXMLNode::setStringValue(std::optional<std::string_view> value) {
  if (!value || !xmlNode_) return;
  const std::string text = cstr(*value);
  if (isNamespaceRecord()) {
    releaseCachedValues();
    auto* ns = reinterpret_cast<xmlNsPtr>(xmlNode_);
    if (ns->href) xmlFree(const_cast<xmlChar*>(ns->href));
    ns->href = xmlStrdup(x(text));
    return;
  }
  switch (xmlNode_->type) {
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE:
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
      releaseCachedValues();
      xmlNodeSetContent(xmlNode_, x(text));
      return;
    default:
      ZXMLLog("setStringValue ignored on node type " + std::to_string(xmlNode_->type));
      return;
  }
}

ZXMLString ZXMLNode::XMLString() const {
  if (!xmlNode_) return nullptr;
  xmlBufferPtr buffer = xmlBufferCreate();
  if (!buffer) return nullptr;
  ZXMLString out;
  if (xmlNodeDump(buffer, nullptr, xmlNode_, 0, 0) >= 0 && xmlBufferContent(buffer)) {
    const char* bytes = reinterpret_cast<const char*>(xmlBufferContent(buffer));
    std::string_view text(bytes, static_cast<std::size_t>(xmlBufferLength(buffer)));
    while (std::size_t n = whiteSpaceAt(text, true)) text.remove_prefix(n);
    while (std::size_t n = whiteSpaceAt(text, false)) text.remove_suffix(n);
    const std::string trimmed(text);
    out = stringFromXMLString(x(trimmed));
  }
  xmlBufferFree(buffer);
  return out;
}

ZXMLString ZXMLNode::localName() const {
  if (!xmlNode_) return nullptr;
  const xmlChar* raw =
      isNamespaceRecord() ? reinterpret_cast<xmlNsPtr>(xmlNode_)->prefix : xmlNode_->name;
  if (!raw) return isNamespaceRecord() ? emptyString() : nullptr;
  const char* s = reinterpret_cast<const char*>(raw);
  const char* colon = std::strchr(s, ':');
  if (!colon || colon[1] == '\0') return stringFromXMLString(raw);
  return stringFromXMLString(reinterpret_cast<const xmlChar*>(colon + 1));
}

ZXMLString ZXMLNode::prefix() const {
  if (!xmlNode_) return nullptr;
  if (isNamespaceRecord()) return emptyString();
  xmlNsPtr ns = nodeNamespace(xmlNode_);
  if (!ns || !ns->prefix) return emptyString();
  return stringFromXMLString(ns->prefix);
}

ZXMLString ZXMLNode::URI() const {
  if (!xmlNode_ || isNamespaceRecord()) return nullptr;
  xmlNsPtr ns = nodeNamespace(xmlNode_);
  if (!ns || !ns->href) return nullptr;
  return stringFromXMLString(ns->href);
}

ZXMLString ZXMLNode::qualifiedName() const {
  if (!xmlNode_) return nullptr;
  if (isNamespaceRecord()) {
    const xmlChar* p = reinterpret_cast<xmlNsPtr>(xmlNode_)->prefix;
    return p ? stringFromXMLString(p) : emptyString();
  }
  xmlNsPtr ns = nodeNamespace(xmlNode_);
  if (ns && ns->prefix && xmlNode_->name) {
    std::string qualified = reinterpret_cast<const char*>(ns->prefix);
    qualified += ':';
    qualified += reinterpret_cast<const char*>(xmlNode_->name);
    return stringFromXMLString(x(qualified));
  }
  return stringFromXMLString(xmlNode_->name);
}

ZXMLString ZXMLNode::name() const {
  if (!cachedName_) cachedName_ = qualifiedName();
  return cachedName_;
}

std::size_t ZXMLNode::childCount() const {
  if (cachedChildren_) return cachedChildren_->size();
  if (!xmlNode_ || !ownsChildList(xmlNode_)) return 0;
  std::size_t count = 0;
  for (xmlNodePtr c = xmlNode_->children; c; c = c->next) ++count;
  return count;
}

ZXMLNodeListPtr ZXMLNode::children() const {
  if (cachedChildren_ || !xmlNode_ || !ownsChildList(xmlNode_) || !xmlNode_->children)
    return cachedChildren_;
  auto list = std::make_shared<ZXMLNodeList>();
  list->reserve(childCount());
  for (xmlNodePtr c = xmlNode_->children; c; c = c->next) list->push_back(nodeBorrowingXMLNode(c));
  cachedChildren_ = std::move(list);
  return cachedChildren_;
}

ZXMLNodePtr ZXMLNode::childAtIndex(std::uint32_t index) const {
  ZXMLNodeListPtr list = children();
  if (!list || index >= list->size()) return nullptr;
  return (*list)[index];
}

int ZXMLNode::kind() const {
  if (!xmlNode_) return ZXMLInvalidKind;
  switch (xmlNode_->type) {
    case XML_ELEMENT_NODE: return ZXMLElementKind;
    case XML_ATTRIBUTE_NODE: return ZXMLAttributeKind;
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE: return ZXMLTextKind;
    case XML_ENTITY_REF_NODE:
    case XML_ENTITY_NODE:
    case XML_ENTITY_DECL: return ZXMLEntityDeclarationKind;
    case XML_PI_NODE:
    case XML_XINCLUDE_START:
    case XML_XINCLUDE_END: return ZXMLProcessingInstructionKind;
    case XML_COMMENT_NODE: return ZXMLCommentKind;
    case XML_DOCUMENT_NODE:
    case XML_DOCUMENT_TYPE_NODE:
    case XML_DOCUMENT_FRAG_NODE:
    case XML_HTML_DOCUMENT_NODE:
    case XML_DOCB_DOCUMENT_NODE: return ZXMLDocumentKind;
    case XML_NOTATION_NODE: return ZXMLNotationDeclarationKind;
    case XML_DTD_NODE: return ZXMLDTDKind;
    case XML_ELEMENT_DECL: return ZXMLElementDeclarationKind;
    case XML_ATTRIBUTE_DECL: return ZXMLAttributeDeclarationKind;
    case XML_NAMESPACE_DECL: return ZXMLNamespaceKind;
    default: return ZXMLInvalidKind;
  }
}

std::string ZXMLNode::description() const {
  ZXMLString n = name();
  ZXMLString xml = XMLString();
  char head[96];
  std::snprintf(head, sizeof head, "%s %p: {type:%d name:", className(),
                static_cast<const void*>(this), nodeType());
  std::string out = head;
  out += n ? *n : "(null)";
  out += " xml:\"";
  out += xml ? *xml : "(null)";
  out += "\"}";
  return out;
}

bool ZXMLNode::isEqual(const ZXMLNode* other) const {
  if (other == this) return true;
  if (!other) return false;
  if (other->xmlNode_ == xmlNode_) return true;
  if (kind() != other->kind()) return false;
  ZXMLString a = name(), b = other->name();
  if (static_cast<bool>(a) != static_cast<bool>(b)) return false;
  if (a && *a != *b) return false;
  return childCount() == other->childCount();
}

std::size_t ZXMLNode::hash() const { return reinterpret_cast<std::size_t>(&typeid(ZXMLNode)); }

xmlNodePtr ZXMLNode::XMLNodeCopy() const {
  if (!xmlNode_) return nullptr;
  if (isNamespaceRecord())  // one record, not the rest of its declaration list
    return reinterpret_cast<xmlNodePtr>(xmlCopyNamespace(reinterpret_cast<xmlNsPtr>(xmlNode_)));
  if (isDocumentType(xmlNode_->type)) return nullptr;
  return xmlCopyNode(xmlNode_, 1);
}

ZXMLNodePtr ZXMLNode::copyWithZone() const { return nodeConsumingXMLNode(XMLNodeCopy()); }

void ZXMLNode::releaseCachedValues() {
  cachedName_.reset();
  cachedChildren_.reset();
  cachedAttributes_.reset();
}
