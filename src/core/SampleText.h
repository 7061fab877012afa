// The waveform texts the executive parses: every value as the platform's number-to-text conversion
// writes it, with "." as the decimal separator whatever the locale, values joined by ",".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace rx9400 {

/// The all-in-one text of `count` samples in tenths: "123.4,123,-0.5" (no leading or trailing comma).
/// Each value is written as a Double in the locale whose decimal separator is `decimalSeparator`,
/// every "," then made a "."; for "." and "," this is the exact decimal k/10, written with integer
/// arithmetic straight into one buffer.
std::string aioSamplesText(const std::int32_t* samples, std::size_t count, std::string_view decimalSeparator);
/// The same text through the general Double conversion, value by value (the reference of the above).
std::string aioSamplesTextGeneral(const std::int32_t* samples, std::size_t count,
                                  std::string_view decimalSeparator);

/// An mAs sample as current: (sample x multiplier as a Single) x 5000 as a Single, then / 2^24 as a
/// Double (exact: a power of two).
double masSampleValue(std::int32_t sample, std::int32_t multiplier);
/// Appends "," and the text of each mAs value of `count` samples: the text begins with a comma.
void appendMasSamplesText(std::string& text, const std::int32_t* samples, std::size_t count,
                          std::int32_t multiplier, std::string_view decimalSeparator);

}  // namespace rx9400
