// rx9400-aiotext-bench: the all-in-one waveform text of a long recording built two ways under the
// platform's own conversion: rx9400::aioSamplesText, and VarBstrFromR8 value by value (a BSTR per value,
// every "," made ".", appended to one text), as a download without the fast path builds it. Prints the
// median time per sample of each, their ratio, and whether both texts are byte for byte the same, for
// the timed recording and for edge and random values over the whole Long range. The exit status is 1
// only when the texts differ: the figures are a report, never a verdict.
//
//   rx9400-aiotext-bench [--samples=N] [--repetitions=R]
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "core/SampleText.h"

namespace {

/// The user's decimal separator, which the plug-in hands to aioSamplesText.
std::string decimalSeparator() {
  wchar_t text[8] = {};
  if (GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, text, 8) == 0) return ".";
  std::string separator;
  for (const wchar_t* c = text; *c != 0; ++c) separator += static_cast<char>(*c);
  return separator;
}

/// The text without the fast path: each value k/10 through VarBstrFromR8, "," made ".", appended.
std::string platformText(const std::vector<std::int32_t>& samples) {
  std::string text;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    BSTR value = nullptr;
    if (FAILED(VarBstrFromR8(samples[i] * 0.1, LOCALE_USER_DEFAULT, 0, &value))) {
      std::printf("VarBstrFromR8 failed for %d\n", static_cast<int>(samples[i]));
      std::exit(2);
    }
    if (i > 0) text += ',';
    const UINT length = SysStringLen(value);
    for (UINT c = 0; c < length; ++c) text += value[c] == L',' ? '.' : static_cast<char>(value[c]);
    SysFreeString(value);
  }
  return text;
}

/// A kV trace as a detector records it, in tenths: a ramp, a plateau near 80 kV with ripple and noise,
/// a fall, and a little noise around zero either side.
std::vector<std::int32_t> recording(std::size_t count) {
  std::mt19937 random(9400);
  std::uniform_int_distribution<std::int32_t> noise(-20, 20);
  std::vector<std::int32_t> samples(count);
  const std::size_t ramp = count / 20, fall = count / 15, end = count - count / 50;
  for (std::size_t i = 0; i < count; ++i) {
    std::int32_t level = 0;
    if (i < ramp) {
      level = static_cast<std::int32_t>(803 * i / ramp);
    } else if (i < end - fall) {
      const auto phase = static_cast<std::int32_t>(i % 60);
      level = 803 + (phase < 30 ? phase : 60 - phase) * 18 / 30 - 9;
    } else if (i < end) {
      level = static_cast<std::int32_t>(803 * (end - i) / fall);
    }
    samples[i] = level + noise(random);
  }
  return samples;
}

/// Values at the ends of the Long range and around the places where the text changes length.
std::vector<std::int32_t> edgeValues() {
  std::vector<std::int32_t> values = {std::numeric_limits<std::int32_t>::min(),
                                      std::numeric_limits<std::int32_t>::max(), 0};
  for (std::int64_t power = 1; power <= 1000000000; power *= 10) {
    for (const std::int64_t value : {power - 1, power, power + 1}) {
      values.push_back(static_cast<std::int32_t>(value));
      values.push_back(static_cast<std::int32_t>(-value));
    }
  }
  std::mt19937 random(4711);
  std::uniform_int_distribution<std::int32_t> any(std::numeric_limits<std::int32_t>::min(),
                                                  std::numeric_limits<std::int32_t>::max());
  for (int i = 0; i < 10000; ++i) values.push_back(any(random));
  return values;
}

/// The median time of `repetitions` builds; `text` keeps the last one.
template <typename Build>
double medianNanoseconds(int repetitions, std::string& text, Build build) {
  LARGE_INTEGER frequency, start, stop;
  QueryPerformanceFrequency(&frequency);
  std::vector<double> runs;
  for (int run = 0; run < repetitions; ++run) {
    QueryPerformanceCounter(&start);
    text = build();
    QueryPerformanceCounter(&stop);
    runs.push_back(static_cast<double>(stop.QuadPart - start.QuadPart) * 1e9 /
                   static_cast<double>(frequency.QuadPart));
  }
  std::sort(runs.begin(), runs.end());
  return runs[runs.size() / 2];
}

/// The first place two texts differ, for the report.
std::string firstDifference(const std::string& ours, const std::string& platform) {
  const auto at = std::mismatch(ours.begin(), ours.end(), platform.begin(), platform.end());
  const std::size_t offset = static_cast<std::size_t>(at.first - ours.begin());
  const std::size_t from = offset < 20 ? 0 : offset - 20;
  return "at byte " + std::to_string(offset) + ": ours \"" + ours.substr(from, 40) + "\", platform \"" +
         platform.substr(from, 40) + "\"";
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 1000000;
  int repetitions = 3;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--samples=", 10) == 0) count = std::strtoul(argv[i] + 10, nullptr, 10);
    if (std::strncmp(argv[i], "--repetitions=", 14) == 0) repetitions = std::max(1, std::atoi(argv[i] + 14));
  }
  const std::string separator = decimalSeparator();
  const std::vector<std::int32_t> samples = recording(std::max<std::size_t>(count, 1));

  std::string ours, theirs;
  const double fast = medianNanoseconds(
      repetitions, ours, [&] { return rx9400::aioSamplesText(samples.data(), samples.size(), separator); });
  const double platform = medianNanoseconds(repetitions, theirs, [&] { return platformText(samples); });
  std::printf("all-in-one text of %zu samples, decimal separator \"%s\", median of %d runs\n", samples.size(),
              separator.c_str(), repetitions);
  std::printf("  aioSamplesText            %10.2f ns/sample\n", fast / static_cast<double>(samples.size()));
  std::printf("  VarBstrFromR8 per value   %10.2f ns/sample\n",
              platform / static_cast<double>(samples.size()));
  std::printf("  ratio                     %10.1fx\n", platform / fast);

  // The texts of the timed runs, then edge and random values over the whole Long range.
  int status = 0;
  const auto compare = [&](const char* what, std::size_t values) {
    if (ours == theirs) {
      std::printf("  %s: the same text (%zu values, %zu bytes)\n", what, values, ours.size());
    } else {
      std::printf("  %s: the texts differ %s\n", what, firstDifference(ours, theirs).c_str());
      status = 1;
    }
  };
  compare("the recording", samples.size());
  const std::vector<std::int32_t> edges = edgeValues();
  ours = rx9400::aioSamplesText(edges.data(), edges.size(), separator);
  theirs = platformText(edges);
  compare("edge and random values", edges.size());
  return status;
}
