#pragma once
// What the benches measure with: a monotonic clock, this process's /proc status, a median.
#include <time.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

namespace zellick::bench {

inline double nowMs() {
  timespec t{};
  clock_gettime(CLOCK_MONOTONIC, &t);
  return static_cast<double>(t.tv_sec) * 1000.0 + static_cast<double>(t.tv_nsec) / 1e6;
}

// A numeric field of /proc/self/status ("VmHWM:", "Threads:"), or -1.
inline long statusField(const char* name) {
  std::ifstream in("/proc/self/status");
  for (std::string line; std::getline(in, line);)
    if (line.rfind(name, 0) == 0) return std::stol(line.substr(line.find(':') + 1));
  return -1;
}

template <class T>
T median(std::vector<T> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

}  // namespace zellick::bench
