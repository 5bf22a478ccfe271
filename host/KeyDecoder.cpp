#include "host/KeyDecoder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <optional>

namespace kibhost {
namespace {

KeyEvent key(KeyEvent::Kind kind) {
  KeyEvent event;
  event.kind = kind;
  return event;
}

// The length of the UTF-8 character that starts with the byte.
std::size_t characterLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if ((lead >> 5) == 0x6) return 2;
  if ((lead >> 4) == 0xE) return 3;
  if ((lead >> 3) == 0x1E) return 4;
  return 1;
}

// The three numbers of an SGR mouse report ("button;column;row"); nullopt for
// anything else, a number past what any terminal has included.
std::optional<std::array<long, 3>> mouseFields(std::string_view text) {
  constexpr long kLargest = 1 << 20;
  std::array<long, 3> fields{};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (i > 0) {
      if (text.empty() || text.front() != ';') return std::nullopt;
      text.remove_prefix(1);
    }
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), fields[i]);
    if (error != std::errc() || fields[i] < 0 || fields[i] > kLargest) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  }
  if (!text.empty()) return std::nullopt;
  return fields;
}

}  // namespace

std::vector<KeyEvent> KeyDecoder::decode(std::string_view bytes) {
  std::vector<KeyEvent> events;
  std::size_t i = 0;
  while (i < bytes.size()) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte == 0x1b) {
      i += decodeEscape(bytes, i, events);
    } else if (byte == '\r' || byte == '\n') {
      events.push_back(key(KeyEvent::Kind::Enter));
      ++i;
    } else if (byte == '\t') {
      events.push_back(key(KeyEvent::Kind::Tab));
      ++i;
    } else if (byte == 0x7f || byte == 0x08) {
      events.push_back(key(KeyEvent::Kind::Backspace));
      ++i;
    } else if (byte < 0x20) {
      KeyEvent event = key(KeyEvent::Kind::Control);
      event.control = static_cast<char>('a' + byte - 1);
      if (byte == 0) event.control = ' ';
      events.push_back(event);
      ++i;
    } else {
      std::size_t length = std::min(characterLength(byte), bytes.size() - i);
      KeyEvent event = key(KeyEvent::Kind::Character);
      event.text = std::string(bytes.substr(i, length));
      events.push_back(event);
      i += length;
    }
  }
  return events;
}

std::size_t KeyDecoder::decodeEscape(std::string_view bytes, std::size_t i, std::vector<KeyEvent>& events) {
  if (i + 1 >= bytes.size()) {
    events.push_back(key(KeyEvent::Kind::Escape));
    return 1;
  }
  const char introducer = bytes[i + 1];
  if (introducer != '[' && introducer != 'O') {
    if (introducer == 0x1b) {  // Escape pressed twice
      events.push_back(key(KeyEvent::Kind::Escape));
      return 1;
    }
    // Alt (Meta) with a key: decode the key and mark it.
    std::vector<KeyEvent> inner = decode(bytes.substr(i + 1, characterLength(static_cast<unsigned char>(introducer))));
    for (auto& event : inner) {
      event.alt = true;
      events.push_back(event);
    }
    return 1 + characterLength(static_cast<unsigned char>(introducer));
  }
  // CSI or SS3: parameters up to a final byte in 0x40–0x7e.
  std::size_t end = i + 2;
  // An escape inside the parameters abandons the sequence, as terminals do.
  while (end < bytes.size() && bytes[end] != 0x1b && !(bytes[end] >= 0x40 && bytes[end] <= 0x7e)) ++end;
  if (end >= bytes.size() || bytes[end] == 0x1b) {
    events.push_back(key(KeyEvent::Kind::Escape));
    return 1;
  }
  const std::string params(bytes.substr(i + 2, end - i - 2));
  const char final = bytes[end];
  const std::size_t used = end - i + 1;
  if (!params.empty() && params[0] == '<' && (final == 'M' || final == 'm')) {
    // SGR mouse: "<button;column;row", M for a press.
    auto fields = mouseFields(std::string_view(params).substr(1));
    if (fields && final == 'M' && ((*fields)[0] & ~0x1c) == 0 && (*fields)[1] > 0 && (*fields)[2] > 0) {
      KeyEvent event = key(KeyEvent::Kind::MouseDown);
      event.column = static_cast<int>((*fields)[1] - 1);
      event.row = static_cast<int>((*fields)[2] - 1);
      events.push_back(event);
    }
    return used;
  }
  // Cursor keys end in a letter ("\x1b[A", "\x1bOA"); the others are numbered ("\x1b[5~").
  static const std::map<char, KeyEvent::Kind> letters{
      {'A', KeyEvent::Kind::Up},   {'B', KeyEvent::Kind::Down}, {'C', KeyEvent::Kind::Right},
      {'D', KeyEvent::Kind::Left}, {'H', KeyEvent::Kind::Home}, {'F', KeyEvent::Kind::End},
      {'Z', KeyEvent::Kind::Tab},  // Shift-Tab
  };
  static const std::map<std::string, KeyEvent::Kind> numbers{
      {"1", KeyEvent::Kind::Home}, {"7", KeyEvent::Kind::Home},   {"4", KeyEvent::Kind::End},
      {"8", KeyEvent::Kind::End},  {"5", KeyEvent::Kind::PageUp}, {"6", KeyEvent::Kind::PageDown},
  };
  if (auto found = letters.find(final); found != letters.end()) {
    events.push_back(key(found->second));
  } else if (final == '~') {
    if (auto number = numbers.find(params); number != numbers.end()) events.push_back(key(number->second));
  }
  // Any other sequence is one this program has no use for.
  return used;
}

}  // namespace kibhost
