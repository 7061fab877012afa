// What the simulator's tests share: the fixture, scenarios of one detector, connecting, polling and the
// shared-memory sections.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "SimControl.h"

// The device library's functions, declared from the one list of exports.
namespace rx9400 {
extern "C" {
#define MB_FUNCTION(Result, Name, Parameters, Arguments) Result MB_STDCALL Name Parameters;
#include "device/MBFunctionList.h"
}
}  // namespace rx9400

namespace rx9400::simtest {

/// The whole text of a text export (SimGetLastError, SimGetDefaultScenario, ...).
template <typename Export>
std::string text(Export get) {
  std::string s(static_cast<std::size_t>(get(nullptr, 0)) + 1, '\0');
  get(s.data(), static_cast<std::int32_t>(s.size()));
  return s.c_str();
}

inline void loadScenario(const std::string& json) {
  ASSERT_EQ(SimLoadScenarioText(json.c_str()), kSimOk) << text(SimGetLastError);
}

/// A scenario of one detector; `fields` are further fields of the detector.
inline std::string one(std::int32_t id, int typeCode, const std::string& fields = "") {
  return R"({"detectors": [{"identifier": )" + std::to_string(id) + R"(, "typeCode": )" +
         std::to_string(typeCode) + (fields.empty() ? "" : ", " + fields) + "}]}";
}

/// An identifier of this test process alone, so that tests running side by side use different sections.
inline std::int32_t ownId() {
  return 7000000 + static_cast<std::int32_t>(getpid() % 1000000);
}

/// Loads the scenario, scans and connects detector `id`.
inline void connect(std::int32_t id, const std::string& scenario) {
  loadScenario(scenario);
  MBScanForDetectors();
  for (int polls = 0; MBGetScanCompleteStatus() == 1 && polls < 100;) ++polls;
  std::uint8_t type = 0;
  MBConnectToDetectors(&id, &type, 1);
}

inline DetectorStatus status(std::int32_t id) {
  DetectorStatus s{};
  MBGetDetectorStatus(&s, id);
  return s;
}

/// Arms an all-in-one detector, polls until its data are available and reads them.
inline void deliverAio(std::int32_t id) {
  MBEnableMeasurement(id);
  for (int poll = 0; poll < 50 && status(id).dataAvailable == 0;) ++poll;
  AioMeasuredData data{};
  EXPECT_EQ(MBGetMeasuredData(&data, id, 0), 1);
}

inline std::string fileText(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

/// The samples of the detector's section (POSIX object "/MB_" + identifier padded to 8 digits), if any.
inline std::optional<std::vector<std::int32_t>> readSection(std::int32_t id) {
  char name[32];
  std::snprintf(name, sizeof name, "/dev/shm/MB_%08d", static_cast<int>(id));
  if (!std::filesystem::exists(name)) return std::nullopt;
  const std::string bytes = fileText(name);
  std::vector<std::int32_t> samples(bytes.size() / 4);
  std::memcpy(samples.data(), bytes.data(), samples.size() * 4);  // a little-endian host
  return samples;
}

/// Every test closes the application at its end.
class SimTest : public ::testing::Test {
 protected:
  void TearDown() override { MBCloseApplication(); }
};

template <typename Row>
class SimTable : public SimTest, public ::testing::WithParamInterface<Row> {};

}  // namespace rx9400::simtest
