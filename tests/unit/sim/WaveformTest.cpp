// Waveforms: the all-in-one samples published in the detector's section, the mAs waveform read in
// blocks, the update thread's pause balance and the download bracket.
#include <algorithm>

#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

/// A detector whose recorded waveform is 100 samples: 1, 11, 21, ... 991.
std::string rampScenario(std::int32_t id, const std::string& fields = "") {
  std::string samples = "1";
  for (int i = 1; i < 100; ++i) samples += "," + std::to_string(10 * i + 1);
  return one(id, 1, R"("exposures": [{"pollsBeforeStart": 0, "waveform": [)" + samples + "]}]" + fields);
}

struct Published {
  std::int32_t id;  // 0: one of this process alone
  std::int32_t start, count;
  std::int16_t step;
  std::vector<std::int32_t> samples;
};

using SimSection = SimTable<Published>;

TEST_P(SimSection, HoldsTheRequestedSamplesUntilTheApplicationCloses) {
  const std::int32_t id = GetParam().id != 0 ? GetParam().id : ownId();
  loadScenario(rampScenario(id));
  scanAndConnect({id});
  EXPECT_EQ(MBGetNumberOfDataPoints(id, 0), 0) << "no exposure yet";
  deliverAio(id);
  EXPECT_EQ(MBGetNumberOfDataPoints(id, 0), 100);
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(id), 0) << "nothing published yet";
  WaveformParameters parameters{GetParam().start, GetParam().count, GetParam().step, {0, 0}};
  EXPECT_EQ(MBSetWaveformParameters(id, &parameters, 0), 1);
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(id), 1);
  const auto section = readSection(id);
  ASSERT_TRUE(section.has_value());
  EXPECT_EQ(samplesOf(*section), GetParam().samples);
  EXPECT_EQ(section->size(), GetParam().samples.size() * 4);
  MBCloseApplication();
  EXPECT_FALSE(readSection(id).has_value());
}

std::vector<std::int32_t> ramp() {
  std::vector<std::int32_t> samples(100);
  for (int i = 0; i < 100; ++i) samples[i] = 10 * i + 1;
  return samples;
}

// readSection names the section "MB_" + the identifier padded to eight digits, never cut.
INSTANTIATE_TEST_SUITE_P(
    Stretches, SimSection,
    ::testing::Values(Published{0, 0, 5, 1, {1, 11, 21, 31, 41}},
                      Published{0, 10, 4, 3, {101, 131, 161, 191}},
                      Published{0, 96, 6, 1, {961, 971, 981, 991, 0, 0}},  // past the recording: 0
                      Published{0, -2, 3, 1, {0, 0, 1}}, Published{0, 0, 3, 0, {1, 11, 21}},  // step 0 as 1
                      Published{0, 0, 3, 50, {1, 501, 0}},
                      Published{0, 0, 100000, 1, ramp()},  // never more than the recording holds
                      Published{1, 0, 1, 1, {1}}, Published{12345678, 0, 1, 1, {1}},
                      Published{123456789, 0, 1, 1, {1}}));

using SimWaveform = SimTest;

TEST_F(SimWaveform, NextPublicationReplacesTheSectionAndTheNextExposureEndsAvailability) {
  const std::int32_t id = ownId();
  loadScenario(rampScenario(id, R"(, "repeatExposures": true)"));
  scanAndConnect({id});
  deliverAio(id);
  WaveformParameters first{0, 10, 1, {0, 0}};
  WaveformParameters second{50, 2, 1, {0, 0}};
  MBSetWaveformParameters(id, &first, 0);
  MBSetWaveformParameters(id, &second, 0);
  EXPECT_EQ(samplesOf(*readSection(id)), (std::vector<std::int32_t>{501, 511}));
  EXPECT_NE(status(id).exposureStarted, 0) << "the exposure repeats";
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(id), 0);
}

TEST_F(SimWaveform, TenMillionPointTraceRisesRipplesAndFallsAndIsPublishedWhole) {
  const std::int32_t id = ownId();
  loadScenario(one(id, 1, R"("exposures": [{"pollsBeforeStart": 0, "kvpAverage": 800, "kvpMaximum": 812,
                                            "waveform": {"points": 10000000}}])"));
  scanAndConnect({id});
  deliverAio(id);
  WaveformParameters all{0, MBGetNumberOfDataPoints(id, 0), 1, {0, 0}};
  ASSERT_EQ(MBSetWaveformParameters(id, &all, 0), 1);
  const std::vector<std::int32_t> trace = samplesOf(*readSection(id));
  ASSERT_EQ(trace.size(), 10000000u);
  const auto [low, high] = std::minmax_element(trace.begin() + 500000, trace.end() - 666666);  // the plateau
  EXPECT_EQ((std::vector<std::int32_t>{trace.front(), trace[499999], *low, *high, trace.back()}),
            (std::vector<std::int32_t>{0, 799, 788, 812, 0}));
}

struct MasBlock {
  std::int32_t first;
  std::uint8_t step, count;
  std::int32_t firstValue, lastValue;  // raw values are 1000 * point index
};

using SimMasBlocks = SimTable<MasBlock>;

TEST_P(SimMasBlocks, FillCountValuesFromFirstByStep) {
  std::string raw = "0";
  for (int i = 1; i < 60; ++i) raw += "," + std::to_string(1000 * i);
  loadScenario(one(
      42, 2, R"("mas": {"exposures": [{"pollsBeforeStart": 0, "span": 30, "waveform": [)" + raw + "]}]}"));
  scanAndConnect({42});
  MBEnableMeasurement(42);
  MasMeasuredData m{};
  MBGetmAsMeasuredData(&m, 42, 0);
  MBGetmAsMeasuredData(&m, 42, 0);
  std::int32_t span = 0;
  EXPECT_EQ(MBGetmAsNumberOfDataPoints(42, &span), 60);
  EXPECT_EQ(span, 30);
  const MasBlock b = GetParam();
  std::vector<std::int32_t> block(b.count + 1u, -1);
  EXPECT_EQ(MBGetmAsWaveFormDataPoints(42, b.first, b.step, b.count, block.data()), b.count);
  EXPECT_EQ((std::vector<std::int32_t>{block.front(), block[b.count - 1u], block[b.count]}),
            (std::vector<std::int32_t>{b.firstValue, b.lastValue, -1}))
      << "nothing written past count";
}

INSTANTIATE_TEST_SUITE_P(Blocks, SimMasBlocks,
                         ::testing::Values(MasBlock{0, 1, 26, 0, 25000}, MasBlock{26, 1, 26, 26000, 51000},
                                           MasBlock{52, 1, 8, 52000, 59000},  // the remainder of 60 points
                                           MasBlock{0, 2, 26, 0, 50000},      // every second point
                                           MasBlock{58, 1, 4, 58000, 0}));    // past the end: 0

}  // namespace
}  // namespace rx9400::simtest
