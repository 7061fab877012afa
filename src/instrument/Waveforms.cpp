// Waveform download: the all-in-one waveform through the library's shared-memory section, the mAs
// waveform in blocks of 26, each turned into the one text the executive parses and plots.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/NumberText.h"
#include "core/SampleText.h"
#include "device/UpdatePause.h"
#include "instrument/Instrument.h"

namespace rx9400 {

/// One call of a waveform member.
struct WaveformRequest {
  bool inSeconds;  ///< GetWaveformInSecs (traced, one caption for every box) or GetWaveformInMilliSec
  float rMin;
  float rMax;
  std::int32_t ldataPoints;
  std::int32_t lValue;
  std::string decimalSeparator;
};

namespace {

constexpr std::int32_t kMasBlock = 26;
constexpr std::int32_t kMasStepAbove = 30000;

/// The nearest integer, halves to the even neighbour, as a Long or an Integer; out of range is a
/// run-time failure of the member.
template <typename Whole>
Whole nearest(double value) {
  const double rounded = std::nearbyint(value);
  if (!(rounded >= std::numeric_limits<Whole>::min() && rounded <= std::numeric_limits<Whole>::max()))
    throw std::overflow_error("waveform range out of range");
  return static_cast<Whole>(rounded);
}

/// The mAs download switched on for as long as this lives; switched off by `finish()` or on leaving
/// early through a failure.
class MasDownload {
 public:
  MasDownload(MBdllFunctions& library, std::int32_t id) : library_(library), id_(id) {
    library_.MBStartWFDownload(id_, 1);
  }
  ~MasDownload() {
    try {
      if (active_) library_.MBStartWFDownload(id_, 0);
    } catch (...) {
    }
  }
  MasDownload(const MasDownload&) = delete;
  MasDownload& operator=(const MasDownload&) = delete;
  /// Switches the download off and resumes the update thread, as the end of every transfer does.
  void finish() {
    active_ = false;
    library_.MBStartWFDownload(id_, 0);
    library_.MBResumeUpdateThread();
  }

