// The instrument's dosimeter configuration against the simulator: slot rules, the chamber file, the
// chosen chamber's texts and the comparison of settings.
#include <gtest/gtest.h>

#include "fakes/InstrumentFakes.h"
#include "ionchamber/ChamberFile.h"

namespace rx9400 {
namespace {

using testing::InstrumentRig;
using Texts = std::vector<std::string>;

const std::string kChambers = R"("dosimeter": {"chambers": [
    {"name": "IC-A 6cc", "calFactors": [{"name": "RQR5", "unit": 3, "constant": 1.2345e9},
                                        {"name": "RQR9", "unit": 0, "constant": 2e-5}]},
    {"name": "IC-B", "calFactors": [{"name": "N60", "unit": 4, "constant": 1}]}],
    "selection": {"chamber": 1, "calFactor": 2}})";

std::string detector(int id, int type, const std::string& more = "") {
  return R"({"identifier": )" + std::to_string(id) + R"(, "typeCode": )" + std::to_string(type) +
         (more.empty() ? "" : ", " + more) + "}";
}

TEST(DosimeterConfiguration, SlotRulesForTypeNameAndMasInput) {
  const std::pair<std::vector<std::int32_t>, std::string> cases[] = {
      {{3}, "3"}, {{1, 2}, "4"}, {{2, 1}, "4"}, {{3, 2}, "5"}, {{2, 3}, "5"}, {{1, 1}, ""}, {{5, 2, 1}, ""}};
  InstrumentRig rig;
  rig.start("", "RADIO", false);
  for (const auto& [kinds, type] : cases) {
    rig.context->state.setConnectedDetectors(std::vector<DetectorInfo>(kinds.size()), kinds);
    EXPECT_EQ(rig.instrument->GetDetectorType(), type) << kinds.size() << ": " << kinds[0];
  }
  // The rig connects detectors in the order of their type codes: slots 101 (1), 102 (2), 103 (5).
  rig.start(detector(103, 5) + "," + detector(101, 1) + "," + detector(102, 2), "RADIO", false);
  EXPECT_EQ(rig.instrument->pDetectorName(0), "RX 9400WD ");
  EXPECT_EQ(rig.instrument->pDetectorName(2), "Kalmet mAs ");
  EXPECT_EQ(rig.instrument->pDetectorName(3), "");
  rig.instrument->SetMasInputtype(true);
  rig.instrument->SetMasInputtype(false);
  // False names the first slot's detector each time, an mAs meter or not.
  EXPECT_EQ(rig.callsOf("MBSetmAsInput"), (Texts{"MBSetmAsInput(102, 1)", "MBSetmAsInput(103, 1)",
                                                 "MBSetmAsInput(101, 2)", "MBSetmAsInput(101, 2)"}));
}

TEST(DosimeterConfiguration, TheChamberFileFillsTheTableAndTheChosenChamberNamesItsTexts) {
  InstrumentRig rig;
  rig.start(detector(303, 3, kChambers), "RADIO", false);
  EXPECT_EQ(rig.instrument->GetIonChamberInfo(), 2);
  EXPECT_EQ(rig.callsOf("MB"),
            (Texts{"MBPauseUpdateThread()", "MBGetChamberFileInfo(303)", "MBResumeUpdateThread()",
                   "MBGetIonChamberCalFactor(303, *)", "MBSetIonChamberCalFactor(303, 1, 2)"}));
  EXPECT_EQ(rig.context->state.ionChambers.selectedChamberName, "IC-A 6cc");
  EXPECT_EQ(rig.instrument->GetIonChamberName(), "IC-A 6cc");
  EXPECT_EQ(rig.instrument->GetCalFactor(), "RQR9");
  EXPECT_EQ(rig.instrument->GetCalConst(), "2E-05 R/C") << "unit code 0 shows the R/C text";
  IonChamberTable& table = rig.context->state.ionChambers;
  const char* const units[] = {" R/C", " R/C", " R/nC", " Gy/C", " Gy/nC", " R/C"};  // by unit code
  for (int code = 0; code <= 5; ++code) {
    table.records[0].calFactors[1].unitCode = code;
    EXPECT_EQ(rig.instrument->GetCalConst(), std::string("2E-05") + units[code]);
  }
  table.selectedCalFactor = 3;
  EXPECT_EQ(rig.instrument->GetCalFactor(), "") << "no cal factor in that slot";
  EXPECT_EQ(std::get<ScriptList>(rig.instrument->GetIonChambers()).texts, (Texts{"IC-A 6cc", "IC-B"}));

  const struct {
    std::string faults, text, caption;
  } failures[] = {{R"({"sectionMissing": true})", "Error in reading chamber information.", "Read Error"},
                  {R"({"chamberFileMissing": true})", "No data points found to read.", "No Data"}};
  for (const auto& f : failures) {
    InstrumentRig failing;
    failing.start(detector(304, 3, kChambers + R"(, "faults": )" + f.faults), "RADIO", false);
    EXPECT_EQ(failing.instrument->GetIonChamberInfo(), 0);
    ASSERT_EQ(failing.platform.boxes.shown.size(), 1u);
    const auto& box = failing.platform.boxes.shown[0];
    EXPECT_EQ(std::tuple(box.text, box.caption, box.style), std::tuple(f.text, f.caption, kBoxCritical));
    EXPECT_EQ(failing.calls("MBPauseUpdateThread"), failing.calls("MBResumeUpdateThread"));
  }
}

