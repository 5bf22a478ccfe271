// Bytes from the terminal: keys, escape sequences and mouse reports.
#include "host/KeyDecoder.h"
#include "tests/fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kibhost::KeyDecoder decoder;
  decoder.decode(std::string_view(reinterpret_cast<const char*>(data), size));
  return 0;
}
