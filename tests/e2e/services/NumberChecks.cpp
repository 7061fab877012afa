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

namespace rx9400::services {
namespace {

constexpr std::size_t kShownMismatches = 25;

std::string decimalSeparator() {
  wchar_t text[8] = {};
  GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, text, 8);
  return utf8(text);
}

std::string takeBstr(HRESULT hr, BSTR text, const char* call) {
  if (FAILED(hr)) return std::string("<") + call + " failed " + hresultText(hr) + ">";
  std::string result = utf8(std::wstring_view(text, SysStringLen(text)));
  SysFreeString(text);
  return result;
}

std::string platformDouble(double value) {
  BSTR text = nullptr;
  const HRESULT hr = VarBstrFromR8(value, LOCALE_USER_DEFAULT, 0, &text);
  return takeBstr(hr, text, "VarBstrFromR8");
}

std::string platformSingle(float value) {
  BSTR text = nullptr;
  const HRESULT hr = VarBstrFromR4(value, LOCALE_USER_DEFAULT, 0, &text);
  return takeBstr(hr, text, "VarBstrFromR4");
}

std::string platformFormat(double value, const wchar_t* picture) {
  VARIANT number;
  VariantInit(&number);
  V_VT(&number) = VT_R8;
  V_R8(&number) = value;
  BSTR text = nullptr;
  const HRESULT hr = VarFormat(&number, const_cast<LPOLESTR>(picture), 0, 0, 0, &text);
  VariantClear(&number);
  return takeBstr(hr, text, "VarFormat");
}

std::string bitsText(double value) {
  char text[64];
  std::snprintf(text, sizeof(text), "%a (%.17g)", value, value);
  return text;
}

/// Collects mismatches, writes them all to a report and fails with the count and the first few.
class Mismatches {
 public:
  explicit Mismatches(std::wstring report) : report_(std::move(report)) {}

  void compare(const std::string& what, const std::string& ours, const std::string& platform) {
    ++compared_;
    if (ours == platform) return;
    lines_.push_back(what + ": ours \"" + ours + "\", platform \"" + platform + "\"");
  }

  void finish() {
    DeleteFileW(report_.c_str());
    if (lines_.empty()) return;
    if (FILE* out = _wfopen(report_.c_str(), L"w")) {
      for (const std::string& line : lines_) std::fprintf(out, "%s\n", line.c_str());
      std::fclose(out);
    }
    for (std::size_t i = 0; i < lines_.size() && i < kShownMismatches; ++i)
      std::printf("  %s\n", lines_[i].c_str());
    fail(std::to_string(lines_.size()) + " of " + std::to_string(compared_) +
         " values differ from the platform (" + utf8(report_) + " lists them all)");
  }

