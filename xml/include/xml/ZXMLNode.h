#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <libxml/tree.h>

#include "xml/ZXMLError.h"
#include "xml/ZXMLStringsCache.h"

class ZXMLNode;
class ZXMLElement;
using ZXMLNodePtr = std::shared_ptr<ZXMLNode>;
using ZXMLElementPtr = std::shared_ptr<ZXMLElement>;
using ZXMLNodeList = std::vector<ZXMLNodePtr>;
using ZXMLElementList = std::vector<ZXMLElementPtr>;
// A cached list shared with the wrapper; nullptr means "none" (never an empty list).
using ZXMLNodeListPtr = std::shared_ptr<const ZXMLNodeList>;
// Marks a namespace URI argument where a plain string would be ambiguous.
struct ZXMLURI {
  std::string_view URI;
};
// Prefix -> URI, enumerated in key order.
using ZXMLNamespaceMap = std::map<std::string, std::string>;

// Namespace records replaced while grafting: old -> replacement. Records removed from a
// tree are kept here and freed when the map is destroyed, so no pointer compared during
// the fix-up can be reused by a fresh allocation.
struct ZXMLNamespaceSubstitutionMap {
  std::map<xmlNsPtr, xmlNsPtr> substitutions;
  std::vector<xmlNsPtr> removed;
  ZXMLNamespaceSubstitutionMap() = default;
  ZXMLNamespaceSubstitutionMap(const ZXMLNamespaceSubstitutionMap&) = delete;
  ZXMLNamespaceSubstitutionMap& operator=(const ZXMLNamespaceSubstitutionMap&) = delete;
  ~ZXMLNamespaceSubstitutionMap();
};

// Node kinds returned by kind().
enum ZXMLNodeKind : int {
  ZXMLInvalidKind = 0,
  ZXMLDocumentKind = 1,
  ZXMLElementKind = 2,
  ZXMLAttributeKind = 3,
  ZXMLNamespaceKind = 4,
  ZXMLProcessingInstructionKind = 5,
  ZXMLCommentKind = 6,
  ZXMLTextKind = 7,
  ZXMLDTDKind = 8,
  ZXMLEntityDeclarationKind = 9,
  ZXMLAttributeDeclarationKind = 10,
  ZXMLElementDeclarationKind = 11,
  ZXMLNotationDeclarationKind = 12,
};

// Wrapper of one libxml2 node (or, for kind 4, of one xmlNs record).
// A consuming wrapper owns its node and frees it when destroyed; a borrowing wrapper never
// frees and is valid only while the owner of its tree (a ZXMLDocument or the consuming
// wrapper of the tree's top) lives, and only until an edit frees its node (removeChild,
// setStringValue of an ancestor, setNamespaces of the declaring element).
class ZXMLNode {
 public:
  // initConsumingXMLNode / initBorrowingXMLNode: shouldFreeXMLNode true = consuming.
  ZXMLNode(xmlNodePtr node, bool shouldFreeXMLNode);
  virtual ~ZXMLNode();
  ZXMLNode(const ZXMLNode&) = delete;
  ZXMLNode& operator=(const ZXMLNode&) = delete;

  // Wrap a node: a ZXMLElement for libxml2 type 1, a plain ZXMLNode otherwise.
  // nullptr for a null node.
  static ZXMLNodePtr nodeConsumingXMLNode(xmlNodePtr node);
  static ZXMLNodePtr nodeBorrowingXMLNode(xmlNodePtr node);

  // Part after the first ":"; the whole name when there is none or it is the last
  // character; nothing for nothing.
  static std::optional<std::string> localNameForName(std::optional<std::string_view> name);
  // Part before the first ":" (possibly empty); nothing for nothing or no ":".
  static std::optional<std::string> prefixForName(std::optional<std::string_view> name);

  // --- building (consuming results; nullptr when libxml2 cannot make the node) ---
  static ZXMLElementPtr elementWithName(std::string_view name);
  static ZXMLElementPtr elementWithName(std::string_view name, std::string_view stringValue);
  // Named by the placeholder "{URI}:local", resolved when grafted into a tree.
  static ZXMLElementPtr elementWithName(std::string_view name, ZXMLURI URI);
  static ZXMLNodePtr attributeWithName(std::string_view name, std::string_view stringValue);
  static ZXMLNodePtr attributeWithName(std::string_view name, std::string_view URI,
                                       std::string_view stringValue);
  static ZXMLNodePtr textWithStringValue(std::string_view stringValue);
  // Empty name: a default-namespace declaration.
  static ZXMLNodePtr namespaceWithName(std::string_view name, std::string_view stringValue);

