// The cost of one exposure-polling pass per detector slot, beside the cost of the device-library calls
// the pass makes, for an idle pass and for a pass that delivers data.
//
// Two libraries are measured: the detector simulator (what the tests run against; its own call log
// makes each call cost a string), and an in-process stub that answers instantly, which isolates the
// plug-in's own cost and lets the benchmark count the heap allocations of an idle pass (target: none).
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "core/DialogFactory.h"
#include "core/PluginContext.h"
#include "instrument/Instrument.h"

#include "AllocationCounter.h"

namespace rx9400 {
namespace {

// The stub library: every detector connected, battery normal, nothing measured.
std::int32_t MB_STDCALL stubStatus(DetectorStatus* status, std::int32_t) {
  std::memset(status, 0, sizeof *status);
  status->connectionState = kConnected;
  status->battery.batteryState = 1;
  status->battery.chargePercent = 80;
  return 1;
}
std::int32_t MB_STDCALL stubMas(MasMeasuredData* data, std::int32_t, std::int32_t) {
  std::memset(data, 0, sizeof *data);
  data->meterState = 1;
  return 1;
}

class StubLibrary final : public DynamicLibrary {
 public:
  void* findSymbol(const char* name) const override {
    if (std::strcmp(name, "MBGetDetectorStatus") == 0) return reinterpret_cast<void*>(&stubStatus);
    if (std::strcmp(name, "MBGetmAsMeasuredData") == 0) return reinterpret_cast<void*>(&stubMas);
    return nullptr;
  }
};

/// `slots` detectors of type 4 (all-in-one with mAs meter) in the table.
void fillTable(SharedState& state, int slots) {
  std::vector<DetectorInfo> detectors(static_cast<std::size_t>(slots));
  std::vector<std::int32_t> kinds(static_cast<std::size_t>(slots), 4);
  for (int i = 0; i < slots; ++i) detectors[static_cast<std::size_t>(i)].identifier = 5001 + i;
  state.setConnectedDetectors(detectors, kinds);
}

void BM_IdlePassStubLibrary(benchmark::State& run) {
  QuietServices services;
  PluginContext context(MBdllFunctions("stub", [](std::string&) { return std::make_unique<StubLibrary>(); }),
                        services.services());
  Instrument instrument(context, services);
  fillTable(context.state, static_cast<int>(run.range(0)));
  instrument.pCurrentMode("RADIO");
  instrument.CheckDataStatus();  // loads the library
  const long before = gAllocations;
  for (auto _ : run) benchmark::DoNotOptimize(instrument.CheckDataStatus());
  const long allocated = gAllocations - before;  // read before the counters' own allocations
  const double passes = static_cast<double>(run.iterations());
  run.counters["allocations_per_pass"] = static_cast<double>(allocated) / passes;
  run.counters["per_slot"] = benchmark::Counter(passes * static_cast<double>(run.range(0)),
                                                benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  if (allocated != 0) run.SkipWithError("an idle pass allocated memory");
}
BENCHMARK(BM_IdlePassStubLibrary)->Arg(1)->Arg(3)->Arg(8);

/// The simulator with `slots` connected, armed all-in-one detectors with mAs meter; `exposure` is the
/// JSON of their exposures (empty: none, the pass stays idle).
struct SimulatedPass : SimulatedInstrument {
  SimulatedPass(int slots, const std::string& exposures) : SimulatedInstrument(detectors(slots, exposures)) {
    instrument.pDoseUnits(1);
    instrument.EnableMeasurements(true);
  }
  static std::string detectors(int slots, const std::string& exposures) {
    std::string list;
    for (int i = 0; i < slots; ++i) {
      list += (i > 0 ? "," : "") + std::string(R"({"identifier": )") + std::to_string(5001 + i) +
              R"(, "typeCode": 1)" + (exposures.empty() ? "" : ", " + exposures) + "}";
    }
    return list;
  }
  /// The simulator's call log grows by a line a call: emptied outside the timed part.
  void trimLog(benchmark::State& run, std::int64_t iteration) {
    if (iteration % 512 != 0) return;
    run.PauseTiming();
    clearLog();
    run.ResumeTiming();
  }
};

void BM_IdlePassSimulator(benchmark::State& run) {
  SimulatedPass pass(static_cast<int>(run.range(0)), "");
  pass.instrument.pCurrentMode("RADIO");
  std::int64_t iteration = 0;
  for (auto _ : run) {
    benchmark::DoNotOptimize(pass.instrument.CheckDataStatus());
    pass.trimLog(run, ++iteration);
  }
  run.counters["per_slot"] = benchmark::Counter(static_cast<double>(run.iterations() * run.range(0)),
                                                benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_IdlePassSimulator)->Arg(1)->Arg(3)->Arg(8);

/// The library calls an idle pass makes for an all-in-one detector: its status, nothing else.
void BM_SimulatorCallsOfAnIdlePass(benchmark::State& run) {
  SimulatedPass pass(static_cast<int>(run.range(0)), "");
  std::int64_t iteration = 0;
  for (auto _ : run) {
    for (std::size_t slot = 0; slot < pass.context.state.slotCount(); ++slot) {
      benchmark::DoNotOptimize(
          pass.context.library.MBGetDetectorStatus(pass.context.state.identifierAt(slot)));
    }
    pass.trimLog(run, ++iteration);
  }
  run.counters["per_slot"] = benchmark::Counter(static_cast<double>(run.iterations() * run.range(0)),
                                                benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_SimulatorCallsOfAnIdlePass)->Arg(1)->Arg(3)->Arg(8);

/// A fluoroscopy run that delivers data at every poll: each pass reads, formats and raises DataReady
/// and announces the waveform.
void BM_DataPassSimulator(benchmark::State& run) {
  SimulatedPass pass(1,
                     R"("exposures": [{"kind": "fluoro", "deliveries": 1000000, "pollsBetweenDeliveries": 0,
                                          "pollsBeforeStart": 0}], "repeatExposures": true)");
  pass.instrument.pCurrentMode("FLUORO");
  std::int64_t iteration = 0;
  std::int64_t finished = 0;
  for (auto _ : run) {
    finished += pass.instrument.CheckDataStatus() ? 1 : 0;
    pass.trimLog(run, ++iteration);
  }
  run.counters["passes_with_data"] = static_cast<double>(finished) / static_cast<double>(run.iterations());
}
BENCHMARK(BM_DataPassSimulator);

/// The library calls of a pass with data: status and the measured-data record.
void BM_SimulatorCallsOfADataPass(benchmark::State& run) {
  SimulatedPass pass(1, "");
  const std::int32_t id = pass.context.state.identifierAt(0);
  std::int64_t iteration = 0;
  for (auto _ : run) {
    benchmark::DoNotOptimize(pass.context.library.MBGetDetectorStatus(id));
    benchmark::DoNotOptimize(pass.context.library.MBGetMeasuredData(id));
    pass.trimLog(run, ++iteration);
  }
}
BENCHMARK(BM_SimulatorCallsOfADataPass);

}  // namespace
}  // namespace rx9400

BENCHMARK_MAIN();
