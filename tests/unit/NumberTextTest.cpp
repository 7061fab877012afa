// Numbers as text: one line per case. The expected texts are the platform conversion's (the same
// values are held against oleaut32 under Wine by the end-to-end checks).
#include <gtest/gtest.h>

#include <charconv>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "core/NumberText.h"
#include "core/SampleText.h"
#include "core/Text.h"

namespace rx9400 {
namespace {

TEST(NumberText, DoublesAsThePlatformWritesThem) {
  const std::pair<double, const char*> cases[] = {
      {1234 * 0.1, "123.4"},
      {0.1 * 3, "0.3"},
      {2.0 / 3, "0.666666666666667"},
      {0.0001, "0.0001"},
      {0.00001, "1E-05"},
      {1.5e-7, "1.5E-07"},
      {1e14, "100000000000000"},
      {123456789012345.6, "123456789012346"},
      {1e15, "1E+15"},
      {1e16, "1E+16"},
      {1e100, "1E+100"},
      {-2.5, "-2.5"},
      {0.0, "0"},
      {-0.0, "0"},
      {80.30000000000001, "80.3"},
      {1.234 * 3600 * 0.001 * 0.001, "0.0044424"},
      {974404124467500.5, "974404124467501"},  // an exact tie rounds away from zero
      {-974404124467500.5, "-974404124467501"},
      {999999999999999.5, "1E+15"},
      {0.000099999999999999995, "0.0001"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(doubleText(value), text) << value;
}

TEST(NumberText, SinglesKeepSevenDigits) {
  const std::pair<float, const char*> cases[] = {
      {80.3f, "80.3"},
      {0.1f, "0.1"},
      {1.0f / 3, "0.3333333"},
      {1234567.0f, "1234567"},
      {16777216.0f, "1.677722E+07"},
      {-0.0125f, "-0.0125"},
      {5000.0f * 200 / 16777216, "0.05960464"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(singleText(value), text) << value;
}

TEST(NumberText, ADecimalCommaLocaleWritesACommaAndTheExecutiveGetsAPoint) {
  EXPECT_EQ(doubleText(123.4, ","), "123,4");
  EXPECT_EQ(singleText(0.5f, ","), "0,5");
  EXPECT_EQ(doubleText(1e-5, ","), "1E-05");
  EXPECT_EQ(withDecimalPoint(doubleText(123.4, ",")), "123.4");
  EXPECT_EQ(formatPicture(22.5, 1, 1, ","), "22,5");
  EXPECT_EQ(scientificText(1.5e9, "E", ","), "1,5E+09");
}

TEST(NumberText, ValOSReadsCommaAndPointAlikeAndStopsAtTheFirstNonNumber) {
  const std::pair<const char*, double> cases[] = {
      {"1,5", 1.5},        {"1.5", 1.5},      {"2,50", 2.5},  {"abc", 0},         {"", 0},
      {" 12 .5 kV", 12.5}, {"-3.2e2x", -320}, {"1D3", 1000},  {"1e", 1},          {"1e+", 1},
      {"+7", 7},           {".", 0},          {"-", 0},       {"1,234,5", 1.234}, {"12-3", 12},
      {".25", 0.25},       {"1E-05", 1e-5},   {"\t4\n2", 42}, {"2d-1", 0.2},
  };
  for (const auto& [text, value] : cases) EXPECT_DOUBLE_EQ(valOS(text), value) << '"' << text << '"';
  EXPECT_THROW(valOS("1e999"), std::out_of_range);
}

TEST(NumberText, FormatPicturesRoundHalvesAwayFromZero) {
  const struct {
    double value;
    int integerDigits, decimals;
    const char* text;
  } cases[] = {
      {22.5, 1, 1, "22.5"},    {22.25, 1, 1, "22.3"},
      {1.15, 1, 1, "1.2"},     {-1.25, 1, 1, "-1.3"},
      {5.6, 2, 0, "06"},       {760.0, 2, 0, "760"},
      {0.5, 2, 0, "01"},       {0.04, 1, 1, "0.0"},
      {-0.04, 1, 1, "-0.0"},   {-0.0004, 1, 3, "-0.000"},
      {-0.4, 2, 0, "-00"},     {0.01, 1, 3, "0.010"},
      {0.0005, 1, 3, "0.001"}, {0.9996, 1, 3, "1.000"},
      {99.96, 2, 1, "100.0"},  {0.0, 2, 0, "00"},
      {295.65, 1, 1, "295.7"}, {29.92126, 1, 1, "29.9"},
      {1e-20, 1, 3, "0.000"},  {1234567.891, 1, 3, "1234567.891"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(formatPicture(c.value, c.integerDigits, c.decimals), c.text) << c.value << " " << c.decimals;
}

TEST(NumberText, ScientificNotationSplitsMantissaSignAndTwoDigitExponent) {
  const std::pair<double, const char*> cases[] = {
      {1.2345e9, "1.2345E+09"}, {5e-12, "5E-12"},  {-3.0, "-3E+00"},        {123456789, "1.234568E+08"},
      {0.0, "0E+00"},           {1e100, "1E+100"}, {9.9999999e-3, "1E-02"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(scientificText(value, "E"), text) << value;
  const ScientificParts parts = scientificParts(2.5e-7);
  EXPECT_EQ(parts.mantissa + parts.sign + parts.exponent, "2.5-07");
}

TEST(NumberText, FixedLengthFieldsAreCutAndZeroFilled) {
  EXPECT_EQ(fixedLengthBytes("W/Al", 16), std::string("W/Al") + std::string(12, '\0'));
  EXPECT_EQ(fixedLengthBytes("ABCDEFGHIJKLMNOPQRST", 16), "ABCDEFGHIJKLMNOP");
  EXPECT_EQ(fixedLengthBytes("", 3), std::string(3, '\0'));
  const char field[5] = {'M', 'o', '\0', 'x', 'y'};
  EXPECT_EQ(textOfFixedBytes(field, 5), "Mo");
  EXPECT_EQ(textOfFixedBytes("ABCDE", 3), "ABC") << "a full field has no terminator";
  // Texts are cut by characters: a translated text ending in a multi-byte character stays valid.
  EXPECT_EQ(withoutLastCharacters("Temperature / ", 2), "Temperature ");
  EXPECT_EQ(withoutLastCharacters("Température /\u00a0", 2), "Température ");
  EXPECT_EQ(withoutLastCharacters("温度／", 2), "温");
  EXPECT_EQ(withoutLastCharacters("/", 2), "");
}

TEST(SampleText, TheAllInOneFastPathWritesEverySampleAsTheGeneralConversionDoes) {
  // Every sample of [-10^7, 10^7] against the library's own 15-digit conversion, in slices of 10^5.
  std::vector<std::int32_t> samples(100000);
  for (std::int32_t first = -10000000; first <= 10000000; first += 100000) {
    std::string expected;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      samples[i] = first + static_cast<std::int32_t>(i);
      char buffer[32];
      if (i > 0) expected += ',';
      expected.append(
          buffer, std::to_chars(buffer, buffer + 32, samples[i] * 0.1, std::chars_format::general, 15).ptr);
    }
    ASSERT_EQ(aioSamplesText(samples.data(), samples.size(), "."), expected) << "from " << first;
  }
  // Random 32-bit samples and the ends of the range against the general path, in both separators.
  std::mt19937 random(4711);
  samples.assign({INT32_MIN, INT32_MAX, 0, -1, 1, -10, 10});
  for (int i = 0; i < 20000; ++i) samples.push_back(static_cast<std::int32_t>(random()));
  for (const char* separator : {".", ","}) {
    EXPECT_EQ(aioSamplesText(samples.data(), samples.size(), separator),
              aioSamplesTextGeneral(samples.data(), samples.size(), separator));
  }
  EXPECT_EQ(aioSamplesText(samples.data(), 0, "."), "");
  EXPECT_EQ(aioSamplesText(samples.data(), 1, ","), "-214748364.8");
}

TEST(SampleText, AnMasValueIsTheCurrentOfASingleWrittenAsADoubleAfterAComma) {
  const std::int32_t samples[] = {671089, -3};
  std::string text = "x";
  appendMasSamplesText(text, samples, 2, 1, ",");
  // A Double all the way would give 200.000107288361, a Single 200.0001.
  EXPECT_EQ(text, "x,200.000106811523,-0.000894069671630859");
  text.clear();
  appendMasSamplesText(text, samples, 1, 2, ".");
  EXPECT_EQ(text, ",400.000213623047");
}

}  // namespace
}  // namespace rx9400
