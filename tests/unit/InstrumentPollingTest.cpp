// Exposure polling against the simulator: the events and texts of each kind of detector, the waveform
// announcements, the notices, and the flags an exposure leaves.
#include <gtest/gtest.h>

#include <algorithm>

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

class Polling : public ::testing::Test, protected testing::InstrumentRig {
 protected:
  /// Connects the detectors of the scenario, in scenario order, and arms them.
  void start(const std::string& detectors) {
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
  EXPECT_EQ(events.dataReady,
            (std::vector<std::string>{"80.3", "81.2", "79.8", "1.234", "5.678", "100", "", "", "", "3.5"}));
  EXPECT_FALSE(instrument->DetectorExposureFinish())
      << "the pass that finished the exposure clears its flags";
  EXPECT_FALSE(instrument->mAsExposureFinish());
  EXPECT_DOUBLE_EQ(instrument->pGetExposureTime(), 100);
  EXPECT_DOUBLE_EQ(instrument->pGetExposurekVp(), 80.3);
  EXPECT_TRUE(platform.trace.contains("$CheckDataStatus$ - AIO Data ready :: 101"));
  EXPECT_TRUE(platform.trace.contains("$CheckDataStatus$ - :: 80.3 :: 81.2 :: 79.8 :: 1.234"));
  EXPECT_TRUE(platform.trace.contains("$CheckDataStatus$ - AIO waveform is initialized :: 101"));
  EXPECT_TRUE(
      platform.trace.contains("--------------------------------------------One Exp Finished "
                              "------------------------------------------"));
  EXPECT_EQ(platform.sound.calls, (std::vector<std::string>{"beep 2500 200"}));
}

TEST_F(Polling, TextsFollowTheModeTheUnitsAndEachValuesStatus) {
  const struct {
    const char* mode;
    int units;  ///< dose, rate and time unit codes, one digit each
    std::string exposure;
    const char* texts;  ///< the ten texts of DataReady, joined with "|"
  } cases[] = {
      {"RADIO", 111, R"({"kvpAverage": {"value": 1500, "status": 3}})",
       "OL|81.2|79.8|1.234|5.678|100||||3.5"},
      {"RADIO", 111, R"({"dose": {"value": 1234, "status": 2}, "kvpPpv": {"value": 798, "status": 5}})",
       "80.3|81.2|UL|1.234*|5.678|100||||3.5"},
      {"MAMMO", 111, R"({"kind": "mammo"})", "80.3|81.2|79.8|1.234|5.678|100||||0.35"},
      {"RADIO", 212, R"({"pulses": 12})", "80.3|81.2|79.8|12.34|56.78|100|12|||3.5"},
      {"FLUORO", 131, R"({"kind": "fluoro", "deliveries": 1, "doseRate": 1234})",
       "80.3|81.2|79.8|0.001234|4.4424|100||||3.5"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.exposure);
    events = RecordingEvents();
    start(detector(101, 1, R"("exposures": [)" + c.exposure + "]"));
    instrument->pCurrentMode(c.mode);
    instrument->pDoseUnits(static_cast<std::uint8_t>(c.units / 100));
    instrument->pDoseRateUnits(static_cast<std::uint8_t>(c.units / 10 % 10));
    instrument->pTimeUnit(static_cast<std::uint8_t>(c.units % 10));
    ASSERT_GT(pollUntilFinished(), 0);
    std::string joined;
    for (std::size_t i = 0; i < events.dataReady.size(); ++i)
      joined += (i > 0 ? "|" : "") + events.dataReady[i];
    EXPECT_EQ(joined, c.texts);
  }
}

TEST_F(Polling, AnEmptyOnlySlotRaisesNothing) {
  start(detector(101, 1, R"("exposures": [{"kind": "radio"}])"));
  context->state.resetDetectors();
  for (int pass = 0; pass < 10; ++pass) EXPECT_FALSE(instrument->CheckDataStatus());
  EXPECT_TRUE(events.events.empty());
}

TEST_F(Polling, TheMasMeterGivesDosePerMasOnlyBesideADoseMeasurement) {
  // An all-in-one detector with mAs meter: dose 1.234 over 20 mAs.
  start(detector(101, 4, R"("exposures": [{}], "mas": {"exposures": [{"mA": 200, "mAs": 20}]})"));
  ASSERT_GT(pollUntilFinished(), 0);
  EXPECT_EQ(events.testMas, (std::vector<std::string>{"200", "20", "1", "0.0617"}));
  EXPECT_EQ(events.events, (std::vector<std::string>{
                               "EnableStopButton False", "DataReady", "TestmAsDataReady",
                               "EnableStopButton False", "CheckExposureWaveform 1", "IncrementWaveCount",
                               "EnableStopButton False", "CheckExposureWaveform 3", "IncrementWaveCount"}));

  for (const auto& [scenarioDetector, name] :
       {std::pair{detector(201, 2, R"("mas": {"exposures": [{"mAs": 20}]})"), "an mAs meter alone"},
        std::pair{detector(101, 4, R"("exposures": [{}], "mas": {"exposures": [{"mAs": 0}]})"), "no mAs"}}) {
    SCOPED_TRACE(name);
    events = RecordingEvents();
    start(scenarioDetector);
    ASSERT_GT(pollUntilFinished(), 0);
    ASSERT_EQ(events.testMas.size(), 4u);
    EXPECT_EQ(events.testMas[3], "");
  }
}

TEST_F(Polling, ZeroingIsAnnouncedAndWithdrawnOnce) {
  start(detector(201, 2, R"("mas": {"exposures": [{"zeroingReads": 3}]})"));
  ASSERT_GT(pollUntilFinished(), 0);
  EXPECT_EQ(std::count(events.events.begin(), events.events.end(), "ZeroingmAs True"), 1);
  EXPECT_EQ(std::count(events.events.begin(), events.events.end(), "ZeroingmAs False"), 1);
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
  EXPECT_EQ(std::count(platform.sound.calls.begin(), platform.sound.calls.end(), "beep 2500 400"), 6);
}

TEST_F(Polling, ALostLinkIsReportedOnceWithTheSerialNumber) {
  start(detector(101, 1, R"("faults": {"linkLossAfterCalls": 3})"));
  for (int pass = 0; pass < 6; ++pass) EXPECT_FALSE(instrument->CheckDataStatus());
  ASSERT_EQ(platform.notices.boxes.size(), 1u);
  EXPECT_EQ(platform.notices.boxes[0]->caption, "Connection Lost");
  EXPECT_EQ(platform.notices.boxes[0]->heading, "Connection lost with the detector : 1301");
  EXPECT_EQ(platform.notices.boxes[0]->message, "Please scan for detector and reestablish the connection.");
  EXPECT_EQ(platform.notices.boxes[0]->button2, "");
  EXPECT_EQ(events.events, (std::vector<std::string>{"AddWakeUpButton False"}));
  EXPECT_FALSE(instrument->pMeasurementStatus());
  platform.notices.boxes[0]->onButton1();
  EXPECT_TRUE(platform.notices.boxes[0]->closed);
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
    EXPECT_EQ(platform.dialogs.zeroError->title(), "Detector Zero Error");
    EXPECT_EQ(platform.dialogs.zeroError->detectorLine, "1301 RX 9400WD ");
  }
}

