#include "platform/documents.h"

namespace zellick {

namespace {
// Longer names than file systems take (255 bytes) would only fail later, less clearly.
constexpr std::size_t kMaxNameBytes = 255;
}  // namespace

bool Documents::isPlainName(const std::string& name) {
  if (name.empty() || name.size() > kMaxNameBytes || name[0] == '.') return false;
  for (const char c : name) {
    if (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20) return false;
  }
  return true;
}

}  // namespace zellick
