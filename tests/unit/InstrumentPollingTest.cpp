// Exposure polling against the simulator: the events and texts of each kind of detector, the waveform
// announcements, the notices, the activity it stamps and the flags an exposure leaves.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "fakes/InstrumentFakes.h"

namespace rx9400 {
namespace {

using testing::RecordingEvents;

/// A detector of the scenario, JSON.
std::string detector(int id, int type, const std::string& more = "") {
  return R"({"identifier": )" + std::to_string(id) + R"(, "typeCode": )" + std::to_string(type) +
         R"(, "serialNumber": )" + std::to_string(1200 + id) + (more.empty() ? "" : ", " + more) + "}";
}

std::string joined(const std::vector<std::string>& texts) {
  std::string text;
  for (std::size_t i = 0; i < texts.size(); ++i) text += (i > 0 ? "|" : "") + texts[i];
  return text;
}

/// A detector of `kind` with one exposure of each of its parts; `mas` is the mAs meter's exposure.
std::string exposing(int id, int kind, const std::string& mas = "{}") {
  const std::string aioOrDose = kind == 2 ? "" : R"("exposures": [{}])";
  const std::string masPart = kind == 1 || kind == 3 ? "" : R"("mas": {"exposures": [)" + mas + "]}";
  return detector(id, kind, aioOrDose + (aioOrDose.empty() || masPart.empty() ? "" : ", ") + masPart);
}

int count(const std::vector<std::string>& lines, const std::string& line) {
  return static_cast<int>(std::count(lines.begin(), lines.end(), line));
}

class Polling : public ::testing::Test, protected testing::InstrumentRig {
 protected:
  /// Connects the detectors of the scenario, in scenario order, and arms them.
  void start(const std::string& detectors) {
    events = RecordingEvents();
    InstrumentRig::start(detectors, "RADIO", false);
    instrument->pDoseUnits(1);
  }
  /// Polls until a pass returns True (at most `passes`); answers the number of passes, 0 when none did.
  int pollUntilFinished(int passes = 30) {
    for (int pass = 1; pass <= passes; ++pass) {
      if (instrument->CheckDataStatus()) return pass;
    }
    return 0;
  }
};

TEST_F(Polling, ASingleAllInOneExposureRaisesItsDataAndItsWaveformInOnePass) {
  start(detector(101, 1, R"("exposures": [{"kind": "radio"}])"));
  ASSERT_GT(pollUntilFinished(), 0);
  EXPECT_EQ(events.events,
            (std::vector<std::string>{"EnableStopButton False", "DataReady", "EnableStopButton False",
                                      "CheckExposureWaveform 1", "IncrementWaveCount"}));
  // The pass that finished the exposure clears its flags.
  EXPECT_FALSE(instrument->DetectorExposureFinish() || instrument->mAsExposureFinish());
  EXPECT_DOUBLE_EQ(instrument->pGetExposureTime(), 100);
  for (const std::string line :
       {"AIO Data ready :: 101", ":: 80.3 :: 81.2 :: 79.8 :: 1.234", "AIO waveform is initialized :: 101"})
    EXPECT_TRUE(platform.trace.contains("$CheckDataStatus$ - " + line)) << line;
  EXPECT_TRUE(platform.trace.contains(std::string(44, '-') + "One Exp Finished " + std::string(42, '-')));
  EXPECT_EQ(platform.sound.calls, (std::vector<std::string>{"beep 2500 200"}));
}

TEST_F(Polling, TextsFollowTheModeTheUnitsTheSeparatorAndEachValuesStatus) {
  const struct {
    const char* mode;
    int units;  ///< dose, rate and time unit codes and fluoroscopy type, one digit each
    const char* separator;
    std::string exposure;  ///< beside the kind (and for fluoroscopy one delivery)
    const char* texts;     ///< the ten texts of DataReady, joined with "|"
    double kvp;            ///< pGetExposurekVp afterwards
  } cases[] = {
      {"RADIO", 1111, ".", R"("kvpAverage": {"value": 1500, "status": 3})",
       "OL|81.2|79.8|1.234|5.678|100||||3.5", 0},
      {"RADIO", 1111, ".", R"("dose": {"value": 1234, "status": 2}, "kvpPpv": {"value": 798, "status": 5})",
       "80.3|81.2|UL|1.234*|5.678|100||||3.5", 80.3},
      {"RADIO", 1111, ".",
       R"("dose": {"value": 1234, "status": 4}, "doseRate": {"value": 5678, "status": 6})",
       "80.3|81.2|79.8|1.234*|5.678*|100||||3.5", 80.3},
      {"MAMMO", 1111, ".", R"("exposureTime": {"value": 1000, "status": 0})",
       "80.3|81.2|79.8|1.234|5.678|100||||0.35", 80.3},
      {"DENTAL", 2121, ".", R"("pulses": 12)", "80.3|81.2|79.8|12.34|56.78|100|12|||3.5", 80.3},
      {"RADIO", 1111, ",", R"("kvpAverage": 805)", "80,5|81,2|79,8|1,234|5,678|100||||3,5", 80.5},
      {"FLUORO", 1111, ".", R"("pulses": 12)", "80.3|81.2|79.8|0.001234|0.005678|100||||3.5", 80.3},
      {"FLUORO", 1211, ".", R"("doseRate": 1234)", "80.3|81.2|79.8|0.001234|0.07404|100||||3.5", 80.3},
      {"FLUORO", 1311, ".", R"("doseRate": 1234)", "80.3|81.2|79.8|0.001234|4.4424|100||||3.5", 80.3},
      {"FLUORO", 1411, ".", R"("doseRate": 1234)", "80.3|81.2|79.8|0.001234|1.234E-05|100||||3.5", 80.3},
      {"FLUORO", 2112, ",", R"("pulseRate": 150, "pulseWidth": 45)",
       "80,3|81,2|79,8|0,01234|0,05678|100||15|4,5|3,5", 80.3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.exposure);
    std::string kind = c.mode;
    for (char& letter : kind) letter = static_cast<char>(letter | 0x20);  // lower case
    start(detector(101, 1,
                   R"("exposures": [{"kind": ")" + kind +
                       (kind == "fluoro" ? R"(", "deliveries": 1, )" : R"(", )") + c.exposure + "}]"));
    platform.locale.separator = c.separator;
    instrument->pCurrentMode(c.mode);
    instrument->pDoseUnits(static_cast<std::uint8_t>(c.units / 1000));
    instrument->pDoseRateUnits(static_cast<std::uint8_t>(c.units / 100 % 10));
    instrument->pTimeUnit(static_cast<std::uint8_t>(c.units / 10 % 10));
    instrument->pFluoroType(static_cast<std::uint8_t>(c.units % 10));
    ASSERT_GT(pollUntilFinished(), 0);
    EXPECT_EQ(joined(events.dataReady), c.texts);
    EXPECT_DOUBLE_EQ(instrument->pGetExposurekVp(), c.kvp);
    EXPECT_DOUBLE_EQ(instrument->pGetExposureTime(), 100);
  }
}

TEST_F(Polling, TheMasMeterGivesDosePerMasOnlyBesideAValidDoseAndMas) {
  const struct {
    int kind;
    std::string mas;  ///< the mAs meter's exposure
    const char* separator;
    const char* texts;  ///< the four texts of TestmAsDataReady
  } cases[] = {
      {4, R"({"mA": 200, "mAs": 20})", ".", "200|20|1|0.0617"},
      {4, R"({"mAs": {"value": 20, "status": 4}})", ".", "200|20*|1|0.0617"},
      {4, R"({"mAs": {"value": 20, "status": 3}})", ".", "200|OL|1|"},
      {4, R"({"mAs": 0})", ".", "200|0|1|"},
      {4, R"({"mA": 150.5})", ",", "150,5|20|1|0,0617"},
      {5, R"({"mAs": 20})", ".", "200|20|1|0.125"},
      {2, R"({"mAs": 20})", ".", "200|20|1|"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mas);
    start(exposing(101, c.kind, c.mas));
    platform.locale.separator = c.separator;
    ASSERT_GT(pollUntilFinished(), 0);
    EXPECT_EQ(joined(events.testMas), c.texts);
  }
}

TEST_F(Polling, EachKindAloneAnnouncesItsOwnWaveforms) {
  const std::pair<int, std::vector<std::string>> cases[] = {
      {2, {"CheckExposureWaveform 3"}},
      {3, {}},
      {4, {"CheckExposureWaveform 1", "CheckExposureWaveform 3"}},
      {5, {"CheckExposureWaveform 3"}}};
  for (const auto& [kind, announced] : cases) {
    start(exposing(101, kind));
    ASSERT_GT(pollUntilFinished(), 0);
    EXPECT_EQ(count(events.events, "IncrementWaveCount"), static_cast<int>(announced.size())) << kind;
    std::erase_if(events.events,
                  [](const std::string& e) { return !e.starts_with("CheckExposureWaveform"); });
    EXPECT_EQ(events.events, announced) << kind;
  }
}

TEST_F(Polling, ZeroingIsAnnouncedAndWithdrawnOnce) {
  start(detector(201, 2, R"("mas": {"exposures": [{"zeroingReads": 3}]})"));
  ASSERT_GT(pollUntilFinished(), 0);
  EXPECT_EQ(count(events.events, "ZeroingmAs True"), 1);
  EXPECT_EQ(count(events.events, "ZeroingmAs False"), 1);
  EXPECT_LT(std::find(events.events.begin(), events.events.end(), "ZeroingmAs False"),
            std::find(events.events.begin(), events.events.end(), "TestmAsDataReady"));
}

TEST_F(Polling, BatteryWarningsComeOncePerEpisode) {
  start(detector(
      101, 1, R"("faults": {"veryLowBattery": {"fromPoll": 2, "polls": 3}, "lowBattery": {"fromPoll": 8}})"));
  for (int pass = 0; pass < 12; ++pass) instrument->CheckDataStatus();
  const auto& notices = platform.notices.boxes;
  ASSERT_EQ(notices.size(), 2u);
  EXPECT_EQ(notices[0]->caption, "Very Low Battery");
  EXPECT_EQ(notices[0]->heading, "Low battery detector : 101") << "the identifier, not the serial number";
  EXPECT_EQ(notices[0]->message, "Detector is shutting down in 2 minutes.");
  EXPECT_EQ(notices[0]->button1, "OK");
  EXPECT_TRUE(notices[0]->closed) << "a new notice replaces the one on screen";
  EXPECT_EQ(notices[1]->caption, "Low Battery");
  EXPECT_EQ(count(platform.sound.calls, "beep 2500 400"), 6);
}

TEST_F(Polling, TheBatteryRecordSetsTheChargingFlagAndThePercentage) {
  const struct {
    std::string more;
    bool charging;
    int percent;
  } cases[] = {
      {R"("battery": {"percent": 55})", false, 55},
      {R"("battery": {"percent": 55, "charging": 1})", true, 0},
      {R"("battery": {"percent": 55}, "faults": {"lowBattery": {"fromPoll": 1}})", false, 15},
      {R"("battery": {"percent": 55}, "faults": {"charging": {"fromPoll": 1, "polls": 2}})", false, 55},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.more);
    start(detector(101, 1, c.more));
    for (int pass = 0; pass < 4; ++pass) instrument->CheckDataStatus();
    EXPECT_EQ(instrument->pChargingStatus(), c.charging);
    EXPECT_EQ(instrument->pPercentageCharge(), c.percent);
  }
}