TEST_F(Polling, TheDosimeterReportsItsReadingsInItsUnitsAndItsSensorErrorsOnce) {
  start(detector(301, 3, R"("exposures": [{"dose": 2.5, "doseRate": 25}],
                            "dosimeter": {"sensors": {"temperature": 22.5, "pressure": 760, "adcf": 1.0123,
                                                      "biasVoltage": 300}})"));
  ASSERT_GT(pollUntilFinished(), 0);
  EXPECT_EQ(events.testSw, (std::vector<std::string>{"22.5", "760", "1.012", "0.010", "2.5", "25", "300.0"}));

  events = RecordingEvents();
  start(detector(
      301, 3,
      R"("faults": {"temperatureError": {"fromPoll": 1, "polls": 3}, "biasError": {"fromPoll": 1, "polls": 3}})"));
  for (int pass = 0; pass < 8; ++pass) instrument->CheckDataStatus();
  EXPECT_EQ(events.events, (std::vector<std::string>{"DisplayErrorMsg Temperature Sensor Error. Bias voltage "
                                                     "error, please restart the system... | Error | True",
                                                     "DisplayErrorMsg  | Error | False"}));
}

TEST_F(Polling, TheModeIsTheProcesssAndStopStaysEnabledWhileAFluoroscopyRunsWithoutData) {
  start(
      detector(101, 1, R"("exposures": [{"kind": "fluoro", "deliveries": 2, "pollsBetweenDeliveries": 3}])"));
  Instrument other(*context, events);  // the executive sets the mode through another instrument
  other.pCurrentMode("FLUORO");
  int passes = 0;
  while (passes < 10 && events.dataReady.empty()) {
    instrument->CheckDataStatus();
    ++passes;
  }
  EXPECT_GT(passes, 2) << "the fluoroscopy ran for passes without data";
  events.events.resize(3);
  EXPECT_EQ(events.events,
            (std::vector<std::string>{"EnableStopButton True", "EnableStopButton False", "DataReady"}))
      << "Stop is disabled again only by the pass that brings data";
}

TEST_F(Polling, SeveralSlotsAnnounceOnlyWhenBothHalvesOfTheExposureAreDone) {
  start(detector(101, 4, R"("exposures": [{}], "mas": {"exposures": [{}]})") + "," +
        detector(301, 3, R"("exposures": [{}])") + "," + detector(102, 1));
  context->state.removeDetector(0);  // an emptied slot is skipped by the announcement too
  ASSERT_GT(pollUntilFinished(), 0);
  // The dosimeter among several detectors counts a waveform without announcing one.
  EXPECT_EQ(std::count(events.events.begin(), events.events.end(), "CheckExposureWaveform 1"), 0);
  EXPECT_EQ(std::count(events.events.begin(), events.events.end(), "IncrementWaveCount"), 1);
  EXPECT_TRUE(platform.trace.contains("$CheckDataStatus$ - mAs waveform is initialized :: 301"));
}

}  // namespace
}  // namespace rx9400
