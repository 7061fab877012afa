// Waveforms: the all-in-one samples published in the detector's section, the mAs waveform read in
// blocks, and the scripted faults of both: sections missing or short, the mAs link lost during a download.
#include <algorithm>

#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

struct Published {
  std::int32_t id;  // 0: one of this process alone
  WaveformParameters asked;
  std::vector<std::int32_t> samples;
};

using SimSection = SimTable<Published>;

TEST_P(SimSection, HoldsTheAskedSamplesInPlaceOfTheLastUntilTheNextExposureOrTheClose) {
  const std::int32_t id = GetParam().id != 0 ? GetParam().id : ownId();
  std::string samples = "1";  // 1, 11, 21, ... 991
  for (int i = 1; i < 100; ++i) samples += "," + std::to_string(10 * i + 1);
  connect(id, one(id, 1,
                  R"("repeatExposures": true, "exposures": [{"pollsBeforeStart": 0, "waveform": [)" +
                      samples + "]}]"));
  EXPECT_EQ(MBGetNumberOfDataPoints(id, 0), 0) << "no exposure yet";
  deliverAio(id);
  EXPECT_EQ(MBGetNumberOfDataPoints(id, 0), 100);
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(id), 0) << "nothing published yet";
  WaveformParameters earlier{50, 2, 1, {0, 0}}, asked = GetParam().asked;
  MBSetWaveformParameters(id, &earlier, 0);
  EXPECT_EQ(MBSetWaveformParameters(id, &asked, 0), 1);
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(id), 1);
  EXPECT_EQ(readSection(id), GetParam().samples);
  EXPECT_NE(status(id).exposureStarted, 0) << "the exposure repeats";
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(id), 0);
  MBCloseApplication();
  EXPECT_FALSE(readSection(id).has_value());
}

// readSection names the section "MB_" + the identifier padded to eight digits, never cut.
INSTANTIATE_TEST_SUITE_P(
    Stretches, SimSection,
    ::testing::Values(Published{0, {10, 4, 3, {}}, {101, 131, 161, 191}},
                      Published{0, {96, 6, 1, {}}, {961, 971, 981, 991, 0, 0}},  // past the recording: 0
                      Published{0, {-2, 3, 1, {}}, {0, 0, 1}},
                      Published{0, {0, 3, 0, {}}, {1, 11, 21}},  // step 0 as 1
                      Published{0, {0, 3, 50, {}}, {1, 501, 0}}, Published{123456789, {0, 1, 1, {}}, {1}}));

TEST_F(SimTest, TenMillionPointTraceRisesRipplesAndFallsAndIsPublishedWhole) {
  const std::int32_t id = ownId();
  connect(id, one(id, 1, R"("exposures": [{"pollsBeforeStart": 0, "kvpAverage": 800, "kvpMaximum": 812,
                                          "waveform": {"points": 10000000}}])"));
  deliverAio(id);
  WaveformParameters all{0, MBGetNumberOfDataPoints(id, 0), 1, {0, 0}};
  ASSERT_EQ(MBSetWaveformParameters(id, &all, 0), 1);
  const std::vector<std::int32_t> trace = readSection(id).value_or(std::vector<std::int32_t>{});
  ASSERT_EQ(trace.size(), 10000000u);
  const auto [low, high] = std::minmax_element(trace.begin() + 500000, trace.end() - 666666);  // the plateau
  EXPECT_EQ(
      (std::vector<std::int32_t>{trace.front(), trace[499999], *low, *high, trace[9333334], trace.back()}),
      (std::vector<std::int32_t>{0, 799, 788, 812, 799, 0}));
}

struct WaveformFault {
  const char* faults;
  std::int64_t answer, sectionBytes;  // answer and availability; sectionBytes -1: no section
};

using SimWaveformFault = SimTable<WaveformFault>;

