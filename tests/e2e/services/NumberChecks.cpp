// Number texts against the platform's own conversions: doubleText and singleText against oleaut32's
// VarBstrFromR8 and VarBstrFromR4, formatPicture against VarFormat. Every mismatch is listed with the
// value's exact bits in a report under the artifacts folder; the first ones also go to the output.
#include <windows.h>

#include <oleauto.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "ServiceChecks.h"
#include "core/NumberText.h"

namespace rx9400::e2e {
namespace {

std::string decimalSeparator() {
  wchar_t text[8] = {};
  GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, text, 8);
  return narrow(text);
}

std::string takeBstr(HRESULT hr, BSTR& text) {
  return FAILED(hr) ? "<failed " + hresultText(hr) + ">" : narrow(taken(text));
}

std::string platformText(double value) {
  BSTR text = nullptr;
  return takeBstr(VarBstrFromR8(value, LOCALE_USER_DEFAULT, 0, &text), text);
}

std::string platformText(float value) {
  BSTR text = nullptr;
  return takeBstr(VarBstrFromR4(value, LOCALE_USER_DEFAULT, 0, &text), text);
}

std::string platformFormat(double value, const wchar_t* picture) {
  VARIANT number;
  VariantInit(&number);
  V_VT(&number) = VT_R8;
  V_R8(&number) = value;
  BSTR text = nullptr;
  return takeBstr(VarFormat(&number, const_cast<LPOLESTR>(picture), 0, 0, 0, &text), text);
}

std::string bitsText(double value) {
  char text[64];
  std::snprintf(text, sizeof(text), "%a (%.17g)", value, value);
  return text;
}

/// Collects mismatches, writes them all to a report and fails with the count and the first 25.
class Mismatches {
 public:
  explicit Mismatches(std::wstring report) : report_(std::move(report)) {}

  void compare(const std::string& what, const std::string& ours, const std::string& platform) {
    ++compared_;
    if (ours != platform) lines_.push_back(what + ": ours \"" + ours + "\", platform \"" + platform + "\"");
  }

  void finish() {
    DeleteFileW(report_.c_str());
    if (lines_.empty()) return;
    FILE* out = _wfopen(report_.c_str(), L"w");
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      if (out != nullptr) std::fprintf(out, "%s\n", lines_[i].c_str());
      if (i < 25) std::printf("  %s\n", lines_[i].c_str());
    }
    if (out != nullptr) std::fclose(out);
    fail(std::to_string(lines_.size()) + " of " + std::to_string(compared_) +
         " values differ from the platform (" + narrow(report_) + " lists them all)");
  }

 private:
  std::wstring report_;
  std::vector<std::string> lines_;
  std::size_t compared_ = 0;
};

/// The edge values followed by pseudo-random values (fixed seed), in turn: a mantissa times a power of
/// ten up to `maxExponent`, a measurement with few decimals, sixteen significant digits (the 15-digit
/// rounding decides), and any finite bit pattern.
template <typename Real, typename Bits>
std::vector<Real> values(std::vector<Real> values, std::size_t count, int maxExponent) {
  std::mt19937_64 random(9400);
  std::uniform_real_distribution<Real> mantissa(1, 10);
  std::uniform_int_distribution<int> exponent(-maxExponent, maxExponent), decimals(0, 7);
  std::uniform_int_distribution<long long> whole(0, 99999999),
      sixteenDigits(1000000000000000LL, 9999999999999999LL);
  for (std::size_t i = 0; values.size() < count; ++i) {
    Real value = 0;
    if (i % 4 == 0) value = mantissa(random) * std::pow(Real(10), Real(exponent(random)));
    if (i % 4 == 1) value = Real(whole(random)) / std::pow(Real(10), Real(decimals(random)));
    if (i % 4 == 2) value = Real(Real(sixteenDigits(random)) * std::pow(10.0, exponent(random) - 15));
    if (i % 4 == 3) {
      const Bits bits = static_cast<Bits>(random());
      std::memcpy(&value, &bits, sizeof(value));
    }
    if (std::isfinite(value)) values.push_back(i % 8 < 4 ? value : -value);
  }
  return values;
}

