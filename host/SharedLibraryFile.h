#pragma once

#include <filesystem>
#include <string>

namespace kibhost {

// Checks a bundle's library before the dynamic loader maps it: a truncated or
// foreign file must be refused with a message, because the loader maps what
// the headers promise and a read past the end of the file kills the process
// (SIGBUS) instead of failing.
class SharedLibraryFile {
 public:
  // "" when the file is a complete shared library for this machine; else why not.
  static std::string problem(const std::filesystem::path& path);
};

}  // namespace kibhost