 private:
  MBdllFunctions& library_;
  std::int32_t id_;
  bool active_ = true;
};

}  // namespace

std::string Instrument::GetWaveformInSecs(float rMin, float rMax, std::int32_t ldataPoints,
                                          std::int32_t lValue) {
  return downloadWaveforms({true, rMin, rMax, ldataPoints, lValue, {}});
}

std::string Instrument::GetWaveformInMilliSec(float rMin, float rMax, std::int32_t ldataPoints) {
  return downloadWaveforms({false, rMin, rMax, ldataPoints, 1, {}});
}

std::string Instrument::downloadWaveforms(WaveformRequest request) {
  std::string text;
  try {
    request.decimalSeparator = context_.services.locale.decimalSeparator();
    // Indexes, never references, across the slots: the mAs download lets other members run.
    for (std::size_t slot = 0; slot < context_.state.slotCount(); ++slot) {
      text.clear();
      const std::int32_t id = context_.state.identifierAt(slot);
      if (id <= 0) {
        waveformBox(request,
                    std::to_string(id) + context_.catalogue.text(catalogue::kIsNotAValidSerialNumber),
                    catalogue::kInvalidSerialNumber);
      } else if (request.ldataPoints <= 0) {
        waveformBox(request, context_.catalogue.text(catalogue::kDataPointsNotPositive),
                    catalogue::kInvalidNumberOfDataPoints);
      } else if (!(request.rMax > 0.0F)) {
        waveformBox(request, context_.catalogue.text(catalogue::kExposureEndTimeNotPositive),
                    catalogue::kInvalidExposureEndTime);
      } else if (!request.inSeconds || request.lValue == 1) {
        downloadAioWaveform(request, id, context_.state.kindAt(slot), text);
      } else {
        downloadMasWaveform(request, id, context_.state.kindAt(slot), text);
      }
    }
  } catch (...) {
  }
  return text;
}

void Instrument::waveformBox(const WaveformRequest& request, const std::string& message,
                             std::string_view milliSecCaption) {
  const std::string caption =
      context_.catalogue.text(request.inSeconds ? catalogue::kPlugInResponse : milliSecCaption);
  context_.services.messageBoxes.show(message, caption, kBoxCritical);
}

void Instrument::traceWaveformParameters(const WaveformRequest& request, std::int32_t id, std::int32_t points,
                                         std::int32_t kind, const char* dash) {
  if (!request.inSeconds) return;
  const std::string label = std::string("$GetWaveformInSecs$ - ") + dash;
  TraceChannel& trace = context_.trace;
  trace.trace({label + "Device serial Number :: " + std::to_string(id)});
  trace.trace({label + "DataPoints :: " + std::to_string(points)});
  trace.trace({label + "WaveformType :: " + std::to_string(request.lValue)});
  trace.trace({label + "Detector Type :: " + std::to_string(kind)});
}

void Instrument::noWaveformPoints(const WaveformRequest& request, std::int32_t id, std::int32_t points,
                                  std::int32_t kind) {
  waveformBox(request, context_.catalogue.text(catalogue::kNoDataPointsFoundToDownload),
              catalogue::kNoDataPoints);
  if (request.inSeconds) context_.trace.trace({"Message is Displayed"});
  traceWaveformParameters(request, id, points, kind, "");
}

void Instrument::downloadAioWaveform(const WaveformRequest& request, std::int32_t id, std::int32_t kind,
                                     std::string& text) {
  MBdllFunctions& library = context_.library;
  UpdatePause pause(library);
  const std::int32_t total = library.MBGetNumberOfDataPoints(id);
  traceWaveformParameters(request, id, total, kind, "");
  if (total < 1) {
    pause.resume();
    noWaveformPoints(request, id, total, kind);
    return;
  }

  // The bounds as the executive's language hands them on: each Single's text, read back.
  double lower = valOS(singleText(request.rMin, request.decimalSeparator));
  double upper = valOS(singleText(request.rMax, request.decimalSeparator));
  const bool fluoro = modeIs(catalogue::kFLUORO);
  if (request.inSeconds && !fluoro) {
    lower *= 0.001;
    upper *= 0.001;
  } else if (!request.inSeconds && fluoro) {
    lower *= 1000;
    upper *= 1000;
  }
  const double endTime = upper;
  const double sampleTime = endTime / total;
  const std::int32_t span = nearest<std::int32_t>((upper - lower) / sampleTime);
  const std::int32_t start = nearest<std::int32_t>(lower / sampleTime);
  std::int16_t step = 1;
  std::int32_t count = span;
  if (span > request.ldataPoints) {
    step = nearest<std::int16_t>(static_cast<double>(span) / request.ldataPoints + 0.49);
    count = nearest<std::int32_t>(static_cast<double>(span) / step);
  }
  if (count > total) count = total;
  if (count < 1) return;  // the pause ends with this scope

  WaveformParameters parameters{start, count, step, {0, 0}};
  library.MBSetWaveformParameters(id, parameters);
  const std::int16_t available = library.MBGetWaveformAvailabilityStatus(id);
  if (request.inSeconds) {
    context_.trace.trace({"---Got parameters---"});
    traceWaveformParameters(request, id, total, kind, "-");
  }
  const bool connected = library.MBGetDetectorStatus(id).connectionState == kConnected;
  pause.resume();
  if (!connected || available == 0) return;

  const std::string name = sharedSectionName(id);
  std::vector<std::int32_t> samples(static_cast<std::size_t>(count));
  {
    std::unique_ptr<SharedSection> section = context_.services.sharedMemory.open(name);
    if (section == nullptr) {
      waveformBox(request, context_.catalogue.text(catalogue::kErrorInOpenFileMapping),
                  catalogue::kOpenFileMappingError);
      return;
    }
    std::unique_ptr<SharedView> view = section->map(samples.size() * sizeof(std::int32_t));
    if (view == nullptr) {
      waveformBox(request, context_.catalogue.text(catalogue::kErrorInMapViewFile),
                  catalogue::kMapViewFileError);
      return;
    }
    std::memcpy(samples.data(), view->data(), samples.size() * sizeof(std::int32_t));
  }  // unmapped, then closed
  text = aioSamplesText(samples.data(), samples.size(), request.decimalSeparator);
  resolution_ = static_cast<float>(count / endTime);
  lastActivity_ = context_.services.clock.milliseconds();
}

void Instrument::downloadMasWaveform(const WaveformRequest& request, std::int32_t id, std::int32_t kind,
                                     std::string& text) {
  MBdllFunctions& library = context_.library;
  UpdatePause pause(library);
  std::int32_t span = 0;
  std::int32_t points = library.MBGetmAsNumberOfDataPoints(id, span);
  traceWaveformParameters(request, id, points, kind, "");
  if (points < 1) {
    pause.resume();
    noWaveformPoints(request, id, points, kind);
    return;
  }
  pause.resume();

  const std::uint8_t step = points > kMasStepAbove ? 2 : 1;
  points /= step;
  const std::int32_t blocks = points / kMasBlock;
  const std::int32_t multiplier = masInputType_ == 1 ? 1 : 2;
  std::int32_t start = 0;
  // The count is only the library's word: the text grows with the blocks that arrive.
  std::int32_t values[kMasBlock];
  MasDownload download(library, id);
  const auto connected = [&] { return library.MBGetDetectorStatus(id).connectionState == kConnected; };
  for (std::int32_t block = 0; block < blocks; ++block) {
    if (!connected()) {
      download.finish();
      return;
    }
    library.MBGetmAsWaveFormDataPoints(id, start, step, std::span<std::int32_t>(values, kMasBlock));
    context_.services.eventPump.pumpEvents();
    appendMasSamplesText(text, values, kMasBlock, multiplier, request.decimalSeparator);
    start += step * kMasBlock;
  }
  if (!connected()) {
    download.finish();
    return;
  }
  const std::int32_t remainder = points - blocks * kMasBlock;
  if (remainder > 0) {
    library.MBGetmAsWaveFormDataPoints(id, start, step,
                                       std::span<std::int32_t>(values, static_cast<std::size_t>(remainder)));
    appendMasSamplesText(text, values, static_cast<std::size_t>(remainder), multiplier,
                         request.decimalSeparator);
  }
  download.finish();
  if (span > 0) resolution_ = static_cast<float>(static_cast<double>(points) / span);
}

std::string sharedSectionName(std::int32_t id) {
  const std::string digits = std::to_string(id);
  return "MB_" + std::string(digits.size() < 8 ? 8 - digits.size() : 0, '0') + digits;
}

}  // namespace rx9400