TEST_F(Polling, ALostLinkIsReportedOnceWithTheSerialNumber) {
  start(detector(101, 1, R"("faults": {"linkLossAfterCalls": 3})"));
  for (int pass = 0; pass < 6; ++pass) EXPECT_FALSE(instrument->CheckDataStatus());
  ASSERT_EQ(platform.notices.boxes.size(), 1u);
  auto& box = *platform.notices.boxes[0];
  EXPECT_EQ(
      box.caption + "|" + box.heading + "|" + box.message + "|" + box.button2,
      "Connection Lost|Connection lost with the detector : 1301|Please scan for detector and reestablish "
      "the connection.|");
  EXPECT_EQ(events.events, (std::vector<std::string>{"AddWakeUpButton False"}));
  EXPECT_FALSE(instrument->pMeasurementStatus());
  box.onButton1();
  EXPECT_TRUE(box.closed);
}

TEST_F(Polling, AZeroErrorAsksTheUserAndEndsThePass) {
  for (const auto& [answer, call] :
       {std::pair{testing::ScriptedZeroErrorView::Answer::Retry, std::string("MBEnableMeasurement(101)")},
        std::pair{testing::ScriptedZeroErrorView::Answer::Connect, std::string("MBSetPowerMode(101, 3)")}}) {
    platform.dialogs.zeroError->answer = answer;
    start(detector(101, 1, R"("faults": {"zeroError": true})"));
    EXPECT_FALSE(instrument->CheckDataStatus());
    const auto calls = simulator->calls();
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ(calls[1], "MBDisableMeasurement(101)");
    EXPECT_EQ(calls[2], call);
    EXPECT_EQ(platform.dialogs.zeroError->title() + "|" + platform.dialogs.zeroError->detectorLine,
              "Detector Zero Error|1301 RX 9400WD ");
  }
}

