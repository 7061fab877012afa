// The executive ending in the middle of things: it lets the instrument go while a notice box is on
// screen, from inside an event handler, and while the mAs download pumps messages; it unloads the
// plug-in after CloseApp. Nothing may crash, no window of the plug-in may be left, and DllCanUnloadNow
// must answer S_FALSE while an object is still in use and S_OK once none is.
#include <windows.h>

#include <ocidl.h>
#include <oleauto.h>

#include <algorithm>
#include <string>
#include <vector>

#include "HostChecks.h"
#include "RecordingSink.h"

namespace rx9400::e2e {
namespace {

constexpr wchar_t kPluginFile[] = L"TamsaRX9400VTI.dll";
constexpr wchar_t kNoticeClass[] = L"RX9400NoticeBox";

HRESULT canUnloadNow() {
  HMODULE plugin = GetModuleHandleW(kPluginFile);
  expect(plugin != nullptr, "the plug-in is not loaded");
  return exportOf<HRESULT(STDAPICALLTYPE*)()>(plugin, "DllCanUnloadNow")();
}

/// Where the plug-in's image lies, to recognise its windows after it was unloaded too.
struct Image {
  const BYTE* base = nullptr;
  std::size_t size = 0;
  bool holds(LONG_PTR address) const {
    return reinterpret_cast<const BYTE*>(address) >= base &&
           reinterpret_cast<const BYTE*>(address) < base + size;
  }
};
Image pluginImage() {
  const auto* base = reinterpret_cast<const BYTE*>(GetModuleHandleW(kPluginFile));
  expect(base != nullptr, "the plug-in is not loaded");
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  return {base, nt->OptionalHeader.SizeOfImage};
}

/// The windows of this process, top-level (hidden ones too) and message-only, whose class or procedure
/// belongs to the plug-in's image: "class "caption"" each.
std::vector<std::string> windowsOf(const Image& plugin) {
  std::vector<std::string> ours;
  for (HWND window : processWindows()) {
    const bool dialog = windowClass(window) == kDialogClass;
    if (plugin.holds(static_cast<LONG_PTR>(GetClassLongPtrW(window, GCLP_HMODULE))) ||
        plugin.holds(GetWindowLongPtrW(window, GWLP_WNDPROC)) ||
        (dialog && plugin.holds(GetWindowLongPtrW(window, DWLP_DLGPROC))))
      ours.push_back(narrow(windowClass(window)) + " " + quoted(windowText(window)));
  }
  return ours;
}

void expectNoWindowOf(const Image& plugin, const std::string& when) {
  const std::vector<std::string> left = windowsOf(plugin);
  expect(left.empty(), "windows of the plug-in left " + when + ": " + joined(left));
}

/// The plug-in's built-in notice box, once it shows.
HWND noticeBox(const std::string& after) {
  WindowFilter filter;
  filter.processId = GetCurrentProcessId();
  filter.className = kNoticeClass;
  HWND box = waitForWindow(filter, kStepMs);
  expect(box != nullptr, "no notice box after " + after);
  return box;
}

/// A sink advised as the executive advises it, holding nothing of the instrument but the cookie.
ComPtr<RecordingSink> advise(IUnknown* instrument) {
  ComPtr<RecordingSink> sink;
  *sink.put() = new RecordingSink();
  auto container = queryInterface<IConnectionPointContainer>(instrument, IID_IConnectionPointContainer,
                                                             "IConnectionPointContainer");
  ComPtr<IConnectionPoint> point;
  expectHr(container->FindConnectionPoint(DIID___CRX9400VTI, point.put()), S_OK, "FindConnectionPoint");
  DWORD cookie = 0;
  expectHr(point->Advise(sink.get(), &cookie), S_OK, "Advise");
  return sink;
}

/// The session ended as the executive ends it, by a query of its own; afterwards no object is left.
void endSession(const Image& plugin) {
  auto query = createByProgId<_CRX9400Query>(kQueryProgId, IID__CRX9400Query);
  expectHr(query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  expectHr(query->CloseApp(), S_OK, "CloseApp");
  query.reset();
  pumpUntil(300, [] { return false; });
  expectHr(canUnloadNow(), S_OK, "DllCanUnloadNow once every object was released");
  expectNoWindowOf(plugin, "after CloseApp");
}

/// A notice box the instrument opens: the sleep notice (CheckDetectorPowerStatus) and the low-battery
/// notice (CheckConnectionStatus, then CheckDetectorStatus).
struct NoticeRow {
  const char* name;
  const wchar_t* scenario;
  std::int32_t id;
  bool sleep;
};

void checkReleaseDuringNotice(const Options& options) {
  const NoticeRow rows[] = {{"sleep notice", L"exposure-aio.json", 501, true},
                            {"low-battery notice", L"low-battery.json", 511, false}};
  std::string why;
  for (const NoticeRow& row : rows) {
    attempt(why, row.name, [&] {
      Detector detector = prepareDetector(options, "shutdown-notice", row.scenario, row.id, false);
      const Image plugin = pluginImage();
      detector.session.query.reset();  // the session stays open in the plug-in
      expectHr(detector.instrument->InitTimer(), S_OK, "InitTimer");
      VARIANT_BOOL result = VARIANT_FALSE;
      if (row.sleep) {
        expectHr(detector.instrument->CheckDetectorPowerStatus(0, 100000, &result), S_OK,
                 "CheckDetectorPowerStatus");
      } else {
        expectHr(detector.instrument->CheckConnectionStatus(&result), S_OK, "CheckConnectionStatus");
        expectHr(detector.instrument->CheckDetectorStatus(&result), S_OK, "CheckDetectorStatus");
      }
      HWND box = noticeBox(row.sleep ? "CheckDetectorPowerStatus(0, 100000)" : "CheckDetectorStatus");
      expect(windowsOf(plugin).size() == 1, "the notice box is not told apart as the plug-in's one window");
      expectHr(canUnloadNow(), S_FALSE, "DllCanUnloadNow with the instrument alive");
      detector.instrument.reset();
      pumpUntil(300, [] { return false; });  // what the box might still be sent
      expect(!IsWindow(box), "the notice box stayed after the instrument was released");
      endSession(plugin);
    });
  }
  expect(why.empty(), why);
}

/// The executive letting the instrument go in the middle of one of the instrument's own calls (its last
/// reference), and what it sees right then: the instrument must live until its call returns.
struct ReleaseInCall {
  ComPtr<_CRX9400VTI>* instrument;
  RecordingSink* sink;
  bool released = false;
  ULONG sinkHeldBefore = 0, sinkHeldAfter = 0;
  HRESULT canUnload = E_UNEXPECTED;

  void operator()() {
    if (released) return;
    released = true;
    sinkHeldBefore = sink->references();
    instrument->reset();
    sinkHeldAfter = sink->references();  // a destroyed instrument has let its sink go
    canUnload = canUnloadNow();
  }
  /// After the call returned with `hr`.
  void expectSurvived(HRESULT hr, const std::string& call) const {
    expect(released, "the executive's release did not come during " + call);
    expectHr(hr, S_OK, call + " while the instrument was released");
    expect(sinkHeldAfter == sinkHeldBefore, "the instrument was destroyed inside its own " + call);
    expectHr(canUnload, S_FALSE, "DllCanUnloadNow inside " + call + ", which still runs");
    expect(sink->references() == 1, "the instrument still holds its sink after " + call + " returned");
  }
};

void checkReleaseInEvent(const Options& options) {
  Detector detector = prepareDetector(options, "shutdown-in-event", L"exposure-aio.json", 501, false);
  const Image plugin = pluginImage();
  detector.session.query.reset();  // the session stays open in the plug-in
  ComPtr<RecordingSink> sink = advise(detector.instrument.get());
  _CRX9400VTI* instrument = detector.instrument.get();
  ReleaseInCall release{&detector.instrument, sink.get()};
  sink->onEvent = [&](const RecordingSink::Event& event) {
    if (event.id == 5) release();  // DataReady
  };
  expectHr(instrument->EnableMeasurements(VARIANT_TRUE), S_OK, "EnableMeasurements(True)");
  VARIANT_BOOL finished = VARIANT_FALSE;
  HRESULT hr = S_OK;
  for (int pass = 0; pass < 20 && hr == S_OK && !release.released; ++pass)
    hr = instrument->CheckDataStatus(&finished);
  release.expectSurvived(hr, "CheckDataStatus (its DataReady handler)");
  endSession(plugin);
}

/// The executive's window: a message it is posted releases the instrument, as an Abort button would.
ReleaseInCall* gReleaseByWindow = nullptr;
constexpr UINT kReleaseMessage = WM_APP + 7;
LRESULT CALLBACK executiveWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == kReleaseMessage && gReleaseByWindow != nullptr) {
    (*gReleaseByWindow)();
    return 0;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

void checkReleaseInDownload(const Options& options) {
  Detector detector = prepareDetector(options, "shutdown-in-download", L"waveform-long.json", 604, true);
  const Image plugin = pluginImage();
  detector.session.query.reset();
  ComPtr<RecordingSink> sink = advise(detector.instrument.get());
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = executiveWindow;
  windowClass.hInstance = GetModuleHandleW(nullptr);
  windowClass.lpszClassName = L"rx9400-executive";
  RegisterClassW(&windowClass);
  HWND window = CreateWindowExW(0, windowClass.lpszClassName, L"", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                                nullptr, windowClass.hInstance, nullptr);
  expect(window != nullptr, "the executive's window cannot be created");
  ReleaseInCall release{&detector.instrument, sink.get()};
  gReleaseByWindow = &release;
  // Pressed before the call: only the download's own message pump can deliver it.
  PostMessageW(window, kReleaseMessage, 0, 0);
  _CRX9400VTI* instrument = detector.instrument.get();
  BSTR text = nullptr;
  const HRESULT hr = instrument->GetWaveformInSecs(0, 100, 2000, 2, &text);
  const std::wstring samples = taken(text);
  gReleaseByWindow = nullptr;
  DestroyWindow(window);
  UnregisterClassW(windowClass.lpszClassName, windowClass.hInstance);
  release.expectSurvived(hr, "GetWaveformInSecs(..., 2) (the mAs download)");
  const auto values = std::count(samples.begin(), samples.end(), L',');
  expect(values == 2000, "the download gave " + std::to_string(values) + " values, not 2000");
  endSession(plugin);
}

void checkUnloadAfterCloseApp(const Options& options) {
  Detector detector = prepareDetector(options, "shutdown-unload", L"exposure-aio.json", 501, false);
  const Image plugin = pluginImage();
  ComPtr<RecordingSink> sink = advise(detector.instrument.get());
  VARIANT_BOOL result = VARIANT_FALSE;
  expectHr(detector.instrument->InitTimer(), S_OK, "InitTimer");
  expectHr(detector.instrument->CheckDetectorPowerStatus(0, 100000, &result), S_OK,
           "CheckDetectorPowerStatus");
  noticeBox("CheckDetectorPowerStatus(0, 100000)");
  // CloseApp with the notice still on screen, then every object let go.
  expectHr(detector.session.query->CloseApp(), S_OK, "CloseApp");
  expectHr(canUnloadNow(), S_FALSE, "DllCanUnloadNow with the classes alive");
  detector.session.query.reset();
  expectHr(canUnloadNow(), S_FALSE, "DllCanUnloadNow with the instrument alive");
  detector.instrument.reset();
  expect(sink->references() == 1, "the released instrument still holds its sink");
  expectHr(canUnloadNow(), S_OK, "DllCanUnloadNow once every object was released");
  expectNoWindowOf(plugin, "after the last release");
  CoFreeUnusedLibrariesEx(0, 0);
  expect(GetModuleHandleW(kPluginFile) == nullptr, "CoFreeUnusedLibrariesEx left the plug-in loaded");
  // A window or a class left pointing into the unloaded image would crash here.
  pumpUntil(500, [] { return false; });
  expectNoWindowOf(plugin, "after the plug-in was unloaded");
}

}  // namespace

std::vector<Check> shutdownChecks() {
  return {
      {"shutdown-notice", "the instrument released while its sleep or low-battery notice shows: the box goes",
       checkReleaseDuringNotice},
      {"shutdown-in-event", "the instrument released by the executive's handler of its own DataReady event",
       checkReleaseInEvent},
      {"shutdown-in-download", "the instrument released by a message the mAs download's pump delivers",
       checkReleaseInDownload},
      {"shutdown-unload", "CloseApp with a notice on screen, every object released, the plug-in unloaded",
       checkUnloadAfterCloseApp},
  };
}

}  // namespace rx9400::e2e