void numberTexts(const Options& options) {
  const std::string separator = decimalSeparator();
  Mismatches mismatches(options.artifacts + L"\\number-mismatches.txt");
  using Limits = std::numeric_limits<double>;
  const std::vector<double> doubles = {
      // values seen in the plug-in
      1234 * 0.1, 0.1 * 3, 2.0 / 3, 80.3, 0.5, -1, 100, -2.5, 0.0, -0.0, 4.35, 0.045, 1e-5 * 3,
      1.0 / 3 * 1e-5,
      // the classic traps of 15-digit conversion, where the exponent takes over
      0.00001, 0.0001, 0.00012345, 1e14, 1e15, 1e16, 999999999999999.0, 123456789012345.6,
      9.999999999999995e14, 9.9999999999999995e-5,
      // the ends of the range
      1e-300, 1e300, Limits::max(), Limits::min(), Limits::denorm_min()};
  for (const double value : values<double, std::uint64_t>(doubles, 4000, 25)) {
    mismatches.compare("Double " + bitsText(value), doubleText(value, separator), platformText(value));
  }
  const std::vector<float> singles = {
      1.0f / 3, 16777216.0f, 16777217.0f, 80.3f,   0.1f,  0.1f * 3, 1234 * 0.1f, 1e-5f,   1e-4f,
      1e7f,     1e6f,        9999999.0f,  12.5f,   -2.5f, 0.0f,     -0.0f,       3.4e38f, 1.17549435e-38f,
      1e-45f,   123.456f,    0.045f,      2.0f / 3};
  for (const float value : values<float, std::uint32_t>(singles, 2500, 12)) {
    mismatches.compare("Single " + bitsText(value), singleText(value, separator), platformText(value));
  }
  mismatches.finish();
}

void formatPictures(const Options& options) {
  const std::string separator = decimalSeparator();
  Mismatches mismatches(options.artifacts + L"\\format-mismatches.txt");
  std::vector<double> numbers = {0,           0.04,   -0.04,  0.05,   0.15,       0.25,    0.35,
                                 0.45,        2.675,  1.005,  12.345, -12.345,    99.95,   999.96,
                                 0.5,         1.5,    2.5,    -0.5,   9.95,       -9.95,   123456.789,
                                 1e10 + 0.05, 0.0005, 0.0015, 80.3,   1234 * 0.1, -0.0004, -0.00004};
  std::mt19937_64 random(4400);
  std::uniform_int_distribution<long long> whole(-9999999, 9999999);
  std::uniform_int_distribution<int> decimals(0, 5);
  for (int i = 0; i < 1500; ++i) numbers.push_back(double(whole(random)) / std::pow(10.0, decimals(random)));
  const struct {
    const wchar_t* text;
    int integerDigits, decimals;
  } pictures[] = {{L"0.0", 1, 1}, {L"00", 2, 0}, {L"0.000", 1, 3}};
  for (const auto& picture : pictures) {
    for (const double value : numbers) {
      // Wine's VarFormat writes every value between -1 and 1 as zero through a picture without
      // decimals (0.6 through "00" gives "00", where Windows writes "01"): see the Windows answers below.
      if (picture.decimals == 0 && std::fabs(value) >= 0.5 && std::fabs(value) < 1) continue;
      mismatches.compare("\"" + narrow(picture.text) + "\" of " + bitsText(value),
                         formatPicture(value, picture.integerDigits, picture.decimals, separator),
                         platformFormat(value, picture.text));
    }
  }
  for (const auto& [value, text] :
       {std::pair{0.5, "01"}, {0.6, "01"}, {0.98548, "01"}, {-0.6, "-01"}, {0.9999, "01"}}) {
    mismatches.compare("\"00\" of " + bitsText(value) + " (Windows answer)",
                       formatPicture(value, 2, 0, separator), text);
  }
  mismatches.finish();
}

}  // namespace

std::vector<Check> numberChecks() {
  return {
      {"numbers", "doubleText and singleText write what VarBstrFromR8 and VarBstrFromR4 write", numberTexts},
      {"format-picture", "formatPicture writes what VarFormat writes for \"0.0\", \"00\" and \"0.000\"",
       formatPictures},
  };
}

}  // namespace rx9400::e2e
