// Waveform texts per sample, through the fast all-in-one path and through the general conversion, and
// whole downloads against the simulator at two sizes each (a linear cost doubles with the size).
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "core/SampleText.h"
#include "instrument/Instrument.h"

namespace rx9400 {
namespace {

/// A kV trace in tenths: a rise to 80 kV, a plateau with a ripple of a few tenths, a fall.
std::vector<std::int32_t> kvTrace(std::size_t count) {
  std::vector<std::int32_t> samples(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double edge = std::min({1.0, 20.0 * i / count, 15.0 * (count - i) / count});
    samples[i] = static_cast<std::int32_t>(std::lround(edge * (800 + 12 * std::sin(i * 0.1))));
  }
  return samples;
}

void perSample(benchmark::State& run, std::int64_t samples) {
  run.counters["per_sample"] = benchmark::Counter(static_cast<double>(run.iterations() * samples),
                                                  benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_AioTextFastPath(benchmark::State& run) {
  const std::vector<std::int32_t> samples = kvTrace(static_cast<std::size_t>(run.range(0)));
  for (auto _ : run) {
    std::string text = aioSamplesText(samples.data(), samples.size(), ".");
    benchmark::DoNotOptimize(text.data());
  }
  perSample(run, run.range(0));
}
BENCHMARK(BM_AioTextFastPath)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_AioTextGeneralPath(benchmark::State& run) {
  const std::vector<std::int32_t> samples = kvTrace(static_cast<std::size_t>(run.range(0)));
  for (auto _ : run) {
    std::string text = aioSamplesTextGeneral(samples.data(), samples.size(), ".");
    benchmark::DoNotOptimize(text.data());
  }
  perSample(run, run.range(0));
}
BENCHMARK(BM_AioTextGeneralPath)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(3);

/// An all-in-one detector (4711) and an mAs meter (4712) whose exposures recorded `aioPoints` and
/// `masPoints` samples, connected and delivered.
struct SimulatedDownload : SimulatedInstrument {
  SimulatedDownload(std::int64_t aioPoints, std::int64_t masPoints)
      : SimulatedInstrument(
            R"({"identifier": 4711, "typeCode": 1, "exposures": [{"waveform": {"points": )" +
            std::to_string(aioPoints) +
            R"(}}]}, {"identifier": 4712, "typeCode": 2, "mas": {"exposures": [{"span": 100, )"
            R"("waveform": {"points": )" +
            std::to_string(masPoints) + "}}]}}") {
    MBdllFunctions& library = context.library;
    instrument.EnableMeasurements(true);
    for (int read = 0; read < 20; ++read) {
      if (library.MBGetDetectorStatus(4711).dataAvailable != 0) library.MBGetMeasuredData(4711);
      library.MBGetmAsMeasuredData(4712);
    }
    instrument.pCurrentMode("RADIO");
  }
  /// Only one slot: the waveform member returns the last slot's text.
  void keepOnly(std::int32_t kind) {
    const std::size_t slot = kind == 1 ? 0 : 1;
    context.state.setConnectedDetectors({context.state.detectors[slot]}, {kind});
  }
};

void BM_GetWaveformInSecsAllInOne(benchmark::State& run) {
  const std::int64_t points = run.range(0);
  SimulatedDownload download(points, 26);
  download.keepOnly(1);
  const auto all = static_cast<float>(points);  // milliseconds: one sample a millisecond, every sample
  std::size_t length = 0;
  for (auto _ : run) {
    length = download.instrument.GetWaveformInSecs(0, all, static_cast<std::int32_t>(points), 1).size();
    benchmark::DoNotOptimize(length);
  }
  if (length < static_cast<std::size_t>(points)) run.SkipWithError("the waveform did not come");
  perSample(run, points);
}
BENCHMARK(BM_GetWaveformInSecsAllInOne)->Arg(1000000)->Arg(2000000)->Unit(benchmark::kMillisecond);

void BM_GetWaveformInSecsMas(benchmark::State& run) {
  const std::int64_t points = run.range(0);
  SimulatedDownload download(10, points);
  download.keepOnly(2);
  std::size_t length = 0;
  for (auto _ : run) {
    length = download.instrument.GetWaveformInSecs(0, 10, 100, 2).size();
    benchmark::DoNotOptimize(length);
    run.PauseTiming();
    download.clearLog();  // the simulator logs every block
    run.ResumeTiming();
  }
  if (length < static_cast<std::size_t>(points / 2)) run.SkipWithError("the waveform did not come");
  perSample(run, points > 30000 ? points / 2 : points);
}
BENCHMARK(BM_GetWaveformInSecsMas)->Arg(100000)->Arg(200000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace rx9400
