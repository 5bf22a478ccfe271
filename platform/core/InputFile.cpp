#include "platform/core/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace platform {

std::string InputFile::Contents::problem() const {
  switch (status) {
    case Status::Read:
      return "";
    case Status::Missing:
    case Status::Unreadable:
      return std::string("cannot read the file (") + std::strerror(error) + ")";
    case Status::Folder:
      return "is a folder, not a file";
    case Status::TooLarge:
      return limit >= (std::size_t{1} << 20) ? "is too large (more than " + std::to_string(limit >> 20) + " MiB)"
                                             : "is too large (more than " + std::to_string(limit) + " bytes)";
  }
  return "cannot read the file";
}

InputFile::Contents InputFile::read(const std::filesystem::path& path, std::size_t limit) {
  Contents contents;
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    contents.error = errno;
    contents.status = errno == ENOENT ? Status::Missing : Status::Unreadable;
    return contents;
  }
  struct stat info {};
  if (::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    ::close(fd);
    contents.status = Status::Folder;
    return contents;
  }
  contents.status = Status::Read;
  char buffer[65536];
  for (;;) {
    ssize_t count = ::read(fd, buffer, sizeof buffer);
    if (count == 0) break;
    if (count < 0) {
      if (errno == EINTR) continue;
      contents = {errno == EISDIR ? Status::Folder : Status::Unreadable, {}, errno, 0};
      break;
    }
    if (contents.text.size() + static_cast<std::size_t>(count) > limit) {
      contents = {Status::TooLarge, {}, 0, limit};
      break;
    }
    contents.text.append(buffer, static_cast<std::size_t>(count));
  }
  ::close(fd);
  return contents;
}

}  // namespace platform
