// rx9400-soak: drives the instrument over the simulator as the executive does through a whole shift,
// and reports what it cost: passes per second, resident memory after warm-up, at the end and at its
// peak, and heap allocations per idle pass.
//
//   rx9400-soak [PASSES] [EXPOSURE_EVERY]
//
// Each pass polls for data; every tenth pass the supervision runs; exposures arrive every
// EXPOSURE_EVERY passes (default 20); every 200 passes both waveforms are downloaded; every 500 the
// settings change; every 20000 the detectors are reset and connected again. Exit code 1 when resident
// memory grew by more than 4 MiB after warm-up (not checked under AddressSanitizer, whose quarantine
// grows by design; its leak check runs at exit instead).
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>

#include "../../bench/BenchSupport.h"
#include "session/QuerySession.h"

#if defined(__SANITIZE_ADDRESS__)
#define RX9400_SOAK_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define RX9400_SOAK_SANITIZED 1
#endif
#endif

#ifndef RX9400_SOAK_SANITIZED
#include "../../bench/AllocationCounter.h"
#else
namespace {
std::atomic<long> gAllocations{0};
}  // namespace
#endif

namespace rx9400 {
namespace {

/// A field of /proc/self/status in KiB ("VmRSS", "VmHWM").
long statusKiB(const std::string& field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(field + ":", 0) == 0) return std::atol(line.c_str() + field.size() + 1);
  }
  return 0;
}

std::string detectors(int every) {
  const std::string polls = std::to_string(every);
  return R"({"identifier": 101, "typeCode": 1, "pollsBeforeExposure": )" + polls +
         R"(, "repeatExposures": true, "exposures": [{"kind": "radio", "waveform": {"points": 2000}}]},
            {"identifier": 202, "typeCode": 2, "mas": {"pollsBeforeExposure": )" +
         polls + R"(, "repeatExposures": true,
              "exposures": [{"mA": 200, "mAs": 20, "pulses": 1, "waveform": {"points": 3000}}]}},
            {"identifier": 303, "typeCode": 3, "pollsBeforeExposure": )" +
         polls + R"(, "repeatExposures": true, "exposures": [{"kind": "radio", "dose": 2.5}]})";
}

int run(long passes, int exposureEvery) {
  SimulatedInstrument sim(detectors(exposureEvery));
  Instrument& instrument = sim.instrument;
  QuerySession query(sim.context);
  instrument.pCurrentMode("RADIO");
  instrument.EnableMeasurements(true);
  const long warmUp = passes / 10;
  long warmRss = 0;
  long downloads = 0;
  long dataPasses = 0;
  const auto start = std::chrono::steady_clock::now();
  for (long pass = 0; pass < passes; ++pass) {
    if (instrument.CheckDataStatus()) ++dataPasses;
    if (pass % 10 == 0) {
      instrument.CheckDetectorStatus();
      instrument.CheckConnectionStatus();
      instrument.CheckSleepStatus();
    }
    if (pass % 200 == 100) {
      instrument.GetWaveformInSecs(0.0F, 0.1F, 500, 0);
      instrument.GetWaveformInMilliSec(0.0F, 100.0F, 500);
      downloads += 2;
    }
    if (pass % 500 == 250) {
      instrument.pCurrentMode(pass % 1000 == 250 ? "FLUORO" : "RADIO");
      instrument.ChangeSettings();
      instrument.ChangeAllsettings();
    }
    if (pass % 20000 == 10000) {
      query.ResetTheDetectors();
      sim.connectEveryDetector();
      instrument.EnableMeasurements(true);
    }
    if (pass % 1000 == 0) sim.clearLog();
    if (pass + 1 == warmUp) warmRss = statusKiB("VmRSS");
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const long finalRss = statusKiB("VmRSS");

  // Idle: detectors connected, nothing measured.
  SimulatedInstrument idle(R"({"identifier": 101, "typeCode": 1}, {"identifier": 303, "typeCode": 3})");
  idle.instrument.pCurrentMode("RADIO");
  idle.instrument.EnableMeasurements(true);
  for (int pass = 0; pass < 100; ++pass) idle.instrument.CheckDataStatus();
  const long before = gAllocations.load();
  constexpr int kIdlePasses = 1000;
  for (int pass = 0; pass < kIdlePasses; ++pass) idle.instrument.CheckDataStatus();
  const double perIdlePass = static_cast<double>(gAllocations.load() - before) / kIdlePasses;

  std::printf("soak: %ld passes (%ld with data, %ld waveform downloads) in %.2f s: %.0f passes/s\n", passes,
              dataPasses, downloads, seconds, static_cast<double>(passes) / seconds);
  std::printf("soak: resident memory %ld KiB after warm-up, %ld KiB at the end, %ld KiB at peak\n", warmRss,
              finalRss, statusKiB("VmHWM"));
#ifdef RX9400_SOAK_SANITIZED
  (void)perIdlePass;
  std::printf("soak: allocations not counted under AddressSanitizer; leaks are checked at exit\n");
  return 0;
#else
  std::printf("soak: %.2f heap allocations per idle pass\n", perIdlePass);
  if (finalRss - warmRss > 4096) {
    std::printf("soak: FAIL resident memory grew by %ld KiB after warm-up\n", finalRss - warmRss);
    return 1;
  }
  return 0;
#endif
}

}  // namespace
}  // namespace rx9400

int main(int argc, char** argv) {
  const long passes = argc > 1 ? std::atol(argv[1]) : 100000;
  const int every = argc > 2 ? std::atoi(argv[2]) : 20;
  return rx9400::run(passes > 0 ? passes : 1, every > 0 ? every : 20);
}
