#pragma once

#include <map>
#include <optional>
#include <string>

// Failure report of the XML layer: a domain, libxml2's (or our) integer code and
// a user-information map whose message, when there is one, sits under "error".
struct ZXMLError {
  std::string domain;
  int code = 0;
  std::map<std::string, std::string> userInfo;
};

// The XML layer's own error domain.
inline constexpr const char* ZXMLErrorDomain = "org.zellick.xml";

// Optional out-parameter for errors: may be null; an engaged optional holds the error.
using ZXMLErrorOut = std::optional<ZXMLError>*;

// Log sink for bad input and refused operations; the default writes one line to stderr.
// Passing nullptr restores the default.
using ZXMLLogHandler = void (*)(const std::string& line);
void ZXMLSetLogHandler(ZXMLLogHandler handler);
void ZXMLLog(const std::string& line);