 private:
  std::wstring report_;
  std::vector<std::string> lines_;
  std::size_t compared_ = 0;
};

// Values seen in the plug-in and the classic traps of 15-digit conversion.
std::vector<double> edgeDoubles() {
  return {1234 * 0.1,
          0.1 * 3,
          0.00001,
          0.0001,
          0.00012345,
          1e15,
          1e16,
          1e14,
          999999999999999.0,
          123456789012345.6,
          -2.5,
          0.0,
          -0.0,
          1e-300,
          1e300,
          2.0 / 3,
          80.3,
          0.5,
          -1,
          100,
          1.0 / 3 * 1e-5,
          4.35,
          0.045,
          1e-5 * 3,
          std::numeric_limits<double>::min(),
          std::numeric_limits<double>::denorm_min(),
          std::numeric_limits<double>::max(),
          -std::numeric_limits<double>::max(),
          9.999999999999995e14,
          9.9999999999999995e-5};
}

std::vector<float> edgeSingles() {
  return {1.0f / 3, 16777216.0f, 16777217.0f, 80.3f,   0.1f,  0.1f * 3, 1234 * 0.1f, 1e-5f,   1e-4f,
          1e7f,     1e6f,        9999999.0f,  12.5f,   -2.5f, 0.0f,     -0.0f,       3.4e38f, 1.17549435e-38f,
          1e-45f,   123.456f,    0.045f,      2.0f / 3};
}

/// Pseudo-random doubles of every magnitude the devices produce, and some beyond (fixed seed).
std::vector<double> randomDoubles() {
  std::mt19937_64 random(9400);
  std::uniform_real_distribution<double> mantissa(1.0, 10.0);
  std::uniform_int_distribution<int> exponent(-25, 25);
  std::uniform_int_distribution<int> decimals(0, 7);
  std::uniform_int_distribution<long long> whole(0, 99999999);
  std::uniform_int_distribution<long long> sixteenDigits(1000000000000000LL, 9999999999999999LL);
  std::uniform_int_distribution<int> coin(0, 1);
  std::vector<double> values;
  for (int i = 0; i < 2000; ++i) {
    const double value = mantissa(random) * std::pow(10.0, exponent(random));
    values.push_back(coin(random) != 0 ? -value : value);
  }
  // Measurement-like values with few decimals, as the devices send them.
  for (int i = 0; i < 1000; ++i) {
    values.push_back(static_cast<double>(whole(random)) / std::pow(10.0, decimals(random)));
  }
  // Sixteen significant digits: the 15-digit rounding decides.
  for (int i = 0; i < 500; ++i) {
    values.push_back(static_cast<double>(sixteenDigits(random)) * std::pow(10.0, exponent(random) - 15));
  }
  // Any finite bit pattern.
  while (values.size() < 4000) {
    const std::uint64_t bits = random();
    double value = 0;
    std::memcpy(&value, &bits, sizeof(value));
    if (std::isfinite(value)) values.push_back(value);
  }
  return values;
}

std::vector<float> randomSingles() {
  std::mt19937 random(9400);
  std::uniform_real_distribution<float> mantissa(1.0f, 10.0f);
  std::uniform_int_distribution<int> exponent(-12, 12);
  std::uniform_int_distribution<int> decimals(0, 5);
  std::uniform_int_distribution<int> whole(0, 9999999);
  std::uniform_int_distribution<int> coin(0, 1);
  std::vector<float> values;
  for (int i = 0; i < 1500; ++i) {
    const float value = mantissa(random) * std::pow(10.0f, static_cast<float>(exponent(random)));
    values.push_back(coin(random) != 0 ? -value : value);
  }
  for (int i = 0; i < 500; ++i) {
    values.push_back(static_cast<float>(whole(random)) /
                     std::pow(10.0f, static_cast<float>(decimals(random))));
  }
  while (values.size() < 2500) {
    const std::uint32_t bits = random();
    float value = 0;
    std::memcpy(&value, &bits, sizeof(value));
    if (std::isfinite(value)) values.push_back(value);
  }
  return values;
}

void numberTexts(const Options& options) {
  const std::string separator = decimalSeparator();
  Mismatches mismatches(options.artifacts + L"\\number-mismatches.txt");
  std::vector<double> doubles = edgeDoubles();
  for (const double value : randomDoubles()) doubles.push_back(value);
  for (const double value : doubles) {
    mismatches.compare("Double " + bitsText(value), doubleText(value, separator), platformDouble(value));
  }
  std::vector<float> singles = edgeSingles();
  for (const float value : randomSingles()) singles.push_back(value);
  for (const float value : singles) {
    mismatches.compare("Single " + bitsText(value), singleText(value, separator), platformSingle(value));
  }
  mismatches.finish();
}

struct Picture {
  const wchar_t* text;
  int integerDigits;
  int decimals;
};

/// Wine's VarFormat writes every value between -1 and 1 as zero through a picture without decimals
/// (0.6 through "00" gives "00", where Windows writes "01"): those values are checked against the
/// Windows answers below instead.
bool wineRoundsToZero(double value, const Picture& picture) {
  return picture.decimals == 0 && std::fabs(value) >= 0.5 && std::fabs(value) < 1;
}

struct KnownFormat {
  double value;
  const char* text;  ///< through "00"
};
const KnownFormat kRoundedUpToOne[] = {
    {0.5, "01"}, {0.6, "01"}, {0.98548, "01"}, {-0.6, "-01"}, {0.9999, "01"}};

void formatPictures(const Options& options) {
  const std::string separator = decimalSeparator();
  Mismatches mismatches(options.artifacts + L"\\format-mismatches.txt");
  std::vector<double> values = {0,           0.04,   -0.04,  0.05,   0.15,       0.25,    0.35,
                                0.45,        2.675,  1.005,  12.345, -12.345,    99.95,   999.96,
                                0.5,         1.5,    2.5,    -0.5,   9.95,       -9.95,   123456.789,
                                1e10 + 0.05, 0.0005, 0.0015, 80.3,   1234 * 0.1, -0.0004, -0.00004};
  std::mt19937_64 random(4400);
  std::uniform_int_distribution<long long> whole(-9999999, 9999999);
  std::uniform_int_distribution<int> decimals(0, 5);
  for (int i = 0; i < 1500; ++i) {
    values.push_back(static_cast<double>(whole(random)) / std::pow(10.0, decimals(random)));
  }
  const Picture pictures[] = {{L"0.0", 1, 1}, {L"00", 2, 0}, {L"0.000", 1, 3}};
  for (const Picture& picture : pictures) {
    for (const double value : values) {
      if (wineRoundsToZero(value, picture)) continue;
      mismatches.compare("\"" + utf8(picture.text) + "\" of " + bitsText(value),
                         formatPicture(value, picture.integerDigits, picture.decimals, separator),
                         platformFormat(value, picture.text));
    }
  }
  for (const KnownFormat& known : kRoundedUpToOne) {
    mismatches.compare("\"00\" of " + bitsText(known.value) + " (Windows answer)",
                       formatPicture(known.value, 2, 0, separator), known.text);
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

}  // namespace rx9400::services
