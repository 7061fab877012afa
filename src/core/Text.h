// Texts that are not numbers: the fixed-length character fields of the device records, and UTF-8 texts
// shortened by whole characters.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace rx9400 {

/// One-byte characters in a field of fixed length: cut to `length`, zero-filled behind.
inline std::string fixedLengthBytes(std::string_view bytes, std::size_t length) {
  std::string field(bytes.substr(0, length));
  field.resize(length, '\0');
  return field;
}

/// The characters of a fixed-length field up to its first zero byte.
inline std::string textOfFixedBytes(const char* bytes, std::size_t length) {
  return std::string(bytes, std::find(bytes, bytes + length, '\0'));
}

/// The UTF-8 text without its last `count` characters (characters, not bytes: what is left stays valid).
inline std::string withoutLastCharacters(std::string text, std::size_t count) {
  for (; count > 0 && !text.empty(); --count) {
    std::size_t end = text.size() - 1;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    text.resize(end);
  }
  return text;
}

}  // namespace rx9400
