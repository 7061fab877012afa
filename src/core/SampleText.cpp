// Waveform texts. The all-in-one samples are integers in tenths, so their Double text (15 significant
// digits) is the exact decimal k/10: written here digit by digit, two digits per table look-up.
#include "core/SampleText.h"

#include <cstring>

#include "core/NumberText.h"

namespace rx9400 {
namespace {

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

int decimalLength(std::uint32_t value) {
  int length = 1;
  while (value >= 10) {
    value /= 10;
    ++length;
  }
  return length;
}

/// Writes the decimal digits of `value` at `out`; returns the end.
char* writeUnsigned(char* out, std::uint32_t value) {
  if (value < 10) {
    *out = static_cast<char>('0' + value);
    return out + 1;
  }
  const int length = value < 100 ? 2 : value < 1000 ? 3 : value < 10000 ? 4 : decimalLength(value);
  char* end = out + length;
  char* at = end;
  while (value >= 100) {
    const std::uint32_t pair = (value % 100) * 2;
    value /= 100;
    at -= 2;
    std::memcpy(at, kDigitPairs + pair, 2);
  }
  if (value >= 10) {
    at -= 2;
    std::memcpy(at, kDigitPairs + value * 2, 2);
  } else {
    *--at = static_cast<char>('0' + value);
  }
  return end;
}

/// Writes k/10: "-12.3", "0.5", "123", "0".
char* writeTenths(char* out, std::int32_t sample) {
  std::uint32_t magnitude = static_cast<std::uint32_t>(sample);
  if (sample < 0) {
    *out++ = '-';
    magnitude = 0u - magnitude;
  }
  const std::uint32_t tenth = magnitude % 10;
  out = writeUnsigned(out, magnitude / 10);
  if (tenth != 0) {
    out[0] = '.';
    out[1] = static_cast<char>('0' + tenth);
    out += 2;
  }
  return out;
}

/// One all-in-one value as the general path writes it: the Double's text in the locale, read back
/// through the executive's parse (a "," read as "."), written again, every "," made a ".".
std::string generalAioValue(std::int32_t sample, std::string_view decimalSeparator) {
  const double value = valOS(doubleText(sample * 0.1, decimalSeparator));
  return withDecimalPoint(doubleText(value, decimalSeparator));
}

}  // namespace

std::string aioSamplesText(const std::int32_t* samples, std::size_t count,
                           std::string_view decimalSeparator) {
  // Under any other separator the parse stops at it, so only the general path gives the platform's text.
  if (decimalSeparator != "." && decimalSeparator != ",") {
    return aioSamplesTextGeneral(samples, count, decimalSeparator);
  }
  std::string text;
  if (count == 0) return text;
  // The widest value decides the buffer: a sign, its whole digits, "." and a tenth, and a comma.
  std::uint32_t widest = 0;
  bool negative = false;
  for (std::size_t i = 0; i < count; ++i) {
    const std::int32_t sample = samples[i];
    const std::uint32_t magnitude =
        sample < 0 ? 0u - static_cast<std::uint32_t>(sample) : static_cast<std::uint32_t>(sample);
    widest = magnitude > widest ? magnitude : widest;
    negative = negative || sample < 0;
  }
  text.resize(count * static_cast<std::size_t>((negative ? 1 : 0) + decimalLength(widest / 10) + 3));
  char* const begin = text.data();
  char* out = writeTenths(begin, samples[0]);
  for (std::size_t i = 1; i < count; ++i) {
    *out++ = ',';
    out = writeTenths(out, samples[i]);
  }
  text.resize(static_cast<std::size_t>(out - begin));
  return text;
}

std::string aioSamplesTextGeneral(const std::int32_t* samples, std::size_t count,
                                  std::string_view decimalSeparator) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) text += ',';
    text += generalAioValue(samples[i], decimalSeparator);
  }
  return text;
}

double masSampleValue(std::int32_t sample, std::int32_t multiplier) {
  const float current = static_cast<float>(static_cast<double>(sample) * multiplier);
  const float scaled = current * 5000.0F;
  return static_cast<double>(scaled) / 16777216.0;
}

void appendMasSamplesText(std::string& text, const std::int32_t* samples, std::size_t count,
                          std::int32_t multiplier, std::string_view decimalSeparator) {
  for (std::size_t i = 0; i < count; ++i) {
    text += ',';
    text += withDecimalPoint(doubleText(masSampleValue(samples[i], multiplier), decimalSeparator));
  }
}

}  // namespace rx9400
