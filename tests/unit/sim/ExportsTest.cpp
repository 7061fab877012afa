// The library's surface: every export present under its plain name, the Windows export list complete,
// the shipped scenarios loadable and the scenario format's rules enforced.
#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "SimTestSupport.h"
#include "device/MBFunctionTable.h"

namespace rx9400::simtest {
namespace {

const std::set<std::string> kSimExports = {
    "SimLoadScenarioText", "SimLoadScenarioFile",    "SimReset",
    "SimGetLastError",     "SimGetCallLog",          "SimClearCallLog",
    "SimGetDetectorState", "SimGetLibraryState",     "SimGetDefaultScenario",
    "SimGetChamberFile",   "SimGetUpdateThreadState"};

std::string fileText(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(SimExports, EveryFunctionResolvesByItsPlainName) {
  void* library = dlopen(SIM_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  for (const char* name : kMBFunctionNames) EXPECT_NE(dlsym(library, name), nullptr) << name;
  for (const std::string& name : kSimExports) EXPECT_NE(dlsym(library, name.c_str()), nullptr) << name;
  EXPECT_EQ(dlsym(library, "_ZN6rx94003sim9Simulator7restartEv"), nullptr) << "internals are hidden";
  dlclose(library);
}

TEST(SimExports, WindowsExportListNamesExactlyTheExports) {
  std::istringstream def(fileText(SIM_SOURCE_DIR "/TamsaMBDll.def"));
  std::set<std::string> listed;
  bool inExports = false;
  for (std::string line; std::getline(def, line);) {
    std::istringstream words(line);
    std::string word;
    if (!(words >> word) || word[0] == ';') continue;
    if (word == "EXPORTS") {
      inExports = true;
    } else if (inExports) {
      EXPECT_TRUE(listed.insert(word).second) << word << " listed twice";
    }
  }
  std::set<std::string> expected(kSimExports);
  for (const char* name : kMBFunctionNames) expected.insert(name);
  EXPECT_EQ(listed, expected);
}

TEST(SimExports, BuiltInScenarioIsTheShippedDefaultFile) {
  std::string builtIn(static_cast<std::size_t>(SimGetDefaultScenario(nullptr, 0)), '\0');
  SimGetDefaultScenario(builtIn.data(), static_cast<std::int32_t>(builtIn.size()));
  builtIn.pop_back();
  EXPECT_EQ(builtIn, fileText(SIM_SOURCE_DIR "/scenarios/default.json"));
}

TEST(SimExports, EveryShippedScenarioLoads) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(SIM_SOURCE_DIR "/scenarios")) {
    if (entry.path().extension() != ".json") continue;
    ++files;
    EXPECT_EQ(SimLoadScenarioFile(entry.path().c_str()), kSimOk) << lastError();
  }
  EXPECT_GE(files, 3);
}

TEST(SimExports, TextIsCutToTheBufferAndTheNeededSizeReturned) {
  loadScenario("");
  MBGetUSBStatus();
  ASSERT_EQ(SimGetCallLog(nullptr, 0), 18);  // "MBGetUSBStatus()\n" and the zero byte
  char small[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
  EXPECT_EQ(SimGetCallLog(small, 6), 18);
  EXPECT_STREQ(small, "MBGet");
}

struct BadScenario {
  const char* json;
  const char* errorPart;  // expected within the error text
};

void PrintTo(const BadScenario& bad, std::ostream* out) {
  *out << bad.errorPart;
}

class SimScenarioErrors : public ::testing::TestWithParam<BadScenario> {};

TEST_P(SimScenarioErrors, RefusedWithThePlaceNamedAndTheRunningScenarioKept) {
  loadScenario(R"({"detectors": [{"identifier": 5, "typeCode": 1}]})");
  EXPECT_EQ(SimLoadScenarioText(GetParam().json), kSimInvalidScenario);
  EXPECT_NE(lastError().find(GetParam().errorPart), std::string::npos) << lastError();
  SimDetectorState state{};
  EXPECT_EQ(SimGetDetectorState(5, &state), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Format, SimScenarioErrors,
    ::testing::Values(
        BadScenario{"{", "not valid JSON"}, BadScenario{R"({"detector": []})", "detectors: is required"},
        BadScenario{R"({"detectors": [{"identifier": 1, "typeCode": 1, "exposures": [{"kvpAvrage": 1}]}]})",
                    "detectors[0].exposures[0].kvpAvrage: unknown field"},
        BadScenario{R"({"detectors": [{"identifier": 1, "typeCode": 6}]})",
                    "detectors[0].typeCode: must lie in 1 to 5"},
        BadScenario{R"({"detectors": [{"identifier": 0, "typeCode": 1}]})", "detectors[0].identifier"},
        BadScenario{R"({"detectors": [{"identifier": 1, "typeCode": 1}, {"identifier": 1, "typeCode": 3}]})",
                    "detectors[1].identifier: used by another detector"},
        BadScenario{R"({"detectors": [{"identifier": 1, "typeCode": 3, "targetFilters": {}}]})",
                    "detectors[0].targetFilters: only an all-in-one detector"},
        BadScenario{R"({"detectors": [{"identifier": 1, "typeCode": 1, "calibrationDate": "2026-02-29"}]})",
                    "not a calendar date"},
        BadScenario{R"({"scan": {"completeStatus": 1}, "detectors": []})", "scan.completeStatus"},
        BadScenario{R"({"detectors": [{"identifier": 1, "typeCode": 3,
                        "dosimeter": {"chambers": [{"name": "sixteen chars..."}]}}]})",
                    "chambers[0].name: longer than 15"},
        BadScenario{R"({"detectors": [{"identifier": 1, "typeCode": 2, "exposures": [{}]}]})",
                    "under \"mas\""},
        BadScenario{
            R"({"detectors": [{"identifier": 1, "typeCode": 1, "faults": {"zeroError": {"fromPol": 2}}}]})",
            "faults.zeroError.fromPol: unknown field"}));

