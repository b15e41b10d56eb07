#pragma once

#include <map>
#include <mutex>
#include <string>

#include "platform/documents.h"

namespace zellick::fake {

// Documents held in memory; a file's path is "documents/NAME". Writes fail on cue.
class MemoryDocuments final : public Documents {
 public:
  Status writeAtomically(const std::string& name, const std::string& bytes) override;
  std::optional<std::string> pathForFile(const std::string& name) const override;
  std::map<std::string, std::uint64_t> contents() const override;

  // The bytes of file `name`, or nothing.
  std::optional<std::string> read(const std::string& name) const;
  // While set, every write fails and leaves the files as they are.
  void failWrites(bool fail);

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::string> files_;
  bool failWrites_ = false;
};

}  // namespace zellick::fake
