// rx9400-servicechecks: the plug-in's shared services against the real Win32 platform, one PASS or FAIL
// line per check named on the command line (--list shows them). The number texts are written by
// portable code the way oleaut32 writes them: doubleText and singleText against VarBstrFromR8 and
// VarBstrFromR4 for edge values and pseudo-random values of every magnitude. Every mismatch is listed
// with the value's exact bits; the first 25 are printed.
#include <windows.h>

#include <oleauto.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "Harness.h"
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

/// Collects mismatches and fails with their count, the first 25 printed.
class Mismatches {
 public:
  void compare(const char* kind, double value, const std::string& ours, const std::string& platform) {
    ++compared_;
    if (ours == platform) return;
    char bits[64];
    std::snprintf(bits, sizeof(bits), "%a (%.17g)", value, value);
    if (++differing_ <= 25)
      std::printf("  %s %s: ours \"%s\", platform \"%s\"\n", kind, bits, ours.c_str(), platform.c_str());
  }
  void finish() const {
    expect(differing_ == 0, std::to_string(differing_) + " of " + std::to_string(compared_) +
                                " values differ from the platform");
  }

 private:
  std::size_t compared_ = 0, differing_ = 0;
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

void numberTexts(const Options&) {
  const std::string separator = decimalSeparator();
  Mismatches mismatches;
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
    mismatches.compare("Double", value, doubleText(value, separator), platformText(value));
  }
  const std::vector<float> singles = {
      1.0f / 3, 16777216.0f, 16777217.0f, 80.3f,   0.1f,  0.1f * 3, 1234 * 0.1f, 1e-5f,   1e-4f,
      1e7f,     1e6f,        9999999.0f,  12.5f,   -2.5f, 0.0f,     -0.0f,       3.4e38f, 1.17549435e-38f,
      1e-45f,   123.456f,    0.045f,      2.0f / 3};
  for (const float value : values<float, std::uint32_t>(singles, 2500, 12)) {
    mismatches.compare("Single", value, singleText(value, separator), platformText(value));
  }
  mismatches.finish();
}

}  // namespace
}  // namespace rx9400::e2e

int main(int argc, char** argv) {
  using namespace rx9400::e2e;
  return runChecks(argc, argv,
                   {{"numbers", "doubleText and singleText write what VarBstrFromR8 and VarBstrFromR4 write",
                     numberTexts}});
}
