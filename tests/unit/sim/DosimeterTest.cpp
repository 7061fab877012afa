// The dosimeter's ion chambers and cal factors, the chamber file in the shared-memory section, and the
// configuration records kept per detector.
#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

constexpr std::int32_t kDose = 4712;

std::string chamberFile(std::int32_t id) {
  std::string text(static_cast<std::size_t>(SimGetChamberFile(id, nullptr, 0)), '\0');
  if (text.empty()) return text;
  SimGetChamberFile(id, text.data(), static_cast<std::int32_t>(text.size()));
  text.pop_back();
  return text;
}

CalFactor calFactor(const char* name, std::int32_t unit, float constant, std::int16_t number = 0) {
  CalFactor factor{};
  std::memcpy(factor.name, name, std::min(std::strlen(name), sizeof factor.name));
  factor.unitCode = unit;
  factor.calConstant = constant;
  factor.number = number;
  return factor;
}

using SimDosimeter = SimTest;

TEST_F(SimDosimeter, PublishesTheChamberFileWithAZeroByteAfterTheText) {
  scanAndConnect({kDose});
  EXPECT_EQ(MBGetNoOfIonChambers(kDose), 2);
  const std::string expected =
      "2\t1\tIC-A 6cc\t1\t1\tRQR5\t1\t1.2345E+09\t2\tIC-B "
      "180cc\t2\t1\tRQR5\t3\t8.91E+07\t2\tRQR9\t3\t8.87E+07\t";
  const std::int16_t length = MBGetChamberFileInfo(kDose);
  ASSERT_EQ(length, static_cast<std::int16_t>(expected.size()));
  const auto section = readSection("MB_00004712");
  ASSERT_TRUE(section.has_value());
  ASSERT_GT(section->size(), expected.size());
  EXPECT_EQ(std::string(section->begin(), section->begin() + length), expected);
  EXPECT_EQ((*section)[static_cast<std::size_t>(length)], 0);
  EXPECT_EQ(MBGetChamberFileInfo(4711), 0) << "an all-in-one detector has no chamber file";
}

TEST_F(SimDosimeter, AddsAChamberWithAnUnterminatedFifteenByteName) {
  scanAndConnect({kDose});
  char name[20];
  std::memcpy(name, "ABCDEFGHIJKLMNOxyzw", sizeof name);  // 15 name bytes, then no zero byte
  EXPECT_EQ(MBAddNewIonChamber(kDose, name), 3);
  CalFactor factor = calFactor("Q1", 2, 1.5F);
  EXPECT_EQ(MBAddNewCalFactor(kDose, 3, &factor), 1);
  EXPECT_EQ(MBAddNewCalFactor(kDose, 3, &factor), 2);
  EXPECT_EQ(MBAddNewCalFactor(kDose, 9, &factor), 0) << "no such chamber";
  const std::string file = chamberFile(kDose);
  EXPECT_EQ(file.substr(0, 2), "3\t");
  EXPECT_NE(file.find("\t3\tABCDEFGHIJKLMNO\t2\t1\tQ1\t2\t1.5\t2\tQ1\t2\t1.5\t"), std::string::npos) << file;
}

TEST_F(SimDosimeter, RefusesAnEleventhCalFactor) {
  scanAndConnect({kDose});
  CalFactor factor = calFactor("F", 1, 1.0F);
  for (int i = 2; i <= 10; ++i) ASSERT_EQ(MBAddNewCalFactor(kDose, 1, &factor), i);
  EXPECT_EQ(MBAddNewCalFactor(kDose, 1, &factor), 0);
}

struct ConstantText {
  float constant;
  const char* text;
};

void PrintTo(const ConstantText& c, std::ostream* out) {
  *out << c.text;
}

class SimCalConstantText : public ::testing::TestWithParam<ConstantText> {};

TEST_P(SimCalConstantText, IsWrittenLikePrintfG7WithAPoint) {
  loadScenario(
      R"({"detectors": [{"identifier": 51, "typeCode": 5, "dosimeter": {"chambers": [{"name": "C"}]}}]})");
  scanAndConnect({51});
  CalFactor factor = calFactor("F", 1, GetParam().constant);
  ASSERT_EQ(MBAddNewCalFactor(51, 1, &factor), 1);
  EXPECT_EQ(chamberFile(51), std::string("1\t1\tC\t1\t1\tF\t1\t") + GetParam().text + "\t");
}

