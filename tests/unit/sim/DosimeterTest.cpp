// The dosimeter's ion chambers and cal factors, the chamber file in its section, and its configuration
// records.
#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

constexpr std::int32_t kDose = 4712;

using SimDosimeter = SimTest;

TEST_F(SimDosimeter, PublishesTheChamberFileWithAZeroByteAfterTheText) {
  scanAndConnect({kDose, 4711});
  const std::string expected =
      "2\t1\tIC-A 6cc\t1\t1\tRQR5\t1\t1.2345E+09\t2\tIC-B "
      "180cc\t2\t1\tRQR5\t3\t8.91E+07\t2\tRQR9\t3\t8.87E+07\t";
  ASSERT_EQ(MBGetChamberFileInfo(kDose), static_cast<std::int16_t>(expected.size()));
  EXPECT_EQ(readSection(kDose), expected + '\0');
  EXPECT_EQ(MBGetChamberFileInfo(4711), 0) << "an all-in-one detector has no chamber file";
}

TEST_F(SimDosimeter, AddsNumberedEntriesUpToTheLimits) {
  scanAndConnect({kDose});
  char name[20];
  std::memcpy(name, "ABCDEFGHIJKLMNOxyzw", sizeof name);  // 15 name bytes, then no zero byte
  EXPECT_EQ(MBAddNewIonChamber(kDose, name), 3);
  CalFactor factor{};
  std::strncpy(factor.name, "Q1", sizeof factor.name);
  factor.unitCode = 2;
  factor.calConstant = 1.5F;
  EXPECT_EQ(MBAddNewCalFactor(kDose, 9, &factor), 0) << "no such chamber";
  for (int number = 1; number <= 10; ++number) ASSERT_EQ(MBAddNewCalFactor(kDose, 3, &factor), number);
  EXPECT_EQ(MBAddNewCalFactor(kDose, 3, &factor), 0) << "an eleventh";
  EXPECT_NE(text(SimGetChamberFile, kDose).find("\t3\tABCDEFGHIJKLMNO\t10\t1\tQ1\t2\t1.5\t2\tQ1"),
            std::string::npos);
}

template <typename Record>
void expectKept(std::int32_t (*set)(std::int32_t, Record*), std::int32_t (*get)(std::int32_t, Record*),
                Record sent) {
  Record back{};
  EXPECT_EQ(set(kDose, &sent), 1);
  EXPECT_EQ(get(kDose, &back), 1);
  EXPECT_EQ(std::memcmp(&back, &sent, sizeof sent), 0);
  EXPECT_EQ(set(4711, &sent), 0) << "not a dosimeter";
}

TEST_F(SimDosimeter, ConfigurationRecordsAreKeptWholeAndTheOffsetsApply) {
  scanAndConnect({kDose, 4711});
  expectKept(MBSetADCF, MBGetADCF, AdcfSettings{2, 1, 1, {0, 0}, 700.0F, 701.0F, 30.0F, 31.0F, 22.0F});
  expectKept(MBSetDosimeterMode, MBGetDosimeterMode, DosimeterMode{3, 0, {0, 0, 0}});
  expectKept(MBSetDosimeterUnit, MBGetDosimeterUnit, DosimeterUnit{2, 3, 2, 4, 600, {0, 0}});
  expectKept(MBSetTempPressureOffset, MBGetTempPressureOffset, TempPressureOffset{1.5F, -0.5F});
  DoseMeasuredData d{};
  MBGetDosimeterMeasuredData(&d, kDose, 0);
  EXPECT_EQ((std::vector<float>{d.temperature, d.pressure}), (std::vector<float>{22.0F, 761.5F}));
}

}  // namespace
}  // namespace rx9400::simtest
