// JSON text to platform objects and back: within the limits every reader
// applies, a parsed value converts both ways.
#include <cstdlib>

#include "platform/core/JSONSerialization.h"
#include "tests/fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kibfuzz::silenceLog();
  using platform::JSONSerialization;
  std::string error;
  auto json = JSONSerialization::parse(kibfuzz::text(data, size), &error);
  if (!json) return 0;
  auto object = JSONSerialization::objectWithJSON(*json);
  if (auto back = JSONSerialization::JSONWithObject(object, &error)) back->dump();
  return 0;
}