TEST(DosimeterConfiguration, ConfiguringSendsTheSettingsAndOffersTheSetupDialogWithoutAChamber) {
  const struct {
    std::string dosimeter;
    int boxes;  ///< the notice, and the setup dialog after it
    Texts chosen;
  } cases[] = {{kChambers, 0, {"IC-A 6cc", "RQR9"}}, {R"("dosimeter": {})", 1, {"No Ion Chamber", ""}}};
  for (const auto& c : cases) {
    InstrumentRig rig;
    rig.start(detector(303, 3, c.dosimeter), "RADIO", false);
    const AutomationValue result = rig.instrument->CongiureDoseDetector();
    EXPECT_EQ(std::get<ScriptList>(result).texts, c.chosen);
    EXPECT_EQ(rig.calls("MBSetADCF(303"), 1);
    EXPECT_EQ(rig.calls("MBSetDosimeterUnit(303"), 1);
    EXPECT_EQ(rig.platform.dialogs.setup->showings, c.boxes);
    ASSERT_EQ(static_cast<int>(rig.platform.boxes.shown.size()), c.boxes);
    for (const auto& box : rig.platform.boxes.shown)
      EXPECT_EQ(box.caption + ": " + box.text,
                "IC Notification: No Ion Chambers are selected / configured in this detector.\nClick OK to "
                "add Ion Chamber details.");
  }
}

TEST(ChamberFile, KeepsWhatParsesAndNamesWhatItDropped) {
  const std::string good = "1\t7\tIC\t1\t3\tCF\t2\t1.5E-03\t";
  const struct {
    std::string bytes;
    std::vector<std::pair<int, int>> chambers;  // number and cal factor count of each kept chamber
    std::size_t problems;
  } cases[] = {
      {good, {{7, 1}}, 0},
      {good.substr(0, good.size() - 1), {{7, 1}}, 0},                       // no TAB after the last field
      {std::string("1\t7\tIC\t1\t3\tCF\t2\t1.5\0\t9\t", 17), {{7, 1}}, 0},  // the text ends at its zero byte
      {"", {}, 1},
      {"x\t", {}, 1},                                            // read as 0 chambers, in part
      {"2\t7\tIC\t0\t", {{7, 0}}, 1},                            // fewer chambers than counted
      {"1\t7\tIC\t2\t3\tCF\t2\t1.5\t", {{7, 1}}, 1},             // the file ends inside a chamber
      {"1\t7\tIC\t1\t3\tCF\t2\tabc\t", {{7, 1}}, 1},             // a constant without digits reads as 0
      {"1\t7\tIC\t1\t3\tCF\t2\t1e99\t", {{7, 0}}, 1},            // beyond a Single
      {"1\t7\tIC\t1\t3\tCF\t2\t1e999\t", {{7, 0}}, 1},           // beyond a Double
      {"1\t0\tIC\t0\t", {}, 1},                                  // no chamber number
      {"1\t7\tIC\tx\t", {{7, 0}}, 1},                            // no cal factor count
      {"+1\t 7.0\tIC\t1,0 \t3\tCF\t2\t1,5E-03\t", {{7, 1}}, 0},  // numbers as the platform reads them
      {"1\t7\tIC\t1\t3x\tCF\t2\t1.5 mGy\t", {{7, 1}}, 2},        // read up to what is no number
      {"1\t7\tABCDEFGHIJKLMNOPQ\t0\t", {{7, 0}}, 1},             // a name longer than 15 bytes
      {"1\t7\tI\x01\xE9\t0\t", {{7, 0}}, 1},                     // bytes outside ASCII
      {"1\t7\tI\x7F\t0\t", {{7, 0}}, 1},                         // DEL is no name byte
      {"1\t7\tIC\t0\textra\t", {{7, 0}}, 1},                     // fields after the last chamber
  };
  for (const auto& c : cases) {
    const ChamberFile file = readChamberFile(c.bytes);
    std::vector<std::pair<int, int>> kept;
    for (const IonChamber& chamber : file.chambers) kept.emplace_back(chamber.number, chamber.calFactorCount);
    EXPECT_EQ(kept, c.chambers) << c.bytes;
    EXPECT_EQ(file.problems.size(), c.problems) << c.bytes;
  }
  std::string many = "12\t";
  for (int c = 1; c <= 12; ++c) {
    many += std::to_string(c) + "\tIC\t11\t";
    for (int f = 1; f <= 11; ++f) many += std::to_string(f) + "\tCF\t1\t1\t";
  }
  const ChamberFile file = readChamberFile(many);
  EXPECT_EQ(file.chambers.size(), kMaxChambersRead);
  EXPECT_EQ(file.chambers.back().calFactorCount, kMaxCalFactors);
  EXPECT_EQ(file.problems.size(), 12u + 2u) << "one cal factor too many per chamber, two chambers too many";
  EXPECT_EQ(nameOf(readChamberFile("1\t7\tI\x01\xE9\t0\t").chambers[0]), "I??");
  const CalFactor read = readChamberFile("1\t7\tIC\t1\t3\tCF\t2\t-1,5E-03\t").chambers[0].calFactors[0];
  EXPECT_EQ(std::tuple(read.number, read.unitCode, read.calConstant),
            std::tuple(std::int16_t{3}, 2, -1.5E-3F));
}

