// What the benchmarks share: platform services and event sinks that do nothing.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "../sim/SimControl.h"
#include "core/DialogFactory.h"
#include "core/InstrumentEvents.h"
#include "core/PluginContext.h"
#include "instrument/Instrument.h"

namespace rx9400 {

/// Every service the instrument may touch; none of them does anything.
struct QuietServices final : TraceSink,
                             Registry,
                             WindowSystem,
                             DatePickerControl,
                             Sound,
                             MessageBoxes,
                             EventPump,
                             DialogFactory,
                             Clock,
                             Locale,
                             NoticeBoxes,
                             InstrumentEvents {
  DefaultLanguage language;
  bool findViewer() override { return false; }
  void send(std::string_view) override {}
  std::optional<Key> openLocalMachineKey(std::string_view) override { return std::nullopt; }
  std::optional<ValueInfo> queryValueInfo(Key, std::string_view) override { return std::nullopt; }
  std::optional<std::int32_t> queryDword(Key, std::string_view) override { return std::nullopt; }
  std::optional<WindowRect> windowRect(WindowHandle) override { return std::nullopt; }
  void setCursorPosition(int, int) override {}
  void makeTopmost(WindowHandle, int, int, int, int) override {}
  CalendarDate date() override { return {}; }
  void setDate(const CalendarDate&) override {}
  std::string text() override { return {}; }
  CalendarDate today() override { return {2026, 11, 22}; }
  void beep(int, int) override {}
  void sleep(int) override {}
  int show(const std::string&, const std::string&, int) override { return kAnswerOk; }
  void pumpEvents() override {}
  std::shared_ptr<ScanDialogView> newScanView() override { return nullptr; }
  std::shared_ptr<ConnectDialogView> newConnectView() override { return nullptr; }
  std::shared_ptr<ZeroErrorDialogView> newZeroErrorView() override { return nullptr; }
  std::shared_ptr<IonChamberSetupView> newIonChamberSetupView() override { return nullptr; }
  std::shared_ptr<EditIonChamberView> newEditIonChamberView() override { return nullptr; }
  std::shared_ptr<DeleteIonChamberView> newDeleteIonChamberView() override { return nullptr; }
  std::uint32_t milliseconds() override { return 1000; }
  std::string decimalSeparator() override { return "."; }
  std::string toAnsi(const std::string& text) override { return text; }
  std::string fromAnsi(const std::string& bytes) override { return bytes; }
  std::unique_ptr<NoticeBox> create(std::function<void()>, std::function<void()>) override { return nullptr; }
  void IncrementWaveCount() override {}
  void ZeroingmAs(bool) override {}
  void AddWakeUpButton(bool) override {}
  void EnableStopButton(bool) override {}
  void DataReady(std::string&, std::string&, std::string&, std::string&, std::string&, std::string&,
                 std::string&, std::string&, std::string&, std::string&) override {}
  void CheckExposureWaveform(std::uint8_t) override {}
  void DisplayErrorMsg(const std::string&, const std::string&, bool) override {}
  void DisplaySensorResetMsg(bool) override {}
  void TestSWDataReady(const std::string&, const std::string&, const std::string&, const std::string&,
                       const std::string&, const std::string&, const std::string&) override {}
  void TestmAsDataReady(const std::string&, const std::string&, const std::string&,
                        const std::string&) override {}

  PlatformServices services() {
    return PlatformServices{language,
                            *this,
                            *this,
                            *this,
                            *this,
                            *this,
                            *this,
                            *this,
                            *this,
                            *this,
                            *this,
                            *this,
                            systemSharedMemory()};
  }
};

/// An instrument over the simulator, started from a scenario of `detectors` (JSON objects) and with
/// every detector the scan finds connected, type by type.
struct SimulatedInstrument {
  explicit SimulatedInstrument(const std::string& detectors)
      : context(MBdllFunctions::forLibraryAt(RX9400_SIMULATOR_PATH), services.services()),
        instrument(context, services) {
    std::string error;
    control = openDynamicLibraryAt(RX9400_SIMULATOR_PATH, error);
    const std::string scenario = R"({"scan": {"pollsUntilComplete": 0}, "detectors": [)" + detectors + "]}";
    reinterpret_cast<decltype(&SimLoadScenarioText)>(control->findSymbol("SimLoadScenarioText"))(
        scenario.c_str());
    clearLog = reinterpret_cast<decltype(&SimClearCallLog)>(control->findSymbol("SimClearCallLog"));
    connectEveryDetector();
  }

  /// Scans and connects every detector found, type by type, into the shared detector table.
  void connectEveryDetector() {
    MBdllFunctions& library = context.library;
    library.MBScanForDetectors();
    library.MBGetScanCompleteStatus();
    std::vector<DetectorInfo> found;
    std::vector<std::int32_t> ids, kinds;
    std::vector<std::uint8_t> types;
    for (const std::int32_t type : {1, 2, 3, 4, 5}) {
      for (const DetectorInfo& info :
           library.MBGetDetectorInfoOfType(type, library.MBGetNumberOfDetectors(type))) {
        found.push_back(info);
        ids.push_back(info.identifier);
        kinds.push_back(type);
        types.push_back(static_cast<std::uint8_t>(type));
      }
    }
    library.MBConnectToDetectors(ids, types);
    context.state.setConnectedDetectors(found, kinds);
  }

  QuietServices services;
  PluginContext context;
  Instrument instrument;
  std::unique_ptr<DynamicLibrary> control;
  decltype(&SimClearCallLog) clearLog = nullptr;
};

}  // namespace rx9400
