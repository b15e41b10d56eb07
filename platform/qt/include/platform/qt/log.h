#pragma once

#include <string>

#include "platform/log.h"

namespace zellick::qt {

// The diagnostic log on standard error: each message as given, one line each.
class StderrLog : public Log {
 public:
  void line(const std::string& text) override;
};

}  // namespace zellick::qt
