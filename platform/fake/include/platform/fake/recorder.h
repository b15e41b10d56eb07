#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/fake/time.h"

namespace zellick::fake {

// Every observable effect, one line each, stamped "t=T " with the virtual time.
class EventRecorder {
 public:
  explicit EventRecorder(const VirtualTime& time) : time_(time) {}
  EventRecorder(const EventRecorder&) = delete;
  EventRecorder& operator=(const EventRecorder&) = delete;

  // Line breaks inside `what` are written as "\n" so one event stays one line.
  void record(const std::string& what);
  const std::vector<std::string>& all() const { return lines_; }
  // The lines recorded since the previous call.
  std::vector<std::string> takeNew();

 private:
  const VirtualTime& time_;
  std::vector<std::string> lines_;
  std::size_t taken_ = 0;
};

}  // namespace zellick::fake
