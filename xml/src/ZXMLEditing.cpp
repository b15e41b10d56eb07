// Building and editing: factories, children, attributes, namespace declarations, and the
// namespace fix-up that runs on everything grafted into a tree.
#include <set>

#include "ZXMLInternal.h"
#include "xml/ZXMLNode.h"

using namespace zxml_detail;

namespace {

ZXMLElementPtr consumeElement(xmlNodePtr node) {
  if (!node) return nullptr;
  return std::make_shared<ZXMLElement>(node, true);
}

// Unlinks a declaration from an element's list without freeing it; true when it was there.
bool unlinkNamespace(xmlNsPtr ns, xmlNodePtr node) {
  if (!ns || !node || node->type != XML_ELEMENT_NODE) return false;
  xmlNsPtr prev = nullptr;
  for (xmlNsPtr cur = node->nsDef; cur; prev = cur, cur = cur->next) {
    if (cur != ns) continue;
    if (prev)
      prev->next = cur->next;
    else
      node->nsDef = cur->next;
    cur->next = nullptr;
    return true;
  }
  return false;
}

// Points every element and attribute of the subtree that uses one of the dropped
// declarations at a declaration still in scope (re-declared on `top` when needed).
void repointUsers(xmlNodePtr node, xmlNodePtr top, const std::set<xmlNsPtr>& dropped) {
  auto fix = [&](xmlNodePtr user, xmlNodePtr scope) {
    xmlNsPtr old = user->ns;
    if (!old || !dropped.count(old)) return;
    xmlNsPtr repl = old->href ? xmlSearchNsByHref(scope->doc, scope, old->href) : nullptr;
    if (!repl && old->href) repl = xmlNewNs(top, old->href, old->prefix);
    user->ns = repl;
  };
  fix(node, node);
  for (xmlAttrPtr a = node->properties; a; a = a->next) fix(reinterpret_cast<xmlNodePtr>(a), node);
  for (xmlNodePtr c = node->children; c; c = c->next)
    if (c->type == XML_ELEMENT_NODE) repointUsers(c, top, dropped);
}

}  // namespace

// --- factories ---

ZXMLElementPtr ZXMLNode::elementWithName(std::string_view name) {
  ensureParser();
  const std::string n = cstr(name);
  return consumeElement(xmlNewNode(nullptr, x(n)));
}

ZXMLElementPtr ZXMLNode::elementWithName(std::string_view name, std::string_view stringValue) {
  ensureParser();
  const std::string n = cstr(name), v = cstr(stringValue);
  xmlNodePtr element = xmlNewNode(nullptr, x(n));
  if (!element) return nullptr;
  xmlNodePtr text = xmlNewText(x(v));
  if (!text || !xmlAddChild(element, text)) {
    if (text) xmlFreeNode(text);
    xmlFreeNode(element);
    return nullptr;
  }
  return consumeElement(element);
}

ZXMLElementPtr ZXMLNode::elementWithName(std::string_view name, ZXMLURI URI) {
  ensureParser();
  const std::string n = placeholderName(URI.URI, *localNameForName(name));
  return consumeElement(xmlNewNode(nullptr, x(n)));
}

ZXMLNodePtr ZXMLNode::attributeWithName(std::string_view name, std::string_view stringValue) {
  ensureParser();
  const std::string n = cstr(name), v = cstr(stringValue);
  return nodeConsumingXMLNode(reinterpret_cast<xmlNodePtr>(xmlNewProp(nullptr, x(n), x(v))));
}

ZXMLNodePtr ZXMLNode::attributeWithName(std::string_view name, std::string_view URI,
                                        std::string_view stringValue) {
  ensureParser();
  const std::string n = placeholderName(URI, *localNameForName(name)), v = cstr(stringValue);
  return nodeConsumingXMLNode(reinterpret_cast<xmlNodePtr>(xmlNewProp(nullptr, x(n), x(v))));
}

ZXMLNodePtr ZXMLNode::textWithStringValue(std::string_view stringValue) {
  ensureParser();
  const std::string v = cstr(stringValue);
  return nodeConsumingXMLNode(xmlNewText(x(v)));
}

ZXMLNodePtr ZXMLNode::namespaceWithName(std::string_view name, std::string_view stringValue) {
  ensureParser();
  const std::string n = cstr(name), v = cstr(stringValue);
  xmlNsPtr ns = xmlNewNs(nullptr, x(v), name.empty() ? nullptr : x(n));
  return nodeConsumingXMLNode(reinterpret_cast<xmlNodePtr>(ns));
}

// --- element editing ---

