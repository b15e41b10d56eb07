// libFuzzer entry point.
#include "xml_fuzz_entry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ZXMLFuzzOne(data, size);
  return 0;
}
