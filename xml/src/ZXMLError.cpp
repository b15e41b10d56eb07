#include "xml/ZXMLError.h"

#include <cstdio>

#include <libxml/parser.h>

#include "ZXMLInternal.h"

namespace {
ZXMLLogHandler g_logHandler = nullptr;
}

void ZXMLSetLogHandler(ZXMLLogHandler handler) { g_logHandler = handler; }

void ZXMLLog(const std::string& line) {
  if (g_logHandler) {
    g_logHandler(line);
    return;
  }
  std::fprintf(stderr, "zellick.xml: %s\n", line.c_str());
}

namespace zxml_detail {

void ensureParser() {
  static const bool ready = [] {
    xmlInitParser();
    return true;
  }();
  (void)ready;
}

void setError(ZXMLErrorOut error, int code, std::map<std::string, std::string> userInfo) {
  if (!error) return;
  *error = ZXMLError{ZXMLErrorDomain, code, std::move(userInfo)};
}

std::string placeholderName(std::string_view URI, std::string_view name) {
  std::string out;
  out.reserve(URI.size() + name.size() + 3);
  out += '{';
  out += URI;
  out += "}:";
  out += name;
  return out;
}

}  // namespace zxml_detail
