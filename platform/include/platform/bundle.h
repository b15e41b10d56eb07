#pragma once

#include <optional>
#include <string>

namespace zellick {

// Read-only resources shipped with the app.
class Bundle {
 public:
  virtual ~Bundle() = default;
  // The path of resource `name`.`type`, or nothing when the bundle has no such resource.
  virtual std::optional<std::string> pathForResource(const std::string& name,
                                                     const std::string& type) const = 0;
};

}  // namespace zellick
