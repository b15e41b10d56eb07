#pragma once

#include <optional>
#include <string>

namespace zellick {

// What the maker's services are told about the machine.
struct DeviceFacts {
  std::string name;           // the name its user gave it
  std::string model;          // the hardware's model
  std::string systemName;     // the operating system's name
  std::string systemVersion;  // and version
  std::string vendorId;       // an upper-case UUID shared by the maker's apps on this machine
  // The user's locale: its ISO 3166 country and ISO 639 language codes. A locale without a
  // territory (C, POSIX) has no country; C and POSIX have no language either.
  std::optional<std::string> countryCode{};
  std::optional<std::string> languageCode{};
  bool runsAsRoot = false;  // the app runs with root privileges (effective user id 0)
};

}  // namespace zellick
