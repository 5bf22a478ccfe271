#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace platform {

// Reads a whole input file (a scenario, a script, preferences, bundle metadata,
// a strings table) with a bound on its size, so that a device that never ends
// (/dev/zero) or a huge file is refused instead of filling memory.
class InputFile {
 public:
  static constexpr std::size_t kDefaultLimit = std::size_t{16} << 20;  // 16 MiB

  enum class Status { Read, Missing, Folder, TooLarge, Unreadable };

  struct Contents {
    Status status = Status::Unreadable;
    std::string text;
    int error = 0;          // errno for Missing and Unreadable
    std::size_t limit = 0;  // the bound a TooLarge file went past

    bool ok() const { return status == Status::Read; }
    // Why the file was refused: "is a folder, not a file", "cannot read the file (…)", …
    std::string problem() const;
  };

  static Contents read(const std::filesystem::path& path, std::size_t limit = kDefaultLimit);
};

}  // namespace platform
