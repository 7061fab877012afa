// The instrument's settings against the simulator: clamps, the target filter field, the AUTO overrides,
// the modes and setups sent, and the dosimeter records repaired and written back only when needed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "fakes/InstrumentFakes.h"

namespace rx9400 {
namespace {

class Settings : public ::testing::Test, protected testing::InstrumentRig {
 protected:
  /// Connects the detectors of a scenario (JSON list) directly, in scenario order.
  void start(const std::string& detectors) { InstrumentRig::start(detectors, "RADIO", false); }
  MeasurementSettings& record() { return context->state.settings; }
};

const std::string kAio =
    R"({"identifier": 101, "typeCode": 1, "serialNumber": 1201, "firmwareVersion": [2, 14],
                              "bootloaderVersion": [1, 3], "targetFilters": {"valid": ["W/Al", "Mo/Mo"], "default": "Mo/Mo"}})";
const std::string kDose =
    R"({"identifier": 303, "typeCode": 3, "serialNumber": 1305, "firmwareVersion": [1, 8],
                               "bootloaderVersion": [1, 1]})";

TEST_F(Settings, UnitCodesOutsideTheirRangeStoreOne) {
  start(kAio);
  const struct {
    void (Instrument::*put)(std::uint8_t);
    std::int32_t MeasurementSettings::*field;
    std::uint8_t value;
    std::int32_t stored;
  } cases[] = {
      {&Instrument::pDoseUnits, &MeasurementSettings::doseUnit, 2, 2},
      {&Instrument::pDoseUnits, &MeasurementSettings::doseUnit, 3, 1},
      {&Instrument::pDoseRateUnits, &MeasurementSettings::doseRateUnit, 4, 4},
      {&Instrument::pDoseRateUnits, &MeasurementSettings::doseRateUnit, 7, 1},
      {&Instrument::pDoseRateUnits, &MeasurementSettings::doseRateUnit, 0, 1},
      {&Instrument::pFluoroType, &MeasurementSettings::fluoroType, 2, 2},
      {&Instrument::pFluoroType, &MeasurementSettings::fluoroType, 9, 1},
      {&Instrument::pTimeUnit, &MeasurementSettings::timeUnit, 2, 2},
      {&Instrument::pTimeUnit, &MeasurementSettings::timeUnit, 255, 1},
  };
  for (const auto& c : cases) {
    (instrument.get()->*c.put)(c.value);
    EXPECT_EQ(record().*c.field, c.stored) << static_cast<int>(c.value);
  }
}

TEST_F(Settings, TheTargetFilterFieldTakesSixteenCharactersAndAnEmptyOneFetchesTheDefault) {
  start(kAio);
  std::string longName = "ABCDEFGHIJKLMNOPQRST";
  instrument->pTargetFilter(longName);
  EXPECT_EQ(std::string(record().targetFilter, 16), "ABCDEFGHIJKLMNOP");
  std::string empty;
  instrument->pTargetFilter(empty);
  EXPECT_TRUE(std::all_of(std::begin(record().targetFilter), std::end(record().targetFilter),
                          [](char c) { return c == 0; }));
  instrument->ChangeSettings();
  EXPECT_EQ(calls("MBGetDefaultTargetFilter(101"), 1);
  EXPECT_STREQ(simulator->detector(101).lastSettings.targetFilter, "Mo/Mo");
  std::string name = "W/Al";
  instrument->pTargetFilter(name);
  instrument->ChangeSettings();
  EXPECT_EQ(calls("MBGetDefaultTargetFilter(101"), 1) << "a chosen target filter is sent as it is";
  EXPECT_STREQ(simulator->detector(101).lastSettings.targetFilter, "W/Al");
}

TEST_F(Settings, AutomaticSettingsOverrideDelayKvAndUnitsWhenSent) {
  start(kAio);
  instrument->pPercentKV(80);
  instrument->pDelay(150);
  instrument->pIncludeDelay(true);
  instrument->pFluoroType(2);
  instrument->pTimeUnit(2);
  std::memset(record().reserved, 0x55, sizeof(record().reserved));
  instrument->pCurrentSettings("MANUAL");
  instrument->ChangeSettings();
  MeasurementSettings sent = simulator->detector(101).lastSettings;
  EXPECT_EQ(sent.percentKV, 80);
  EXPECT_EQ(sent.delay, 150);
  EXPECT_TRUE(
      std::all_of(std::begin(sent.reserved), std::end(sent.reserved), [](std::uint8_t b) { return b == 0; }));
  instrument->pCurrentSettings("AUTO");
  instrument->ChangeSettings();
  sent = simulator->detector(101).lastSettings;
  EXPECT_EQ(sent.percentKV, 0);
  EXPECT_EQ(sent.delay, 0);
  EXPECT_EQ(sent.includeDelay, kVBFalse);
  EXPECT_EQ(sent.fluoroType, 1);
  EXPECT_EQ(sent.timeUnit, 1);
}

TEST_F(Settings, ModesAndSetupsUseTheLibrarysCodes) {
  start(kAio);
  const std::pair<const char*, std::int32_t> modes[] = {{"FLUORO", 3}, {"RADIO", 1},  {"MAMMO", 2},
                                                        {"DENTAL", 4}, {"fluoro", 1}, {"", 1}};
  for (const auto& [text, mode] : modes) {
    instrument->pCurrentMode(text);
    instrument->ChangeDetectorMode();
    EXPECT_EQ(simulator->detector(101).detectorMode, mode) << text;
  }
  const std::pair<const char*, std::int32_t> setups[] = {
      {"AUTO", 1}, {"MANUAL", 2}, {"DEFAULT", 2}, {"other", 1}};
  for (const auto& [text, setup] : setups) {
    instrument->pCurrentSettings(text);
    instrument->ChangeDetectorSetup();
    EXPECT_EQ(simulator->detector(101).setup, setup) << text;
  }
}

