// The recorder's cost per call: the same calls into the simulator directly and through the recorder,
// which writes and flushes a line for each to a session file (target: under 5 µs a call more).
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "../sim/SimControl.h"
#include "device/MBFunctionTable.h"
#include "platform/DynamicLibrary.h"

namespace rx9400 {
namespace {

namespace fs = std::filesystem;

struct Library {
  std::unique_ptr<DynamicLibrary> library;
  decltype(MBFunctionTable::MBGetDetectorStatus) status = nullptr;
  decltype(MBFunctionTable::MBGetmAsWaveFormDataPoints) block = nullptr;
  decltype(MBFunctionTable::MBGetMeasuredData) measured = nullptr;
};

Library bind(const std::string& path) {
  std::string error;
  Library bound;
  bound.library = openDynamicLibraryAt(path, error);
  if (bound.library == nullptr) return bound;
  bound.status = reinterpret_cast<decltype(bound.status)>(bound.library->findSymbol("MBGetDetectorStatus"));
  bound.block =
      reinterpret_cast<decltype(bound.block)>(bound.library->findSymbol("MBGetmAsWaveFormDataPoints"));
  bound.measured = reinterpret_cast<decltype(bound.measured)>(bound.library->findSymbol("MBGetMeasuredData"));
  return bound;
}

/// The simulator with the default scenario's detectors connected, and a recorder in front of it.
struct Libraries {
  Libraries() {
    folder = fs::temp_directory_path() / ("rx9400-recorder-bench-" + std::to_string(getpid()));
    fs::create_directories(folder);
    fs::copy_file(RX9400_RECORDER_PATH, folder / "libTamsaMBDll.so", fs::copy_options::overwrite_existing);
    setenv("TAMSA_RECORDER_LIBRARY", RX9400_SIMULATOR_PATH, 1);
    setenv("TAMSA_RECORDER_FILE", (folder / "session.jsonl").c_str(), 1);
    setenv("TAMSA_RECORDER_MAX_BYTES", "67108864", 1);  // rotations included in the figure
    simulator = bind(RX9400_SIMULATOR_PATH);
    recorder = bind((folder / "libTamsaMBDll.so").string());
    const auto control = [&](const char* name) { return simulator.library->findSymbol(name); };
    reinterpret_cast<decltype(&SimLoadScenarioText)>(control("SimLoadScenarioText"))(nullptr);
    reinterpret_cast<decltype(MBFunctionTable::MBRegisterApplication)>(control("MBRegisterApplication"))(1);
    reinterpret_cast<decltype(MBFunctionTable::MBScanForDetectors)>(control("MBScanForDetectors"))();
    const auto complete = reinterpret_cast<decltype(MBFunctionTable::MBGetScanCompleteStatus)>(
        control("MBGetScanCompleteStatus"));
    for (int poll = 0; poll < 10 && complete() == 1; ++poll) {
    }
    std::int32_t ids[] = {4711, 4712};
    std::uint8_t types[] = {4, 3};
    reinterpret_cast<decltype(MBFunctionTable::MBConnectToDetectors)>(control("MBConnectToDetectors"))(
        ids, types, 2);
    clearLog = reinterpret_cast<decltype(&SimClearCallLog)>(control("SimClearCallLog"));
  }
  ~Libraries() { fs::remove_all(folder); }

  fs::path folder;
  Library simulator;
  Library recorder;
  decltype(&SimClearCallLog) clearLog = nullptr;
};

Libraries& libraries() {
  static Libraries instance;
  return instance;
}

/// range(0): 0 the simulator, 1 through the recorder.
const Library& chosen(const benchmark::State& run) {
  return run.range(0) == 0 ? libraries().simulator : libraries().recorder;
}

void BM_StatusPoll(benchmark::State& run) {
  const Library& library = chosen(run);
  if (library.status == nullptr) return run.SkipWithError("library not loaded");
  DetectorStatus status{};
  std::int64_t calls = 0;
  for (auto _ : run) {
    library.status(&status, 4711);
    if (++calls % 100000 == 0) libraries().clearLog();  // the simulator's log would grow without end
  }
  run.SetItemsProcessed(run.iterations());
}
BENCHMARK(BM_StatusPoll)->ArgName("recorder")->Arg(0)->Arg(1);

void BM_MeasuredData(benchmark::State& run) {
  const Library& library = chosen(run);
  if (library.measured == nullptr) return run.SkipWithError("library not loaded");
  AioMeasuredData data{};
  std::int64_t calls = 0;
  for (auto _ : run) {
    library.measured(&data, 4711, 0);
    if (++calls % 100000 == 0) libraries().clearLog();
  }
  run.SetItemsProcessed(run.iterations());
}
BENCHMARK(BM_MeasuredData)->ArgName("recorder")->Arg(0)->Arg(1);

/// One block of an mAs waveform download: 26 points filled, 104 bytes written as hex.
void BM_MasBlock(benchmark::State& run) {
  const Library& library = chosen(run);
  if (library.block == nullptr) return run.SkipWithError("library not loaded");
  std::int32_t values[26] = {};
  std::int64_t calls = 0;
  for (auto _ : run) {
    library.block(4711, 0, 1, 26, values);
    if (++calls % 100000 == 0) libraries().clearLog();
  }
  run.SetItemsProcessed(run.iterations());
}
BENCHMARK(BM_MasBlock)->ArgName("recorder")->Arg(0)->Arg(1);

}  // namespace
}  // namespace rx9400
