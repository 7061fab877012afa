// A shift in the executive's process: after a warm-up, 10^4 passes of what the executive does while a
// detector keeps measuring (CheckDataStatus every pass, the supervision members every tenth, a change of
// settings every 500) and 1000 waveform downloads, all late-bound through IDispatch as the executive's
// scripts call them, a sink advised on the events. The process must hold as many handles, GDI and USER
// objects at the end as after the warm-up; the figures and the passes per second are printed.
#include <windows.h>

#include <oleauto.h>
#include <winternl.h>

#include <algorithm>
#include <cstdio>
#include <map>
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

/// Members called by name, their DISPIDs looked up once, as a script engine caches them.
class LateBound {
 public:
  explicit LateBound(IDispatch* object) : object_(object) {}

  /// Calls `name` with `arguments` (first to last) and answers its result; fails on a failed call.
  VARIANT call(const wchar_t* name, std::vector<VARIANT> arguments = {}, WORD flags = DISPATCH_METHOD) {
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    DISPID put = DISPID_PROPERTYPUT;
    const bool isPut = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters{reversed.empty() ? nullptr : reversed.data(), isPut ? &put : nullptr,
                          static_cast<UINT>(reversed.size()), isPut ? 1u : 0u};
    VARIANT result;
    VariantInit(&result);
    const HRESULT hr = object_->Invoke(id(name), IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                       isPut ? nullptr : &result, nullptr, nullptr);
    for (VARIANT& argument : arguments) VariantClear(&argument);
    expectHr(hr, S_OK, narrow(name));
    return result;
  }
  void put(const wchar_t* name, VARIANT value) { call(name, {value}, DISPATCH_PROPERTYPUT); }
  bool flag(const wchar_t* name) {
    VARIANT result = call(name);
    return V_VT(&result) == VT_BOOL && V_BOOL(&result) != VARIANT_FALSE;
  }

 private:
  DISPID id(const wchar_t* name) {
    const auto found = ids_.find(name);
    if (found != ids_.end()) return found->second;
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    DISPID id = DISPID_UNKNOWN;
    expectHr(object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id), S_OK,
             "GetIDsOfNames(" + narrow(name) + ")");
    return ids_[name] = id;
  }

  IDispatch* object_;
  std::map<std::wstring, DISPID> ids_;
};

VARIANT longValue(LONG value) {
  VARIANT variant;
  V_VT(&variant) = VT_I4;
  V_I4(&variant) = value;
  return variant;
}
VARIANT singleValue(float value) {
  VARIANT variant;
  V_VT(&variant) = VT_R4;
  V_R4(&variant) = value;
  return variant;
}
VARIANT textValue(const wchar_t* text) {
  VARIANT variant;
  V_VT(&variant) = VT_BSTR;
  V_BSTR(&variant) = SysAllocString(text);
  return variant;
}

/// GDI objects of this process: GetGuiResources, or where that answers 0 (Wine) the used entries of the
/// process's GDI handle table (the PEB's GdiSharedHandleTable, which under Wine is the process's own).
DWORD gdiObjects() {
  if (const DWORD count = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS); count != 0) return count;
  struct Entry {  // one cell of the table
    UINT64 object;
    ULONG owner;
    USHORT unique;
    UCHAR type;
    UCHAR flags;
    UINT64 user;
  };
  using Query = LONG(WINAPI*)(HANDLE, PROCESSINFOCLASS, void*, ULONG, ULONG*);
  const auto query = reinterpret_cast<Query>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryInformationProcess")));
  PROCESS_BASIC_INFORMATION basic{};
  expect(query != nullptr &&
             query(GetCurrentProcess(), ProcessBasicInformation, &basic, sizeof basic, nullptr) == 0,
         "the process environment block cannot be found");
  const auto* peb = reinterpret_cast<const BYTE*>(basic.PebBaseAddress);
  const auto* table = *reinterpret_cast<const Entry* const*>(peb + (sizeof(void*) == 8 ? 0xF8 : 0x94));
  expect(table != nullptr, "neither GetGuiResources nor the GDI handle table counts GDI objects");
  return static_cast<DWORD>(
      std::count_if(table, table + 0x10000, [](const Entry& entry) { return entry.type != 0; }));
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
bool pass(LateBound& instrument, int number, float endTime) {
  instrument.flag(L"CheckDataStatus");
  if (number % 10 == 0) {
    instrument.flag(L"CheckDetectorStatus");
    instrument.flag(L"CheckConnectionStatus");
    instrument.call(L"CheckSleepStatus");
  }
  if (number % kSettingsEvery == kSettingsEvery / 2) {
    const bool fluoro = number / kSettingsEvery % 2 == 0;
    instrument.put(L"pCurrentMode", textValue(fluoro ? L"FLUORO" : L"RADIO"));
    instrument.put(L"pDoseUnits", longValue(fluoro ? 2 : 1));
    instrument.put(L"pDelay", longValue(fluoro ? 5 : 0));
    instrument.call(L"ChangeDetectorMode");
    instrument.call(L"ChangeSettings");
    instrument.call(L"ChangeAllsettings");
  }
  if (number % kDownloadEvery != kDownloadEvery / 2) return false;
  const int member = number / kDownloadEvery % 3;  // milliseconds, seconds, the mAs meter's
  VARIANT text =
      member == 0
          ? instrument.call(L"GetWaveformInMilliSec", {singleValue(0), singleValue(endTime), longValue(500)})
          : instrument.call(L"GetWaveformInSecs",
                            {singleValue(0), singleValue(endTime), longValue(500), longValue(member)});
  const bool empty = V_VT(&text) != VT_BSTR || SysStringLen(V_BSTR(&text)) == 0;
  VariantClear(&text);
  return empty;
}

void checkShift(const Options& options) {
  Detector detector = prepareDetector(options, "shift", L"shift.json", 701, true);
  auto dispatch = queryInterface<IDispatch>(detector.instrument.get(), IID_IDispatch, "IDispatch");
  LateBound instrument(dispatch.get());
  ComPtr<RecordingSink> sink;
  *sink.put() = new RecordingSink();
  std::size_t measured = 0, emptyDownloads = 0;
  sink->onEvent = [&](const RecordingSink::Event& event) { measured += event.id == 5 ? 1 : 0; };
  const Advised advised(detector.instrument.get(), sink.get());
  expectHr(advised.result, S_OK, "Advise");
  double endTime = 0;
  expectHr(detector.instrument->get_pGetExposureTime(&endTime), S_OK, "pGetExposureTime");
  instrument.call(L"EnableMeasurements", {longValue(-1)});

  Held warm{}, end{};
  double seconds = 0;
  std::string why;  // a failed call: the automation thread must see the loop end either way
  driveModal(
      options, "shift", [] {},
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
  instrument.call(L"EnableMeasurements", {longValue(0)});
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
