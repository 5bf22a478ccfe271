#include "host/SharedLibraryFile.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

namespace kibhost {
namespace {

using Header = Elf64_Ehdr;
using ProgramHeader = Elf64_Phdr;

// Reads exactly size bytes at offset; false when the file is shorter.
bool readAt(int fd, void* into, std::size_t size, std::uint64_t offset) {
  auto* bytes = static_cast<char*>(into);
  while (size > 0) {
    ssize_t count = ::pread(fd, bytes, size, static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes += count;
    size -= static_cast<std::size_t>(count);
    offset += static_cast<std::uint64_t>(count);
  }
  return true;
}

// Whether [offset, offset + count × size) lies inside a file of fileSize bytes, without overflow.
bool inside(std::uint64_t offset, std::uint64_t count, std::uint64_t size, std::uint64_t fileSize) {
  if (offset > fileSize) return false;
  if (size != 0 && count > (fileSize - offset) / size) return false;
  return true;
}

// The ELF identification of this program, which a library must share.
const Header* ownHeader() {
  static Header header{};
  static bool read = [] {
    int fd = ::open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    bool ok = readAt(fd, &header, sizeof header, 0);
    ::close(fd);
    return ok;
  }();
  return read ? &header : nullptr;
}

std::string checkHeaders(int fd, std::uint64_t fileSize) {
  Header header{};
  if (fileSize < sizeof header || !readAt(fd, &header, sizeof header, 0)) return "it is too short to be a library";
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return "it is not a shared library (no ELF header)";
  if (header.e_ident[EI_CLASS] != ELFCLASS64) return "it is not a 64-bit library";
  const Header* own = ownHeader();
  if (own && (header.e_ident[EI_DATA] != own->e_ident[EI_DATA] || header.e_machine != own->e_machine))
    return "it is built for another kind of machine";
  if (header.e_type != ET_DYN) return "it is not a shared library (ELF type " + std::to_string(header.e_type) + ")";
  if (header.e_phentsize != sizeof(ProgramHeader) || header.e_phnum == 0 ||
      !inside(header.e_phoff, header.e_phnum, header.e_phentsize, fileSize))
    return "its program headers are damaged or cut off";
  if (header.e_shnum != 0 && !inside(header.e_shoff, header.e_shnum, header.e_shentsize, fileSize))
    return "it is cut off (its section headers lie past its end)";
  std::vector<ProgramHeader> segments(header.e_phnum);
  if (!readAt(fd, segments.data(), segments.size() * sizeof(ProgramHeader), header.e_phoff))
    return "its program headers are cut off";
  for (const auto& segment : segments)
    if (segment.p_type == PT_LOAD && !inside(segment.p_offset, 1, segment.p_filesz, fileSize))
      return "it is cut off (a segment lies past its end)";
  return "";
}

}  // namespace

std::string SharedLibraryFile::problem(const std::filesystem::path& path) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::string("cannot read it (") + std::strerror(errno) + ")";
  struct stat info {};
  std::string problem;
  if (::fstat(fd, &info) != 0)
    problem = std::string("cannot read it (") + std::strerror(errno) + ")";
  else if (!S_ISREG(info.st_mode))
    problem = "it is not a regular file";
  else
    problem = checkHeaders(fd, static_cast<std::uint64_t>(info.st_size));
  ::close(fd);
  return problem;
}

}  // namespace kibhost