void ZXMLElement::setNamespaces(const std::vector<ZXMLNodePtr>& namespaces) {
  if (!isElementNode()) return;
  releaseCachedValues();
  xmlNsPtr old = xmlNode_->nsDef;
  xmlNode_->nsDef = nullptr;
  for (const ZXMLNodePtr& n : namespaces) {
    if (!n || !n->isNamespaceRecord()) continue;
    auto* ns = reinterpret_cast<xmlNsPtr>(n->XMLNode());
    xmlNewNs(xmlNode_, ns->href, ns->prefix);
  }
  if (old) {
    // Users of the old declarations must not be left pointing at freed records.
    std::set<xmlNsPtr> dropped;
    for (xmlNsPtr ns = old; ns; ns = ns->next) dropped.insert(ns);
    repointUsers(xmlNode_, xmlNode_, dropped);
    xmlFreeNsList(old);
  }
  fixUpNamespacesForNode(xmlNode_, xmlNode_);
}

void ZXMLElement::addNamespace(const ZXMLNode& aNamespace) {
  if (!isElementNode()) return;
  releaseCachedValues();
  if (!aNamespace.isNamespaceRecord()) {
    if (aNamespace.XMLNode()) ZXMLLog("addNamespace ignored: the node is not a namespace");
    return;
  }
  auto* ns = reinterpret_cast<xmlNsPtr>(aNamespace.XMLNode());
  xmlNewNs(xmlNode_, ns->href, ns->prefix);
  fixUpNamespacesForNode(xmlNode_, xmlNode_);
}

void ZXMLElement::addChild(const ZXMLNode& child) {
  if (!isElementNode() || !child.XMLNode()) return;
  if (child.kind() == ZXMLAttributeKind) {
    addAttribute(child);
    return;
  }
  if (child.kind() == ZXMLNamespaceKind) {
    addNamespace(child);
    return;
  }
  switch (child.XMLNode()->type) {
    case XML_ELEMENT_NODE:
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
    case XML_ENTITY_REF_NODE: break;
    default:
      ZXMLLog("addChild ignored: node type " + std::to_string(child.XMLNode()->type) +
              " cannot be a child");
      return;
  }
  releaseCachedValues();
  xmlNodePtr copy = child.XMLNodeCopy();
  if (!copy) return;
  // A text copy may be merged into the last text child, which is then what was added.
  xmlNodePtr added = xmlAddChild(xmlNode_, copy);
  if (!added) {
    xmlFreeNode(copy);
    return;
  }
  fixUpNamespacesForNode(added, xmlNode_);
}

void ZXMLElement::removeChild(ZXMLNode& child) {
  if (!isElementNode() || !child.xmlNode_) return;
  xmlNodePtr c = child.xmlNode_;
  if (c->type == XML_NAMESPACE_DECL || !hasNodeLayout(c) || c->parent != xmlNode_) {
    ZXMLLog("removeChild ignored: the node is not a child of this element");
    return;
  }
  xmlDocPtr holder = child.shouldFreeXMLNode_ ? xmlNewDoc(nullptr) : nullptr;
  if (child.shouldFreeXMLNode_ && !holder) {
    ZXMLLog("removeChild ignored: no document to keep the removed node in");
    return;
  }
  releaseCachedValues();
  child.releaseCachedValues();
  if (!holder) {
    xmlUnlinkNode(c);
    xmlFreeNode(c);
    child.xmlNode_ = nullptr;
    return;
  }
  // The node itself is kept, so wrappers borrowed from its subtree stay valid, but cut
  // loose from the old tree: declarations it used from above get a copy in the subtree,
  // and adopting it into a document of its own resets its document pointers, moves its
  // strings out of the old document's dictionary and rebinds the xml prefix.
  std::set<xmlNsPtr> outer;
  for (xmlNodePtr a = xmlNode_; a && a->type == XML_ELEMENT_NODE; a = a->parent)
    for (xmlNsPtr ns = a->nsDef; ns; ns = ns->next) outer.insert(ns);
  xmlDocPtr oldDoc = c->doc;
  xmlUnlinkNode(c);
  if (c->type == XML_ELEMENT_NODE) repointUsers(c, c, outer);
  if (xmlDOMWrapAdoptNode(nullptr, oldDoc, c, holder, nullptr, 0) != 0)
    ZXMLLog("removeChild: the removed node could not be fully moved to its own document");
  // As the root, absolute XPath paths work on the removed subtree.
  if (c->type == XML_ELEMENT_NODE) xmlDocSetRootElement(holder, c);
  child.holderDoc_ = holder;
}

