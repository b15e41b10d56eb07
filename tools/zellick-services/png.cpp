#include "png.h"

#include <zlib.h>

namespace zellick::standin {
namespace {

void putU32(std::string& out, std::uint32_t v) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<char>(v >> shift));
}

// Length, type, data, and the CRC over type and data.
void putChunk(std::string& out, const char (&type)[5], const std::string& data) {
  putU32(out, static_cast<std::uint32_t>(data.size()));
  const std::size_t crcFrom = out.size();
  out.append(type, 4);
  out += data;
  const auto* bytes = reinterpret_cast<const Bytef*>(out.data() + crcFrom);
  putU32(out, static_cast<std::uint32_t>(crc32(0, bytes, static_cast<uInt>(out.size() - crcFrom))));
}

}  // namespace

std::string encodeRgbPng(std::uint32_t width, std::uint32_t height,
                         const std::vector<std::uint8_t>& rgb) {
  const std::size_t rowBytes = std::size_t{width} * 3;
  if (width == 0 || height == 0 || rgb.size() != rowBytes * height) return {};

  // Every row starts with its filter type; 0 leaves the bytes as they are.
  std::vector<Bytef> raw;
  raw.reserve((rowBytes + 1) * height);
  for (std::uint32_t y = 0; y < height; ++y) {
    raw.push_back(0);
    raw.insert(raw.end(), rgb.begin() + y * rowBytes, rgb.begin() + (y + 1) * rowBytes);
  }
  uLongf packedSize = compressBound(raw.size());
  std::string packed(packedSize, '\0');
  if (compress(reinterpret_cast<Bytef*>(packed.data()), &packedSize, raw.data(), raw.size()) !=
      Z_OK) {
    return {};
  }
  packed.resize(packedSize);

  std::string header;
  putU32(header, width);
  putU32(header, height);
  header += {8, 2, 0, 0, 0};  // 8 bits per sample, RGB, deflate, no filter set, no interlace

  std::string png("\x89PNG\r\n\x1a\n", 8);
  putChunk(png, "IHDR", header);
  putChunk(png, "IDAT", packed);
  putChunk(png, "IEND", {});
  return png;
}

}  // namespace zellick::standin