TEST(DosimeterConfiguration, ComparedSettingsAreKeptOrWrittenAsTheUserChooses) {
  // The simulator's dosimeter defaults: ADCF {1, 0, 0, 760, 760, 22, 22, 20}, mode {2, 1},
  // unit {1, 1, 1, 2, 0}, offset {0, 0}.
  const CompareData stored{1, 0, 0, 22.0F, 760.0F, 20, 2, 1, 1, 1, 0, 1, 2, 0.0F, 0.0F};
  CompareData wanted = stored;
  wanted.rSetTemperature = 22.5F;
  wanted.lDoseUnit = 2;
  const CompareData every{2, 1, 1, 25.5F, 700.0F, 22, 3, 0, 2, 4, 30, 3, 4, 1.5F, -0.5F};
  const std::vector<std::string> everyWrite{"MBSetADCF", "MBSetDosimeterMode", "MBSetDosimeterUnit",
                                            "MBSetTempPressureOffset"};
  const struct {
    CompareData values;
    int answer;
    bool differ;
    std::vector<std::string> writes;
    CompareData after;
  } cases[] = {
      {stored, kAnswerOk, false, {}, stored},
      {wanted, kAnswerOk, true, {"MBSetADCF", "MBSetDosimeterUnit"}, wanted},
      {wanted, kAnswerCancel, true, {}, stored},
      {every, kAnswerOk, true, everyWrite, every},
  };
  for (const auto& c : cases) {
    InstrumentRig rig;
    rig.start(detector(303, 3), "RADIO", false);
    rig.platform.boxes.answers = {c.answer};
    CompareData values = c.values;
    EXPECT_EQ(rig.instrument->SendCompareData(values), c.differ);
    EXPECT_EQ(rig.platform.boxes.shown.size(), c.differ ? 1u : 0u);
    std::vector<std::string> writes;
    for (const std::string& call : rig.callsOf("MBSet")) writes.push_back(call.substr(0, call.find('(')));
    EXPECT_EQ(writes, c.writes);
    EXPECT_TRUE(values == c.after) << "the by-reference values";
    // What the dosimeter holds.
    const SimDetectorState held = rig.simulator->detector(303);
    const auto& [adcf, mode, unit, offset] =
        std::tie(held.adcf, held.dosimeterMode, held.dosimeterUnit, held.tempPressureOffset);
    EXPECT_TRUE(
        (CompareData{adcf.mode, adcf.useSetTemperature, adcf.useSetPressure, adcf.setTemperature,
                     adcf.setPressure, static_cast<std::int32_t>(adcf.referenceTemperature), mode.mode,
                     mode.autoReset, unit.doseUnit, unit.doseRateUnit, unit.frameRate, unit.temperatureUnit,
                     unit.pressureUnit, offset.pressureOffset, offset.temperatureOffset}) == c.after);
  }
}

}  // namespace
}  // namespace rx9400