TEST_P(SimWaveformFault, ShowsInTheAnswerTheAvailabilityAndTheSection) {
  connect(ownId(), one(ownId(), 1,
                       R"("exposures": [{"pollsBeforeStart": 0, "waveform": {"points": 3000}}])"
                       R"(, "faults": )" +
                           std::string(GetParam().faults)));
  deliverAio(ownId());
  WaveformParameters more{0, 100000, 1, {0, 0}};
  const std::int64_t answer = MBSetWaveformParameters(ownId(), &more, 0);
  const auto section = readSection(ownId());
  EXPECT_EQ((std::vector<std::int64_t>{answer, MBGetWaveformAvailabilityStatus(ownId()),
                                       section ? static_cast<std::int64_t>(section->size() * 4) : -1}),
            (std::vector<std::int64_t>{GetParam().answer, GetParam().answer, GetParam().sectionBytes}));
}

// Never more points than recorded. A short section is cut to whole 4096-byte pages, so that a view of all
// points fails on Windows too; with less than a page left there is none.
INSTANTIATE_TEST_SUITE_P(Faults, SimWaveformFault,
                         ::testing::ValuesIn(std::vector<WaveformFault>{
                             {"{}", 1, 12000},
                             {R"({"waveformNeverAvailable": true})", 0, -1},
                             {R"({"sectionMissing": true})", 1, -1},
                             {R"({"sectionShortBy": 1})", 1, 8192},
                             {R"({"sectionShortBy": 2000})", 1, -1}}));

/// Connects mAs meter `id`, arms it and reads its record twice: started, then delivered.
void deliverMas(std::int32_t id, const std::string& fields) {
  connect(id, one(id, 2, fields));
  MBEnableMeasurement(id);
  MasMeasuredData m{};
  for (int read = 0; read < 2; ++read) MBGetmAsMeasuredData(&m, id, 0);
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
  deliverMas(42, R"("mas": {"exposures": [{"pollsBeforeStart": 0, "span": 30, "waveform": [)" + raw + "]}]}");
  const MasBlock b = GetParam();
  std::int32_t span = 0;
  std::vector<std::int32_t> block(b.count + 1u, -1);  // nothing written past count
  const std::int32_t answer = MBGetmAsWaveFormDataPoints(42, b.first, b.step, b.count, block.data());
  EXPECT_EQ((std::vector<std::int32_t>{MBGetmAsNumberOfDataPoints(42, &span), span, answer, block.front(),
                                       block[b.count - 1u], block[b.count]}),
            (std::vector<std::int32_t>{60, 30, b.count, b.firstValue, b.lastValue, -1}));
}

INSTANTIATE_TEST_SUITE_P(Blocks, SimMasBlocks,
                         ::testing::Values(MasBlock{26, 1, 26, 26000, 51000},
                                           MasBlock{52, 1, 8, 52000, 59000},  // the remainder of 60 points
                                           MasBlock{0, 2, 26, 0, 50000},      // every second point
                                           MasBlock{58, 1, 4, 58000, 0}));    // past the end: 0

TEST_F(SimTest, MasLinkLossShowsFromTheKthBlockUntilTheNextDownloadStarts) {
  deliverMas(66,
             R"("mas": {"exposures": [{"pollsBeforeStart": 0}]}, "faults": {"masLinkLossAfterBlocks": 2})");
  std::int32_t block[26];
  std::vector<std::int32_t> seen;  // connection states and block answers
  const auto poll = [&] { seen.push_back(status(66).connectionState); };
  const auto read = [&] { seen.push_back(MBGetmAsWaveFormDataPoints(66, 0, 1, 26, block)); };
  MBStartWFDownload(66, 1);
  poll(), read(), poll(), read(), poll(), read();
  MBStartWFDownload(66, 0);
  poll();
  MBStartWFDownload(66, 1);
  poll(), read();
  EXPECT_EQ(seen, (std::vector<std::int32_t>{1, 26, 1, 26, 2, 0, 2, 1, 26}));
}

}  // namespace
}  // namespace rx9400::simtest