TEST_F(Polling, TheDosimeterReportsItsReadingsInItsOwnUnits) {
  const struct {
    int temperatureUnit, pressureUnit;
    const char* separator;
    const char* texts;  ///< the seven texts of TestSWDataReady
  } cases[] = {
      {1, 2, ".", "22.5|800|1.012|0.010|2.5|25|300.0"},   {2, 1, ".", "72.5|31.5|1.012|0.010|2.5|25|300.0"},
      {3, 3, ".", "295.7|1067|1.012|0.010|2.5|25|300.0"}, {1, 4, ".", "22.5|1067|1.012|0.010|2.5|25|300.0"},
      {1, 5, ".", "22.5|35.7|1.012|0.010|2.5|25|300.0"},  {1, 6, ".", "22.5|10.9|1.012|0.010|2.5|25|300.0"},
      {2, 2, ",", "72,5|800|1,012|0,010|2,5|25|300,0"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.temperatureUnit) + " " + std::to_string(c.pressureUnit));
    start(detector(301, 3,
                   R"("exposures": [{"dose": 2.5, "doseRate": 25}], "dosimeter": {"sensors": {
        "temperature": 22.5, "pressure": 800, "adcf": 1.0123, "biasVoltage": 300}, "unit": {"temperatureUnit": )" +
                       std::to_string(c.temperatureUnit) + R"(, "pressureUnit": )" +
                       std::to_string(c.pressureUnit) + "}}"));
    platform.locale.separator = c.separator;
    instrument->ChangeAllsettings();
    ASSERT_GT(pollUntilFinished(), 0);
    EXPECT_EQ(joined(events.testSw), c.texts);
  }
}

