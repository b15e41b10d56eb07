#pragma once

#include <string>
#include <string_view>

#include <libxml/tree.h>

#include "xml/ZXMLError.h"
#include "xml/ZXMLStringsCache.h"

namespace zxml_detail {

// libxml2 is initialised once, on first use of the layer.
void ensureParser();

// Parse options of the layer: no CDATA nodes, no blank text nodes (16640).
inline constexpr int kParseOptions = XML_PARSE_NOCDATA | XML_PARSE_NOBLANKS;

void setError(ZXMLErrorOut error, int code, std::map<std::string, std::string> userInfo = {});

// Zero-terminated copy of a view, as libxml2 wants its strings.
inline std::string cstr(std::string_view v) { return std::string(v); }
inline const xmlChar* x(const std::string& s) {
  return reinterpret_cast<const xmlChar*>(s.c_str());
}

// Shared empty string for a prefix that libxml2 leaves null.
const ZXMLString& emptyString();

// "{URI}:local" for a name given with a namespace URI.
std::string placeholderName(std::string_view URI, std::string_view name);

// Node types laid out as xmlNode (the others share only the first fields).
inline bool hasNodeLayout(const xmlNode* n) {
  switch (n->type) {
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE:
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
    case XML_ENTITY_REF_NODE:
    case XML_PI_NODE:
    case XML_COMMENT_NODE:
    case XML_DOCUMENT_FRAG_NODE:
    case XML_XINCLUDE_START:
    case XML_XINCLUDE_END: return true;
    default: return false;
  }
}
// Only elements and attributes carry a namespace pointer worth reading.
inline xmlNsPtr nodeNamespace(const xmlNode* n) {
  return (n->type == XML_ELEMENT_NODE || n->type == XML_ATTRIBUTE_NODE) ? n->ns : nullptr;
}
inline bool isDocumentType(int t) {
  return t == XML_DOCUMENT_NODE || t == XML_HTML_DOCUMENT_NODE || t == XML_DOCB_DOCUMENT_NODE;
}
// Types whose child list the node owns (an entity reference only points at its declaration).
inline bool ownsChildList(const xmlNode* n) {
  return n->type != XML_ENTITY_REF_NODE && n->type != XML_NAMESPACE_DECL &&
         n->type != XML_ATTRIBUTE_DECL && n->type != XML_ENTITY_DECL && n->type != XML_ELEMENT_DECL;
}

}  // namespace zxml_detail