  // --- reading ---
  // Text content (a namespace's href); nothing for a null node or no content.
  ZXMLString stringValue() const;
  // Ignored for nothing or a null node; replaces an element's children with the text.
  void setStringValue(std::optional<std::string_view> value);
  // Serialised node, trimmed of surrounding white space; nothing when it cannot be dumped.
  ZXMLString XMLString() const;
  ZXMLString localName() const;
  // "" when the node has no (prefixed) namespace; nothing for a null node.
  ZXMLString prefix() const;
  ZXMLString URI() const;
  ZXMLString qualifiedName() const;
  // qualifiedName, computed once per cache generation.
  ZXMLString name() const;
  std::size_t childCount() const;
  // Borrowing wrappers of the children in document order; nullptr when there are none.
  ZXMLNodeListPtr children() const;
  ZXMLNodePtr childAtIndex(std::uint32_t index) const;
  int kind() const;
  std::string description() const;
  // Loose equality: same node, or same kind, name and child count.
  bool isEqual(const ZXMLNode* other) const;
  // The same for every node, consistent with the loose isEqual.
  std::size_t hash() const;
  // A consuming wrapper of a deep copy; nullptr for a null or uncopyable node.
  ZXMLNodePtr copyWithZone() const;

  xmlNodePtr XMLNode() const { return xmlNode_; }
  // Deep copy owned by the caller (xmlFreeNode); null for a null or uncopyable node.
  xmlNodePtr XMLNodeCopy() const;
  bool shouldFreeXMLNode() const { return shouldFreeXMLNode_; }
  void setShouldFreeXMLNode(bool value) { shouldFreeXMLNode_ = value; }
  void releaseCachedValues();
  // Shared string for bytes read out of this node's tree; nothing for null bytes.
  ZXMLString stringFromXMLString(const xmlChar* bytes) const;

  // --- XPath: borrowing wrappers of the selected nodes, an empty list for a result that
  // is not a node set, nothing on failure (error filled in when given) ---
  std::optional<ZXMLNodeList> nodesForXPath(std::string_view xpath, ZXMLErrorOut error) const;
  std::optional<ZXMLNodeList> nodesForXPath(std::string_view xpath,
                                            const ZXMLNamespaceMap* namespaces,
                                            ZXMLErrorOut error) const;

 protected:
  int nodeType() const { return xmlNode_ ? static_cast<int>(xmlNode_->type) : -1; }
  bool isNamespaceRecord() const { return xmlNode_ && xmlNode_->type == XML_NAMESPACE_DECL; }
  bool isElementNode() const { return xmlNode_ && xmlNode_->type == XML_ELEMENT_NODE; }
  virtual const char* className() const { return "ZXMLNode"; }

  xmlNodePtr xmlNode_ = nullptr;
  bool shouldFreeXMLNode_ = false;
  // The document holding a removed consuming child's node; freed after the node.
  xmlDocPtr holderDoc_ = nullptr;
  mutable ZXMLString cachedName_;
  mutable ZXMLNodeListPtr cachedChildren_;
  mutable ZXMLNodeListPtr cachedAttributes_;

  friend class ZXMLElement;
};

class ZXMLElement : public ZXMLNode {
 public:
  using ZXMLNode::ZXMLNode;

  // Parses the text and owns a copy of its root element; nullptr and code -1 when there
  // is no root element.
  static ZXMLElementPtr initWithXMLString(std::string_view string, ZXMLErrorOut error);

  // Own declarations (prefix "xml" left out); nullptr when there are none.
  ZXMLNodeListPtr namespaces() const;
  ZXMLNodeListPtr attributes() const;
  std::optional<ZXMLElementList> elementsForName(std::string_view name) const;
  std::optional<ZXMLElementList> elementsForLocalName(std::string_view localName,
                                                      std::string_view URI) const;
  ZXMLNodePtr attributeForXMLNode(xmlAttrPtr attribute) const;
  ZXMLNodePtr attributeForName(std::string_view name) const;
  ZXMLNodePtr attributeForLocalName(std::string_view localName, std::string_view URI) const;
  // Prefix bound to the URI in scope: "" for a default namespace, nothing when unbound.
  ZXMLString resolvePrefixForNamespaceURI(std::string_view namespaceURI) const;

  // --- editing: every operation releases the caches; added nodes are copied ---
  void setNamespaces(const std::vector<ZXMLNodePtr>& namespaces);
  void addNamespace(const ZXMLNode& aNamespace);
  void addChild(const ZXMLNode& child);
  // Borrowed children are freed at once; a consuming child keeps its node, moved into a
  // document of its own, so wrappers borrowed from its subtree stay valid while it lives.
  void removeChild(ZXMLNode& child);
  // Never replaces an existing attribute of the same name.
  void addAttribute(const ZXMLNode& attribute);

  static void deleteNamespacePtr(xmlNsPtr namespaceToDelete, xmlNodePtr fromXMLNode);
  static void fixQualifiedNamesForNode(xmlNodePtr nodeToFix, xmlNodePtr graftingToTreeNode);
  static void fixDuplicateNamespacesForNode(xmlNodePtr nodeToFix, xmlNodePtr graftingToTreeNode,
                                            ZXMLNamespaceSubstitutionMap& namespaceSubstitutionMap);
  static void fixUpNamespacesForNode(xmlNodePtr nodeToFix, xmlNodePtr graftingToTreeNode,
                                     ZXMLNamespaceSubstitutionMap& namespaceSubstitutionMap);
  static void fixUpNamespacesForNode(xmlNodePtr nodeToFix, xmlNodePtr graftingToTreeNode);

 protected:
  const char* className() const override { return "ZXMLElement"; }
};
