// Early binding with events: whole exposures through the instrument's vtable, as the executive runs a
// test step, the events arriving at the executive's sink through the connection point with their
// declared argument types (DataReady's Strings by reference, a text written back taken by the
// plug-in). The events' order and texts are decided by portable code and tested natively; here they
// only show that every event crossed the boundary. The check loads its scenarios itself (--scenarios).
#include <windows.h>

#include <oleauto.h>

#include <string>
#include <vector>

#include "HostChecks.h"
#include "RecordingSink.h"

namespace rx9400::e2e {
namespace {

/// The type a sink receives for argument `index` of event `id`, as the events interface declares it.
VARTYPE declaredType(DISPID id, std::size_t index) {
  if (id == 5) return VT_BYREF | VT_BSTR;  // DataReady
  if (id == 6) return VT_UI1;              // CheckExposureWaveform
  // TestSWDataReady, TestmAsDataReady, and the texts of DisplayErrorMsg
  if (id == 9 || id == 10 || (id == 7 && index < 2)) return VT_BSTR;
  return VT_BOOL;
}

/// An event as one line, Strings in quotes: `DataReady("80.3", ...)`, `EnableStopButton(False)`; an
/// argument of another type than declared is marked, so that it never matches.
std::string describe(const RecordingSink::Event& event) {
  std::string line = eventName(event.id) + "(";
  for (std::size_t i = 0; i < event.arguments.size(); ++i) {
    const RecordingSink::Argument& argument = event.arguments[i];
    line += (i == 0 ? "" : ", ") +
            ((argument.type & ~VT_BYREF) == VT_BSTR ? quoted(argument.text) : narrow(argument.text));
    if (argument.type != declaredType(event.id, i))
      line += " (VARTYPE " + std::to_string(argument.type) + ")";
  }
  return line + ")";
}

/// An expected event with String arguments.
std::string withTexts(const char* name, std::vector<const char*> texts) {
  std::string line = std::string(name) + "(";
  for (const char* text : texts) line += (line.back() == '(' ? "\"" : ", \"") + std::string(text) + "\"";
  return line + ")";
}

const char* const kStopOff = "EnableStopButton(False)";
const char* const kAioWaveform = "CheckExposureWaveform(1)";
const char* const kMasWaveform = "CheckExposureWaveform(3)";
const char* const kWaveCount = "IncrementWaveCount()";

struct Exposure {
  const wchar_t* scenario;  ///< in the scenarios folder; its only detector
  bool rewriteKvp;          ///< the sink writes "99.9" into DataReady's sKvpAvg
  double kvp;               ///< pGetExposurekVp afterwards
  std::vector<std::string> events;
};

/// Between them the two kinds raise every event of an undisturbed exposure, each argument type: the
/// all-in-one detector (kind 1) and the dosimeter with mAs meter (kind 5). RADIO mode, dose unit 1; the
/// kVp maximum of kind 1 is over range, its dose marked; the dosimeter reads in the units it keeps.
std::vector<Exposure> exposures() {
  // clang-format off
  return {
      {L"exposure-aio.json", true, 99.9,
       {kStopOff, withTexts("DataReady", {"80.3", "OL", "79.8", "1.234*", "12.34", "100", "", "", "", "3.5"}),
        kStopOff, kAioWaveform, kWaveCount}},
      {L"exposure-dose-mas.json", false, 0,
       {withTexts("TestSWDataReady", {"22.5", "760", "1.000", "0.012", "2.51", "25.1", "300.0"}), kStopOff,
        withTexts("TestmAsDataReady", {"200", "20", "1", "0.1255"}), kStopOff, kStopOff, kMasWaveform, kWaveCount}},
  };
  // clang-format on
}

void measure(const Options& options, const Exposure& exposure) {
  Session session = openSession(options, exposure.scenario);
  connectAll(options, "exposures", session);
  auto instrument = instrumentIn(L"RADIO");
  ComPtr<RecordingSink> sink;
  *sink.put() = new RecordingSink();
  if (exposure.rewriteKvp) sink->replaceText(5, 0, L"99.9");
  const Advised advised(instrument.get(), sink.get());
  expectHr(advised.result, S_OK, "Advise");

  expectHr(instrument->put_pDoseUnits(1), S_OK, "pDoseUnits");
  for (const auto& [call, name] : {std::pair{&_CRX9400VTI::ChangeDetectorMode, "ChangeDetectorMode"},
                                   std::pair{&_CRX9400VTI::ChangeSettings, "ChangeSettings"},
                                   std::pair{&_CRX9400VTI::ChangeAllsettings, "ChangeAllsettings"},
                                   std::pair{&_CRX9400VTI::InitTimer, "InitTimer"}}) {
    expectHr((instrument.get()->*call)(), S_OK, name);
  }
  expectHr(instrument->EnableMeasurements(VARIANT_TRUE), S_OK, "EnableMeasurements(True)");

  VARIANT_BOOL finished = VARIANT_FALSE;
  driveModal(
      options, "exposures", [] {},
      [&] {
        HRESULT hr = S_OK;
        for (int pass = 0; pass < 20 && SUCCEEDED(hr) && finished == VARIANT_FALSE; ++pass) {
          hr = instrument->CheckDataStatus(&finished);
        }
        return hr;
      },
      "CheckDataStatus");
  std::vector<std::string> seen;
  for (const auto& event : sink->events()) seen.push_back(describe(event));
  expect(finished == VARIANT_TRUE,
         "CheckDataStatus did not return True in 20 passes; events " + joined(seen));
  expect(seen == exposure.events,
         "the events were " + joined(seen) + ", expected " + joined(exposure.events));
  double kvp = -1;
  expectHr(instrument->get_pGetExposurekVp(&kvp), S_OK, "pGetExposurekVp");
  expect(kvp == exposure.kvp, "pGetExposurekVp is " + std::to_string(kvp));
  expectHr(instrument->EnableMeasurements(VARIANT_FALSE), S_OK, "EnableMeasurements(False)");
  expectHr(session.query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

void checkExposures(const Options& options) {
  std::string why;
  for (const Exposure& exposure : exposures())
    attempt(why, narrow(exposure.scenario), [&] { measure(options, exposure); });
  expect(why.empty(), why);
}

}  // namespace

std::vector<Check> exposureChecks() {
  return {
      {"exposures", "an exposure of kinds 1 and 5 (exposure-*.json): every event, its types, a rewritten kVp",
       checkExposures},
  };
}

}  // namespace rx9400::e2e
