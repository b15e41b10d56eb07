// The document: parsing, the root element, serialisation, and the strings cache's lifetime.
#include "xml/ZXMLDocument.h"

#include <cstdio>

#include <libxml/parser.h>

#include "ZXMLInternal.h"

using namespace zxml_detail;

ZXMLDocument::ZXMLDocument(xmlDocPtr doc) : xmlDoc_(doc) { ensureParser(); }

ZXMLDocument::~ZXMLDocument() {
  if (!xmlDoc_) return;
  ZXMLStringsCache::detach(xmlDoc_);
  xmlFreeDoc(xmlDoc_);
  xmlDoc_ = nullptr;
}

ZXMLDocumentPtr ZXMLDocument::initWithData(std::string_view data, unsigned /*options*/,
                                           ZXMLErrorOut error) {
  ensureParser();
  xmlDocPtr doc = nullptr;
  if (data.size() <= static_cast<std::size_t>(INT32_MAX))
    doc =
        xmlReadMemory(data.data(), static_cast<int>(data.size()), nullptr, nullptr, kParseOptions);
  if (!doc) {
    ZXMLLog("document not parsed (" + std::to_string(data.size()) + " bytes)");
    setError(error, -1);
    return nullptr;
  }
  if (error) error->reset();
  auto document = std::make_shared<ZXMLDocument>(doc);
  document->addStringsCacheToDoc();
  return document;
}

ZXMLDocumentPtr ZXMLDocument::initWithXMLString(std::string_view string, unsigned options,
                                                ZXMLErrorOut error) {
  return initWithData(string, options, error);
}

ZXMLDocumentPtr ZXMLDocument::initWithRootElement(const ZXMLElement& element) {
  ensureParser();
  xmlDocPtr doc = xmlNewDoc(nullptr);
  if (!doc) return nullptr;
  auto document = std::make_shared<ZXMLDocument>(doc);
  if (element.XMLNode() && element.XMLNode()->type == XML_ELEMENT_NODE) {
    if (xmlNodePtr copy = element.XMLNodeCopy()) xmlDocSetRootElement(doc, copy);
  }
  document->addStringsCacheToDoc();
  return document;
}

void ZXMLDocument::addStringsCacheToDoc() { ZXMLStringsCache::attach(xmlDoc_); }

ZXMLElementPtr ZXMLDocument::rootElement() const {
  if (!xmlDoc_) return nullptr;
  xmlNodePtr root = xmlDocGetRootElement(xmlDoc_);
  if (!root) return nullptr;
  return std::make_shared<ZXMLElement>(root, false);
}

std::optional<std::string> ZXMLDocument::XMLData() const {
  if (!xmlDoc_) return std::nullopt;
  xmlChar* buffer = nullptr;
  int size = 0;
  xmlDocDumpMemory(xmlDoc_, &buffer, &size);
  if (!buffer) return std::nullopt;
  std::string out(reinterpret_cast<const char*>(buffer),
                  static_cast<std::size_t>(size < 0 ? 0 : size));
  xmlFree(buffer);
  return out;
}

void ZXMLDocument::setVersion(std::optional<std::string_view> version) {
  if (!xmlDoc_) return;
  if (xmlDoc_->version) xmlFree(const_cast<xmlChar*>(xmlDoc_->version));
  xmlDoc_->version = nullptr;
  if (version) xmlDoc_->version = xmlStrdup(x(cstr(*version)));
}

void ZXMLDocument::setCharacterEncoding(std::optional<std::string_view> encoding) {
  if (!xmlDoc_) return;
  if (xmlDoc_->encoding) xmlFree(const_cast<xmlChar*>(xmlDoc_->encoding));
  xmlDoc_->encoding = nullptr;
  if (encoding) xmlDoc_->encoding = xmlStrdup(x(cstr(*encoding)));
}

std::string ZXMLDocument::description() const {
  char text[64];
  std::snprintf(text, sizeof text, "ZXMLDocument %p", static_cast<const void*>(this));
  return text;
}
