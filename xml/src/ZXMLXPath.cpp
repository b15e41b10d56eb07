// XPath over a node's tree; a detached subtree borrows a temporary document for the query.
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include "ZXMLInternal.h"
#include "xml/ZXMLDocument.h"
#include "xml/ZXMLNode.h"

using namespace zxml_detail;

namespace {

// Errors are returned to the caller, so libxml2's own printing is kept quiet.
void ignoreStructuredError(void*, xmlErrorPtr) {}

// The namespace axis hands out throw-away copies (freed with the result) whose `next`
// is the owning element; the wrapper gets the element's real in-scope record instead.
xmlNodePtr stableNode(xmlNodePtr n, xmlDocPtr tempDoc) {
  if (!n || n->type != XML_NAMESPACE_DECL) return n;
  auto* ns = reinterpret_cast<xmlNsPtr>(n);
  auto* owner = reinterpret_cast<xmlNodePtr>(ns->next);
  if (!owner || owner->type != XML_ELEMENT_NODE) return nullptr;
  xmlNsPtr real = xmlSearchNs(owner->doc, owner, ns->prefix);
  if (!real || !xmlStrEqual(real->href, ns->href)) return nullptr;
  // The implicit "xml" record of a temporary document dies with it.
  if (tempDoc && real == tempDoc->oldNs) return nullptr;
  return reinterpret_cast<xmlNodePtr>(real);
}

}  // namespace

std::optional<ZXMLNodeList> ZXMLNode::nodesForXPath(std::string_view xpath,
                                                    ZXMLErrorOut error) const {
  return nodesForXPath(xpath, nullptr, error);
}

std::optional<ZXMLNodeList> ZXMLNode::nodesForXPath(std::string_view xpath,
                                                    const ZXMLNamespaceMap* namespaces,
                                                    ZXMLErrorOut error) const {
  if (!xmlNode_ || isNamespaceRecord()) {
    ZXMLLog("XPath refused: the wrapper holds no node that can be queried");
    setError(error, -1, {{"error", "invalid node"}});
    return std::nullopt;
  }
  xmlNodePtr node = xmlNode_;
  xmlDocPtr tempDoc = nullptr;
  xmlNodePtr top = nullptr;
  bool linkedAsRoot = false;
  if (!node->doc) {
    tempDoc = xmlNewDoc(nullptr);
    if (tempDoc) {
      top = node;
      while (top->parent) top = top->parent;
      if (top->type == XML_ELEMENT_NODE) {
        xmlDocSetRootElement(tempDoc, top);
        linkedAsRoot = true;
      } else {
        // Only an element can be a document's root; anything else just borrows the link.
        xmlSetTreeDoc(top, tempDoc);
      }
    }
  }
  auto restore = [&] {
    if (!tempDoc) return;
    if (linkedAsRoot) xmlUnlinkNode(top);
    xmlSetTreeDoc(top, nullptr);
    xmlFreeDoc(tempDoc);
  };
  if (!node->doc) {
    restore();
    setError(error, -1, {{"error", "invalid node"}});
    return std::nullopt;
  }

  xmlXPathContextPtr context = xmlXPathNewContext(node->doc);
  if (!context) {
    restore();
    setError(error, -1);
    return std::nullopt;
  }
  context->node = node;
  context->error = ignoreStructuredError;

  if (namespaces) {
    for (const auto& [prefix, uri] : *namespaces) xmlXPathRegisterNs(context, x(prefix), x(uri));
  } else {
    xmlNodePtr scope =
        isDocumentType(node->type) ? xmlDocGetRootElement(reinterpret_cast<xmlDocPtr>(node)) : node;
    // Deliberately the chain from the namespace in use, not the declaration list.
    for (xmlNsPtr ns = scope ? nodeNamespace(scope) : nullptr; ns; ns = ns->next) {
      if (!ns->href) continue;
      xmlXPathRegisterNs(context, ns->prefix ? ns->prefix : BAD_CAST "_def_ns", ns->href);
    }
  }

  const std::string expression = cstr(xpath);
  std::optional<ZXMLNodeList> result;
  int code = 0;
  std::map<std::string, std::string> info;
  if (xmlXPathObjectPtr object = xmlXPathEval(x(expression), context)) {
    result.emplace();
    if (object->type == XPATH_NODESET && object->nodesetval) {
      xmlNodeSetPtr set = object->nodesetval;
      result->reserve(static_cast<std::size_t>(set->nodeNr));
      for (int i = 0; i < set->nodeNr; ++i) {
        // The temporary document is gone after the query; it is no result to hand out.
        if (tempDoc && set->nodeTab[i] == reinterpret_cast<xmlNodePtr>(tempDoc)) continue;
        if (ZXMLNodePtr wrapped = nodeBorrowingXMLNode(stableNode(set->nodeTab[i], tempDoc)))
          result->push_back(std::move(wrapped));
      }
    }
    xmlXPathFreeObject(object);
  } else {
    code = context->lastError.code;
    if (context->lastError.str1) info["error"] = context->lastError.str1;
  }
  xmlXPathFreeContext(context);
  if (!result) setError(error, code, std::move(info));
  restore();
  return result;
}

std::optional<ZXMLNodeList> ZXMLDocument::nodesForXPath(std::string_view xpath,
                                                        ZXMLErrorOut error) const {
  return nodesForXPath(xpath, nullptr, error);
}

std::optional<ZXMLNodeList> ZXMLDocument::nodesForXPath(std::string_view xpath,
                                                        const ZXMLNamespaceMap* namespaces,
                                                        ZXMLErrorOut error) const {
  if (!xmlDoc_) return std::nullopt;
  ZXMLNode documentNode(reinterpret_cast<xmlNodePtr>(xmlDoc_), false);
  return documentNode.nodesForXPath(xpath, namespaces, error);
}
