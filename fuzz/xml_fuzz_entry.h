#pragma once

#include <cstddef>
#include <cstdint>

// One fuzz case: the bytes up to the first NUL are parsed as XML, the bytes after it (or a
// hash of the input when there are none) choose the edits. Returns 0.
int ZXMLFuzzOne(const std::uint8_t* data, std::size_t size);
