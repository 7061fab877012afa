// The query class against the simulator: scanning, counting, connecting, the boxes the user sees, the
// battery update and the calibration report. Dialogs are scripted views driving the real presenters.
#include <gtest/gtest.h>

#include <string>

#include "fakes/PlatformFakes.h"
#include "fakes/SimulatorFakes.h"
#include "session/QuerySession.h"

namespace rx9400 {
namespace {

using testing::ScriptedConnectView;
using testing::Simulator;
using testing::TestPlatform;

/// A scenario with the given detectors (JSON objects) and scan.
std::string scenario(const std::string& detectors, const std::string& scan = R"({"pollsUntilComplete": 3})",
                     const std::string& faults = "{}") {
  return R"({"scan": )" + scan + R"(, "faults": )" + faults + R"(, "detectors": [)" + detectors + "]}";
}

const std::string kAio = R"({"identifier": 101, "typeCode": 1, "serialNumber": 1201})";
const std::string kDose = R"({"identifier": 303, "typeCode": 3, "serialNumber": 1305})";

class Session : public ::testing::Test {
 protected:
  /// A fresh platform and library with the scenario, and the query class registered.
  void start(const std::string& scenarioJson = {}) {
    platform = TestPlatform();
    simulator = std::make_unique<Simulator>(scenarioJson);
    context = std::make_unique<PluginContext>(MBdllFunctions::forLibraryAt(RX9400_SIMULATOR_PATH),
                                              platform.services());
    session = std::make_unique<QuerySession>(*context);
    session->RegisterApp();
  }
  int calls(const std::string& prefix) const { return simulator->callsStartingWith(prefix); }
  /// Scans; in the connect dialog the user ticks these kinds and presses Connect.
  void connect(const std::vector<std::string>& kinds) {
    platform.dialogs.connect->scripts.push_back([kinds](ConnectDialog& dialog, ScriptedConnectView& view) {
      view.tickKinds(kinds);
      dialog.connectClicked();
    });
    session->ScanAndConnectToDetector();
  }

