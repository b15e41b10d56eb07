#pragma once

#include <string>

namespace zellick {

// The usage tracker: one record per notable user action. Fire-and-forget: Track never
// blocks and never reports an outcome.
class orvtracker {
 public:
  virtual ~orvtracker() = default;
  virtual void Track(const std::string& tag) = 0;
};

}  // namespace zellick
