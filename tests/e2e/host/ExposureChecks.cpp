// Early binding with events: whole exposures through the instrument's vtable, as the executive runs a
// test step, the events arriving at the executive's sink through the connection point with their
// declared argument types (DataReady's Strings by reference, a text written back taken by the
// plug-in). The events' order and texts are decided by portable code and tested natively; here they
// only show that every event crossed the boundary. The check loads its scenarios itself (--scenarios).
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
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

/// An event as one line, an argument of another type than declared marked: `DataReady(80.3, ...)`.
std::string describe(const RecordingSink::Event& event, bool& typed) {
  std::string line = eventName(event.id) + "(";
  for (std::size_t i = 0; i < event.arguments.size(); ++i) {
    const RecordingSink::Argument& argument = event.arguments[i];
    line += (i == 0 ? "" : ", ") + narrow(argument.text);
    if (argument.type != declaredType(event.id, i))
      line += " (VARTYPE " + std::to_string(argument.type) + ")";
    typed = typed && argument.type == declaredType(event.id, i);
  }
  return line + ")";
}

struct Exposure {
  const wchar_t* scenario;     ///< in the scenarios folder; its only detector
  bool rewriteKvp;             ///< the sink writes "99.9" into DataReady's sKvpAvg
  double kvp;                  ///< pGetExposurekVp afterwards
  std::vector<DISPID> raised;  ///< every event that must arrive
};

/// Between them the two kinds raise every event of an undisturbed exposure, each argument type: the
/// all-in-one detector (kind 1) and the dosimeter with mAs meter (kind 5).
const Exposure kExposures[] = {{L"exposure-aio.json", true, 99.9, {1, 4, 5, 6}},
                               {L"exposure-dose-mas.json", false, 0, {1, 4, 6, 9, 10}}};

void measure(const Options& options, const Exposure& exposure) {
  Session session = openSession(options, exposure.scenario);
  connectAll(session);
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
  driveModal([] {},
             [&] {
               HRESULT hr = S_OK;
               for (int pass = 0; pass < 20 && SUCCEEDED(hr) && finished == VARIANT_FALSE; ++pass) {
                 hr = instrument->CheckDataStatus(&finished);
               }
               return hr;
             },
             "CheckDataStatus");
  std::vector<std::string> seen;
  bool typed = true, all = true;
  for (const auto& event : sink->events()) seen.push_back(describe(event, typed));
  for (const DISPID id : exposure.raised) {
    all = all && std::any_of(sink->events().begin(), sink->events().end(),
                             [&](const RecordingSink::Event& event) { return event.id == id; });
  }
  expect(finished == VARIANT_TRUE && typed && all,
         "CheckDataStatus " + std::string(finished == VARIANT_TRUE ? "" : "never ") + "finished; events " +
             joined(seen) + (all ? "" : ", some missing"));
  double kvp = -1;
  expectHr(instrument->get_pGetExposurekVp(&kvp), S_OK, "pGetExposurekVp");
  expect(kvp == exposure.kvp, "pGetExposurekVp is " + std::to_string(kvp));
  expectHr(instrument->EnableMeasurements(VARIANT_FALSE), S_OK, "EnableMeasurements(False)");
  expectHr(session.query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

void checkExposures(const Options& options) {
  std::string why;
  for (const Exposure& exposure : kExposures)
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
