// rx9400-demo: a test procedure as an executive runs it through the plug-in. It creates the classes
// by ProgID, listens to the instrument's events, scans and connects the detectors (the user, or an
// automation tool, picks them in the plug-in's dialogs), sends the measurement settings, arms the
// detectors, polls until an exposure has been measured, and prints the measured values as a table.
//
//   rx9400-demo [--passes N]
#include <windows.h>

#include <ocidl.h>
#include <oleauto.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "win/TamsaRX9400VTI_h.h"

namespace {

std::string narrow(const wchar_t* text, UINT length) {
  if (text == nullptr || length == 0) return {};
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), result.data(), size, nullptr, nullptr);
  return result;
}

std::string textOf(BSTR text) {
  return narrow(text, text != nullptr ? SysStringLen(text) : 0);
}

std::string textOf(const VARIANT& value) {
  const VARIANT* v = &value;
  if (V_VT(v) == (VT_BYREF | VT_VARIANT)) v = V_VARIANTREF(v);
  if (V_VT(v) == (VT_BYREF | VT_BSTR)) return textOf(*V_BSTRREF(v));
  VARIANT copy;
  VariantInit(&copy);
  if (FAILED(VariantChangeType(&copy, const_cast<VARIANT*>(v), VARIANT_ALPHABOOL, VT_BSTR))) return "?";
  std::string text = textOf(V_BSTR(&copy));
  VariantClear(&copy);
  return text;
}

/// The instrument's events: printed as they come, and the last values of each kind kept for the table.
class EventSink final : public IDispatch {
 public:
  std::vector<std::string> names = {"",
                                    "IncrementWaveCount",
                                    "ZeroingmAs",
                                    "AddWakeUpButton",
                                    "EnableStopButton",
                                    "DataReady",
                                    "CheckExposureWaveform",
                                    "DisplayErrorMsg",
                                    "DisplaySensorResetMsg",
                                    "TestSWDataReady",
                                    "TestmAsDataReady"};
  std::map<DISPID, std::vector<std::string>> last;  ///< the arguments of the last event of each kind
  std::vector<std::string> order;                   ///< every event, in order

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch) &&
        !IsEqualIID(iid, DIID___CRX9400VTI)) {
      return E_NOINTERFACE;
    }
    *out = static_cast<IDispatch*>(this);
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                      UINT*) override {
    std::vector<std::string> arguments;
    for (UINT i = parameters != nullptr ? parameters->cArgs : 0; i > 0; --i) {
      arguments.push_back(textOf(parameters->rgvarg[i - 1]));  // arguments arrive last to first
    }
    last[id] = arguments;
    std::string line = id > 0 && id < static_cast<DISPID>(names.size()) ? names[static_cast<std::size_t>(id)]
                                                                        : "event " + std::to_string(id);
    for (const auto& argument : arguments) line += " [" + argument + "]";
    order.push_back(line);
    std::printf("  event: %s\n", line.c_str());
    std::fflush(stdout);
    return S_OK;
  }
};

void check(HRESULT hr, const char* what) {
  if (SUCCEEDED(hr)) return;
  std::printf("rx9400-demo: %s failed (0x%08lX)\n", what, static_cast<unsigned long>(hr));
  std::exit(1);
}

void pump() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

template <typename Interface>
Interface* create(const wchar_t* progId, REFIID iid) {
  CLSID classId;
  check(CLSIDFromProgID(progId, &classId), "finding the class (is the plug-in registered?)");
  Interface* object = nullptr;
  check(CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, iid, reinterpret_cast<void**>(&object)),
        "creating the class");
  return object;
}

std::string property(_CRX9400VTI* instrument, HRESULT (STDMETHODCALLTYPE _CRX9400VTI::*get)(BSTR*)) {
  BSTR text = nullptr;
  (instrument->*get)(&text);
  std::string result = textOf(text);
  SysFreeString(text);
  return result;
}

void printTable(const char* title, const std::vector<const char*>& labels,
                const std::vector<std::string>& values) {
  std::printf("\n  %s\n", title);
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const std::string value = i < values.size() ? values[i] : "";
    std::printf("    %-26s %s\n", labels[i], value.empty() ? "-" : value.c_str());
  }
}

}  // namespace

