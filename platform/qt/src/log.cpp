#include "platform/qt/log.h"

#include <cstdio>

namespace zellick::qt {

void StderrLog::line(const std::string& text) {
  // One write per line so lines from helper threads do not interleave mid-line.
  std::string out = text;
  out.push_back('\n');
  std::fwrite(out.data(), 1, out.size(), stderr);
}

}  // namespace zellick::qt
