// The waveform members end to end: the all-in-one samples read through the library's shared-memory
// section and the mAs samples read in blocks, each download one text. The host reads the same samples
// itself (the section right after the call, the mAs recording through the simulator's export) and
// writes each value with the platform's own conversion (VarBstrFromR8 in the user's locale, every ","
// made "."); the plug-in's text must equal it value by value, under a decimal point and a decimal
// comma. Every refusal shows its critical box with its caption, for both members; a thousand downloads
// leave no handle and no mapped view behind. The checks load their scenarios themselves (--scenarios).
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "HostChecks.h"

namespace rx9400::e2e {
namespace {

enum class Member { MilliSec, Secs, SecsMas };

std::string memberName(Member member) {
  const char* const names[] = {"GetWaveformInMilliSec", "GetWaveformInSecs(lValue 1)",
                               "GetWaveformInSecs(lValue 2)"};
  return names[static_cast<int>(member)];
}

/// One call from 0 to `rMax`; `text` is the plug-in's answer.
HRESULT callMember(_CRX9400VTI* instrument, Member member, float rMax, LONG points, std::wstring& text) {
  BSTR result = nullptr;
  const HRESULT hr =
      member == Member::MilliSec
          ? instrument->GetWaveformInMilliSec(0, rMax, points, &result)
          : instrument->GetWaveformInSecs(0, rMax, points, member == Member::Secs ? 1 : 2, &result);
  text = taken(result);
  return hr;
}

/// The points of the detector's recordings, as the simulator counts them.
std::int32_t aioPoints(const Detector& detector) {
  return simulatorDetector(detector.session.simulator, detector.id).waveformPoints;
}
std::int32_t masPoints(const Detector& detector) {
  std::int32_t span = 0;
  return exportOf<std::int32_t(MB_STDCALL*)(std::int32_t, std::int32_t*)>(
      detector.session.simulator, "MBGetmAsNumberOfDataPoints")(detector.id, &span);
}

/// The first `count` all-in-one samples the library published in the section "MB_" + the identifier
/// padded to 8 digits.
std::vector<std::int32_t> publishedSamples(std::int32_t id, std::size_t count) {
  char name[24];
  std::snprintf(name, sizeof(name), "MB_%08ld", static_cast<long>(id));
  HANDLE section = OpenFileMappingA(FILE_MAP_READ, FALSE, name);
  expect(section != nullptr, std::string("the section ") + name + " cannot be opened after the download");
  const void* view = MapViewOfFile(section, FILE_MAP_READ, 0, 0, count * sizeof(std::int32_t));
  std::vector<std::int32_t> samples;
  if (view != nullptr) {
    samples.assign(static_cast<const std::int32_t*>(view), static_cast<const std::int32_t*>(view) + count);
    UnmapViewOfFile(view);
  }
  CloseHandle(section);
  expect(view != nullptr,
         std::string("the section ") + name + " holds fewer than " + std::to_string(count) + " samples");
  return samples;
}

/// The first `count` samples of the mAs recording, point by point (below 30,000 points the plug-in
/// reads every point).
std::vector<std::int32_t> masSamples(const Detector& detector, std::int32_t count) {
  const auto read = exportOf<std::int32_t(MB_STDCALL*)(std::int32_t, std::int32_t, std::uint8_t, std::uint8_t,
                                                       std::int32_t*)>(detector.session.simulator,
                                                                       "MBGetmAsWaveFormDataPoints");
  std::vector<std::int32_t> samples(static_cast<std::size_t>(count));
  for (std::int32_t first = 0; first < count; first += 200) {
    read(detector.id, first, 1, static_cast<std::uint8_t>(std::min(200, count - first)),
         samples.data() + first);
  }
  return samples;
}

std::wstring platformText(double value) {
  BSTR text = nullptr;
  expectHr(VarBstrFromR8(value, LOCALE_USER_DEFAULT, 0, &text), S_OK, "VarBstrFromR8");
  return taken(text);
}

/// The samples as the platform writes each value, "," made ".": k/10 for the all-in-one detector, as
/// "a,b,c"; for the mAs meter (input type 1) the current (k as a Single) x 5000 as a Single, / 2^24, every
/// value preceded by a comma: ",a,b,c".
std::wstring platformSamplesText(const std::vector<std::int32_t>& samples, bool mas) {
  std::wstring text;
  for (const std::int32_t k : samples) {
    const float scaled = static_cast<float>(k) * 5000.0F;
    std::wstring value = platformText(mas ? static_cast<double>(scaled) / 16777216.0 : k * 0.1);
    std::replace(value.begin(), value.end(), L',', L'.');
    text += (mas || !text.empty() ? L"," : L"") + value;
  }
  return text;
}

/// Empty when the plug-in's text is the platform's; else where the first differing value begins, and
/// how many values each text holds.
std::string difference(const std::wstring& text, const std::wstring& wanted, bool mas) {
  if (text == wanted) return {};
  std::size_t value = 0, at = 0;  // the first differing value, and where it begins
  for (std::size_t i = 0; i < std::min(text.size(), wanted.size()) && text[i] == wanted[i]; ++i) {
    value += text[i] == L',' ? 1 : 0;
    at = text[i] == L',' ? i + 1 : at;
  }
  const auto values = [&](const std::wstring& of) { return std::count(of.begin(), of.end(), L',') + !mas; };
  return "value " + std::to_string(mas && value > 0 ? value - 1 : value) + " reads " +
         quoted(text.substr(at, 24)) + ", the platform writes " + quoted(wanted.substr(at, 24)) + " (" +
         std::to_string(values(text)) + " values, " + std::to_string(values(wanted)) + " expected)";
}

/// The user's decimal separator (as the regional settings set it) for as long as this lives.
class UserDecimalSeparator {
 public:
  explicit UserDecimalSeparator(const wchar_t* separator) {
    GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, previous_, 8);
    expect(SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, separator) != 0,
           "the decimal separator cannot be set");
    expect(platformText(0.5) == std::wstring(L"0") + separator + L"5",
           "VarBstrFromR8 does not follow the decimal separator " + narrow(separator));
  }
  ~UserDecimalSeparator() { SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, previous_); }
  UserDecimalSeparator(const UserDecimalSeparator&) = delete;
  UserDecimalSeparator& operator=(const UserDecimalSeparator&) = delete;

 private:
  wchar_t previous_[8] = L".";
};

