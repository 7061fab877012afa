// What the benchmarks share: platform services and event sinks that do nothing.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/InstrumentEvents.h"
#include "core/PluginContext.h"
#include "session/DialogFactory.h"

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

}  // namespace rx9400
