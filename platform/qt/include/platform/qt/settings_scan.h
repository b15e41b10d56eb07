#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zellick::qt {

// Beyond these a settings file is not handed to QSettings: its parser reads the whole file into
// memory and recurses once per level of nested values, so size and depth must be bounded first.
inline constexpr std::size_t kMaxSettingsFileBytes = std::size_t{32} << 20;
inline constexpr std::size_t kMaxSettingsLineBytes = std::size_t{16} << 20;
inline constexpr int kMaxSettingsNesting = 32;

struct SettingsScan {
  std::string unsafe;              // why QSettings must not read the file; empty when it may
  std::vector<std::string> notes;  // harmless oddities, one log line each
};

// Reads an INI file's bytes the way QSettings will and decides whether it can parse them
// without risk; notes repeated keys and sections the app does not read. Bounded, never throws.
SettingsScan scanSettings(std::string_view file);

}  // namespace zellick::qt
