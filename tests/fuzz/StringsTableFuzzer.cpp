// A strings table: entries, or an error naming the line.
#include "platform/core/StringsTable.h"
#include "tests/fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kibfuzz::silenceLog();
  std::string error;
  platform::StringsTable::parse(kibfuzz::text(data, size), &error);
  return 0;
}
