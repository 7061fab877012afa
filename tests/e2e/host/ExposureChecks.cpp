// Whole exposures measured through the instrument class, as the executive runs a test step: a
// detector connected through the plug-in's dialogs, the settings sent, the detector armed, and
// CheckDataStatus called until it says the exposure is finished. The executive's event sink records
// what each event carried (by-reference Strings included) and may write its own text back; the
// simulator's call log shows what the plug-in read from the detector.
//
// The checks load their scenarios themselves (--scenarios), one detector each, so that one host
// process goes through every kind of detector.
#include <windows.h>

#include <objbase.h>
#include <ocidl.h>
#include <oleauto.h>

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "Checks.h"
#include "RecordingSink.h"
#include "SessionSupport.h"
#include "SimulatorAccess.h"
#include "win/TamsaRX9400VTI_h.h"
#include "win/dialogs/ConnectDialog/ConnectDialogIds.h"

namespace rx9400::e2e {
namespace {

constexpr wchar_t kInstrumentProgId[] = L"TamsaRX9400VTI.CRX9400VTI";
constexpr DISPID kDataReady = 5;
/// Passes after which an exposure that has not finished counts as lost (each scenario needs at most 6).
constexpr int kMaxPasses = 20;

/// The events interface, DISPIDs 1..10: each event's name and the argument types its sinks receive.
struct EventShape {
  const char* name;
  std::vector<VARTYPE> parameters;
};
const std::vector<EventShape>& eventShapes() {
  static const std::vector<EventShape> shapes = {
      {"IncrementWaveCount", {}},
      {"ZeroingmAs", {VT_BOOL}},
      {"AddWakeUpButton", {VT_BOOL}},
      {"EnableStopButton", {VT_BOOL}},
      {"DataReady", std::vector<VARTYPE>(10, VT_BYREF | VT_BSTR)},
      {"CheckExposureWaveform", {VT_UI1}},
      {"DisplayErrorMsg", {VT_BSTR, VT_BSTR, VT_BOOL}},
      {"DisplaySensorResetMsg", {VT_BOOL}},
      {"TestSWDataReady", std::vector<VARTYPE>(7, VT_BSTR)},
      {"TestmAsDataReady", std::vector<VARTYPE>(4, VT_BSTR)},
  };
  return shapes;
}

/// An event as one line, Strings in quotes: `DataReady("80.3", ...)`, `EnableStopButton(False)`. An
/// argument of another type than the interface declares is marked, so that it never matches.
std::string describe(const RecordingSink::Event& event) {
  if (event.id < 1 || event.id > static_cast<DISPID>(eventShapes().size())) {
    return "event " + std::to_string(event.id);
  }
  const EventShape& shape = eventShapes()[static_cast<std::size_t>(event.id - 1)];
  std::string line = std::string(shape.name) + "(";
  for (std::size_t i = 0; i < event.arguments.size(); ++i) {
    const RecordingSink::Argument& argument = event.arguments[i];
    line += i == 0 ? "" : ", ";
    line += (argument.type & ~VT_BYREF) == VT_BSTR ? quoted(argument.text) : narrow(argument.text);
    if (i >= shape.parameters.size() || argument.type != shape.parameters[i]) {
      line += " (VARTYPE " + std::to_string(argument.type) + ")";
    }
  }
  if (event.arguments.size() < shape.parameters.size()) line += " (arguments missing)";
  return line + ")";
}

/// An expected event with String arguments.
std::string withTexts(const char* name, std::initializer_list<const char*> texts) {
  std::string line = std::string(name) + "(";
  for (const char* text : texts) line += (line.back() == '(' ? "\"" : ", \"") + std::string(text) + "\"";
  return line + ")";
}

const char* const kStopOff = "EnableStopButton(False)";
const char* const kAioWaveform = "CheckExposureWaveform(1)";
const char* const kMasWaveform = "CheckExposureWaveform(3)";
const char* const kWaveCount = "IncrementWaveCount()";
/// Stands between the events of the earlier passes and those of the pass that returns True.
const char* const kFinishingPass = "| finishing pass |";

/// Measured-data reads up to the finishing pass: the all-in-one record only when the status says
/// data, the dosimeter and mAs records on every pass until their part of the exposure has finished.
struct Reads {
  std::size_t aio, dose, mas;
};

/// One exposure of one kind of detector and what the executive must see of it.
struct Exposure {
  int kind;
  const char* scenario;  ///< in the scenarios folder; its only detector
  std::int32_t identifier;
  bool rewriteKvp;      ///< the sink writes "99.9" into DataReady's sKvpAvg
  double kvp;           ///< pGetExposurekVp afterwards
  double exposureTime;  ///< pGetExposureTime afterwards
  Reads reads;
  std::vector<std::string> events;  ///< kFinishingPass among them
};

std::vector<Exposure> exposures() {
  // RADIO mode, dose unit 1: raw dose and dose rate × 0.001, kVp and times in tenths, HVL in tenths
  // of mm; the exposed pulses, pulse rate and pulse width are not shown in this mode.
  const std::string aioData =
      withTexts("DataReady", {"80.3", "81.2", "79.8", "1.234", "12.34", "100", "", "", "", "3.5"});
  // The kVp maximum over range, the dose marked.
  const std::string aioMarked =
      withTexts("DataReady", {"80.3", "OL", "79.8", "1.234*", "12.34", "100", "", "", "", "3.5"});
  const std::string doseData =
      withTexts("TestSWDataReady", {"22.5", "760", "1.000", "0.012", "2.51", "25.1", "300.0"});
  // Degrees Fahrenheit and hectopascals, the units the detector keeps.
  const std::string doseInOtherUnits =
      withTexts("TestSWDataReady", {"72.5", "1013", "1.000", "0.012", "2.51", "25.1", "300.0"});

  // clang-format off
  return {
      // Only this sink writes its own kVp text back, which pGetExposurekVp then reads.
      {1, "exposure-aio.json", 501, true, 99.9, 100, {1, 0, 0},
       {kStopOff, kFinishingPass, aioMarked, kStopOff, kAioWaveform, kWaveCount}},
      // An mAs meter alone has no dose to divide.
      {2, "exposure-mas.json", 502, false, 0, 0, {0, 0, 4},
       {kFinishingPass, withTexts("TestmAsDataReady", {"200", "20", "1", ""}), kStopOff, kMasWaveform,
        kWaveCount}},
      // A dosimeter has no waveform.
      {3, "exposure-dose.json", 503, false, 0, 0, {0, 5, 0},
       {kFinishingPass, doseInOtherUnits}},
      // The all-in-one waveform is announced in the pass of its data, the mAs waveform a pass later;
      // 0 mAs gives no dose per mAs.
      {4, "exposure-aio-mas.json", 504, false, 80.3, 100, {1, 0, 5},
       {kStopOff, aioData, kStopOff, kAioWaveform, kWaveCount, kFinishingPass,
        withTexts("TestmAsDataReady", {"200", "0", "1", ""}), kStopOff, kMasWaveform, kWaveCount}},
      // The dosimeter's dose over 20 mAs; the stop button is switched off on every pass from the end
      // of the dose measurement on.
      {5, "exposure-dose-mas.json", 505, false, 0, 0, {0, 5, 6},
       {doseData, kStopOff, kFinishingPass,
        withTexts("TestmAsDataReady", {"200", "20", "1", "0.1255"}), kStopOff, kStopOff, kMasWaveform,
        kWaveCount}},
  };
  // clang-format on
}

/// Opens a session on the scenario and connects its only detector as a person at the bench would:
/// the connect dialog lists it, its row is ticked and Connect pressed. The call log starts empty.
Session connectDetector(const HostOptions& options, const Pictures& pictures, const char* scenario) {
  expect(!options.scenarios.empty(), "no scenarios folder (--scenarios=FOLDER)");
  Session session = openSession(options);
  loadSimulatorScenario(session.simulator, options.scenarios + L"\\" + widen(scenario));
  expectHr(session.query->RegisterApp(), S_OK, "RegisterApp");
  driveModal(
      pictures,
      [&] {
        HWND connect = waitForDialog(L"Establish Connection", "the connect dialog");
        HWND list = connectList(connect);
        pollFor(kStepMs, [&] { return listViewItemCount(list) > 0; });
        expect(
            listViewItemCount(list) == 1,
            "the connect dialog lists " + std::to_string(listViewItemCount(list)) + " detectors, expected 1");
        expect(setListViewItemChecked(list, 0, true), "the detector's row cannot be ticked");
        press(connect, IDC_CONNECT_CONNECT, "Connect");
        expectGone(connect, "the connect dialog after Connect");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");
  expect(isDetectorConnected(session) == VARIANT_TRUE, "IsDetectorConnected is not True after Connect");
  clearSimulatorLog(session.simulator);
  return session;
}

/// A sink advised on the instrument's events for as long as this lives.
class Advised {
 public:
  Advised(IUnknown* instrument, RecordingSink* sink) {
    auto container = queryInterface<IConnectionPointContainer>(instrument, IID_IConnectionPointContainer,
                                                               "IConnectionPointContainer");
    expectHr(container->FindConnectionPoint(DIID___CRX9400VTI, point_.put()), S_OK, "FindConnectionPoint");
    expectHr(point_->Advise(sink, &cookie_), S_OK, "Advise");
  }
  ~Advised() { point_->Unadvise(cookie_); }
  Advised(const Advised&) = delete;
  Advised& operator=(const Advised&) = delete;

 private:
  ComPtr<IConnectionPoint> point_;
  DWORD cookie_ = 0;
};

struct Passes {
  int finishing = 0;  ///< the pass that returned True, 0 when none did
  VARIANT_BOOL result = VARIANT_FALSE;
  std::size_t eventsBefore = 0;  ///< events recorded before the finishing pass began
};

/// CheckDataStatus until a pass returns True, at most `limit` passes. A window the plug-in opens
/// meanwhile is closed and fails the check.
Passes poll(const Pictures& pictures, _CRX9400VTI* instrument, const RecordingSink& sink, int limit) {
  Passes passes;
  driveModal(
      pictures, [] {},
      [&] {
        for (int pass = 1; pass <= limit; ++pass) {
          passes.eventsBefore = sink.events().size();
          const HRESULT hr = instrument->CheckDataStatus(&passes.result);
          if (FAILED(hr)) return hr;
          if (passes.result != VARIANT_FALSE) {
            passes.finishing = pass;
            break;
          }
        }
        return S_OK;
      },
      "CheckDataStatus");
  return passes;
}

std::vector<std::string> described(const std::vector<RecordingSink::Event>& events, std::size_t from,
                                   std::size_t to) {
  std::vector<std::string> lines;
  for (std::size_t i = from; i < to && i < events.size(); ++i) lines.push_back(describe(events[i]));
  return lines;
}

void expectFlag(HRESULT (STDMETHODCALLTYPE _CRX9400VTI::*member)(VARIANT_BOOL*), _CRX9400VTI* instrument,
                const char* name) {
  VARIANT_BOOL value = 1;
  expectHr((instrument->*member)(&value), S_OK, name);
  expect(value == VARIANT_FALSE, std::string(name) + " is not False after the finishing pass");
}

void expectNumber(HRESULT (STDMETHODCALLTYPE _CRX9400VTI::*member)(double*), _CRX9400VTI* instrument,
                  const char* name, double expected) {
  double value = -1;
  expectHr((instrument->*member)(&value), S_OK, name);
  char text[80];
  std::snprintf(text, sizeof text, "%s is %g, expected %g", name, value, expected);
  expect(value == expected, text);
}

void measure(const HostOptions& options, const Exposure& exposure) {
  const Pictures pictures(options, "exposures");
  Session session = connectDetector(options, pictures, exposure.scenario);
  auto instrument = createByProgId<_CRX9400VTI>(kInstrumentProgId, IID__CRX9400VTI);
  ComPtr<RecordingSink> sink;
  *sink.put() = new RecordingSink();
  if (exposure.rewriteKvp) sink->replaceText(kDataReady, 0, L"99.9");
  const Advised advised(instrument.get(), sink.get());

  BSTR mode = SysAllocString(L"RADIO");
  const HRESULT modeSet = instrument->put_pCurrentMode(mode);
  SysFreeString(mode);
  expectHr(modeSet, S_OK, "pCurrentMode");
  expectHr(instrument->put_pDoseUnits(1), S_OK, "pDoseUnits");
  expectHr(instrument->ChangeDetectorMode(), S_OK, "ChangeDetectorMode");
  expectHr(instrument->ChangeSettings(), S_OK, "ChangeSettings");
  expectHr(instrument->ChangeAllsettings(), S_OK, "ChangeAllsettings");
  expectHr(instrument->InitTimer(), S_OK, "InitTimer");
  expectHr(instrument->EnableMeasurements(VARIANT_TRUE), S_OK, "EnableMeasurements(True)");

  const Passes passes = poll(pictures, instrument.get(), *sink.get(), kMaxPasses);
  const std::vector<RecordingSink::Event>& events = sink->events();
  expect(passes.finishing > 0, "CheckDataStatus did not return True in " + std::to_string(kMaxPasses) +
                                   " passes; the events were " + joined(described(events, 0, events.size())));
  expect(passes.result == VARIANT_TRUE, "CheckDataStatus returned " + std::to_string(passes.result));
  std::vector<std::string> seen = described(events, 0, passes.eventsBefore);
  seen.push_back(kFinishingPass);
  for (const std::string& line : described(events, passes.eventsBefore, events.size())) seen.push_back(line);
  expect(seen == exposure.events,
         "the events were " + joined(seen) + ", expected " + joined(exposure.events));
  expectFlag(&_CRX9400VTI::DetectorExposureFinish, instrument.get(), "DetectorExposureFinish");
  expectFlag(&_CRX9400VTI::mAsExposureFinish, instrument.get(), "mAsExposureFinish");
  expectNumber(&_CRX9400VTI::get_pGetExposurekVp, instrument.get(), "pGetExposurekVp", exposure.kvp);
  expectNumber(&_CRX9400VTI::get_pGetExposureTime, instrument.get(), "pGetExposureTime",
               exposure.exposureTime);

  // The settings reached the detector they are for, and each measured-data read named it.
  const std::string id = std::to_string(exposure.identifier);
  const bool aio = exposure.kind == 1 || exposure.kind == 4;
  const bool dose = exposure.kind == 3 || exposure.kind == 5;
  const std::vector<std::string> lines = callLog(session);
  expectCalls(lines, "MBSetDetectorMode",
              aio ? std::vector<std::string>{id + ", 1"} : std::vector<std::string>{});
  expectCalls(lines, "MBGetDosimeterUnit",
              dose ? std::vector<std::string>{id + ", *"} : std::vector<std::string>{});
  expectCalls(lines, "MBEnableMeasurement", {id});
  const std::string read = "*, " + id + ", 0";
  expectCalls(lines, "MBGetMeasuredData", std::vector<std::string>(exposure.reads.aio, read));
  expectCalls(lines, "MBGetDosimeterMeasuredData", std::vector<std::string>(exposure.reads.dose, read));
  expectCalls(lines, "MBGetmAsMeasuredData", std::vector<std::string>(exposure.reads.mas, read));

  // The next pass starts from a clean state: nothing more to tell.
  const std::size_t count = events.size();
  expect(poll(pictures, instrument.get(), *sink.get(), 1).finishing == 0,
         "the pass after the finishing one returned True");
  expect(events.size() == count,
         "the pass after the finishing one raised " + joined(described(events, count, events.size())));

  expectHr(instrument->EnableMeasurements(VARIANT_FALSE), S_OK, "EnableMeasurements(False)");
  expectHr(session.query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

void checkExposures(const HostOptions& options) {
  std::vector<std::string> failures;
  for (const Exposure& exposure : exposures()) {
    try {
      measure(options, exposure);
    } catch (const CheckFailure& failure) {
      failures.push_back("kind " + std::to_string(exposure.kind) + " (" + exposure.scenario +
                         "): " + failure.why);
    }
  }
  std::string why;
  for (const std::string& failure : failures) why += (why.empty() ? "" : "; ") + failure;
  expect(failures.empty(), why);
}

/// The executive's array of names, filled with `filler`.
SAFEARRAY* namesArray(ULONG size, const wchar_t* filler) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, size);
  expect(array != nullptr, "SafeArrayCreateVector failed");
  for (LONG i = 0; i < static_cast<LONG>(size); ++i) {
    BSTR text = SysAllocString(filler);
    SafeArrayPutElement(array, &i, text);
    SysFreeString(text);
  }
  return array;
}

std::vector<std::string> namesIn(SAFEARRAY* array) {
  std::vector<std::string> names;
  LONG lower = 0;
  LONG upper = -1;
  SafeArrayGetLBound(array, 1, &lower);
  SafeArrayGetUBound(array, 1, &upper);
  for (LONG i = lower; i <= upper; ++i) {
    BSTR text = nullptr;
    SafeArrayGetElement(array, &i, &text);
    names.push_back(quoted(text != nullptr ? std::wstring(text, SysStringLen(text)) : L"(null)"));
    SysFreeString(text);
  }
  return names;
}

void checkTargetFilters(const HostOptions& options) {
  const Pictures pictures(options, "target-filters");
  Session session = connectDetector(options, pictures, "exposure-aio.json");
  auto instrument = createByProgId<_CRX9400VTI>(kInstrumentProgId, IID__CRX9400VTI);
  unsigned char count = 0;
  expectHr(instrument->GetNumberOfTargetFilters(&count), S_OK, "GetNumberOfTargetFilters");
  expect(count == 4, "GetNumberOfTargetFilters answered " + std::to_string(count) + ", expected 4");

  // The executive's array may be longer or shorter than the count it asks for: the entries both have
  // are filled, the others are left as they were.
  const struct {
    ULONG size;
    std::vector<std::string> names;
  } arrays[] = {
      {4, {"\"W/Al\"", "\"Mo/Mo\"", "\"Mo/Rh\"", "\"W/Rh\""}},
      {6, {"\"W/Al\"", "\"Mo/Mo\"", "\"Mo/Rh\"", "\"W/Rh\"", "\"-\"", "\"-\""}},
      {2, {"\"W/Al\"", "\"Mo/Mo\""}},
  };
  for (const auto& entry : arrays) {
    SAFEARRAY* array = namesArray(entry.size, L"-");
    const HRESULT hr = instrument->GetValidTargetFilters(&array, count);
    const std::vector<std::string> names = array != nullptr ? namesIn(array) : std::vector<std::string>{};
    if (array != nullptr) SafeArrayDestroy(array);
    expectHr(hr, S_OK, "GetValidTargetFilters");
    expect(names == entry.names, "GetValidTargetFilters into " + std::to_string(entry.size) +
                                     " entries gave " + joined(names) + ", expected " + joined(entry.names));
  }
  BSTR name = nullptr;
  expectHr(instrument->GetDefaultTargetFilterName(&name), S_OK, "GetDefaultTargetFilterName");
  const std::wstring fallback = name != nullptr ? name : L"";
  SysFreeString(name);
  expect(fallback == L"Mo/Mo", "GetDefaultTargetFilterName answered " + quoted(fallback));

  // pTargetFilter takes the executive's variable by reference and leaves it alone; ChangeSettings
  // sends the name in 16 bytes, and fetches the detector's default for an empty or missing text.
  const struct {
    const wchar_t* text;  ///< nullptr: a String variable never assigned
    const char* sent;
  } filters[] = {
      {L"Mo/Rh", "Mo/Rh"},
      {nullptr, "Mo/Mo"},
      {L"ABCDEFGHIJKLMNOPQRST", "ABCDEFGHIJKLMNOP"},
      {L"", "Mo/Mo"},
  };
  for (const auto& filter : filters) {
    const std::string what = filter.text != nullptr ? quoted(filter.text) : "a null String";
    BSTR variable = filter.text != nullptr ? SysAllocString(filter.text) : nullptr;
    const BSTR given = variable;
    const HRESULT hr = instrument->put_pTargetFilter(&variable);
    const bool untouched = variable == given;
    SysFreeString(variable);
    expectHr(hr, S_OK, "pTargetFilter(" + what + ")");
    expect(untouched, "pTargetFilter(" + what + ") replaced the executive's variable");
    expectHr(instrument->ChangeSettings(), S_OK, "ChangeSettings");
    const SimDetectorState state = simulatorDetector(session.simulator, 501);
    // Zero-filled: a longer text is cut, a shorter one followed by zero bytes.
    const std::string field(state.lastSettings.targetFilter, sizeof state.lastSettings.targetFilter);
    std::string wanted = filter.sent;
    if (wanted.size() < field.size()) wanted.resize(field.size(), '\0');
    expect(field == wanted, "after pTargetFilter(" + what + ") the detector received the target filter " +
                                quoted(widen(field.c_str())) + ", expected " + quoted(widen(filter.sent)));
  }
  expectHr(session.query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

}  // namespace

std::vector<Check> exposureChecks() {
  return {
      {"exposures",
       "one exposure per detector kind 1..5 (scenarios/exposure-*.json): events and texts, the finishing "
       "pass, flags, the kVp text a sink rewrote, the measured-data reads",
       checkExposures},
      {"target-filters",
       "GetValidTargetFilters into the executive's array, the default name, pTargetFilter by reference "
       "sent by ChangeSettings (scenarios/exposure-aio.json)",
       checkTargetFilters},
  };
}

}  // namespace rx9400::e2e
