#include "platform/ui/ImageHeaderReader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace platform {
namespace {

using Result = ImageHeaderReader::Result;

// Image headers and a PDF's page tree sit well inside this much of a file.
constexpr std::streamsize kMaximumRead = 8 * 1024 * 1024;

Result failure(const std::string& name, const std::string& what) { return {std::nullopt, name + ": " + what}; }

Result success(double width, double height, const std::string& name, const char* format) {
  if (!(width > 0) || !(height > 0)) return failure(name, std::string(format) + " image with an empty size");
  return {Size{width, height}, ""};
}

bool startsWith(const std::string& data, std::string_view prefix) {
  return data.size() >= prefix.size() && std::memcmp(data.data(), prefix.data(), prefix.size()) == 0;
}

std::uint32_t byteAt(const std::string& data, std::size_t offset) { return static_cast<unsigned char>(data[offset]); }

std::uint32_t bigEndian16(const std::string& d, std::size_t o) { return byteAt(d, o) << 8 | byteAt(d, o + 1); }
std::uint32_t bigEndian32(const std::string& d, std::size_t o) { return bigEndian16(d, o) << 16 | bigEndian16(d, o + 2); }
std::uint32_t littleEndian16(const std::string& d, std::size_t o) { return byteAt(d, o) | byteAt(d, o + 1) << 8; }
std::uint32_t littleEndian32(const std::string& d, std::size_t o) {
  return littleEndian16(d, o) | littleEndian16(d, o + 2) << 16;
}

Result readPNG(const std::string& data, const std::string& name) {
  // Signature, then the IHDR chunk: length, type, width, height.
  if (data.size() < 24) return failure(name, "truncated PNG header");
  if (data.compare(12, 4, "IHDR") != 0) return failure(name, "PNG without an IHDR chunk first");
  return success(bigEndian32(data, 16), bigEndian32(data, 20), name, "PNG");
}

Result readGIF(const std::string& data, const std::string& name) {
  if (data.size() < 10) return failure(name, "truncated GIF header");
  return success(littleEndian16(data, 6), littleEndian16(data, 8), name, "GIF");
}

Result readJPEG(const std::string& data, const std::string& name) {
  std::size_t offset = 2;
  while (offset + 4 <= data.size()) {
    if (byteAt(data, offset) != 0xFF) return failure(name, "malformed JPEG marker");
    std::uint32_t marker = byteAt(data, offset + 1);
    if (marker == 0xFF) {
      ++offset;
      continue;
    }
    std::uint32_t length = bigEndian16(data, offset + 2);
    bool startOfFrame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    if (startOfFrame) {
      if (offset + 9 > data.size()) break;
      return success(bigEndian16(data, offset + 7), bigEndian16(data, offset + 5), name, "JPEG");
    }
    offset += 2 + length;
  }
  return failure(name, "JPEG without a frame header");
}

Result readTIFF(const std::string& data, const std::string& name) {
  if (data.size() < 8) return failure(name, "truncated TIFF header");
  bool little = data[0] == 'I';
  auto u16 = [&](std::size_t o) { return little ? littleEndian16(data, o) : bigEndian16(data, o); };
  auto u32 = [&](std::size_t o) { return little ? littleEndian32(data, o) : bigEndian32(data, o); };
  std::size_t directory = u32(4);
  if (directory + 2 > data.size()) return failure(name, "TIFF directory offset beyond the end of the file");
  std::size_t count = u16(directory);
  double width = 0, height = 0;
  for (std::size_t i = 0; i < count; ++i) {
    std::size_t entry = directory + 2 + i * 12;
    if (entry + 12 > data.size()) return failure(name, "truncated TIFF directory");
    std::uint32_t tag = u16(entry), type = u16(entry + 2);
    if (tag != 256 && tag != 257) continue;
    // SHORT (3) values sit in the first two bytes of the value field, LONG (4) fill it.
    double value = type == 3 ? u16(entry + 8) : type == 4 ? u32(entry + 8) : 0;
    (tag == 256 ? width : height) = value;
  }
  if (width == 0 || height == 0) return failure(name, "TIFF without ImageWidth and ImageLength");
  return success(width, height, name, "TIFF");
}

// The four numbers of "[x0 y0 x1 y1]" at the offset, after optional white space.
std::optional<std::array<double, 4>> readBox(const std::string& data, std::size_t offset) {
  while (offset < data.size() && std::isspace(static_cast<unsigned char>(data[offset]))) ++offset;
  if (offset >= data.size() || data[offset] != '[') return std::nullopt;
  std::string rest = data.substr(offset + 1, 160);
  const char* cursor = rest.c_str();
  std::array<double, 4> box{};
  for (double& value : box) {
    char* end = nullptr;
    value = std::strtod(cursor, &end);
    if (end == cursor) return std::nullopt;
    cursor = end;
  }
  while (std::isspace(static_cast<unsigned char>(*cursor))) ++cursor;
  if (*cursor != ']') return std::nullopt;
  return box;
}

Result readPDF(const std::string& data, const std::string& name) {
  static constexpr std::string_view kKey = "/MediaBox";
  for (auto at = data.find(kKey); at != std::string::npos; at = data.find(kKey, at + 1)) {
    if (auto box = readBox(data, at + kKey.size()))
      return success(std::abs((*box)[2] - (*box)[0]), std::abs((*box)[3] - (*box)[1]), name, "PDF");
  }
  return failure(name, "PDF without a readable MediaBox");
}

}  // namespace

Result ImageHeaderReader::readSize(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) return failure(path, "a folder, not an image file");
  std::ifstream file(path, std::ios::binary);
  if (!file) return failure(path, std::string("cannot open: ") + std::strerror(errno));
  file.seekg(0, std::ios::end);
  std::streamsize length = std::min<std::streamsize>(file.tellg(), kMaximumRead);
  file.seekg(0, std::ios::beg);
  std::string data(static_cast<std::size_t>(std::max<std::streamsize>(length, 0)), '\0');
  file.read(data.data(), static_cast<std::streamsize>(data.size()));
  data.resize(static_cast<std::size_t>(file.gcount()));
  return readSizeFromData(data, path);
}

Result ImageHeaderReader::readSizeFromData(const std::string& data, const std::string& name) {
  if (data.empty()) return failure(name, "empty file");
  if (startsWith(data, "\x89PNG\r\n\x1a\n")) return readPNG(data, name);
  if (startsWith(data, std::string_view("II*\0", 4)) || startsWith(data, std::string_view("MM\0*", 4))) return readTIFF(data, name);
  if (startsWith(data, "%PDF-")) return readPDF(data, name);
  if (startsWith(data, "GIF87a") || startsWith(data, "GIF89a")) return readGIF(data, name);
  if (startsWith(data, "\xFF\xD8")) return readJPEG(data, name);
  return failure(name, "not a PNG, TIFF, PDF, GIF or JPEG image");
}

}  // namespace platform
