// Waveform download against the simulator: the range the plug-in asks for, the texts, the boxes of
// each failure with the caption set of each member, and the update thread left running on every path.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "fakes/InstrumentFakes.h"

namespace rx9400 {
namespace {

/// An all-in-one detector whose one exposure recorded `samples` (a JSON list or shape).
std::string aio(int id, const std::string& samples, const std::string& faults = "{}") {
  return R"({"identifier": )" + std::to_string(id) + R"(, "typeCode": 1, "faults": )" + faults +
         R"(, "exposures": [{"waveform": )" + samples + "}]}";
}
/// An mAs meter whose one exposure recorded `points` samples over `span` ms.
std::string mas(int id, int points, int span = 100, int inputType = 1, const std::string& faults = "{}") {
  return R"({"identifier": )" + std::to_string(id) + R"(, "typeCode": 2, "faults": )" + faults +
         R"(, "mas": {"inputType": )" + std::to_string(inputType) + R"(, "exposures": [{"span": )" +
         std::to_string(span) + R"(, "waveform": {"points": )" + std::to_string(points) + "}}]}}";
}
std::string points(int count) {
  return R"({"points": )" + std::to_string(count) + "}";
}

class Waveforms : public ::testing::Test, protected testing::InstrumentRig {
 protected:
  static std::size_t values(const std::string& text) {
    return text.empty() ? 0 : static_cast<std::size_t>(std::count(text.begin(), text.end(), ',')) + 1;
  }
};

TEST_F(Waveforms, TheRangeBecomesStartPointsAndStepAndTheResolutionFollowsTheTimeUnit) {
  const struct {
    int total;
    const char* mode;
    bool inSeconds;
    float rMin, rMax;
    int ldataPoints;
    const char* parameters;  // empty: nothing is asked for
    float resolution;
  } cases[] = {
      {1000, "RADIO", false, 0, 1000, 300, "{0,250,4}", 0.25F},         // 3.33 + 0.49 gives 4
      {1000, "RADIO", false, 0, 1000, 400, "{0,333,3}", 0.333F},        // 2.5 + 0.49 gives 3
      {900, "RADIO", false, 0, 900, 300, "{0,300,3}", 1.0F / 3},        // 3 + 0.49 stays 3 (0.5 would give 4)
      {1000, "RADIO", false, 0, 1000, 1000, "{0,1000,1}", 1.0F},        // span equal to the points
      {1000, "RADIO", false, 2.5F, 1000, 5000, "{2,998,1}", 0.998F},    // halves go to the even neighbour
      {1000, "RADIO", false, -500, 1000, 5000, "{-500,1000,1}", 1.0F},  // more than recorded: capped
      {1000, "RADIO", false, 100, 500, 5000, "{200,800,1}", 1.6F},      // the start counted in points
      {1000, "RADIO", false, 600, 500, 300, "", 0},                     // rMin above rMax: nothing, no box
      {1000, "FLUORO", false, 0, 0.5F, 300, "{0,250,4}", 0.5F},         // FLUORO: seconds into milliseconds
      {1000, "RADIO", true, 0, 0.5F, 300, "{0,250,4}", 500000.0F},  // not FLUORO: milliseconds into seconds
      {1000, "FLUORO", true, 0, 1000, 300, "{0,250,4}", 0.25F},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.mode) + " " + std::to_string(c.rMin) + ".." + std::to_string(c.rMax));
    start(aio(101, points(c.total)), c.mode);
    platform.clock.now += 10000;
    const std::string text = c.inSeconds ? instrument->GetWaveformInSecs(c.rMin, c.rMax, c.ldataPoints, 1)
                                         : instrument->GetWaveformInMilliSec(c.rMin, c.rMax, c.ldataPoints);
    EXPECT_TRUE(platform.boxes.shown.empty());
    EXPECT_EQ(calls("MBPauseUpdateThread"), calls("MBResumeUpdateThread"));
    EXPECT_EQ(text.empty(), *c.parameters == '\0');
    const std::vector<std::string> asked = callsOf("MBSetWaveformParameters");
    ASSERT_EQ(asked.size(), *c.parameters == '\0' ? 0U : 1U);
    instrument->CheckDetectorPowerStatus(5000, 900000);
    EXPECT_EQ(callsOf("MBSetPowerMode").empty(), !asked.empty()) << "a download is activity, not sleep";
    if (asked.empty()) continue;
    EXPECT_EQ(asked[0], "MBSetWaveformParameters(101, " + std::string(c.parameters) + ", 0)");
    EXPECT_EQ(values(text), static_cast<std::size_t>(std::stoi(asked[0].substr(asked[0].find(',', 28) + 1))));
    EXPECT_NEAR(instrument->pResolution(), c.resolution, c.resolution * 1e-3);
  }
}