INSTANTIATE_TEST_SUITE_P(Constants, SimCalConstantText,
                         ::testing::Values(ConstantText{1.2345e9F, "1.2345E+09"}, ConstantText{0.5F, "0.5"},
                                           ConstantText{123456789.0F, "1.234568E+08"},
                                           ConstantText{1e-20F, "1E-20"}, ConstantText{-1234.5F, "-1234.5"}));

TEST_F(SimDosimeter, EditsDeletesAndKeepsTheSelectionValid) {
  scanAndConnect({kDose});
  char renamed[15] = {'N', 'e', 'w', ' ', 'n', 'a', 'm', 'e'};
  EXPECT_EQ(MBEditIonChamber(kDose, 1, renamed), 1);
  EXPECT_EQ(MBEditIonChamber(kDose, 7, renamed), 0);
  CalFactor edited = calFactor("RQR2", 4, 2.0F, 1);
  EXPECT_EQ(MBEditCalfactor(kDose, 1, &edited), 1);
  EXPECT_EQ(MBDeleteCalfactor(kDose, 2, 1), 1);
  EXPECT_EQ(chamberFile(kDose), "2\t1\tNew name\t1\t1\tRQR2\t4\t2\t2\tIC-B 180cc\t1\t2\tRQR9\t3\t8.87E+07\t");

  IonChamberSelection selection{};
  EXPECT_EQ(MBSetIonChamberCalFactor(kDose, 2, 2), 1);
  EXPECT_EQ(MBSetIonChamberCalFactor(kDose, 2, 1), 0) << "deleted cal factor";
  MBGetIonChamberCalFactor(kDose, &selection);
  EXPECT_EQ(selection.chamberNumber, 2);
  EXPECT_EQ(selection.calFactorNumber, 2);
  EXPECT_EQ(MBDeleteIonChamber(kDose, 2), 1);
  MBGetIonChamberCalFactor(kDose, &selection);
  EXPECT_EQ(selection.chamberNumber, 0) << "the selected chamber went";

  EXPECT_EQ(MBDeleteAllIonChambers(kDose), 1);
  EXPECT_EQ(MBGetNoOfIonChambers(kDose), 0);
  EXPECT_EQ(chamberFile(kDose), "0\t");
  char name[15] = {'A'};
  EXPECT_EQ(MBAddNewIonChamber(kDose, name), 1) << "numbering starts again";
}

TEST_F(SimDosimeter, ConfigurationRecordsAreKeptPerDetector) {
  scanAndConnect({kDose, 4711});
  AdcfSettings adcf{2, 1, 1, {0, 0}, 700.0F, 701.0F, 30.0F, 31.0F, 22.0F};
  DosimeterMode mode{3, 0, {0, 0, 0}};
  DosimeterUnit unit{2, 3, 2, 4, 600, {0, 0}};
  TempPressureOffset offset{1.5F, -0.5F};
  EXPECT_EQ(MBSetADCF(kDose, &adcf), 1);
  EXPECT_EQ(MBSetDosimeterMode(kDose, &mode), 1);
  EXPECT_EQ(MBSetDosimeterUnit(kDose, &unit), 1);
  EXPECT_EQ(MBSetTempPressureOffset(kDose, &offset), 1);
  AdcfSettings adcfBack{};
  DosimeterMode modeBack{};
  DosimeterUnit unitBack{};
  TempPressureOffset offsetBack{};
  MBGetADCF(kDose, &adcfBack);
  MBGetDosimeterMode(kDose, &modeBack);
  MBGetDosimeterUnit(kDose, &unitBack);
  MBGetTempPressureOffset(kDose, &offsetBack);
  EXPECT_EQ(std::memcmp(&adcfBack, &adcf, sizeof adcf), 0);
  EXPECT_EQ(std::memcmp(&modeBack, &mode, sizeof mode), 0);
  EXPECT_EQ(std::memcmp(&unitBack, &unit, sizeof unit), 0);
  EXPECT_EQ(std::memcmp(&offsetBack, &offset, sizeof offset), 0);
  EXPECT_EQ(MBSetADCF(4711, &adcf), 0) << "not a dosimeter";

  DoseMeasuredData d{};
  MBGetDosimeterMeasuredData(&d, kDose, 0);
  EXPECT_FLOAT_EQ(d.temperature, 22.5F - 0.5F) << "the offsets apply to the sensors";
  EXPECT_FLOAT_EQ(d.pressure, 760.0F + 1.5F);
}

}  // namespace
}  // namespace rx9400::simtest
