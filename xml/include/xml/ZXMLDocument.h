#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <libxml/tree.h>

#include "xml/ZXMLNode.h"

class ZXMLDocument;
using ZXMLDocumentPtr = std::shared_ptr<ZXMLDocument>;

// Owns one parsed libxml2 document and its strings cache; every wrapper it hands out
// borrows from it and is valid only while it lives.
class ZXMLDocument {
 public:
  explicit ZXMLDocument(xmlDocPtr doc);  // takes ownership of doc
  ~ZXMLDocument();
  ZXMLDocument(const ZXMLDocument&) = delete;
  ZXMLDocument& operator=(const ZXMLDocument&) = delete;

  // Parse (options are accepted for the interface but the layer always parses the same
  // way); nullptr and code -1 on failure, the error reset on success.
  static ZXMLDocumentPtr initWithData(std::string_view data, unsigned options, ZXMLErrorOut error);
  static ZXMLDocumentPtr initWithXMLString(std::string_view string, unsigned options,
                                           ZXMLErrorOut error);
  // A new document whose root is a copy of the element; nullptr when it cannot be made.
  static ZXMLDocumentPtr initWithRootElement(const ZXMLElement& element);

  void addStringsCacheToDoc();
  ZXMLElementPtr rootElement() const;
  // The serialised document; nothing when it cannot be dumped.
  std::optional<std::string> XMLData() const;
  void setVersion(std::optional<std::string_view> version);
  void setCharacterEncoding(std::optional<std::string_view> encoding);
  std::string description() const;

  std::optional<ZXMLNodeList> nodesForXPath(std::string_view xpath, ZXMLErrorOut error) const;
  std::optional<ZXMLNodeList> nodesForXPath(std::string_view xpath,
                                            const ZXMLNamespaceMap* namespaces,
                                            ZXMLErrorOut error) const;

  xmlDocPtr XMLDoc() const { return xmlDoc_; }

 private:
  xmlDocPtr xmlDoc_ = nullptr;
};