/// An exposure, measured afresh under each decimal separator, whose recordings each member downloads
/// whole, from 0 to the exposure's end time (the mAs meter last): a long one, and one with samples at
/// the ends of the Long range and a section name that needs no padding.
const std::pair<const wchar_t*, std::int32_t> kRecordings[] = {{L"waveform-long.json", 604},
                                                               {L"waveform-edges.json", 123456789}};

/// One download, its text compared value by value with the platform's.
void download(const Options& options, const Detector& detector, Member member) {
  const bool mas = member == Member::SecsMas;
  const std::int32_t count = mas ? masPoints(detector) : aioPoints(detector);
  double endTime = 0;
  expectHr(detector.instrument->get_pGetExposureTime(&endTime), S_OK, "pGetExposureTime");
  std::wstring text;
  driveModal(
      options, "waveforms", [] {},
      [&] { return callMember(detector.instrument.get(), member, static_cast<float>(endTime), count, text); },
      "the download");
  const auto samples = mas ? masSamples(detector, count) : publishedSamples(detector.id, count);
  const std::string why = difference(text, platformSamplesText(samples, mas), mas);
  expect(why.empty(), why);
}

void checkDownloads(const Options& options) {
  std::string why;
  for (const auto& [scenario, id] : kRecordings) {
    for (const wchar_t* separator : {L".", L","}) {
      const std::string what = narrow(scenario) + " (decimal \"" + narrow(separator) + "\")";
      attempt(why, what, [&] {
        const UserDecimalSeparator decimal(separator);
        Detector detector = prepareDetector(options, "waveforms", scenario, id, true);
        for (const Member member : {Member::MilliSec, Member::Secs, Member::SecsMas})
          attempt(why, what + " " + memberName(member), [&] { download(options, detector, member); });
        closeDetector(detector);
      });
    }
  }
  expect(why.empty(), why);
}

/// A download the plug-in refuses with a critical box, its text empty: a detector without a recording,
/// whose refusal shows both members' captions, and the refusals of the platform's shared memory.
struct Refusal {
  const char* name;  ///< in the pictures' names
  const wchar_t* scenario;
  std::int32_t id;
  bool measured;
  LONG points;
  const wchar_t* milliSecCaption;  ///< every box of GetWaveformInSecs is "Tamsa RX9400 Plug-In Response"
  const wchar_t* text;
  bool masToo;  ///< GetWaveformInSecs(..., 2) refuses it too
};

