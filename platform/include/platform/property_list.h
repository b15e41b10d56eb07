#pragma once

#include <optional>
#include <string>

#include "platform/defaults.h"

namespace zellick {

// The array a property-list file (XML or binary) holds at its top level, its values as the
// user defaults hold them (data becomes text, uids integers). Nothing when the file cannot be
// read, is not a property list, is larger than `maxBytes` or holds something other than an
// array at the top.
std::optional<DefaultsArray> arrayWithContentsOfFile(const std::string& path,
                                                     std::size_t maxBytes = std::size_t{1} << 20);

}  // namespace zellick