TEST_F(Waveforms, SamplesAreTenthsWithAPointInEveryLocaleAndTheLastSlotDecides) {
  for (const char* separator : {".", ","}) {
    platform.locale.separator = separator;
    start(aio(101, "[10, 20]") + "," + aio(102, "[1234, -5, 0, 7, 10, -2147483648]"));
    EXPECT_EQ(instrument->GetWaveformInMilliSec(0, 6, 100), "123.4,-0.5,0,0.7,1,-214748364.8") << separator;
    EXPECT_EQ(simulator->callsStartingWith("MBSetWaveformParameters"), 2) << "every slot is downloaded";
  }
  start(aio(101, "[10, 20]") + "," + aio(102, "[]"));
  EXPECT_EQ(instrument->GetWaveformInMilliSec(0, 2, 100), "") << "the second slot has no points";
  EXPECT_EQ(platform.boxes.shown.size(), 1U);
  EXPECT_EQ(sharedSectionName(4711), "MB_00004711");
  EXPECT_EQ(sharedSectionName(123456789), "MB_123456789");
}

TEST_F(Waveforms, EachFailureShowsItsBoxWithTheCaptionOfItsMemberAndResumesTheUpdates) {
  const std::string plugIn = "Tamsa RX9400 Plug-In Response";
  const struct {
    std::string detectors;
    int ldataPoints;
    float rMax;
    std::string text, milliSecCaption;
  } cases[] = {
      {"", 100, 10, "0 is not a valid serial number.", "Invalid Serial Number"},
      {aio(101, points(50)), 0, 10, "Invalid number of data points to download.",
       "Invalid Number Of Data Points"},
      {aio(101, points(50)), 100, 0, "Exposure end time should be greater than 0.",
       "Invalid Exposure End Time"},
      {aio(101, "[]"), 100, 10, "No data points found to download.", "No Data Points"},
      {aio(101, points(50), R"({"sectionMissing": true})"), 100, 10, "Error in open file mapping.",
       "Open File Mapping Error"},
      {aio(101, points(5000), R"({"sectionShortBy": 1100})"), 5000, 10, "Error in map view file.",
       "Map View File Error"},
      {aio(101, points(50), R"({"waveformNeverAvailable": true})"), 100, 10, "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    start(c.detectors);
    EXPECT_EQ(instrument->GetWaveformInMilliSec(0, c.rMax, c.ldataPoints), "");
    EXPECT_EQ(instrument->GetWaveformInSecs(0, c.rMax, c.ldataPoints, 1), "");
    if (c.text.empty()) {
      EXPECT_TRUE(platform.boxes.shown.empty());
    } else {
      ASSERT_EQ(platform.boxes.shown.size(), 2U);
      for (const auto& [box, caption] : {std::pair{platform.boxes.shown[0], c.milliSecCaption},
                                         std::pair{platform.boxes.shown[1], plugIn}}) {
        EXPECT_EQ(box.text, c.text);
        EXPECT_EQ(box.caption, caption);
        EXPECT_EQ(box.style, kBoxCritical);
      }
    }
    platform.boxes.shown.clear();
    EXPECT_EQ(calls("MBPauseUpdateThread"), calls("MBResumeUpdateThread"));
  }
}

TEST_F(Waveforms, GetWaveformInSecsTracesTheParametersOfTheSlotTwice) {
  start(aio(4711, points(100)));
  instrument->GetWaveformInSecs(0, 100, 100, 1);
  std::vector<std::string> expected;
  for (const char* dash : {"", "-"}) {
    if (*dash != '\0') expected.push_back(": ---Got parameters---\t");
    for (const char* line :
         {"Device serial Number :: 4711", "DataPoints :: 100", "WaveformType :: 1", "Detector Type :: 1"})
      expected.push_back(": $GetWaveformInSecs$ - " + std::string(dash) + line + "\t");
  }
  EXPECT_EQ(platform.trace.lines, expected);
  platform.trace.lines.clear();
  instrument->GetWaveformInMilliSec(0, 100, 100);
  EXPECT_TRUE(platform.trace.lines.empty());
}

TEST_F(Waveforms, TheMasWaveformComesInBlocksOf26EachValueAfterAComma) {
  const struct {
    int points;
    bool inputOne;  // SetMasInputtype: False doubles every sample
    int blocks, step;
    const char* lastRead;
    const char* head;  // the text's beginning
  } cases[] = {
      {26, true, 1, 1, "(102, 0, 1, 26", ",99.9999084472656,"},
      {26, false, 1, 1, "(102, 0, 1, 26", ",199.999816894531,"},
      {27, true, 1, 1, "(102, 26, 1, 1", ","},
      {30000, true, 1153, 1, "(102, 29978, 1, 22", ","},
      {30001, true, 576, 2, "(102, 29952, 2, 24", ","},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.points);
    start(mas(102, c.points, 200));
    instrument->SetMasInputtype(c.inputOne);
    const int pumped = platform.pump.pumps;
    const std::string text = instrument->GetWaveformInSecs(0, 10, 100, 2);
    const std::vector<std::string> reads = callsOf("MBGetmAsWaveFormDataPoints");
    ASSERT_FALSE(reads.empty());
    EXPECT_EQ(reads.back().rfind("MBGetmAsWaveFormDataPoints" + std::string(c.lastRead), 0), 0U)
        << reads.back();
    EXPECT_EQ(platform.pump.pumps - pumped, c.blocks);
    EXPECT_EQ(text.rfind(c.head, 0), 0U) << text.substr(0, 40);
    EXPECT_EQ(values(text) - 1, static_cast<std::size_t>(c.points / c.step));
    EXPECT_NEAR(instrument->pResolution(), static_cast<float>(c.points / c.step) / 200, 1e-4);
  }
  EXPECT_EQ(callsOf("MBStartWFDownload"),
            (std::vector<std::string>{"MBStartWFDownload(102, 1)", "MBStartWFDownload(102, 0)"}));
}

