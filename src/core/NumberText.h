// Numbers as text, the way the executive's platform writes and reads them: one module for every
// number the plug-in shows, sends or parses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace rx9400 {

/// A Double as the platform's number-to-text conversion writes it: at most 15 significant digits,
/// shortest form, no thousands separators, the exponent form ("1E-05", "1E+15") below 1E-04 and from
/// 1E+15 on; `decimalSeparator` is the user's locale's.
std::string doubleText(double value, std::string_view decimalSeparator = ".");
/// A Single the same way, to at most 7 significant digits.
std::string singleText(float value, std::string_view decimalSeparator = ".");
/// The text with every "," replaced by "." (for texts the executive parses).
std::string withDecimalPoint(std::string text);

/// The number at the start of `text`, as the locale-independent numeric parse reads it: blanks, tabs
/// and line feeds anywhere are skipped; a sign, digits, a "." and an exponent (E or D) are read up to
/// the first character that is not part of a number; no number reads as 0.
double parseLeadingNumber(std::string_view text);
/// Val_OS: every "," read as "." first, so that "1,5" and "1.5" both give 1.5.
double valOS(std::string_view text);

/// A value through a format picture of zeros: at least `integerDigits` digits before the separator and
/// exactly `decimals` after it ("0.0" is 1 and 1, "00" is 2 and 0, "0.000" is 1 and 3). Halves round
/// away from zero, on the value's 15-digit decimal form.
std::string formatPicture(double value, int integerDigits, int decimals,
                          std::string_view decimalSeparator = ".");

/// A value in scientific notation, split as the cal constant editor shows it.
struct ScientificParts {
  std::string mantissa;  ///< 1 <= |mantissa| < 10, up to 7 significant digits, e.g. "1.2345" or "-3"
  char sign = '+';       ///< the exponent's sign
  std::string exponent;  ///< at least two digits, e.g. "09"
};
ScientificParts scientificParts(double value, std::string_view decimalSeparator = ".");
/// Mantissa, the exponent letter (the catalogue's "E"), sign and two-digit exponent: "1.2345E+09".
std::string scientificText(double value, std::string_view exponentLetter,
                           std::string_view decimalSeparator = ".");

}  // namespace rx9400