const wchar_t kEdges[] = L"waveform-edges.json";
// clang-format off
const Refusal kRefusals[] = {
    {"no-data-points", kEdges, 123456789, false, 23, L"No Data Points", L"No data points found to download.", true},
    {"section-missing", L"waveform-section-missing.json", 606, true, 300, L"Open File Mapping Error",
     L"Error in open file mapping.", false},
    {"short-section", L"waveform-short-section.json", 607, true, 3000, L"Map View File Error",
     L"Error in map view file.", false},
};
// clang-format on

void checkRefusals(const Options& options) {
  std::string why;
  for (const Refusal& row : kRefusals) {
    attempt(why, row.name, [&] {
      Detector detector = prepareDetector(options, "waveform-boxes", row.scenario, row.id, row.measured);
      for (const Member member : {Member::MilliSec, Member::Secs, Member::SecsMas}) {
        if (member == Member::SecsMas && !row.masToo) continue;
        const std::wstring caption =
            member == Member::MilliSec ? row.milliSecCaption : L"Tamsa RX9400 Plug-In Response";
        const char* const suffixes[] = {"-ms", "-s", "-mas"};
        const std::string picture = std::string("waveform-") + row.name + suffixes[static_cast<int>(member)];
        attempt(why, std::string(row.name) + " " + memberName(member), [&] {
          std::wstring text = L"(none)";
          driveModal(
              options, "waveform-boxes",
              [&] {
                answerMessageBox(options, picture, waitForBox("during " + memberName(member)), caption,
                                 row.text, Shown{false});
              },
              [&] { return callMember(detector.instrument.get(), member, 100, row.points, text); },
              memberName(member).c_str());
          expect(text.empty(), "the text is " + quoted(text.substr(0, 40)));
        });
      }
      closeDetector(detector);
    });
  }
  expect(why.empty(), why);
}

/// The views of sections mapped into this process.
std::size_t mappedViews() {
  std::size_t views = 0;
  MEMORY_BASIC_INFORMATION region{};
  for (const char* at = nullptr; VirtualQuery(at, &region, sizeof(region)) == sizeof(region);
       at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
    views += region.Type == MEM_MAPPED && region.BaseAddress == region.AllocationBase ? 1 : 0;
  }
  return views;
}

void checkHandles(const Options& options) {
  constexpr int kRepeats = 1000;
  Detector detector = prepareDetector(options, "waveform-handles", kEdges, 123456789, true);
  const LONG points[] = {aioPoints(detector), aioPoints(detector), masPoints(detector)};
  std::wstring first[3], text;
  std::optional<std::size_t> handlesBefore, handlesAfter;
  std::size_t viewsBefore = 0, viewsAfter = 0, differing = 0;
  HRESULT hr = S_OK;
  driveModal(
      options, "waveform-handles", [] {},
      [&] {
        // One download of each first: what the system sets up once is there before counting.
        for (int i = 0; i < 3 && SUCCEEDED(hr); ++i)
          hr = callMember(detector.instrument.get(), static_cast<Member>(i), 100, points[i], first[i]);
        handlesBefore = openHandles();
        viewsBefore = mappedViews();
        for (int n = 0; n < kRepeats && SUCCEEDED(hr); ++n) {
          hr = callMember(detector.instrument.get(), static_cast<Member>(n % 3), 100, points[n % 3], text);
          differing += text != first[n % 3] ? 1 : 0;
        }
        handlesAfter = openHandles();
        viewsAfter = mappedViews();
        return hr;
      },
      "the downloads");
  closeDetector(detector);
  expect(handlesBefore && handlesAfter, "the system handle list cannot be read");
  std::printf("open handles: %zu before, %zu after %d downloads; mapped views: %zu before, %zu after\n",
              *handlesBefore, *handlesAfter, kRepeats, viewsBefore, viewsAfter);
  expect(!first[0].empty() && !first[2].empty() && differing == 0,
         std::to_string(differing) + " downloads gave another text than the first of their member");
  // A system thread may hold a handle for a moment; a leak is one per download.
  expect(*handlesAfter <= *handlesBefore + 10 && viewsAfter <= viewsBefore,
         "the downloads left handles open or views mapped");
}

}  // namespace

std::vector<Check> waveformChecks() {
  return {
      {"waveforms",
       "both waveform texts equal the platform's conversion value by value, decimal point and comma",
       checkDownloads},
      {"waveform-boxes", "each refused download: its critical box and caption, for both members; no text",
       checkRefusals},
      {"waveform-handles", "1000 downloads leave no handle open and no view mapped", checkHandles},
  };
}

}  // namespace rx9400::e2e