TEST_F(Waveforms, ALinkLostBetweenBlocksEndsTheDownloadWithTheTextGatheredSoFar) {
  start(mas(102, 200, 100, 2, R"({"masLinkLossAfterBlocks": 3})"));
  const std::string text = instrument->GetWaveformInSecs(0, 10, 100, 2);
  std::vector<std::string> calls;
  for (const std::string& call : simulator->calls()) calls.push_back(call.substr(0, call.find('(')));
  EXPECT_EQ(calls, (std::vector<std::string>{
                       "MBPauseUpdateThread", "MBGetmAsNumberOfDataPoints", "MBResumeUpdateThread",
                       "MBStartWFDownload", "MBGetDetectorStatus", "MBGetmAsWaveFormDataPoints",
                       "MBGetDetectorStatus", "MBGetmAsWaveFormDataPoints", "MBGetDetectorStatus",
                       "MBGetmAsWaveFormDataPoints", "MBGetDetectorStatus", "MBStartWFDownload",
                       "MBResumeUpdateThread"}));
  EXPECT_EQ(values(text) - 1, 3U * 26);
  EXPECT_EQ(instrument->pResolution(), 0) << "an interrupted download leaves the resolution alone";

  start(mas(102, 30000, 100, 2, R"({"masLinkLossAfterBlocks": 1})"));
  EXPECT_LT(instrument->GetWaveformInSecs(0, 10, 100, 2).capacity(), 30000U)
      << "the text grows with the blocks received, not with the count announced";
}

TEST_F(Waveforms, AMemberCalledFromThePumpLeavesTheOuterTransferWhole) {
  start(mas(102, 100) + "," + aio(101, points(40)));
  const std::string alone = instrument->GetWaveformInSecs(0, 10, 100, 2);
  std::string nestedText;
  platform.pump.pumps = 0;
  platform.pump.nested = [&] { nestedText = instrument->GetWaveformInSecs(0, 10, 100, 2); };
  EXPECT_EQ(instrument->GetWaveformInSecs(0, 10, 100, 2), alone);
  EXPECT_EQ(nestedText, alone);
}

}  // namespace
}  // namespace rx9400
