#pragma once

#include <string>

namespace zellick {

// The diagnostic log: one line per message.
class Log {
 public:
  virtual ~Log() = default;
  virtual void line(const std::string& text) = 0;
};

// printf-style formatting for log lines and labels.
std::string format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

}  // namespace zellick
