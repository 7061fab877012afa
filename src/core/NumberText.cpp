// Numbers as text: the platform's conversions, the numeric parse, format pictures and scientific
// notation. All formatting goes through std::to_chars, which is locale-independent; the locale's
// decimal separator is put in afterwards.
#include "core/NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>
#include <system_error>


namespace rx9400 {
namespace {

/// Adds one to a string of decimal digits.
void increment(std::string& digits) {
  for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
    if (*it != '9') {
      ++*it;
      return;
    }
    *it = '0';
  }
  digits.insert(digits.begin(), '1');
}

std::string withSeparator(std::string text, std::string_view decimalSeparator) {
  const auto point = text.find('.');
  if (point != std::string::npos && decimalSeparator != ".") text.replace(point, 1, decimalSeparator);
  return text;
}

/// The first `precision` significant digits of |value|, rounded half away from zero on the exact
/// binary value, and the decimal exponent of the first digit (|value| ~ d.ddd x 10^exponent).
template <typename Number>
void roundedDigits(Number value, int precision, std::string& digits, int& exponent) {
  // Forty digits of the exact expansion: the digit after the last kept one is exact (a carry from
  // the digits beyond would need twenty-odd nines in a row).
  char buffer[80];
  const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value < 0 ? -value : value,
                                    std::chars_format::scientific, 40);
  const std::string text(buffer, result.ptr);  // "d.ddd...e+xx"
  const auto e = text.find('e');
  const std::string all = text.substr(0, 1) + text.substr(2, e - 2);
  exponent = std::stoi(text.substr(e + 1));
  digits = all.substr(0, static_cast<std::size_t>(precision));
  if (all[static_cast<std::size_t>(precision)] >= '5') {
    increment(digits);
    if (digits.size() > static_cast<std::size_t>(precision)) {  // 9.99... became 10.00...
      digits.pop_back();
      ++exponent;
    }
  }
}

/// "%.<precision>G" as the platform writes it: the fixed form for exponents from -5 up to below
/// `precision`, else "d.dddE+xx"; trailing zeros dropped; halves rounded away from zero.
template <typename Number>
std::string generalText(Number value, int precision, std::string_view decimalSeparator) {
  if (value == 0) return "0";  // negative zero too
  if (!std::isfinite(value)) {
    char buffer[16];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    return std::string(buffer, result.ptr);
  }
  std::string digits;
  int exponent = 0;
  roundedDigits(value, precision, digits, exponent);
  digits.erase(digits.find_last_not_of('0') + 1);
  std::string text = value < 0 ? "-" : "";
  if (exponent < -4 || exponent >= precision) {
    text += digits.substr(0, 1);
    if (digits.size() > 1) text += "." + digits.substr(1);
    text += exponent < 0 ? "E-" : "E+";
    const std::string magnitude = std::to_string(exponent < 0 ? -exponent : exponent);
    text += (magnitude.size() < 2 ? "0" : "") + magnitude;
  } else if (exponent < 0) {
    text += "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
  } else {
    const auto whole = static_cast<std::size_t>(exponent + 1);
    if (digits.size() <= whole) {
      text += digits + std::string(whole - digits.size(), '0');
    } else {
      text += digits.substr(0, whole) + "." + digits.substr(whole);
    }
  }
  return withSeparator(std::move(text), decimalSeparator);
}

/// The 15 significant decimal digits of a finite, non-zero value and its decimal exponent:
/// |value| = d.dddddddddddddd x 10^exponent.
void decimalDigits(double value, std::string& digits, int& exponent) {
  char buffer[64];
  const auto result =
      std::to_chars(buffer, buffer + sizeof(buffer), std::fabs(value), std::chars_format::scientific, 14);
  const std::string text(buffer, result.ptr);  // "1.23450000000000e+02"
  const auto e = text.find('e');
  digits = text.substr(0, 1) + text.substr(2, e - 2);
  exponent = std::stoi(text.substr(e + 1));
}

}  // namespace

std::string doubleText(double value, std::string_view decimalSeparator) {
  return generalText(value, 15, decimalSeparator);
}

std::string singleText(float value, std::string_view decimalSeparator) {
  return generalText(value, 7, decimalSeparator);
}

std::string withDecimalPoint(std::string text) {
  std::replace(text.begin(), text.end(), ',', '.');
  return text;
}

