// The system's millisecond clock and the user's number format.
#pragma once

#include <cstdint>
#include <string>

namespace rx9400 {

class Clock {
 public:
  virtual ~Clock() = default;
  /// Milliseconds since the system started, wrapping around after 2^32 (timeGetTime).
  virtual std::uint32_t milliseconds() = 0;
};

class NumberFormat {
 public:
  virtual ~NumberFormat() = default;
  /// The decimal separator of the user's locale.
  virtual std::string decimalSeparator() = 0;
};

}  // namespace rx9400
