#include "platform/fake/recorder.h"

#include "platform/fake/numbers.h"

namespace zellick::fake {

void EventRecorder::record(const std::string& what) {
  std::string line = "t=" + formatNumber(time_.now()) + " ";
  for (char c : what) {
    if (c == '\n')
      line += "\\n";
    else if (c == '\r')
      line += "\\r";
    else
      line += c;
  }
  lines_.push_back(std::move(line));
}

std::vector<std::string> EventRecorder::takeNew() {
  std::vector<std::string> out(lines_.begin() + static_cast<std::ptrdiff_t>(taken_), lines_.end());
  taken_ = lines_.size();
  return out;
}

}  // namespace zellick::fake
