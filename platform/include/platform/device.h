#pragma once

#include <string>

namespace zellick {

// What the maker's services are told about the machine.
struct DeviceFacts {
  std::string name;           // the name its user gave it
  std::string model;          // the hardware's model
  std::string systemName;     // the operating system's name
  std::string systemVersion;  // and version
  std::string vendorId;       // an upper-case UUID shared by the maker's apps on this machine
};

}  // namespace zellick