TEST_F(Settings, TheLastSlotDecidesWhetherTheDetectorsAreConnected) {
  const struct {
    int removed;  ///< the slot emptied, -1 none
    bool connected;
  } cases[] = {{-1, true}, {0, true}, {1, false}};
  for (const auto& c : cases) {
    start(kAio + "," + kDose);
    if (c.removed >= 0) context->state.removeDetector(static_cast<std::size_t>(c.removed));
    EXPECT_EQ(instrument->IsDetectorConnected(), c.connected) << c.removed;
  }
}

TEST_F(Settings, SerialNumbersAndVersionsOfEverySlotEndWithAComma) {
  start(kAio + "," + kDose);
  EXPECT_EQ(instrument->pSerialNumber(), "1201,1305,");
  EXPECT_EQ(instrument->pFirmWareVersion(), "2.14 - 1.3,1.8 - 1.1,");
  EXPECT_EQ(instrument->GetNumberOfTargetFilters(), 2);
  for (const int count : {255, 300}) {
    std::string names = R"("F1")";
    for (int i = 2; i <= count; ++i) names += R"(, "F)" + std::to_string(i) + '"';
    start(R"({"identifier": 101, "typeCode": 1, "targetFilters": {"valid": [)" + names + "]}}");
    EXPECT_EQ(instrument->GetNumberOfTargetFilters(), count > 255 ? 0 : count) << "a count no Byte holds";
  }
  start(kAio + "," + kDose);
  std::vector<std::string> names(4);
  instrument->GetValidTargetFilters(names, 4);
  EXPECT_EQ(names, (std::vector<std::string>{"W/Al", "Mo/Mo", "", ""}));
  EXPECT_EQ(instrument->GetDefaultTargetFilterName(), "Mo/Mo");
  EXPECT_DOUBLE_EQ(instrument->Val_OS("2,50"), 2.5);
  EXPECT_DOUBLE_EQ(instrument->Val_OS("no digits"), 0);
  context->state.removeDetector(0);
  EXPECT_EQ(instrument->pSerialNumber() + instrument->pFirmWareVersion(), "1305,1.8 - 1.1,")
      << "a removed detector is skipped";
}

TEST_F(Settings, DosimeterRecordsAreWrittenBackOnlyWhenSomethingWasRepaired) {
  struct Case {
    const char* name;
    std::string dosimeter;
    int adcfWrites;
    int modeWrites;
    int unitWrites;
  };
  const Case cases[] = {
      {"nothing to repair", "{}", 0, 0, 0},
      {"a pressure out of range", R"({"adcf": {"setPressure": 800}})", 1, 0, 0},
      {"a wrong reference temperature", R"({"adcf": {"referenceTemperature": 21}})", 1, 0, 0},
      {"an unknown mode", R"({"mode": {"mode": 9, "autoReset": 1}})", 0, 1, 0},
      {"an unknown pressure unit", R"({"unit": {"pressureUnit": 7}})", 0, 0, 1},
      {"the highest pressure", R"({"adcf": {"setPressure": 795, "defaultPressure": 522}})", 0, 0, 0},
      {"the highest temperature", R"({"adcf": {"setTemperature": 50, "defaultTemperature": 0}})", 0, 0, 0},
      {"the other reference temperature", R"({"adcf": {"referenceTemperature": 22}})", 0, 0, 0},
      {"the highest units", R"({"unit": {"doseUnit": 3, "doseRateUnit": 5, "temperatureUnit": 3,
                                         "pressureUnit": 6, "frameRate": 1200}})",
       0, 0, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    start(R"({"identifier": 303, "typeCode": 3, "dosimeter": )" + c.dosimeter + "}");
    instrument->ChangeAllsettings();
    EXPECT_EQ(calls("MBSetADCF("), c.adcfWrites);
    EXPECT_EQ(calls("MBSetDosimeterMode("), c.modeWrites);
    EXPECT_EQ(calls("MBSetDosimeterUnit("), c.unitWrites);
  }
  start(
      R"({"identifier": 303, "typeCode": 3, "dosimeter": {"adcf": {"setPressure": 800, "referenceTemperature": 21,
                                                                       "setTemperature": 30}}})");
  instrument->ChangeAllsettings();
  const AdcfSettings adcf = simulator->detector(303).adcf;
  EXPECT_FLOAT_EQ(adcf.setPressure, 522);
  EXPECT_FLOAT_EQ(adcf.setTemperature, 20) << "the reference temperature's check repairs the set temperature";
  EXPECT_FLOAT_EQ(adcf.referenceTemperature, 21);

  start(
      R"({"identifier": 303, "typeCode": 3, "dosimeter": {"unit": {"temperatureUnit": 4, "pressureUnit": 0}}})");
  instrument->ChangeAllsettings();
  EXPECT_EQ(simulator->detector(303).dosimeterUnit.temperatureUnit, 1);
  EXPECT_EQ(simulator->detector(303).dosimeterUnit.pressureUnit, 2);
}

}  // namespace
}  // namespace rx9400
