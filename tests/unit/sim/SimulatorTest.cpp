// The simulator's own tests: the library's surface (every export under its plain name and in the Windows
// export list, the shipped scenarios, one refusal for each way a scenario breaks the format), what the
// status polls report (exposure cycles, zero-error windows), and the waveforms (the all-in-one samples
// published in the detector's section, the mAs waveform read in blocks, their scripted faults).
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "SimControl.h"
#include "device/MBFunctionTable.h"
#include "platform/posix/PosixSectionName.h"

// The device library's functions, declared from the one list of exports.
namespace rx9400 {
extern "C" {
#define MB_FUNCTION(Result, Name, Parameters, Arguments) Result MB_STDCALL Name Parameters;
#include "device/MBFunctionList.h"
}
}  // namespace rx9400

namespace rx9400::simtest {
namespace {

/// The whole text of a text export (SimGetLastError, SimGetDefaultScenario, ...).
template <typename Export>
std::string text(Export get) {
  std::string s(static_cast<std::size_t>(get(nullptr, 0)) + 1, '\0');
  get(s.data(), static_cast<std::int32_t>(s.size()));
  return s.c_str();
}

/// A scenario of one detector; `fields` are further fields of the detector.
std::string one(std::int32_t id, int typeCode, const std::string& fields = "") {
  return R"({"detectors": [{"identifier": )" + std::to_string(id) + R"(, "typeCode": )" +
         std::to_string(typeCode) + (fields.empty() ? "" : ", " + fields) + "}]}";
}

/// An identifier of this test process alone, so that tests running side by side use different sections.
std::int32_t ownId() {
  return 7000000 + static_cast<std::int32_t>(getpid() % 1000000);
}

/// Loads a scenario of detector `id` alone, scans and connects it.
void connect(std::int32_t id, int typeCode, const std::string& fields) {
  ASSERT_EQ(SimLoadScenarioText(one(id, typeCode, fields).c_str()), kSimOk) << text(SimGetLastError);
  MBScanForDetectors();
  for (int polls = 0; MBGetScanCompleteStatus() == 1 && polls < 100;) ++polls;
  std::uint8_t type = 0;
  MBConnectToDetectors(&id, &type, 1);
}

DetectorStatus status(std::int32_t id) {
  DetectorStatus s{};
  MBGetDetectorStatus(&s, id);
  return s;
}

/// Arms an all-in-one detector, polls until its data are available and reads them.
void deliverAio(std::int32_t id) {
  MBEnableMeasurement(id);
  for (int poll = 0; poll < 50 && status(id).dataAvailable == 0;) ++poll;
  AioMeasuredData data{};
  EXPECT_EQ(MBGetMeasuredData(&data, id, 0), 1);
}

std::string fileText(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

/// The samples of the detector's section ("MB_" + identifier padded to 8 digits), if any.
std::optional<std::vector<std::int32_t>> readSection(std::int32_t id) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "%08d", static_cast<int>(id));
  const std::string name = "/dev/shm" + posixSectionPath(std::string("MB_") + digits);
  if (!std::filesystem::exists(name)) return std::nullopt;
  const std::string bytes = fileText(name);
  std::vector<std::int32_t> samples(bytes.size() / 4);
  std::memcpy(samples.data(), bytes.data(), samples.size() * 4);  // a little-endian host
  return samples;
}

/// Every test closes the application at its end.
struct SimTest : ::testing::Test {
  void TearDown() override { MBCloseApplication(); }
};

template <typename Row>
class SimTable : public SimTest, public ::testing::WithParamInterface<Row> {};

// ---- The surface ----------------------------------------------------------------------------------------

TEST(SimSurface, EveryExportResolvesByItsPlainNameAndTheWindowsListNamesExactlyThem) {
  std::multiset<std::string> expected = {
      "SimLoadScenarioText", "SimLoadScenarioFile",    "SimReset",
      "SimGetLastError",     "SimGetCallLog",          "SimClearCallLog",
      "SimGetDetectorState", "SimGetLibraryState",     "SimGetDefaultScenario",
      "SimGetChamberFile",   "SimGetUpdateThreadState"};
  expected.insert(std::begin(kMBFunctionNames), std::end(kMBFunctionNames));
  void* library = dlopen(SIM_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  for (const std::string& name : expected) EXPECT_NE(dlsym(library, name.c_str()), nullptr) << name;
  EXPECT_EQ(dlsym(library, "_ZN6rx94003sim9Simulator7restartEv"), nullptr) << "internals are hidden";
  dlclose(library);

  std::istringstream def(fileText(SIM_SOURCE_DIR "/TamsaMBDll.def"));
  std::multiset<std::string> listed;
  bool inExports = false;
  for (std::string line, word; std::getline(def, line);) {
    if (!(std::istringstream(line) >> word) || word[0] == ';') continue;
    if (inExports) listed.insert(word);
    inExports = inExports || word == "EXPORTS";
  }
  EXPECT_EQ(listed, expected);
}

TEST(SimSurface, BuiltInScenarioIsTheShippedDefaultAndEveryShippedScenarioLoads) {
  EXPECT_EQ(text(SimGetDefaultScenario), fileText(SIM_SOURCE_DIR "/scenarios/default.json"));
  for (const auto& entry : std::filesystem::directory_iterator(SIM_SOURCE_DIR "/scenarios"))
    EXPECT_EQ(SimLoadScenarioFile(entry.path().c_str()), kSimOk) << text(SimGetLastError);
}

struct BadScenario {
  std::string json;
  const char* errorPart;  // expected within the error text
};

using SimScenarioErrors = SimTable<BadScenario>;

TEST_P(SimScenarioErrors, AreRefusedWithThePlaceNamedAndTheRunningScenarioKept) {
  ASSERT_EQ(SimLoadScenarioText(one(5, 1).c_str()), kSimOk);
  EXPECT_EQ(SimLoadScenarioText(GetParam().json.c_str()), kSimInvalidScenario);
  EXPECT_NE(text(SimGetLastError).find(GetParam().errorPart), std::string::npos) << text(SimGetLastError);
  SimDetectorState kept{};
  EXPECT_EQ(SimGetDetectorState(5, &kept), 1);
}

const std::string kTwoDetectors =
    R"({"detectors": [{"identifier": 1, "typeCode": 1}, {"identifier": 1, "typeCode": 3}]})";

INSTANTIATE_TEST_SUITE_P(Format, SimScenarioErrors,
                         ::testing::ValuesIn(std::vector<BadScenario>{
                             {"{", "not valid JSON"},
                             {R"({"detector": []})", "detectors: is required"},
                             {one(1, 1, R"("exposures": [{"kvpAvrage": 1}])"),
                              "exposures[0].kvpAvrage: unknown field"},
                             {one(1, 6), "detectors[0].typeCode: must lie in 1 to 5"},
                             {kTwoDetectors, "detectors[1].identifier: used by another detector"},
                             {one(1, 1, R"("calibrationDate": "2026-02-29")"), "not a calendar date"},
                             {one(1, 3, R"("dosimeter": {"chambers": [{"name": "sixteen chars..."}]})"),
                              "chambers[0].name: longer than 15"}}));

// ---- Status polls ---------------------------------------------------------------------------------------

struct Polls {
  int typeCode;
  std::string fields;   // of detector 21
  const char* actions;  // before each poll: 'x' disarm, 'r' disarm and arm again, 'p' shut down
  const char* trace;
};

using SimPolls = SimTable<Polls>;

/// Arms detector 21 and polls it, reading its data whenever a poll reports them. One character per poll:
/// '.' nothing, 's' started, 'd' data; ':', 'S', 'D' the same while fluoroscopy runs; '7' a zero error.
TEST_P(SimPolls, ReportStartDataAndZeroErrorsInTheirTurn) {
  connect(21, GetParam().typeCode, GetParam().fields);
  MBEnableMeasurement(21);
  std::string trace;
  for (const char* action = GetParam().actions; trace.size() < std::strlen(GetParam().trace);) {
    const char act = trace.size() < std::strlen(action) ? action[trace.size()] : '.';
    if (act == 'x' || act == 'r') MBDisableMeasurement(21);
    if (act == 'r') MBEnableMeasurement(21);
    if (act == 'p') MBSetPowerMode(21, kPowerShutDown);
    const DetectorStatus s = status(21);
    const int c = s.dataAvailable != 0 ? 2 : s.exposureStarted != 0 ? 1 : 0;
    trace += s.measurementState == kMeasurementZeroError ? '7' : ".sd:SD"[c + (s.fluoroRunning != 0 ? 3 : 0)];
    AioMeasuredData aio{};
    DoseMeasuredData dose{};
    if (c == 2 && MBGetMeasuredData(&aio, 21, 0) == 0) MBGetDosimeterMeasuredData(&dose, 21, 0);
  }
  EXPECT_EQ(trace, GetParam().trace);
}

const std::string kFluoro =
    R"("exposures": [{"kind": "fluoro", "pollsBeforeStart": 0, "deliveries": 3, "pollsBetweenDeliveries": 1)";

INSTANTIATE_TEST_SUITE_P(
    Polls, SimPolls,
    ::testing::ValuesIn(std::vector<Polls>{
        {1, R"("exposures": [{"pollsBeforeStart": 2, "pollsBeforeData": 1}])", "", "..s.d..."},
        {1, R"("exposures": [{"pollsBeforeStart": 0}])", "x", "......"},
        {1, R"("pollsBeforeExposure": 1, "exposures": [{}, {}])", "", ".sd.sd...."},
        {1, R"("repeatExposures": true, "exposures": [{"pollsBeforeStart": 0}])", "", "sdsdsd"},
        {1, kFluoro + "}]", "", "SD:D:D.."},
        {1, kFluoro + R"(, "fluoroRunning": "lastDelivery"}])", "", "sd.d:D.."},
        {3, R"("exposures": [{"pollsBeforeStart": 0, "pollsBeforeData": 1}])", "", "s.d..."},
        // Zero-error windows, cleared by shutting down or by arming again.
        {1, R"("faults": {"zeroError": {"fromPoll": 2}})", "", ".7777"},
        {1, R"("faults": {"zeroError": {"fromPoll": 1, "polls": 2}})", "", "77.."},
        {1, R"("faults": {"zeroError": true})", "..p", "77.."},
        {1, R"("faults": {"zeroError": true})", "...r", "777."},
        {1, R"("exposures": [{"pollsBeforeStart": 1}], "faults": {"zeroError": {"fromPoll": 2, "polls": 2}})",
         "", ".77sd.."}}));

// ---- Waveforms ------------------------------------------------------------------------------------------

struct Published {
  std::int32_t id;  // 0: one of this process alone
  WaveformParameters asked;
  std::vector<std::int32_t> samples;
};

using SimSection = SimTable<Published>;

TEST_P(SimSection, HoldsTheAskedSamplesInPlaceOfTheLastUntilTheNextExposureOrTheClose) {
  const std::int32_t id = GetParam().id != 0 ? GetParam().id : ownId();
  std::string fields = R"("repeatExposures": true, "exposures": [{"pollsBeforeStart": 0, "waveform": [1)";
  for (int i = 1; i < 100; ++i) fields += "," + std::to_string(10 * i + 1);  // 1, 11, 21, ... 991
  connect(id, 1, fields + "]}]");
  deliverAio(id);
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
  connect(id, 1,
          R"("exposures": [{"kvpAverage": 800, "kvpMaximum": 812, "waveform": {"points": 10000000}}])");
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
  std::string faults;
  std::int64_t answer, sectionBytes;  // answer and availability; sectionBytes -1: no section
};

using SimWaveformFault = SimTable<WaveformFault>;

TEST_P(SimWaveformFault, ShowsInTheAnswerTheAvailabilityAndTheSection) {
  connect(ownId(), 1, R"("exposures": [{"waveform": {"points": 3000}}], "faults": )" + GetParam().faults);
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
  connect(id, 2, fields);
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
                                           MasBlock{0, 2, 26, 0, 50000},    // every second point
                                           MasBlock{58, 1, 4, 58000, 0}));  // past the end: 0

TEST_F(SimTest, MasLinkLossShowsFromTheKthBlockUntilTheNextDownloadStarts) {
  deliverMas(66,
             R"("mas": {"exposures": [{"pollsBeforeStart": 0}]}, "faults": {"masLinkLossAfterBlocks": 2})");
  std::int32_t block[26];
  std::vector<std::int32_t> seen;  // connection states and block answers
  const auto poll = [&] { seen.push_back(status(66).connectionState); };
  const auto read = [&] { seen.push_back(MBGetmAsWaveFormDataPoints(66, 0, 1, 26, block)); };
  MBStartWFDownload(66, 1), poll(), read(), poll(), read(), poll(), read();
  MBStartWFDownload(66, 0), poll(), MBStartWFDownload(66, 1), poll(), read();
  EXPECT_EQ(seen, (std::vector<std::int32_t>{1, 26, 1, 26, 2, 0, 2, 1, 26}));
}

}  // namespace
}  // namespace rx9400::simtest
