// A shift in the executive's process: after a warm-up, 10^4 passes of what the executive does while a
// detector keeps measuring (CheckDataStatus every pass, the supervision members every tenth, a change of
// settings every 500) and 1000 waveform downloads, a sink advised on the events. The process must hold as
// many handles, GDI and USER objects at the end as after the warm-up; the figures and the passes per second
// are printed.
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "HostChecks.h"
#include "RecordingSink.h"

namespace rx9400::e2e {
namespace {

constexpr int kWarmUpPasses = 1000;
constexpr int kPasses = 10000;
constexpr int kDownloadEvery = 10;  // 1000 downloads in kPasses
constexpr int kSettingsEvery = 500;

/// GDI objects of this process (Wine answers 0).
DWORD gdiObjects() {
  return GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
}

/// USER objects of this process: GetGuiResources, or where that answers 0 (Wine) its windows: top-level
/// ones (hidden ones too) with their descendants, and message-only ones.
DWORD userObjects() {
  if (const DWORD count = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS); count != 0) return count;
  DWORD windows = 0;
  std::vector<HWND> pending = processWindows();
  while (!pending.empty()) {
    HWND window = pending.back();
    pending.pop_back();
    ++windows;
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT))
      pending.push_back(child);
  }
  return windows;
}

/// What the process holds: handles (the system's list), GDI and USER objects.
struct Held {
  std::size_t handles;
  DWORD gdi;
  DWORD user;
};
Held held() {
  const std::optional<std::size_t> handles = openHandles();
  expect(handles.has_value(), "the system handle list cannot be read");
  return {*handles, gdiObjects(), userObjects()};
}

/// One pass of the shift, numbered from 0: the executive's polling, supervision, settings and downloads.
/// Answers whether a download of this pass gave no text.
bool pass(_CRX9400VTI* instrument, int number, float endTime) {
  VARIANT_BOOL flag = VARIANT_FALSE;
  expectHr(instrument->CheckDataStatus(&flag), S_OK, "CheckDataStatus");
  if (number % 10 == 0) {
    expectHr(instrument->CheckDetectorStatus(&flag), S_OK, "CheckDetectorStatus");
    expectHr(instrument->CheckConnectionStatus(&flag), S_OK, "CheckConnectionStatus");
    expectHr(instrument->CheckSleepStatus(), S_OK, "CheckSleepStatus");
  }
  if (number % kSettingsEvery == kSettingsEvery / 2) {
    const bool fluoro = number / kSettingsEvery % 2 == 0;
    BSTR mode = SysAllocString(fluoro ? L"FLUORO" : L"RADIO");
    instrument->put_pCurrentMode(mode);
    SysFreeString(mode);
    instrument->put_pDoseUnits(fluoro ? 2 : 1);
    instrument->put_pDelay(fluoro ? 5 : 0);
    for (auto change :
         {&_CRX9400VTI::ChangeDetectorMode, &_CRX9400VTI::ChangeSettings, &_CRX9400VTI::ChangeAllsettings})
      expectHr((instrument->*change)(), S_OK, "a change of settings");
  }
  if (number % kDownloadEvery != kDownloadEvery / 2) return false;
  const int member = number / kDownloadEvery % 3;  // milliseconds, seconds, the mAs meter's
  BSTR text = nullptr;
  expectHr(member == 0 ? instrument->GetWaveformInMilliSec(0, endTime, 500, &text)
                       : instrument->GetWaveformInSecs(0, endTime, 500, member, &text),
           S_OK, "a download");
  return taken(text).empty();
}

void checkShift(const Options& options) {
  Detector detector = prepareDetector(options, L"shift.json", 701, true);
  _CRX9400VTI* instrument = detector.instrument.get();
  ComPtr<RecordingSink> sink;
  *sink.put() = new RecordingSink();
  std::size_t measured = 0, emptyDownloads = 0;
  sink->onEvent = [&](const RecordingSink::Event& event) { measured += event.id == 5 ? 1 : 0; };
  const Advised advised(detector.instrument.get(), sink.get());
  expectHr(advised.result, S_OK, "Advise");
  double endTime = 0;
  expectHr(detector.instrument->get_pGetExposureTime(&endTime), S_OK, "pGetExposureTime");
  expectHr(instrument->EnableMeasurements(VARIANT_TRUE), S_OK, "EnableMeasurements");

  Held warm{}, end{};
  double seconds = 0;
  std::string why;  // a failed call: the automation thread must see the loop end either way
  driveModal([] {},
             [&] {
               attempt(why, "the shift", [&] {
                 for (int number = 0; number < kWarmUpPasses; ++number)
                   emptyDownloads += pass(instrument, number, float(endTime)) ? 1 : 0;
                 warm = held();
                 LARGE_INTEGER frequency, start, stop;
                 QueryPerformanceFrequency(&frequency);
                 QueryPerformanceCounter(&start);
                 for (int number = kWarmUpPasses; number < kWarmUpPasses + kPasses; ++number)
                   emptyDownloads += pass(instrument, number, float(endTime)) ? 1 : 0;
                 QueryPerformanceCounter(&stop);
                 seconds = double(stop.QuadPart - start.QuadPart) / double(frequency.QuadPart);
                 end = held();
               });
               return S_OK;
             },
             "the shift");
  expect(why.empty(), why);
  expectHr(instrument->EnableMeasurements(VARIANT_FALSE), S_OK, "EnableMeasurements");
  const std::size_t events = sink->events().size();
  closeDetector(detector);

  std::printf(
      "shift: %d passes after %d of warm-up, %d downloads, %zu exposures measured, %zu events, "
      "in %.1f s: %.0f passes/s\n",
      kPasses, kWarmUpPasses, kPasses / kDownloadEvery, measured, events, seconds, kPasses / seconds);
  std::printf(
      "shift: handles %zu after warm-up, %zu at the end; GDI objects %lu, %lu; USER objects %lu, %lu\n",
      warm.handles, end.handles, warm.gdi, end.gdi, warm.user, end.user);
  expect(emptyDownloads == 0, std::to_string(emptyDownloads) + " downloads gave no text");
  expect(measured >= kPasses / 40, "only " + std::to_string(measured) + " exposures were measured");
  expect(end.handles == warm.handles && end.gdi == warm.gdi && end.user == warm.user,
         "the shift left handles or GDI or USER objects behind");
}

}  // namespace

std::vector<Check> reliabilityChecks() {
  return {
      {"shift",
       "10^4 passes of polling, supervision and settings and 1000 downloads hold no handle, GDI or USER "
       "object",
       checkShift},
  };
}

}  // namespace rx9400::e2e
