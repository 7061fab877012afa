// What the instrument's tests share: an event sink that records every event, and a table of detectors
// connected straight through the device library (no dialogs).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/InstrumentEvents.h"
#include "core/PluginContext.h"
#include "fakes/PlatformFakes.h"
#include "fakes/SimulatorFakes.h"
#include "instrument/Instrument.h"

namespace rx9400::testing {

/// Every event, as one line: its name and its arguments; the texts of the last data events.
struct RecordingEvents final : InstrumentEvents {
  std::vector<std::string> events;
  std::vector<std::string> dataReady;  ///< the ten texts of the last DataReady
  std::vector<std::string> testSw;
  std::vector<std::string> testMas;

  static std::string flag(bool value) { return value ? "True" : "False"; }
  void IncrementWaveCount() override { events.push_back("IncrementWaveCount"); }
  void ZeroingmAs(bool fVal) override { events.push_back("ZeroingmAs " + flag(fVal)); }
  void AddWakeUpButton(bool fWakeUp) override { events.push_back("AddWakeUpButton " + flag(fWakeUp)); }
  void EnableStopButton(bool fVal) override { events.push_back("EnableStopButton " + flag(fVal)); }
  void DataReady(std::string& a, std::string& b, std::string& c, std::string& d, std::string& e,
                 std::string& f, std::string& g, std::string& h, std::string& i, std::string& j) override {
    events.push_back("DataReady");
    dataReady = {a, b, c, d, e, f, g, h, i, j};
  }
  void CheckExposureWaveform(std::uint8_t type) override {
    events.push_back("CheckExposureWaveform " + std::to_string(type));
  }
  void DisplayErrorMsg(const std::string& text, const std::string& caption, bool display) override {
    events.push_back("DisplayErrorMsg " + text + " | " + caption + " | " + flag(display));
  }
  void DisplaySensorResetMsg(bool display) override {
    events.push_back("DisplaySensorResetMsg " + flag(display));
  }
  void TestSWDataReady(const std::string& a, const std::string& b, const std::string& c, const std::string& d,
                       const std::string& e, const std::string& f, const std::string& g) override {
    events.push_back("TestSWDataReady");
    testSw = {a, b, c, d, e, f, g};
  }
  void TestmAsDataReady(const std::string& a, const std::string& b, const std::string& c,
                        const std::string& d) override {
    events.push_back("TestmAsDataReady");
    testMas = {a, b, c, d};
  }
};

/// An instrument over the simulator with every fake service and every detector connected.
struct InstrumentRig {
  /// Connects the detectors (JSON objects), sets the mode and arms them, runs their exposures to the end
  /// when asked, and clears the call log and the trace.
  void start(const std::string& detectors, const std::string& mode = "RADIO", bool runExposures = true) {
    simulator = std::make_unique<Simulator>(R"({"scan": {"pollsUntilComplete": 0}, "detectors": [)" +
                                            detectors + "]}");
    context = std::make_unique<PluginContext>(MBdllFunctions::forLibraryAt(RX9400_SIMULATOR_PATH),
                                              platform.services());
    instrument = std::make_unique<Instrument>(*context, events);
    context->state.resetDetectors();
    if (!detectors.empty()) {
      const ConnectedDetectors connected = connectAllDetectors(context->library);
      context->state.setConnectedDetectors(connected.found, connected.kinds);
    }
    instrument->pCurrentMode(mode);
    instrument->EnableMeasurements(true);
    MBdllFunctions& library = context->library;
    for (int pass = 0; pass < 30 && runExposures; ++pass) {
      for (std::size_t slot = 0; slot < context->state.slotCount(); ++slot) {
        const std::int32_t id = context->state.identifierAt(slot);
        if (context->state.kindAt(slot) == 2) {
          library.MBGetmAsMeasuredData(id);
        } else if (id > 0 && library.MBGetDetectorStatus(id).dataAvailable != 0) {
          library.MBGetMeasuredData(id);
        }
      }
    }
    simulator->clearCalls();
    platform.trace.lines.clear();
  }
  /// The calls since start() whose names begin with `prefix`.
  std::vector<std::string> callsOf(const std::string& prefix) const {
    std::vector<std::string> result;
    for (const std::string& call : simulator->calls()) {
      if (call.rfind(prefix, 0) == 0) result.push_back(call);
    }
    return result;
  }
  int calls(const std::string& prefix) const { return static_cast<int>(callsOf(prefix).size()); }

  TestPlatform platform;
  RecordingEvents events;
  std::unique_ptr<Simulator> simulator;
  std::unique_ptr<PluginContext> context;
  std::unique_ptr<Instrument> instrument;
};

}  // namespace rx9400::testing
