// The library's surface: every export under its plain name and in the Windows export list, the shipped
// scenarios and one refusal for each way a scenario can break the format.
#include <dlfcn.h>

#include <iterator>
#include <set>

#include "SimTestSupport.h"
#include "device/MBFunctionTable.h"

namespace rx9400::simtest {
namespace {

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
  loadScenario(one(5, 1));
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

}  // namespace
}  // namespace rx9400::simtest
