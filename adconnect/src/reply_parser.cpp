// The reply's reader: libxml2's event-driven (SAX) interface, without entities, external
// subsets or the network, stopping at the first fatal error.
#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <climits>

#include "adconnect/AdConnect.h"

namespace zellick {

namespace {

// Encoding and I/O errors bypass the reader's own handler: kept off stderr while it reads.
struct QuietGenericErrors {
  xmlGenericErrorFunc saved = xmlGenericError;
  void* savedContext = xmlGenericErrorContext;
  QuietGenericErrors() { xmlSetGenericErrorFunc(nullptr, quiet); }
  ~QuietGenericErrors() { xmlSetGenericErrorFunc(savedContext, saved); }
  static void quiet(void*, const char*, ...) {}
};

}  // namespace

class AdConnect::ReplyParser {
 public:
  explicit ReplyParser(AdConnect& client) : client_(client) {}

  void parse(std::string_view data) {
    xmlSAXHandler sax{};
    sax.initialized = XML_SAX2_MAGIC;
    sax.startElementNs = startElement;
    sax.endElementNs = endElement;
    sax.characters = characters;
    sax.ignorableWhitespace = characters;
    sax.cdataBlock = [](void*, const xmlChar*, int) {};  // not text: kept from characters
    sax.serror = error;
    // Never more than the buffer holds, which is far below what an int counts.
    const int size = static_cast<int>(std::min<std::size_t>(data.size(), INT_MAX));
    const int head = std::min(size, 4);  // enough to tell the encoding
    QuietGenericErrors quiet;
    ctxt_ = xmlCreatePushParserCtxt(&sax, this, data.data(), head, nullptr);
    if (!ctxt_) return;
    xmlCtxtUseOptions(ctxt_, XML_PARSE_NONET);
    xmlParseChunk(ctxt_, data.data() + head, size - head, 1);
    if (ctxt_->myDoc) xmlFreeDoc(ctxt_->myDoc);
    xmlFreeParserCtxt(ctxt_);
    ctxt_ = nullptr;
  }

 private:
  static std::string text(const xmlChar* s) {
    return s ? std::string(reinterpret_cast<const char*>(s)) : std::string();
  }
  static std::string qualified(const xmlChar* prefix, const xmlChar* localname) {
    return prefix ? text(prefix) + ":" + text(localname) : text(localname);
  }

  static void startElement(void* self, const xmlChar* localname, const xmlChar* prefix,
                           const xmlChar*, int, const xmlChar**, int attributeCount, int,
                           const xmlChar** attributes) {
    auto& p = *static_cast<ReplyParser*>(self);
    Attributes attrs;
    for (int i = 0; i < attributeCount; ++i) {
      const xmlChar** a = attributes + 5 * i;  // name, prefix, URI, value, end of value
      attrs.emplace_back(qualified(a[1], a[0]),
                         std::string(reinterpret_cast<const char*>(a[3]), a[4] - a[3]));
    }
    p.client_.parser(p, qualified(prefix, localname), std::string(), std::string(), attrs);
  }

  static void endElement(void* self, const xmlChar* localname, const xmlChar* prefix,
                         const xmlChar*) {
    auto& p = *static_cast<ReplyParser*>(self);
    p.client_.parser(p, qualified(prefix, localname), std::string(), std::string());
  }

  static void characters(void* self, const xmlChar* ch, int len) {
    auto& p = *static_cast<ReplyParser*>(self);
    p.client_.parser(p, std::string_view(reinterpret_cast<const char*>(ch), len));
  }

  static void error(void* self, xmlErrorPtr e) {
    auto& p = *static_cast<ReplyParser*>(self);
    if (e && e->level == XML_ERR_FATAL && p.ctxt_) xmlStopParser(p.ctxt_);
  }

  AdConnect& client_;
  xmlParserCtxtPtr ctxt_ = nullptr;
};

void AdConnect::startParsing(std::string_view data) {
  xmlInitParser();
  ReplyParser(*this).parse(data);
}

}  // namespace zellick
