// rx9400-demo: a test procedure as an executive runs it through the plug-in. It creates the classes
// by ProgID, listens to the instrument's events, scans and connects the detectors (the user, or an
// automation tool, picks them in the plug-in's dialogs), sends the measurement settings, arms the
// detectors, polls until an exposure has been measured, and prints the measured values as a table.
// Then it downloads the exposure's waveforms (the all-in-one kV trace, the mAs meter's tube current),
// prints their first values and, with --waveforms, writes each whole one to FOLDER\aio-waveform.dat and
// FOLDER\mas-waveform.dat: a title line, then "time in ms<TAB>value" lines, ready to plot.
// --library-folder FOLDER is where the plug-in finds the device library when none lies beside it: the
// simulator, which an installation keeps in its Simulator folder, apart from the vendor's library.
//
//   rx9400-demo [--passes N] [--waveforms FOLDER] [--library-folder FOLDER]
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ComPtr.h"
#include "RecordingSink.h"
#include "Text.h"
#include "win/TamsaRX9400VTI_h.h"

namespace {

using rx9400::tools::ComPtr;
using rx9400::tools::narrow;
using rx9400::tools::RecordingSink;

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
  ComPtr<Interface> object;
  check(rx9400::tools::createByProgId(progId, iid, object),
        "creating the class (is the plug-in registered?)");
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

/// Prints the first values of a downloaded waveform and writes it whole to FOLDER\FILE (when a folder is
/// given): the plug-in's text "a,b,c" (the mAs text begins with a comma), pResolution values per ms.
void showWaveform(_CRX9400VTI* instrument, BSTR text, const char* what, const std::string& title,
                  const std::string& folder, const char* file) {
  std::vector<std::string> values;
  std::istringstream pieces(narrow(text != nullptr ? text : L""));
  for (std::string piece; std::getline(pieces, piece, ',');) {
    if (!piece.empty()) values.push_back(piece);
  }
  SysFreeString(text);
  float resolution = 0;
  instrument->get_pResolution(&resolution);
  if (values.empty() || !(resolution > 0)) {
    std::printf("  %s: no values\n", what);
    return;
  }
  std::printf("  %s: %zu values over %g ms:", what, values.size(), values.size() / resolution);
  for (std::size_t i = 0; i < values.size() && i < 8; ++i) std::printf(" %s", values[i].c_str());
  std::printf(" ...\n");
  if (folder.empty()) return;
  const std::string path = folder + "\\" + file;
  FILE* out = std::fopen(path.c_str(), "w");
  if (out == nullptr) {
    std::printf("  cannot write %s\n", path.c_str());
    return;
  }
  std::fprintf(out, "# %s\n", title.c_str());
  for (std::size_t i = 0; i < values.size(); ++i)
    std::fprintf(out, "%g\t%s\n", i / resolution, values[i].c_str());
  std::fclose(out);
  std::printf("  written to %s\n", path.c_str());
}

/// The exposure's waveforms, from 0 to its end time, whole. The waveform members answer for the last
/// detector connected: with several connected, the all-in-one detector (with its mAs meter) is
/// connected again alone first.
void downloadWaveforms(_CRX9400Query* query, _CRX9400VTI* instrument, bool aio, bool mas, double endTime,
                       const std::string& folder) {
  std::string serials = property(instrument, &_CRX9400VTI::get_pSerialNumber);
  if (std::count(serials.begin(), serials.end(), ',') > 1) {
    std::printf("\nConnecting the all-in-one detector alone for its waveforms...\n");
    std::fflush(stdout);
    query->ResetTheDetectors();
    query->ScanAndConnectToDetector();
    serials = property(instrument, &_CRX9400VTI::get_pSerialNumber);
  }
  const std::string serial = serials.substr(0, serials.find(','));
  std::printf("\n  Waveforms of detector %s\n", serial.c_str());
  const float end = static_cast<float>(endTime);
  BSTR text = nullptr;
  if (aio && SUCCEEDED(instrument->GetWaveformInMilliSec(0, end, 1000000, &text))) {
    showWaveform(instrument, text, "kV (GetWaveformInMilliSec)",
                 "RX 9400 all-in-one detector " + serial + ": kV waveform of the exposure", folder,
                 "aio-waveform.dat");
  }
  text = nullptr;
  if (mas && SUCCEEDED(instrument->GetWaveformInSecs(0, end, 1000000, 2, &text))) {
    showWaveform(instrument, text, "mA (GetWaveformInSecs, 2)",
                 "RX 9400 mAs meter " + serial + ": tube current of the exposure", folder,
                 "mas-waveform.dat");
  }
}

int demo(int passes, const std::string& waveforms) {
  auto query = create<_CRX9400Query>(L"TamsaRX9400VTI.CRX9400Query", IID__CRX9400Query);
  auto instrument = create<_CRX9400VTI>(L"TamsaRX9400VTI.CRX9400VTI", IID__CRX9400VTI);
  // The events are printed as they come; the last values of each kind are kept for the tables.
  ComPtr<RecordingSink> sink;
  *sink.put() = new RecordingSink();
  std::map<DISPID, std::vector<std::string>> last;
  sink->onEvent = [&last](const RecordingSink::Event& event) {
    std::string line = rx9400::tools::eventName(event.id);
    std::vector<std::string>& values = last[event.id];
    values.clear();
    for (const auto& argument : event.arguments) values.push_back(narrow(argument.text));
    for (const auto& value : values) line += " [" + value + "]";
    std::printf("  event: %s\n", line.c_str());
    std::fflush(stdout);
  };
  const rx9400::tools::Advised advised(instrument.get(), sink.get());
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
  if (last.count(5) != 0 || last.count(10) != 0)
    downloadWaveforms(query.get(), instrument.get(), last.count(5) != 0, last.count(10) != 0, time,
                      waveforms);

  query->CloseApp();
  SysFreeString(mode);
  SysFreeString(setup);
  return last.count(5) != 0 ? 0 : 3;
}

}  // namespace

int main(int argc, char** argv) {
  int passes = 400;
  std::string waveforms;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--passes") == 0 && i + 1 < argc) passes = std::atoi(argv[++i]);
    if (std::strcmp(argv[i], "--waveforms") == 0 && i + 1 < argc) waveforms = argv[++i];
    // The plug-in looks beside itself first, then where Windows looks: this folder is searched there.
    if (std::strcmp(argv[i], "--library-folder") == 0 && i + 1 < argc) {
      char folder[MAX_PATH * 2] = {};
      const DWORD length = GetFullPathNameA(argv[++i], sizeof(folder), folder, nullptr);
      if (length == 0 || length >= sizeof(folder) || !SetDllDirectoryA(folder)) {
        std::printf("rx9400-demo: cannot search the folder %s\n", argv[i]);
        return 1;
      }
    }
  }
  check(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), "starting COM");
  const int status = demo(passes, waveforms);
  CoUninitialize();
  return status;
}
