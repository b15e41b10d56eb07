#pragma once

#include <string>

#include "platform/defaults.h"

namespace zellick {

// A catalogue entry's text under `key`: its string, or an integer's digits (a hand-edited store
// may hold one); empty for anything else, and for entries that are not dictionaries.
std::string entryText(const DefaultsValue& entry, const char* key);

}  // namespace zellick
