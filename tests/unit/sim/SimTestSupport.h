// Helpers shared by the simulator's tests: loading scenarios, scanning and connecting, reading the call
// log and the shared-memory sections.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SimControl.h"

// The device library's functions, declared from the one list of exports.
namespace rx9400 {
extern "C" {
#define MB_FUNCTION(Result, Name, Parameters) Result MB_STDCALL Name Parameters;
#include "device/MBFunctionList.h"
}
}  // namespace rx9400

namespace rx9400::simtest {

inline std::string lastError() {
  std::string text(static_cast<std::size_t>(SimGetLastError(nullptr, 0)), '\0');
  SimGetLastError(text.data(), static_cast<std::int32_t>(text.size()));
  text.pop_back();
  return text;
}

inline void loadScenario(const std::string& json) {
  ASSERT_EQ(SimLoadScenarioText(json.c_str()), kSimOk) << lastError();
}

inline std::vector<std::string> logLines() {
  std::string text(static_cast<std::size_t>(SimGetCallLog(nullptr, 0)), '\0');
  SimGetCallLog(text.data(), static_cast<std::int32_t>(text.size()));
  std::vector<std::string> lines;
  std::istringstream stream(text.c_str());
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

inline SimDetectorState detectorState(std::int32_t id) {
  SimDetectorState state{};
  EXPECT_EQ(SimGetDetectorState(id, &state), 1) << "no detector " << id;
  return state;
}

/// Starts a scan and polls it to its end; returns the number of polls that answered "still scanning".
inline int scanToCompletion(int limit = 100) {
  MBScanForDetectors();
  int scanning = 0;
  while (MBGetScanCompleteStatus() == 1 && scanning < limit) ++scanning;
  return scanning;
}

/// Scans and connects the given detectors; returns what MBConnectToDetectors answered.
inline std::int16_t scanAndConnect(std::vector<std::int32_t> ids) {
  scanToCompletion();
  std::vector<std::uint8_t> types(ids.size(), 0);
  return MBConnectToDetectors(ids.data(), types.data(), static_cast<std::uint8_t>(ids.size()));
}

inline DetectorStatus status(std::int32_t id) {
  DetectorStatus s{};
  MBGetDetectorStatus(&s, id);
  return s;
}

/// Polls the detector's status until it reports data available; returns the polls taken, or -1.
inline int pollUntilData(std::int32_t id, int limit = 50) {
  for (int poll = 1; poll <= limit; ++poll) {
    if (status(id).dataAvailable != 0) return poll;
  }
  return -1;
}

/// Arms an all-in-one detector, waits for its exposure and reads the data, so that its waveform is
/// recorded.
inline AioMeasuredData deliverAioExposure(std::int32_t id) {
  MBEnableMeasurement(id);
  EXPECT_GT(pollUntilData(id), 0);
  AioMeasuredData data{};
  MBGetMeasuredData(&data, id, 0);
  return data;
}

/// The bytes of the POSIX shared-memory object "/" + name, or nothing when it does not exist.
inline std::optional<std::vector<std::uint8_t>> readSection(const std::string& name) {
  const int fd = shm_open(("/" + name).c_str(), O_RDONLY, 0);
  if (fd < 0) return std::nullopt;
  struct stat info {};
  fstat(fd, &info);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(info.st_size));
  if (!bytes.empty()) {
    void* view = mmap(nullptr, bytes.size(), PROT_READ, MAP_SHARED, fd, 0);
    if (view != MAP_FAILED) {
      std::memcpy(bytes.data(), view, bytes.size());
      munmap(view, bytes.size());
    }
  }
  close(fd);
  return bytes;
}

/// Little-endian 32-bit samples of a section.
inline std::vector<std::int32_t> samplesOf(const std::vector<std::uint8_t>& bytes) {
  std::vector<std::int32_t> samples;
  for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4) {
    samples.push_back(static_cast<std::int32_t>(bytes[i] | bytes[i + 1] << 8 | bytes[i + 2] << 16 |
                                                static_cast<std::uint32_t>(bytes[i + 3]) << 24));
  }
  return samples;
}

/// Every test starts from the built-in default scenario.
class SimTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(SimLoadScenarioText(nullptr), kSimOk) << lastError(); }
  void TearDown() override { MBCloseApplication(); }
};

}  // namespace rx9400::simtest