TEST_F(Polling, TheDosimetersErrorsAreRaisedOnceAndWithdrawnOnce) {
  const std::string bias = "Bias voltage error, please restart the system...";
  // The faults, each from the first poll for three polls, and the error text.
  const std::pair<std::string, std::string> cases[] = {
      {"temperatureError", "Temperature Sensor Error. "},
      {"pressureError", "Pressure Sensor Error. "},
      {"temperatureError pressureError", "Temperature / Pressure Sensor Error. "},
      {"temperatureError biasError", "Temperature Sensor Error. " + bias},
      {"biasError", bias},
      {"sensorReset", ""}};
  for (const auto& [names, message] : cases) {
    std::string faults, name;
    for (std::istringstream words(names); words >> name;)
      faults += (faults.empty() ? R"(")" : R"(, ")") + name + R"(": {"fromPoll": 1, "polls": 3})";
    start(detector(301, 3, R"("faults": {)" + faults + "}"));
    for (int pass = 0; pass < 8; ++pass) instrument->CheckDataStatus();
    const std::string on =
        message.empty() ? "DisplaySensorResetMsg True" : "DisplayErrorMsg " + message + " | Error | True";
    const std::string off =
        message.empty() ? "DisplaySensorResetMsg False" : "DisplayErrorMsg  | Error | False";
    EXPECT_EQ(events.events, (std::vector<std::string>{on, off})) << names;
  }
}

TEST_F(Polling, ActivityThatPollingSeesKeepsTheDetectorsAwake) {
  const struct {
    std::string detector;
    const char* marker;  ///< the event of the pass that stamps the activity
    int passesBefore;    ///< the stamp is that many passes before the marker's
  } cases[] = {
      {detector(101, 1, R"("exposures": [{"pollsBeforeData": 50}])"), "EnableStopButton False", 0},
      {detector(101, 1, R"("exposures": [{}])"), "DataReady", 0},
      {detector(201, 2, R"("mas": {"exposures": [{}]})"), "TestmAsDataReady", 0},
      {detector(201, 2, R"("mas": {"exposures": [{"zeroingReads": 3, "pollsBeforeStart": 50}]})"),
       "ZeroingmAs False", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.marker);
    start(c.detector);
    instrument->InitTimer();
    std::uint32_t stamp = 0;
    for (int pass = 0; pass < 10; ++pass) {
      platform.clock.now += 1000;
      const int before = count(events.events, c.marker);
      instrument->CheckDataStatus();
      if (stamp == 0 && count(events.events, c.marker) > before)
        stamp = platform.clock.now - 1000 * c.passesBefore;
    }
    ASSERT_NE(stamp, 0u);
    const std::int32_t idle = static_cast<std::int32_t>(platform.clock.now - stamp);
    const std::int32_t never = std::numeric_limits<std::int32_t>::max();
    instrument->CheckDetectorPowerStatus(idle + 1, never);
    EXPECT_EQ(calls("MBSetPowerMode"), 0) << "idle only since the activity";
    instrument->CheckDetectorPowerStatus(idle, never);
    EXPECT_EQ(calls("MBSetPowerMode"), 1);
  }
}

