#pragma once

#include <string>
#include <vector>

#include "platform/log.h"

struct RecordingLog : zellick::Log {
  std::vector<std::string> lines;
  void line(const std::string& text) override { lines.push_back(text); }
};
