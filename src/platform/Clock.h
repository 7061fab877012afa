// The system's millisecond clock and the user's locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace rx9400 {

class Clock {
 public:
  virtual ~Clock() = default;
  /// Milliseconds since the system started, wrapping around after 2^32 (timeGetTime).
  virtual std::uint32_t milliseconds() = 0;
};

class Locale {
 public:
  virtual ~Locale() = default;
  /// The decimal separator of the user's locale.
  virtual std::string decimalSeparator() = 0;
  /// UTF-8 text as one-byte characters of the system's default code page.
  virtual std::string toAnsi(const std::string& text) = 0;
  /// One-byte characters of the system's default code page as UTF-8 text.
  virtual std::string fromAnsi(const std::string& bytes) = 0;
};

}  // namespace rx9400