TEST_F(Polling, EnableMeasurementsArmsEveryConnectedSlot) {
  const struct {
    bool enable, firstRemoved;
    std::vector<std::string> calls;
  } cases[] = {
      {true, false, {"MBEnableMeasurement(101)", "MBEnableMeasurement(301)"}},
      {false, false, {"MBDisableMeasurement(101)", "MBDisableMeasurement(301)"}},
      {true, true, {"MBEnableMeasurement(301)"}},
  };
  for (const auto& c : cases) {
    start(detector(101, 1) + "," + detector(301, 3));
    if (c.firstRemoved) context->state.removeDetector(0);
    context->state.measurementEnabled = !c.enable;
    instrument->EnableMeasurements(c.enable);
    std::vector<std::string> made = callsOf("MBEnableMeasurement");
    for (const std::string& call : callsOf("MBDisableMeasurement")) made.push_back(call);
    EXPECT_EQ(made, c.calls);
    EXPECT_EQ(instrument->pMeasurementStatus(), c.enable);
  }
}

TEST_F(Polling, ResetTheFlagsClearsWhatAHalfFinishedExposureLeft) {
  for (const bool aioDone : {true, false}) {  // the other half waits
    const std::string done = "[{}]", waiting = R"([{"pollsBeforeStart": 50}])";
    start(detector(101, 4,
                   R"("exposures": )" + (aioDone ? done : waiting) + R"(, "mas": {"exposures": )" +
                       (aioDone ? waiting : done) + "}"));
    EXPECT_EQ(pollUntilFinished(8), 0);
    EXPECT_EQ(instrument->DetectorExposureFinish(), aioDone);
    EXPECT_EQ(instrument->mAsExposureFinish(), !aioDone);
    instrument->ResetTheFlags();
    EXPECT_FALSE(instrument->DetectorExposureFinish() || instrument->mAsExposureFinish());
  }
}

TEST_F(Polling, TheModeIsTheProcesssAndStopStaysEnabledWhileAFluoroscopyRunsWithoutData) {
  start(
      detector(101, 1, R"("exposures": [{"kind": "fluoro", "deliveries": 2, "pollsBetweenDeliveries": 3}])"));
  Instrument other(*context, events);  // the executive sets the mode through another instrument
  other.pCurrentMode("FLUORO");
  int passes = 0;
  for (; passes < 10 && events.dataReady.empty(); ++passes) instrument->CheckDataStatus();
  EXPECT_GT(passes, 2) << "the fluoroscopy ran for passes without data";
  events.events.resize(3);  // Stop is disabled again only by the pass that brings data
  EXPECT_EQ(events.events,
            (std::vector<std::string>{"EnableStopButton True", "EnableStopButton False", "DataReady"}));
}

TEST_F(Polling, SeveralSlotsAnnounceOnlyWhenBothHalvesOfTheExposureAreDone) {
  start(detector(101, 4, R"("exposures": [{}], "mas": {"exposures": [{}]})") + "," +
        detector(301, 3, R"("exposures": [{}])") + "," + detector(102, 1));
  context->state.removeDetector(0);  // an emptied slot is skipped by the announcement too
  ASSERT_GT(pollUntilFinished(), 0);
  // The dosimeter among several detectors counts a waveform without announcing one.
  EXPECT_EQ(count(events.events, "CheckExposureWaveform 1"), 0);
  EXPECT_EQ(count(events.events, "IncrementWaveCount"), 1);
  EXPECT_TRUE(platform.trace.contains("$CheckDataStatus$ - mAs waveform is initialized :: 301"));
}

}  // namespace
}  // namespace rx9400
