// The dosimeter's chamber file: the text the device library publishes in the detector's shared section
// when asked for its ion chambers.
//
// One-byte text, every field followed by a TAB, ending at the first zero byte or with the bytes: the
// chamber count; per chamber its number, name and cal factor count; per cal factor its number, name,
// unit code and cal constant. Every number is read as Val_OS reads it (blanks skipped, a sign, "," or "."
// as the decimal point, an exponent; reading stops at what cannot continue the number, and a text
// without digits is 0); whole numbers are that number rounded half to even.
//
//   2<TAB>1<TAB>IC-A<TAB>1<TAB>1<TAB>RQR5<TAB>1<TAB>1.2345E+09<TAB>2<TAB>IC-B<TAB>...
//
// The device writes it, so the reader takes any bytes: it keeps what parses and names what it dropped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "device/EnumsStructs.h"

namespace rx9400 {

/// The most chambers the table keeps from a file.
inline constexpr std::size_t kMaxChambersRead = 10;

struct ChamberFile {
  std::vector<IonChamber> chambers;
  /// One line per thing dropped or repaired ("chamber 3: name cut to 15 bytes").
  std::vector<std::string> problems;
};

/// Reads the chamber file from exactly these bytes (never beyond them).
ChamberFile readChamberFile(std::string_view bytes);

}  // namespace rx9400