double parseLeadingNumber(std::string_view text) {
  std::string compact;
  compact.reserve(text.size());
  for (const char c : text) {
    if (c != ' ' && c != '\t' && c != '\n') compact.push_back(c);
  }
  std::string number;
  std::size_t i = 0;
  const auto digitsFrom = [&](std::size_t& at) {
    const std::size_t start = at;
    while (at < compact.size() && compact[at] >= '0' && compact[at] <= '9') number.push_back(compact[at++]);
    return at - start;
  };
  if (i < compact.size() && (compact[i] == '+' || compact[i] == '-')) {
    if (compact[i] == '-') number.push_back('-');
    ++i;
  }
  std::size_t mantissaDigits = digitsFrom(i);
  if (i < compact.size() && compact[i] == '.') {
    number.push_back('.');
    ++i;
    mantissaDigits += digitsFrom(i);
  }
  if (mantissaDigits == 0) return 0;
  if (i < compact.size() &&
      (compact[i] == 'e' || compact[i] == 'E' || compact[i] == 'd' || compact[i] == 'D')) {
    std::size_t at = i + 1;
    std::string exponent = "e";
    if (at < compact.size() && (compact[at] == '+' || compact[at] == '-')) exponent.push_back(compact[at++]);
    const std::size_t start = at;
    while (at < compact.size() && compact[at] >= '0' && compact[at] <= '9') exponent.push_back(compact[at++]);
    if (at > start) number += exponent;
  }
  double value = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  if (result.ec == std::errc::result_out_of_range)
    throw std::out_of_range("number too large: " + std::string(text));
  return value;
}

double valOS(std::string_view text) {
  return parseLeadingNumber(withDecimalPoint(std::string(text)));
}

std::string formatPicture(double value, int integerDigits, int decimals, std::string_view decimalSeparator) {
  if (!std::isfinite(value)) return doubleText(value, decimalSeparator);
  decimals = std::max(decimals, 0);
  integerDigits = std::max(integerDigits, 1);
  // The value times 10^decimals, rounded half away from zero, as a string of digits.
  std::string scaled = "0";
  if (value != 0) {
    std::string digits;
    int exponent = 0;
    decimalDigits(value, digits, exponent);
    const int kept = exponent + decimals + 1;  // digits of `digits` left of the rounding point
    if (kept > static_cast<int>(digits.size())) {
      scaled = digits + std::string(static_cast<std::size_t>(kept) - digits.size(), '0');
    } else if (kept > 0) {
      scaled = digits.substr(0, static_cast<std::size_t>(kept));
      if (digits[static_cast<std::size_t>(kept)] >= '5') increment(scaled);
    } else if (kept == 0 && digits[0] >= '5') {
      scaled.assign(1, '1');
    }
  }
  const std::size_t width = static_cast<std::size_t>(integerDigits + decimals);
  if (scaled.size() < width) scaled.insert(0, width - scaled.size(), '0');
  std::string text = scaled.substr(0, scaled.size() - static_cast<std::size_t>(decimals));
  if (decimals > 0) {
    text += decimalSeparator;
    text += scaled.substr(scaled.size() - static_cast<std::size_t>(decimals));
  }
  // A negative value keeps its sign even where it rounds to zero ("-0.0"), as the platform writes it.
  if (value < 0) text.insert(text.begin(), '-');
  return text;
}

ScientificParts scientificParts(double value, std::string_view decimalSeparator) {
  ScientificParts parts;
  if (value == 0 || !std::isfinite(value)) {
    parts.mantissa = value == 0 ? "0" : doubleText(value, decimalSeparator);
    parts.exponent.assign(2, '0');
    return parts;
  }
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::scientific, 6);
  const std::string text(buffer, result.ptr);  // "-1.234500e+09"
  const auto e = text.find('e');
  std::string mantissa = text.substr(0, e);
  if (mantissa.find('.') != std::string::npos) {
    mantissa.erase(mantissa.find_last_not_of('0') + 1);
    if (mantissa.back() == '.') mantissa.pop_back();
  }
  parts.mantissa = withSeparator(mantissa, decimalSeparator);
  parts.sign = text[e + 1];
  parts.exponent = text.substr(e + 2);
  return parts;
}

std::string scientificText(double value, std::string_view exponentLetter, std::string_view decimalSeparator) {
  const ScientificParts parts = scientificParts(value, decimalSeparator);
  return parts.mantissa + std::string(exponentLetter) + parts.sign + parts.exponent;
}

}  // namespace rx9400
