// The all-in-one waveform published in the shared-memory section, the mAs waveform fetched in blocks,
// and the bookkeeping around both transfers.
#include <cerrno>
#include <cmath>
#include <cstdio>

#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

/// An identifier of this test process alone, so that tests running side by side use different sections.
std::int32_t processIdentifier() {
  return 7000000 + static_cast<std::int32_t>(getpid() % 1000000);
}

std::string sectionName(std::int32_t id) {
  char name[32];
  std::snprintf(name, sizeof name, "MB_%08d", static_cast<int>(id));
  return name;
}

std::vector<std::int32_t> rampSamples() {
  std::vector<std::int32_t> samples;
  for (int i = 0; i < 100; ++i) samples.push_back(10 * i + 1);
  return samples;
}

/// A detector whose recorded waveform is 100 samples: 1, 11, 21, ... 991.
std::string rampScenario(std::int32_t id, const std::string& extra = "") {
  std::string samples;
  for (const std::int32_t sample : rampSamples())
    samples += (samples.empty() ? "" : ",") + std::to_string(sample);
  return R"({"detectors": [{"identifier": )" + std::to_string(id) +
         R"(, "typeCode": 1, "exposures": [{"pollsBeforeStart": 0, "waveform": [)" + samples + "]}]" + extra +
         "}]}";
}

struct Stretch {
  std::int32_t start;
  std::int32_t count;
  std::int16_t step;
  std::vector<std::int32_t> expected;
};

void PrintTo(const Stretch& s, std::ostream* out) {
  *out << "start " << s.start << " count " << s.count << " step " << s.step;
}

class SimWaveformSection : public ::testing::TestWithParam<Stretch> {
 protected:
  void TearDown() override { MBCloseApplication(); }
};

TEST_P(SimWaveformSection, HoldsTheRequestedSamplesAsLittleEndianTenths) {
  const std::int32_t id = processIdentifier();
  loadScenario(rampScenario(id));
  scanAndConnect({id});
  EXPECT_EQ(MBGetNumberOfDataPoints(id, 0), 0) << "no exposure yet";
  deliverAioExposure(id);
  EXPECT_EQ(MBGetNumberOfDataPoints(id, 0), 100);
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(id), 0) << "nothing published yet";

  WaveformParameters parameters{GetParam().start, GetParam().count, GetParam().step, {0, 0}};
  EXPECT_EQ(MBSetWaveformParameters(id, &parameters, 0), 1);
  EXPECT_NE(MBGetWaveformAvailabilityStatus(id), 0);
  const auto section = readSection(sectionName(id));
  ASSERT_TRUE(section.has_value());
  EXPECT_EQ(section->size(), GetParam().expected.size() * 4);
  EXPECT_EQ(samplesOf(*section), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Stretches, SimWaveformSection,
    ::testing::Values(Stretch{0, 5, 1, {1, 11, 21, 31, 41}}, Stretch{10, 4, 3, {101, 131, 161, 191}},
                      Stretch{96, 6, 1, {961, 971, 981, 991, 0, 0}},                // past the recording: 0
                      Stretch{-2, 3, 1, {0, 0, 1}}, Stretch{0, 3, 0, {1, 11, 21}},  // step 0 taken as 1
                      Stretch{0, 3, 50, {1, 501, 0}},
                      Stretch{0, 100000, 1, rampSamples()}));  // never more than the recording holds

struct NamedSection {
  std::int32_t id;
  const char* name;
};

void PrintTo(const NamedSection& section, std::ostream* out) {
  *out << section.name;
}

class SimSectionName : public ::testing::TestWithParam<NamedSection> {};

TEST_P(SimSectionName, IsTheIdentifierPaddedToEightDigitsNeverCut) {
  const auto [id, name] = GetParam();
  loadScenario(rampScenario(id));
  scanAndConnect({id});
  deliverAioExposure(id);
  WaveformParameters parameters{0, 1, 1, {0, 0}};
  MBSetWaveformParameters(id, &parameters, 0);
  const auto section = readSection(name);
  ASSERT_TRUE(section.has_value()) << name;
  EXPECT_EQ(samplesOf(*section), std::vector<std::int32_t>{1});
  MBCloseApplication();
  EXPECT_FALSE(readSection(name).has_value()) << "removed when the application closes";
}

INSTANTIATE_TEST_SUITE_P(Identifiers, SimSectionName,
                         ::testing::Values(NamedSection{1, "MB_00000001"}, NamedSection{4321, "MB_00004321"},
                                           NamedSection{12345678, "MB_12345678"},
                                           NamedSection{123456789, "MB_123456789"}));

using SimWaveform = SimTest;

TEST_F(SimWaveform, NextPublicationReplacesTheSectionAndANewExposureResetsAvailability) {
  const std::int32_t id = processIdentifier();
  loadScenario(rampScenario(id, R"(, "repeatExposures": true)"));
  scanAndConnect({id});
  deliverAioExposure(id);
  WaveformParameters first{0, 10, 1, {0, 0}};
  WaveformParameters second{50, 2, 1, {0, 0}};
  MBSetWaveformParameters(id, &first, 0);
  MBSetWaveformParameters(id, &second, 0);
  EXPECT_EQ(samplesOf(*readSection(sectionName(id))), (std::vector<std::int32_t>{501, 511}));
  EXPECT_NE(MBGetWaveformAvailabilityStatus(id), 0);

  EXPECT_TRUE(status(id).exposureStarted != 0) << "the exposure repeats";
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(id), 0);
}

