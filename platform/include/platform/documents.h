#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "platform/status.h"

namespace zellick {

// The app's own folder of files kept between runs. Files are known by a plain name: no folder
// part, nothing hidden, no "." or "..". Safe to use from any thread.
class Documents {
 public:
  virtual ~Documents() = default;
  // Replaces file `name` with `bytes` whole: a reader sees the old file or the new one, never
  // part of either. Invalid argument for a name that is not plain; failed when the write does.
  virtual Status writeAtomically(const std::string& name, const std::string& bytes) = 0;
  // Where file `name` lies, when it exists; nothing otherwise (and for names that are not
  // plain).
  virtual std::optional<std::string> pathForFile(const std::string& name) const = 0;
  // Every file in the folder and its size in bytes.
  virtual std::map<std::string, std::uint64_t> contents() const = 0;

  // True when `name` may name a file here.
  static bool isPlainName(const std::string& name);
};

}  // namespace zellick
