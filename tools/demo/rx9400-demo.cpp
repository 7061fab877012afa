// rx9400-demo: a test procedure as an executive runs it through the plug-in. It creates the classes
// by ProgID, listens to the instrument's events, scans and connects the detectors (the user, or an
// automation tool, picks them in the plug-in's dialogs), sends the measurement settings, arms the
// detectors, polls until an exposure has been measured, and prints the measured values as a table.
//
//   rx9400-demo [--passes N]
#include <windows.h>

#include <oleauto.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "Automation.h"
#include "ComPtr.h"
#include "RecordingSink.h"
#include "win/TamsaRX9400VTI_h.h"

namespace {

using rx9400::e2e::ComPtr;
using rx9400::e2e::narrow;
using rx9400::e2e::RecordingSink;

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
ComPtr<Interface> create(const wchar_t* progId, REFIID iid) {
  CLSID classId;
  check(CLSIDFromProgID(progId, &classId), "finding the class (is the plug-in registered?)");
  ComPtr<Interface> object;
  check(CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, iid, object.putVoid()),
        "creating the class");
  return object;
}

std::string property(_CRX9400VTI* instrument, HRESULT (STDMETHODCALLTYPE _CRX9400VTI::*get)(BSTR*)) {
  BSTR text = nullptr;
  (instrument->*get)(&text);
  std::string result = narrow(text != nullptr ? text : L"");
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

int demo(int passes) {
  auto query = create<_CRX9400Query>(L"TamsaRX9400VTI.CRX9400Query", IID__CRX9400Query);
  auto instrument = create<_CRX9400VTI>(L"TamsaRX9400VTI.CRX9400VTI", IID__CRX9400VTI);
  // The events are printed as they come; the last values of each kind are kept for the tables.
  ComPtr<RecordingSink> sink;
  *sink.put() = new RecordingSink();
  std::map<DISPID, std::vector<std::string>> last;
  sink->onEvent = [&last](const RecordingSink::Event& event) {
    std::string line = rx9400::e2e::eventName(event.id);
    std::vector<std::string>& values = last[event.id];
    values.clear();
    for (const auto& argument : event.arguments) values.push_back(narrow(argument.text));
    for (const auto& value : values) line += " [" + value + "]";
    std::printf("  event: %s\n", line.c_str());
    std::fflush(stdout);
  };
  const rx9400::e2e::Advised advised(instrument.get(), sink.get());
  check(advised.result, "listening to the events");

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
              property(instrument.get(), &_CRX9400VTI::get_pSerialNumber).c_str(),
              property(instrument.get(), &_CRX9400VTI::get_pFirmWareVersion).c_str());

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
    if (last.count(5) != 0 && last.count(9) != 0 && last.count(10) != 0) break;
    pump();
    Sleep(10);
  }
  instrument->EnableMeasurements(VARIANT_FALSE);
  std::printf("%d polling passes, %d exposure(s) finished.\n", pass + 1, exposures);

  printTable("All-in-one detector (DataReady)",
             {"kVp average", "kVp maximum", "kVp practical peak", "Dose", "Dose rate", "Exposure time",
              "Exposed pulses", "Pulse rate", "Pulse width", "HVL"},
             last[5]);
  printTable("Dosimeter (TestSWDataReady)",
             {"Temperature", "Pressure", "ADCF", "Leakage current", "Dose", "Dose rate", "Bias voltage"},
             last[9]);
  printTable("mAs meter (TestmAsDataReady)", {"mA", "mAs", "mAs pulses", "Dose per mAs"}, last[10]);
  double kvp = 0;
  double time = 0;
  instrument->get_pGetExposurekVp(&kvp);
  instrument->get_pGetExposureTime(&time);
  std::printf("\n  pGetExposurekVp %g, pGetExposureTime %g\n", kvp, time);

  query->CloseApp();
  SysFreeString(mode);
  SysFreeString(setup);
  return last.count(5) != 0 ? 0 : 3;
}

}  // namespace

int main(int argc, char** argv) {
  int passes = 400;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--passes") == 0 && i + 1 < argc) passes = std::atoi(argv[++i]);
  }
  check(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), "starting COM");
  const int status = demo(passes);
  CoUninitialize();
  return status;
}