void ZXMLElement::addAttribute(const ZXMLNode& attribute) {
  if (!isElementNode() || !attribute.XMLNode()) return;
  if (attribute.XMLNode()->type != XML_ATTRIBUTE_NODE) {
    ZXMLLog("addAttribute ignored: the node is not an attribute");
    return;
  }
  releaseCachedValues();
  auto* attr = reinterpret_cast<xmlAttrPtr>(attribute.XMLNode());
  xmlNsPtr ns = attr->ns;
  const bool exists = (ns && ns->href) ? xmlHasNsProp(xmlNode_, attr->name, ns->href) != nullptr
                                       : xmlHasProp(xmlNode_, attr->name) != nullptr;
  if (exists) return;
  xmlNsPtr target = nullptr;
  if (ns && ns->href) {
    target = xmlSearchNsByHref(xmlNode_->doc, xmlNode_, ns->href);
    if (!target) target = xmlNewNs(xmlNode_, ns->href, ns->prefix);
  }
  xmlChar* content = xmlNodeGetContent(reinterpret_cast<xmlNodePtr>(attr));
  xmlAttrPtr created = xmlNewNsProp(xmlNode_, target, attr->name, content);
  if (created) fixUpNamespacesForNode(reinterpret_cast<xmlNodePtr>(created), xmlNode_);
  if (content) xmlFree(content);
}

// --- namespace fix-up ---

void ZXMLElement::deleteNamespacePtr(xmlNsPtr namespaceToDelete, xmlNodePtr fromXMLNode) {
  if (unlinkNamespace(namespaceToDelete, fromXMLNode)) xmlFreeNs(namespaceToDelete);
}

void ZXMLElement::fixQualifiedNamesForNode(xmlNodePtr nodeToFix, xmlNodePtr graftingToTreeNode) {
  if (!nodeToFix || !graftingToTreeNode || nodeToFix->ns || !nodeToFix->name) return;
  if (nodeToFix->type != XML_ELEMENT_NODE && nodeToFix->type != XML_ATTRIBUTE_NODE) return;
  const std::string name = reinterpret_cast<const char*>(nodeToFix->name);
  const auto p = name.rfind(':');
  std::optional<std::string> prefix;
  std::string local = name;
  if (p != std::string::npos && !name.empty()) {
    if (p + 1 == name.size()) return;
    if (p > 0) prefix = name.substr(0, p);
    local = name.substr(p + 1);
  }
  xmlNodePtr graft = graftingToTreeNode;
  xmlNsPtr ns = nullptr;
  if (prefix && prefix->size() >= 3 && prefix->front() == '{' && prefix->back() == '}') {
    const std::string uri = prefix->substr(1, prefix->size() - 2);
    ns = xmlSearchNsByHref(graft->doc, graft, x(uri));
  }
  if (!ns) ns = xmlSearchNs(graft->doc, graft, prefix ? x(*prefix) : nullptr);
  if (!ns) return;
  xmlSetNs(nodeToFix, ns);
  xmlNodeSetName(nodeToFix, x(local));
}

void ZXMLElement::fixDuplicateNamespacesForNode(xmlNodePtr nodeToFix, xmlNodePtr graftingToTreeNode,
                                                ZXMLNamespaceSubstitutionMap& map) {
  if (!nodeToFix || !graftingToTreeNode) return;
  if (nodeToFix->type == XML_ELEMENT_NODE) {
    xmlNsPtr decl = nodeToFix->nsDef;
    while (decl) {
      xmlNsPtr next = decl->next;
      xmlNsPtr existing =
          decl->href ? xmlSearchNsByHref(graftingToTreeNode->doc, graftingToTreeNode, decl->href)
                     : nullptr;
      if (existing && existing != decl && xmlStrEqual(existing->prefix, decl->prefix)) {
        map.substitutions[decl] = existing;
        if (unlinkNamespace(decl, nodeToFix)) map.removed.push_back(decl);
      }
      decl = next;
    }
  }
  if (nodeToFix->type == XML_ELEMENT_NODE || nodeToFix->type == XML_ATTRIBUTE_NODE) {
    auto it = nodeToFix->ns ? map.substitutions.find(nodeToFix->ns) : map.substitutions.end();
    if (it != map.substitutions.end()) xmlSetNs(nodeToFix, it->second);
  }
}

void ZXMLElement::fixUpNamespacesForNode(xmlNodePtr nodeToFix, xmlNodePtr graftingToTreeNode,
                                         ZXMLNamespaceSubstitutionMap& map) {
  if (!nodeToFix || (nodeToFix->type != XML_ELEMENT_NODE && nodeToFix->type != XML_ATTRIBUTE_NODE))
    return;
  fixQualifiedNamesForNode(nodeToFix, graftingToTreeNode);
  fixDuplicateNamespacesForNode(nodeToFix, graftingToTreeNode, map);
  if (nodeToFix->type != XML_ELEMENT_NODE) return;
  for (xmlNodePtr c = nodeToFix->children; c; c = c->next)
    fixUpNamespacesForNode(c, graftingToTreeNode, map);
  for (xmlAttrPtr a = nodeToFix->properties; a; a = a->next)
    fixUpNamespacesForNode(reinterpret_cast<xmlNodePtr>(a), graftingToTreeNode, map);
}

void ZXMLElement::fixUpNamespacesForNode(xmlNodePtr nodeToFix, xmlNodePtr graftingToTreeNode) {
  ZXMLNamespaceSubstitutionMap map;
  fixUpNamespacesForNode(nodeToFix, graftingToTreeNode, map);
}
