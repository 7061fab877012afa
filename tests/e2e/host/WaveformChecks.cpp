// The all-in-one waveform through the library's shared-memory section: both members download a whole
// recording, which the host reads itself from the section "MB_" + the identifier right after the call
// and writes with the platform's own conversion (VarBstrFromR8 in the user's locale, every "," made
// "."); the plug-in's text must equal it value by value, under a decimal point and a decimal comma. The
// mAs blocks, the refusals and the arithmetic are tested natively. The check loads its scenarios itself.
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

/// The first `count` samples the library published in the section "MB_" + the identifier padded to 8
/// digits.
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
  expect(view != nullptr, std::string("the section ") + name + " holds fewer than " + std::to_string(count));
  return samples;
}

std::wstring platformText(double value) {
  BSTR text = nullptr;
  expectHr(VarBstrFromR8(value, LOCALE_USER_DEFAULT, 0, &text), S_OK, "VarBstrFromR8");
  return taken(text);
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

/// Recordings measured afresh under each decimal separator: a long one, and one with samples at the
/// ends of the Long range and a section name that needs no padding.
const std::pair<const wchar_t*, std::int32_t> kRecordings[] = {{L"waveform-long.json", 604},
                                                               {L"waveform-edges.json", 123456789}};

/// One download from 0 to the exposure's end time, its text compared value by value with the platform's
/// writing of the section's samples k as k/10, "a,b,c".
void download(const Detector& detector, bool milliSeconds) {
  const std::int32_t count = simulatorDetector(detector.session.simulator, detector.id).waveformPoints;
  double endTime = 0;
  expectHr(detector.instrument->get_pGetExposureTime(&endTime), S_OK, "pGetExposureTime");
  BSTR result = nullptr;
  const float end = static_cast<float>(endTime);
  driveModal([] {},
             [&] {
               return milliSeconds ? detector.instrument->GetWaveformInMilliSec(0, end, count, &result)
                                   : detector.instrument->GetWaveformInSecs(0, end, count, 1, &result);
             },
             "the download");
  const std::wstring text = taken(result);
  std::size_t at = 0, value = 0;
  for (const std::int32_t k : publishedSamples(detector.id, static_cast<std::size_t>(count))) {
    std::wstring wanted = platformText(k * 0.1);
    std::replace(wanted.begin(), wanted.end(), L',', L'.');
    expect(at <= text.size(), "the text ends after " + std::to_string(value) + " values");
    const std::wstring shown = text.substr(at, text.find(L',', at) - at);
    expect(shown == wanted, "value " + std::to_string(value) + " reads " + quoted(shown) +
                                ", the platform writes " + quoted(wanted));
    at += shown.size() + 1, ++value;
  }
  expect(at == text.size() + 1, "the text holds more than the " + std::to_string(count) + " samples");
}

void checkDownloads(const Options& options) {
  std::string why;
  for (const auto& [scenario, id] : kRecordings) {
    for (const wchar_t* separator : {L".", L","}) {
      const std::string what = narrow(scenario) + " (decimal \"" + narrow(separator) + "\")";
      attempt(why, what, [&] {
        const UserDecimalSeparator decimal(separator);
        Detector detector = prepareDetector(options, scenario, id, true);
        for (const bool milliSeconds : {true, false})
          attempt(why, what + (milliSeconds ? " GetWaveformInMilliSec" : " GetWaveformInSecs"),
                  [&] { download(detector, milliSeconds); });
        closeDetector(detector);
      });
    }
  }
  expect(why.empty(), why);
}

}  // namespace

std::vector<Check> waveformChecks() {
  return {
      {"waveforms", "whole recordings through the shared-memory section, in the platform's text",
       checkDownloads},
  };
}

}  // namespace rx9400::e2e
