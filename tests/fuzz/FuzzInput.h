#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/core/Log.h"

// What every fuzz target shares: the input as text, and a quiet log (the
// readers report damaged input on the system log, which would drown the
// fuzzer's own output).
namespace kibfuzz {

inline std::string text(const std::uint8_t* data, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

inline void silenceLog() {
  static bool silenced = [] {
    platform::Log::setSink([](platform::Log::Channel, const std::string&) {});
    return true;
  }();
  (void)silenced;
}

}  // namespace kibfuzz