TEST_F(SimWaveform, DefaultAioWaveformLooksLikeAKvTrace) {
  scanAndConnect({4711});
  deliverAioExposure(4711);
  const std::int32_t points = MBGetNumberOfDataPoints(4711, 0);
  ASSERT_GE(points, 1000);
  WaveformParameters all{0, points, 1, {0, 0}};
  MBSetWaveformParameters(4711, &all, 0);
  const std::vector<std::int32_t> trace = samplesOf(*readSection("MB_00004711"));
  ASSERT_EQ(static_cast<std::int32_t>(trace.size()), points);
  EXPECT_LT(trace.front(), 100) << "ramps up from near zero";
  EXPECT_NEAR(trace[trace.size() / 2], 803, 9) << "plateau at the kVp in tenths";
  EXPECT_EQ(trace.back(), 0) << "falls back to zero";
  EXPECT_EQ(*std::max_element(trace.begin(), trace.end()), 812);
}

struct MasBlock {
  std::int32_t first;
  std::uint8_t step;
  std::uint8_t count;
  std::int32_t firstValue;  // raw values are 1000 * point index
  std::int32_t lastValue;
};

void PrintTo(const MasBlock& b, std::ostream* out) {
  *out << "first " << b.first << " step " << int{b.step} << " count " << int{b.count};
}

class SimMasBlocks : public ::testing::TestWithParam<MasBlock> {};

TEST_P(SimMasBlocks, FillCountValuesFromFirstByStep) {
  std::string raw;
  for (int i = 0; i < 60; ++i) raw += (i ? "," : "") + std::to_string(1000 * i);
  loadScenario(R"({"detectors": [{"identifier": 42, "typeCode": 2, "mas": {"exposures": [
      {"pollsBeforeStart": 0, "span": 30, "waveform": [)" +
               raw + "]}]}}]}");
  scanAndConnect({42});
  MBEnableMeasurement(42);
  MasMeasuredData m{};
  MBGetmAsMeasuredData(&m, 42, 0);
  MBGetmAsMeasuredData(&m, 42, 0);
  ASSERT_NE(m.dataAvailable, 0);
  std::int32_t span = 0;
  EXPECT_EQ(MBGetmAsNumberOfDataPoints(42, &span), 60);
  EXPECT_EQ(span, 30);

  const MasBlock b = GetParam();
  std::vector<std::int32_t> block(static_cast<std::size_t>(b.count) + 1, -1);
  EXPECT_EQ(MBGetmAsWaveFormDataPoints(42, b.first, b.step, b.count, block.data()), b.count);
  EXPECT_EQ(block.front(), b.firstValue);
  EXPECT_EQ(block[b.count - 1u], b.lastValue);
  EXPECT_EQ(block[b.count], -1) << "nothing written past count";
}

INSTANTIATE_TEST_SUITE_P(Blocks, SimMasBlocks,
                         ::testing::Values(MasBlock{0, 1, 26, 0, 25000}, MasBlock{26, 1, 26, 26000, 51000},
                                           MasBlock{52, 1, 8, 52000, 59000},  // the remainder of 60 points
                                           MasBlock{0, 2, 26, 0, 50000},      // every second point
                                           MasBlock{58, 1, 4, 58000, 0}));    // past the end: 0

TEST_F(SimWaveform, DefaultMasWaveformScalesToTheTubeCurrent) {
  scanAndConnect({4711});
  MBEnableMeasurement(4711);
  MasMeasuredData m{};
  for (int i = 0; i < 4; ++i) MBGetmAsMeasuredData(&m, 4711, 0);
  std::int32_t span = 0;
  const std::int32_t points = MBGetmAsNumberOfDataPoints(4711, &span);
  ASSERT_GT(points, 100);
  EXPECT_EQ(span, 100);
  std::int32_t middle[26]{};
  MBGetmAsWaveFormDataPoints(4711, points / 2, 1, 26, middle);
  EXPECT_NEAR(middle[0] * 5000.0 / 16777216.0, 200.0, 2.5);
}

TEST_F(SimWaveform, PauseAndResumeAreCountedAndAnUnbalancedCallNoted) {
  MBPauseUpdateThread();
  MBResumeUpdateThread();
  SimLibraryState state{};
  SimGetLibraryState(&state);
  EXPECT_EQ(state.pauseDepth, 0);
  EXPECT_EQ(state.unbalancedCalls, 0);

  MBPauseUpdateThread();
  MBPauseUpdateThread();
  MBResumeUpdateThread();
  MBResumeUpdateThread();
  MBResumeUpdateThread();
  SimGetLibraryState(&state);
  EXPECT_EQ(state.pauseCalls, 3);
  EXPECT_EQ(state.resumeCalls, 4);
  EXPECT_EQ(state.pauseDepth, 0);
  EXPECT_EQ(state.unbalancedCalls, 2);
  const auto lines = logLines();
  EXPECT_EQ(
      std::count_if(lines.begin(), lines.end(), [](const std::string& l) { return l.rfind("! ", 0) == 0; }),
      2);
}

TEST_F(SimWaveform, DownloadBracketIsTracked) {
  scanAndConnect({4711});
  MBStartWFDownload(4711, 1);
  EXPECT_EQ(detectorState(4711).waveformDownloadActive, 1);
  MBStartWFDownload(4711, 0);
  const SimDetectorState state = detectorState(4711);
  EXPECT_EQ(state.waveformDownloadActive, 0);
  EXPECT_EQ(state.waveformDownloadStarts, 1);
}

}  // namespace
}  // namespace rx9400::simtest
