#include "platform/core/StringsTable.h"

#include <unicode/unistr.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/core/InputFile.h"

namespace platform {
namespace {

struct ParseError {
  int line;
  std::string message;
};

// Text as UTF-8: a UTF-8 byte-order mark is dropped and UTF-16 with a byte-order mark is converted.
std::string asUTF8(const std::string& text) {
  auto starts = [&](const char* mark) { return text.compare(0, std::strlen(mark), mark) == 0; };
  if (starts("\xEF\xBB\xBF")) return text.substr(3);
  const char* encoding = starts("\xFF\xFE") ? "UTF-16LE" : starts("\xFE\xFF") ? "UTF-16BE" : nullptr;
  if (!encoding) return text;
  icu::UnicodeString decoded(text.data() + 2, static_cast<int32_t>(text.size() - 2), encoding);
  std::string result;
  decoded.toUTF8String(result);
  return result;
}

void appendUTF8(std::string& out, UChar32 c) {
  uint8_t bytes[U8_MAX_LENGTH];
  int32_t length = 0;
  U8_APPEND_UNSAFE(bytes, length, c);
  out.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

bool isUnquotedCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::strchr("_$+/:.-", c) != nullptr;
}

// A recursive-descent reader of `"key" = "value";` entries. Throws ParseError.
class StringsParser {
 public:
  explicit StringsParser(const std::string& text) : text_(text) {}

  std::map<std::string, std::string> entries() {
    std::map<std::string, std::string> result;
    for (skipSpaceAndComments(); !atEnd(); skipSpaceAndComments()) {
      std::string key = readString("a key");
      skipSpaceAndComments();
      std::string value = key;
      if (peek() == '=') {
        advance();
        skipSpaceAndComments();
        value = readString("a value after \"=\"");
        skipSpaceAndComments();
      }
      if (peek() != ';') fail("expected \";\" after the entry for \"" + key + "\"");
      advance();
      result[key] = std::move(value);
    }
    return result;
  }

 private:
  bool atEnd() const { return position_ >= text_.size(); }
  char peek(std::size_t ahead = 0) const {
    return position_ + ahead < text_.size() ? text_[position_ + ahead] : '\0';
  }
  char advance() {
    char c = text_[position_++];
    if (c == '\n') ++line_;
    return c;
  }
  [[noreturn]] void fail(const std::string& message) const { throw ParseError{line_, message}; }

  void skipSpaceAndComments() {
    while (!atEnd()) {
      char c = peek();
      if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v') {
        advance();
      } else if (c == '/' && peek(1) == '/') {
        while (!atEnd() && peek() != '\n') advance();
      } else if (c == '/' && peek(1) == '*') {
        skipBlockComment();
      } else {
        return;
      }
    }
  }

  void skipBlockComment() {
    int startLine = line_;
    position_ += 2;
    while (!(peek() == '*' && peek(1) == '/')) {
      if (atEnd()) throw ParseError{startLine, "unterminated comment"};
      advance();
    }
    position_ += 2;
  }

  std::string readString(const std::string& what) {
    if (peek() == '"') return readQuoted();
    std::string token;
    while (!atEnd() && isUnquotedCharacter(peek())) token += advance();
    if (token.empty()) fail(atEnd() ? "expected " + what + " before the end of the file" : "expected " + what);
    return token;
  }

  std::string readQuoted() {
    int startLine = line_;
    advance();
    std::string result;
    while (true) {
      if (atEnd()) throw ParseError{startLine, "unterminated string"};
      char c = advance();
      if (c == '"') return result;
      if (c == '\\')
        readEscape(result);
      else
        result += c;
    }
  }

  void readEscape(std::string& out) {
    if (atEnd()) fail("unterminated string");
    char c = advance();
    switch (c) {
      case '"': case '\\': case '\'': out += c; return;
      case 'n': out += '\n'; return;
      case 't': out += '\t'; return;
      case 'r': out += '\r'; return;
      case 'U': case 'u': appendUTF8(out, readCodePoint()); return;
      default: fail(std::string("unknown escape \"\\") + c + "\"");
    }
  }

  UChar32 readCodePoint() {
    UChar32 unit = readCodeUnit();
    if (U16_IS_TRAIL(unit)) fail("\\U escape with a lone low surrogate");
    if (!U16_IS_LEAD(unit)) return unit;
    if (peek() != '\\' || (peek(1) != 'U' && peek(1) != 'u')) fail("\\U escape with a high surrogate not followed by a low one");
    position_ += 2;
    UChar32 trail = readCodeUnit();
    if (!U16_IS_TRAIL(trail)) fail("\\U escape with a high surrogate not followed by a low one");
    return U16_GET_SUPPLEMENTARY(unit, trail);
  }

  UChar32 readCodeUnit() {
    UChar32 value = 0;
    for (int i = 0; i < 4; ++i) {
      char c = peek();
      int digit = (c >= '0' && c <= '9') ? c - '0' : (c >= 'a' && c <= 'f') ? c - 'a' + 10 : (c >= 'A' && c <= 'F') ? c - 'A' + 10 : -1;
      if (digit < 0) fail("\\U escape needs four hexadecimal digits");
      advance();
      value = value * 16 + digit;
    }
    return value;
  }

  const std::string& text_;
  std::size_t position_ = 0;
  int line_ = 1;
};

// The line of the first byte that is not well-formed UTF-8, or 0 when all are.
int lineOfMalformedUTF8(const std::string& text) {
  for (std::size_t offset = 0; offset < text.size();) {
    auto window = static_cast<int32_t>(std::min<std::size_t>(4, text.size() - offset));
    int32_t index = 0;
    UChar32 c = 0;
    U8_NEXT(reinterpret_cast<const uint8_t*>(text.data() + offset), index, window, c);
    if (c < 0) return 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(offset), '\n'));
    offset += static_cast<std::size_t>(index);
  }
  return 0;
}

}  // namespace

std::optional<std::map<std::string, std::string>> StringsTable::parse(const std::string& text, std::string* error) {
  std::string utf8 = asUTF8(text);
  try {
    if (int line = lineOfMalformedUTF8(utf8)) throw ParseError{line, "malformed UTF-8"};
    return StringsParser(utf8).entries();
  } catch (const ParseError& e) {
    if (error) *error = "line " + std::to_string(e.line) + ": " + e.message;
    return std::nullopt;
  }
}

std::optional<std::map<std::string, std::string>> StringsTable::load(const std::string& path, std::string* error) {
  auto file = InputFile::read(path);
  if (!file.ok()) {
    if (error) *error = path + ": " + file.problem();
    return std::nullopt;
  }
  auto entries = parse(file.text, error);
  if (!entries && error) *error = path + ", " + *error;
  return entries;
}

}  // namespace platform
