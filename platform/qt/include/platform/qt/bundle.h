#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/bundle.h"

namespace zellick::qt {

// Resources found by name in a list of folders, the first folder that has the file wins.
class DirectoryBundle : public Bundle {
 public:
  explicit DirectoryBundle(std::vector<std::string> folders);

  std::optional<std::string> pathForResource(const std::string& name,
                                             const std::string& type) const override;
  const std::vector<std::string>& folders() const { return folders_; }

 private:
  std::vector<std::string> folders_;
};

}  // namespace zellick::qt
