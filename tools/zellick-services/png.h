#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zellick::standin {

// A PNG file of 8-bit RGB pixels, rows top to bottom; `rgb` holds width * height * 3 bytes.
// Empty when the sizes do not match or zlib fails.
std::string encodeRgbPng(std::uint32_t width, std::uint32_t height,
                         const std::vector<std::uint8_t>& rgb);

}  // namespace zellick::standin