  TestPlatform platform;
  std::unique_ptr<Simulator> simulator;
  std::unique_ptr<PluginContext> context;
  std::unique_ptr<QuerySession> session;
};

TEST_F(Session, ADosimeterOnlyScanCountsZeroZeroOneZeroZeroAndListsOnlyTheDosimeter) {
  start(scenario(kDose));
  EXPECT_EQ(session->scanAndCount(), "0,0,1,0,0");
  EXPECT_FALSE(session->resetFlag());
  std::vector<std::string> counts = simulator->calls(), asked;
  for (const int code : {1, 3, 2, 5, 4})
    asked.push_back("MBGetNumberOfDetectors(" + std::to_string(code) + ")");
  EXPECT_EQ(std::vector(counts.end() - 5, counts.end()), asked) << "the kinds in this order";

  session->ScanAndConnectToDetector();
  EXPECT_EQ(platform.dialogs.connect->showings, 1);
  EXPECT_EQ(calls("MBGetDetectorInfoOfType("), 1);
  EXPECT_EQ(calls("MBGetDetectorInfoOfType(3, "), 1);
  ASSERT_EQ(platform.dialogs.connect->rows.size(), 1u);
  EXPECT_EQ(platform.dialogs.connect->rows[0].kind, "DOSE");
  EXPECT_EQ(platform.dialogs.connect->rows[0].serialNumber, "1305");

  start(scenario(kAio + "," + R"({"identifier": 102, "typeCode": 1})"));
  session->ScanAndConnectToDetector();
  EXPECT_EQ(platform.dialogs.connect->showings, 1) << "all-in-one detectors alone are listed too";
  EXPECT_EQ(platform.dialogs.connect->rows.size(), 2u);
  EXPECT_TRUE(platform.boxes.shown.empty());
}

TEST_F(Session, TheScanDialogStartsTheScanOnceAndPollsWhileTheLibraryAnswersOne) {
  start(scenario(kAio, R"({"pollsUntilComplete": 3})"));
  session->scanAndCount();
  const auto* scan = platform.dialogs.scan.get();
  EXPECT_EQ(calls("MBScanForDetectors("), 1);
  EXPECT_EQ(calls("MBGetScanCompleteStatus("), 4) << "three answers of 1, then done";
  EXPECT_EQ(scan->ticks, 4);
  EXPECT_EQ(scan->intervals, (std::vector<int>{1, 200}));
  EXPECT_TRUE(scan->hidden());
  EXPECT_EQ(scan->title(), "Scanning...");
  EXPECT_EQ(scan->shownCaptions(), (std::vector<std::string>{"Scanning...", "Stop"}));
  EXPECT_GE(platform.pump.pumps, 5) << "once per tick and once after the dialog closed";

  platform.dialogs.scan->setTitle("22413::Scanning...");
  platform.dialogs.scan->captionsFail = true;
  session->scanAndCount();
  EXPECT_EQ(scan->title(), "Scanning...") << "the title comes first, whatever the captions do";

  start(scenario(kAio, R"({"pollsUntilComplete": 0, "completeStatus": 0})"));
  EXPECT_EQ(session->scanAndCount(), "1,0,0,0,0");
  EXPECT_EQ(platform.dialogs.scan->ticks, 1) << "first poll not 1: one tick";
}

TEST_F(Session, StopInTheScanAndCancelInTheConnectDialogStopTheLibraryAndConnectNothing) {
  for (const bool stop : {true, false}) {
    SCOPED_TRACE(stop ? "Stop" : "Cancel");
    start(scenario(kAio, stop ? R"({"pollsUntilComplete": 50})" : R"({"pollsUntilComplete": 3})"));
    context->state.resetDetectors();
    platform.dialogs.scan->stopAfterTicks = stop ? 2 : -1;
    platform.dialogs.connect->scripts.push_back(
        [](ConnectDialog& dialog, ScriptedConnectView&) { dialog.cancelClicked(); });
    session->ScanAndConnectToDetector();
    EXPECT_EQ(session->resetFlag(), stop);
    EXPECT_EQ(calls("MBStopScanningAndReset("), 1);
    EXPECT_EQ(calls("MBGetNumberOfDetectors("), stop ? 0 : 5);
    EXPECT_EQ(calls("MBConnectToDetectors("), 0);
    EXPECT_EQ(platform.dialogs.connect->showings, stop ? 0 : 1);
    EXPECT_TRUE(platform.boxes.shown.empty());
    EXPECT_EQ(context->state.slotCount(), 1u);
    EXPECT_FALSE(session->IsDetectorConnected());
  }
}

TEST_F(Session, NoDetectorFoundSaysSoWithIndentedSuggestions) {
  start(scenario(R"({"identifier": 101, "typeCode": 1, "found": false})"));
  session->ScanAndConnectToDetector();
  EXPECT_EQ(platform.dialogs.connect->showings, 0);
  ASSERT_EQ(platform.boxes.shown.size(), 1u);
  EXPECT_EQ(
      platform.boxes.shown[0].text,
      "No Detector Found\n     1) Please turn on the detector.\n     2) Bring the detector within range.");
  EXPECT_EQ(std::tuple(platform.boxes.shown[0].caption, platform.boxes.shown[0].style),
            std::tuple(std::string("No Detector Found"), kBoxCritical));
}

TEST_F(Session, ConnectingFillsTheTableKindByKindBeepsTwiceAndUpdatesTheBattery) {
  start();  // the default scenario: an all-in-one detector with mAs meter and a dosimeter
  connect({"DOSE", "AIO+MAS"});

  ASSERT_EQ(context->state.slotCount(), 2u);
  EXPECT_EQ(context->state.kindAt(0), 4) << "all-in-one detectors come first";
  EXPECT_EQ(context->state.kindAt(1), 3);
  EXPECT_EQ(context->state.alerts.size(), 2u);
  EXPECT_TRUE(platform.dialogs.connect->hidden());
  EXPECT_EQ(platform.sound.calls, (std::vector<std::string>{"beep 2500 200", "sleep 100", "beep 2500 200"}));
  EXPECT_EQ(calls("MBConnectToDetectors("), 1);
  const std::string aio = std::to_string(context->state.identifierAt(0));
  const std::string dose = std::to_string(context->state.identifierAt(1));
  EXPECT_TRUE(platform.trace.contains("$SaveNConnectToDetectors$ - AIO Detector :: " + aio));
  EXPECT_TRUE(platform.trace.contains("$SaveNConnectToDetectors$ - DOSE Detector :: " + dose));
  // The last slot decides the shared battery state.
  EXPECT_TRUE(platform.trace.contains("$UpdateBatteryStatus$ - Battery Charge status" + dose +
                                      "::" + std::to_string(context->state.chargePercent)));
  EXPECT_EQ(context->state.chargePercent,
            simulator->library().MBGetBatteryStatus(std::stoi(dose)).chargePercent);
  EXPECT_TRUE(session->IsDetectorConnected());
  ASSERT_EQ(platform.boxes.shown.size(), 1u) << "detectors in date: only the invalid target/filter";
  EXPECT_TRUE(platform.boxes.shown[0].text.ends_with("\n     Target/Filter: Rh/Rh Invalid"));
}

TEST_F(Session, ConnectRefusalsKeepTheDialogOpenAndConnectNothing) {
  const std::string plugIn = "Tamsa RX9400 Plug-In Response", selfTestError = "Self Test Error",
                    selfTest = "RX 9400WD mAs  detector self test failed. Please select different detector.",
                    failedSelfTest = scenario(R"({"identifier": 101, "typeCode": 4, "selfTestResult": 1})"),
                    aio = scenario(kAio),
                    refusing = scenario(kAio, R"({"pollsUntilComplete": 1})", R"({"connectFails": true})");
  const struct {
    std::string scenarioJson;
    std::int32_t requestedType;
    std::vector<std::string> kinds;
    std::string text, caption;
  } cases[] = {
      {aio, 0, {}, "No detector selected, please select a detector to proceed.", "Select Detector"},
      {aio, 3, {"AIO"}, "The selected detector does not support Kalmet.", plugIn},
      {scenario(kDose), 1, {"DOSE"}, "The selected detector does not support RX9400.", plugIn},
      {failedSelfTest, 0, {"AIO+MAS"}, selfTest, selfTestError},
      {failedSelfTest, 2, {"AIO+MAS"}, selfTest, selfTestError},  // an mAs meter asked for
      {refusing, 0, {"AIO"}, "Unable to connect the detector. Please try again.", "Connection Error"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text + " " + std::to_string(c.requestedType));
    start(c.scenarioJson);
    context->state.resetDetectors();
    session->SendDetectorType(c.requestedType);
    connect(c.kinds);
    ASSERT_EQ(platform.boxes.shown.size(), 1u);
    EXPECT_EQ(platform.boxes.shown[0].caption + ": " + platform.boxes.shown[0].text,
              c.caption + ": " + c.text);
    EXPECT_FALSE(platform.dialogs.connect->hidden()) << "the dialog stays open for another choice";
    EXPECT_EQ(context->state.identifierAt(0), 0);
    EXPECT_TRUE(platform.sound.calls.empty());
  }
}

TEST_F(Session, ConnectingTakesTheChargingFlagOrTheChargeFromTheBattery) {
  for (const bool charging : {false, true}) {
    const std::string battery = charging ? R"({"percent": 55, "charging": 1})" : R"({"percent": 55})";
    start(scenario(R"({"identifier": 101, "typeCode": 1, "battery": )" + battery + "}"));
    connect({"AIO"});
    EXPECT_EQ(context->state.charging, charging);
    EXPECT_EQ(context->state.chargePercent, charging ? 0 : 55) << "a charging battery reports no charge";
  }
}

TEST_F(Session, TheChosenRowShowsDatesAndVersionsAndAnEmptyChoiceShowsNone) {
  start(scenario(R"({"identifier": 101, "typeCode": 1, "serialNumber": 1201, "calibrationDate": "2025-06-12",
                     "calibrationDueDate": "2027-06-12", "firmwareVersion": [2, 14], "bootloaderVersion": [1, 3],
                     "boardVersion": [3, 1], "radioVersion": [1, 2]})"));
  platform.dialogs.connect->scripts.push_back([](ConnectDialog& dialog, ScriptedConnectView& view) {
    const DetectorDetails& d = view.details;
    EXPECT_EQ(d.serialNumber + "|" + d.calibrationDate + "|" + d.calibrationDueDate + "|" +
                  d.softwareVersion + "|" + d.hardwareVersion,
              "1201|Cal Date: 12/06/2025|Cal Due Date: 12/06/2027|SW Version: 2.14-1.3|HW Version: 3.1-1.2");
    dialog.rowSelected(-1);
    EXPECT_EQ(view.details.serialNumber + "|" + view.details.calibrationDate, "None|Cal Date: None");
  });
  session->ScanAndConnectToDetector();
  EXPECT_EQ(platform.dialogs.connect->title(), "Establish Connection");
  EXPECT_EQ(platform.dialogs.connect->radio, (std::vector<int>{1, 1}));
}

TEST(CalibrationDates, FebruaryPastThe28thIsJudgedByTheFirstOfMarchOfTheNextYear) {
  const struct {
    CalDate calibration;
    CalDate due;
    CalendarDate used;
  } cases[] = {
      {{29, 2, 2024}, {28, 2, 2025}, {2025, 3, 1}},  {{15, 2, 2024}, {29, 2, 2028}, {2025, 3, 1}},
      {{28, 2, 2025}, {28, 2, 2026}, {2026, 2, 28}}, {{12, 6, 2025}, {12, 6, 2027}, {2027, 6, 12}},
      {{30, 1, 2025}, {2, 2, 2026}, {2026, 3, 1}},  // the rule as it stands: either date, either day
  };
  for (const auto& c : cases) EXPECT_EQ(effectiveDueDate(c.calibration, c.due), c.used);
  EXPECT_EQ(daysBetween({2025, 3, 1}, {2025, 3, 1}), 0);
  EXPECT_EQ(daysBetween({2025, 3, 2}, {2025, 3, 1}), -1);
  EXPECT_EQ(daysBetween({2024, 2, 28}, {2024, 3, 1}), 2);
  EXPECT_EQ(daysBetween({2025, 12, 31}, {2026, 1, 1}), 1);
}

TEST_F(Session, TheCalibrationReportNamesOverdueDetectorsAndInvalidTargetFilters) {
  const std::string filters = "Target/Filter: Rh/Rh Invalid\n", last = "Target/Filter: Mo/Al Invalid";
  // The picker, left on 28 February 2025 by the connect dialog, refuses the 29th: the report's own text.
  const std::string dates = "Calibration Date: 29/2/2024\n", due = "Calibration Due Date: 28/02/2025\n";
  const std::string in5(5, ' '), in18(18, ' '), in21(21, ' ');
  const std::string inDate = "RX 9400WD \n   " + dates + "   " + due + in5 + filters + in5 + last;
  const std::string overdue =
      "RX 9400WD detector calibration over due.\n" + in18 + dates + in18 + due + in21 + filters + in21 + last;
  const struct {
    const char* name;
    bool invalidFilters;
    CalendarDate today;
    CalDate calibration;
    std::string text;  ///< empty: no box
  } cases[] = {
      {"in date: February's rule gives until 1 March", true, {2025, 3, 1}, {29, 2, 2024}, inDate},
      {"overdue", true, {2025, 3, 2}, {29, 2, 2024}, overdue},
      {"in date, filters valid", false, {2025, 3, 1}, {29, 2, 2024}, ""},
      {"no calendar date, filters valid", false, {2030, 1, 1}, {0, 0, 0}, ""},
      {"31 April", true, {2030, 1, 1}, {31, 4, 2024}, "RX 9400WD \n     " + filters + "     " + last},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    start(scenario(std::string(R"({"identifier": 101, "typeCode": 1, "calibrationDate": "2024-02-29",
                     "calibrationDueDate": "2025-02-28", "targetFilters": {"valid": ["W/Al"], "default": "W/Al",
                     "invalid": )") +
                   (c.invalidFilters ? R"(["Rh/Rh", "Mo/Al"]}})" : "[]}}")));
    platform.datePicker.now = {2000, 1, 1};
    connect({"AIO"});
    platform.boxes.shown.clear();
    platform.trace.lines.clear();
    platform.datePicker.now = c.today;
    context->state.detectors[0].calibrationDate = c.calibration;
    session->reportCalibration();
    EXPECT_EQ(platform.boxes.shown.empty() ? "" : platform.boxes.shown[0].text, c.text);
    EXPECT_TRUE(platform.boxes.shown.empty() || platform.boxes.shown[0].caption == "Calibration Error");
    EXPECT_EQ(platform.trace.contains("$CalibrationReport$ - Calibration dates not valid :: 101"),
              c.calibration.month == 0 || c.calibration.month == 4);
  }
}

TEST_F(Session, TheLastSlotDecidesWhetherADetectorIsConnected) {
  start();
  connect({"AIO+MAS", "DOSE"});
  ASSERT_TRUE(session->IsDetectorConnected());
  const std::int32_t second = context->state.detectors[1].identifier;
  context->state.detectors[1].identifier = 9999;  // a detector the library has never connected
  EXPECT_FALSE(session->IsDetectorConnected());
  context->state.detectors[1].identifier = second;
  context->state.detectors[0].identifier = 9999;
  EXPECT_TRUE(session->IsDetectorConnected()) << "earlier slots do not count";
  context->state.removeDetector(1);
  EXPECT_FALSE(session->IsDetectorConnected()) << "an empty last slot";
  session->ResetTheDetectors();
  EXPECT_TRUE(session->resetFlag());
  EXPECT_FALSE(session->IsDetectorConnected());
}

TEST(SessionWithoutLibrary, EveryMemberReturnsItsDefault) {
  TestPlatform platform;
  PluginContext context(MBdllFunctions::forLibraryAt("/nonexistent/libTamsaMBDll.so"), platform.services());
  QuerySession session(context);
  session.RegisterApp();
  session.ScanAndConnectToDetector();
  EXPECT_FALSE(session.IsDetectorConnected());
  context.state.setConnectedDetectors({DetectorInfo{}, DetectorInfo{}}, {1, 3});
  session.ResetTheDetectors();
  EXPECT_EQ(context.state.slotCount(), 1u) << "the lists are emptied all the same";
  session.CloseApp();
  EXPECT_EQ(platform.dialogs.scan->ticks, 1) << "the scan dialog closes at once";
  EXPECT_TRUE(platform.boxes.shown.empty()) << "traced, not reported";
  EXPECT_TRUE(platform.trace.contains("$ScanAndConnectToDetector$ - Error :: "));
}

}  // namespace
}  // namespace rx9400
