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

/// The edge values, then pseudo-random values (fixed seed) in turn: a mantissa times a power of ten up
/// to `maxExponent`, sixteen significant digits (the 15-digit rounding decides), any finite bit pattern.
template <typename Real, typename Bits>
std::vector<Real> values(std::vector<Real> values, std::size_t count, int maxExponent) {
  std::mt19937_64 random(9400);
  std::uniform_real_distribution<Real> mantissa(1, 10);
  std::uniform_int_distribution<int> exponent(-maxExponent, maxExponent);
  std::uniform_int_distribution<long long> digits(1000000000000000LL, 9999999999999999LL);
  for (std::size_t i = 0; values.size() < count; ++i) {
    Real value = i % 3 == 0   ? mantissa(random) * std::pow(Real(10), Real(exponent(random)))
                 : i % 3 == 1 ? Real(Real(digits(random)) * std::pow(10.0, exponent(random) - 15))
                              : Real(0);
    if (i % 3 == 2) {
      const Bits bits = static_cast<Bits>(random());
      std::memcpy(&value, &bits, sizeof(value));
    }
    if (std::isfinite(value)) values.push_back(i % 6 < 3 ? value : -value);
  }
  return values;
}

/// Every value written both ways; the first 25 that differ are printed with their exact bits.
void numberTexts(const Options&) {
  wchar_t separator[8] = {};
  GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, separator, 8);
  std::size_t compared = 0, differing = 0;
  const auto compare = [&](double value, const std::string& ours, const std::string& platform) {
    ++compared;
    if (ours != platform && ++differing <= 25)
      std::printf("  %a (%.17g): ours \"%s\", platform \"%s\"\n", value, value, ours.c_str(),
                  platform.c_str());
  };
  using Limits = std::numeric_limits<double>;
  // Values seen in the plug-in, the classic traps of 15-digit conversion, the ends of the range.
  for (const double value : values<double, std::uint64_t>({1234 * 0.1,
                                                           0.1 * 3,
                                                           2.0 / 3,
                                                           80.3,
                                                           0.5,
                                                           -1,
                                                           100,
                                                           0.0,
                                                           -0.0,
                                                           4.35,
                                                           0.045,
                                                           1e-5 * 3,
                                                           0.00001,
                                                           0.0001,
                                                           0.00012345,
                                                           1e14,
                                                           1e15,
                                                           1e16,
                                                           999999999999999.0,
                                                           123456789012345.6,
                                                           9.999999999999995e14,
                                                           9.9999999999999995e-5,
                                                           1e-300,
                                                           1e300,
                                                           Limits::max(),
                                                           Limits::min(),
                                                           Limits::denorm_min()},
                                                          4000, 25))
    compare(value, doubleText(value, narrow(separator)), platformText(value));
  for (const float value : values<float, std::uint32_t>(
           {1.0f / 3, 16777216.0f, 16777217.0f, 80.3f, 0.1f, 0.1f * 3, 1234 * 0.1f, 1e-5f, 1e7f, 9999999.0f,
            12.5f, -0.0f, 3.4e38f, 1.17549435e-38f, 1e-45f, 0.045f},
           2500, 12))
    compare(value, singleText(value, narrow(separator)), platformText(value));
  expect(differing == 0, std::to_string(differing) + " of " + std::to_string(compared) + " values differ");
}

}  // namespace
}  // namespace rx9400::e2e

int main(int argc, char** argv) {
  using namespace rx9400::e2e;
  return runChecks(argc, argv,
                   {{"numbers", "doubleText and singleText write what VarBstrFromR8 and VarBstrFromR4 write",
                     numberTexts}});
}
