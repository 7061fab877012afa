// What the simulator's tests share: the fixture, scenarios of one detector, scanning and connecting,
// the text exports and the shared-memory sections.
#pragma once

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
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

/// The whole text of a text export (SimGetCallLog, SimGetLastError, ...).
template <typename Export, typename... Args>
std::string text(Export get, Args... args) {
  std::string s(static_cast<std::size_t>(get(args..., nullptr, 0)) + 1, '\0');
  get(args..., s.data(), static_cast<std::int32_t>(s.size()));
  return s.c_str();
}

inline std::vector<std::string> logLines() {
  std::istringstream stream(text(SimGetCallLog));
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
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

inline std::int16_t scanAndConnect(std::vector<std::int32_t> ids) {
  MBScanForDetectors();
  for (int polls = 0; MBGetScanCompleteStatus() == 1 && polls < 100;) ++polls;
  std::vector<std::uint8_t> types(ids.size(), 0);
  return MBConnectToDetectors(ids.data(), types.data(), static_cast<std::uint8_t>(ids.size()));
}

inline DetectorStatus status(std::int32_t id) {
  DetectorStatus s{};
  MBGetDetectorStatus(&s, id);
  return s;
}

inline SimDetectorState detectorState(std::int32_t id) {
  SimDetectorState state{};
  SimGetDetectorState(id, &state);
  return state;
}

/// Arms an all-in-one detector, polls until its data are available and reads them.
inline AioMeasuredData deliverAio(std::int32_t id) {
  MBEnableMeasurement(id);
  for (int poll = 0; poll < 50 && status(id).dataAvailable == 0;) ++poll;
  AioMeasuredData data{};
  EXPECT_EQ(MBGetMeasuredData(&data, id, 0), 1);
  return data;
}

/// The bytes of the detector's section (POSIX object "/MB_" + identifier padded to 8 digits), if any.
inline std::optional<std::string> readSection(std::int32_t id) {
  char name[32];
  std::snprintf(name, sizeof name, "/MB_%08d", static_cast<int>(id));
  const int fd = shm_open(name, O_RDONLY, 0);
  if (fd < 0) return std::nullopt;
  struct stat info {};
  fstat(fd, &info);
  std::string bytes(static_cast<std::size_t>(info.st_size), '\0');
  void* view = mmap(nullptr, bytes.size(), PROT_READ, MAP_SHARED, fd, 0);
  close(fd);
  if (view == MAP_FAILED) return bytes;
  std::memcpy(bytes.data(), view, bytes.size());
  munmap(view, bytes.size());
  return bytes;
}

/// The section's little-endian 32-bit samples.
inline std::vector<std::int32_t> samplesOf(const std::string& bytes) {
  std::vector<std::int32_t> samples(bytes.size() / 4);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const auto* b = reinterpret_cast<const std::uint8_t*>(bytes.data() + 4 * i);
    samples[i] = static_cast<std::int32_t>(b[0] | b[1] << 8 | b[2] << 16 | std::uint32_t{b[3]} << 24);
  }
  return samples;
}

/// Every test starts from the built-in default scenario (an all-in-one with mAs meter 4711, a dosimeter
/// 4712) and closes the application at its end.
class SimTest : public ::testing::Test {
 protected:
  void SetUp() override { loadScenario(""); }
  void TearDown() override { MBCloseApplication(); }
};

template <typename Row>
class SimTable : public SimTest, public ::testing::WithParamInterface<Row> {};

}  // namespace rx9400::simtest