int main(int argc, char** argv) {
  int passes = 400;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--passes") == 0 && i + 1 < argc) passes = std::atoi(argv[++i]);
  }
  check(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), "starting COM");
  auto* query = create<_CRX9400Query>(L"TamsaRX9400VTI.CRX9400Query", IID__CRX9400Query);
  auto* instrument = create<_CRX9400VTI>(L"TamsaRX9400VTI.CRX9400VTI", IID__CRX9400VTI);
  EventSink sink;
  IConnectionPointContainer* container = nullptr;
  IConnectionPoint* point = nullptr;
  DWORD cookie = 0;
  check(instrument->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&container)),
        "finding the events");
  check(container->FindConnectionPoint(DIID___CRX9400VTI, &point), "finding the events");
  check(point->Advise(&sink, &cookie), "listening to the events");

  std::printf("Registering with the device library and scanning for detectors...\n");
  std::fflush(stdout);
  query->RegisterApp();
  query->ScanAndConnectToDetector();
  VARIANT_BOOL connected = VARIANT_FALSE;
  query->IsDetectorConnected(&connected);
  if (connected == VARIANT_FALSE) {
    std::printf("No detector was connected.\n");
    return 2;
  }
  std::printf("Connected: serial numbers %s firmware %s\n",
              property(instrument, &_CRX9400VTI::get_pSerialNumber).c_str(),
              property(instrument, &_CRX9400VTI::get_pFirmWareVersion).c_str());

  std::printf("Sending the measurement settings (RADIO, MANUAL) and arming the detectors...\n");
  BSTR mode = SysAllocString(L"RADIO");
  BSTR setup = SysAllocString(L"MANUAL");
  instrument->put_pCurrentMode(mode);
  instrument->put_pCurrentSettings(setup);
  instrument->put_pDoseUnits(1);
  instrument->put_pDoseRateUnits(1);
  instrument->put_pTimeUnit(1);
  instrument->ChangeDetectorMode();
  instrument->ChangeDetectorSetup();
  instrument->ChangeSettings();
  instrument->ChangeAllsettings();
  instrument->InitTimer();
  instrument->EnableMeasurements(VARIANT_TRUE);

  std::printf("Polling for the exposure...\n");
  std::fflush(stdout);
  int exposures = 0;
  int pass = 0;
  for (; pass < passes; ++pass) {
    VARIANT_BOOL finished = VARIANT_FALSE;
    instrument->CheckDataStatus(&finished);
    if (finished != VARIANT_FALSE) ++exposures;
    // Done when every kind of detector connected has delivered its values.
    if (sink.last.count(5) != 0 && sink.last.count(9) != 0 && sink.last.count(10) != 0) break;
    pump();
    Sleep(10);
  }
  instrument->EnableMeasurements(VARIANT_FALSE);
  std::printf("%d polling passes, %d exposure(s) finished.\n", pass + 1, exposures);

  printTable("All-in-one detector (DataReady)",
             {"kVp average", "kVp maximum", "kVp practical peak", "Dose", "Dose rate", "Exposure time",
              "Exposed pulses", "Pulse rate", "Pulse width", "HVL"},
             sink.last[5]);
  printTable("Dosimeter (TestSWDataReady)",
             {"Temperature", "Pressure", "ADCF", "Leakage current", "Dose", "Dose rate", "Bias voltage"},
             sink.last[9]);
  printTable("mAs meter (TestmAsDataReady)", {"mA", "mAs", "mAs pulses", "Dose per mAs"}, sink.last[10]);
  double kvp = 0;
  double time = 0;
  instrument->get_pGetExposurekVp(&kvp);
  instrument->get_pGetExposureTime(&time);
  std::printf("\n  pGetExposurekVp %g, pGetExposureTime %g\n", kvp, time);

  point->Unadvise(cookie);
  point->Release();
  container->Release();
  query->CloseApp();
  instrument->Release();
  query->Release();
  SysFreeString(mode);
  SysFreeString(setup);
  CoUninitialize();
  return sink.last.count(5) != 0 ? 0 : 3;
}