TEST(SimScenarioFile, MissingFileIsReported) {
  EXPECT_EQ(SimLoadScenarioFile("/nonexistent/scenario.json"), kSimCannotRead);
  EXPECT_NE(lastError().find("/nonexistent/scenario.json"), std::string::npos);
  EXPECT_EQ(SimLoadScenarioFile(nullptr), kSimBadArgument);
}

TEST(SimScenarioFile, EnvironmentScenarioIsReadAtStartAndAgainOnRegistration) {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "sim_env_scenario_test.json";
  const auto write = [&](const char* text) { std::ofstream(path, std::ios::binary) << text; };
  write(R"({"detectors": [{"identifier": 9001, "typeCode": 1}]})");
  setenv("TAMSA_SIM_SCENARIO", path.c_str(), 1);

  ASSERT_EQ(SimReset(), kSimOk) << lastError();
  SimDetectorState state{};
  EXPECT_EQ(SimGetDetectorState(9001, &state), 1);

  write(R"({"detectors": [{"identifier": 9002, "typeCode": 1}]})");
  MBRegisterApplication(1);
  EXPECT_EQ(SimGetDetectorState(9002, &state), 1) << "re-read on registration";

  loadScenario(R"({"detectors": [{"identifier": 9003, "typeCode": 1}]})");
  MBRegisterApplication(1);
  EXPECT_EQ(SimGetDetectorState(9003, &state), 1) << "a scenario loaded by a test is kept";

  write("{ broken");
  EXPECT_EQ(SimReset(), kSimInvalidScenario);
  EXPECT_NE(lastError().find("TAMSA_SIM_SCENARIO"), std::string::npos);
  EXPECT_EQ(SimGetDetectorState(4711, &state), 1) << "the built-in default stands in";

  unsetenv("TAMSA_SIM_SCENARIO");
  std::filesystem::remove(path);
  EXPECT_EQ(SimReset(), kSimOk);
}

}  // namespace
}  // namespace rx9400::simtest
