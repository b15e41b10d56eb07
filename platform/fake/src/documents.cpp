#include "platform/fake/documents.h"

namespace zellick::fake {

Status MemoryDocuments::writeAtomically(const std::string& name, const std::string& bytes) {
  if (!isPlainName(name)) return {Status::Code::InvalidArgument, "not a plain file name"};
  std::lock_guard lock(mutex_);
  if (failWrites_) return {Status::Code::Failed, "the disk is full"};
  files_[name] = bytes;
  return {};
}

std::optional<std::string> MemoryDocuments::pathForFile(const std::string& name) const {
  std::lock_guard lock(mutex_);
  if (!files_.count(name)) return std::nullopt;
  return "documents/" + name;
}

std::map<std::string, std::uint64_t> MemoryDocuments::contents() const {
  std::lock_guard lock(mutex_);
  std::map<std::string, std::uint64_t> out;
  for (const auto& [name, bytes] : files_) out[name] = bytes.size();
  return out;
}

std::optional<std::string> MemoryDocuments::read(const std::string& name) const {
  std::lock_guard lock(mutex_);
  auto it = files_.find(name);
  if (it == files_.end()) return std::nullopt;
  return it->second;
}

void MemoryDocuments::failWrites(bool fail) {
  std::lock_guard lock(mutex_);
  failWrites_ = fail;
}

}  // namespace zellick::fake
