// The Win32 implementations of the platform interfaces the shared services use.
#pragma once

#include <windows.h>

#include <optional>

#include "platform/Clock.h"
#include "platform/DatePickerControl.h"
#include "platform/MessageBoxes.h"
#include "platform/Registry.h"
#include "platform/Sound.h"
#include "platform/TraceSink.h"
#include "platform/WindowSystem.h"

namespace rx9400::win {

class Win32Registry final : public Registry {
 public:
  std::optional<Key> openLocalMachineKey(std::string_view subKey) override;
  std::optional<ValueInfo> queryValueInfo(Key key, std::string_view name) override;
  std::optional<std::int32_t> queryDword(Key key, std::string_view name) override;
};

class Win32WindowSystem final : public WindowSystem {
 public:
  std::optional<WindowRect> windowRect(WindowHandle window) override;
  void setCursorPosition(int x, int y) override;
  void makeTopmost(WindowHandle window, int x, int y, int width, int height) override;
};

/// The trace viewer's window, marked by the window property "vbAcceleratorVBTRACER_TRACEWIN" with the
/// value 1, receiving lines as WM_COPYDATA.
class Win32TraceSink final : public TraceSink {
 public:
  bool findViewer() override;
  void send(std::string_view line) override;

 private:
  HWND viewer_ = nullptr;
};

/// A hidden date-time picker control.
class Win32DatePickerControl final : public DatePickerControl {
 public:
  Win32DatePickerControl() = default;
  ~Win32DatePickerControl() override;
  Win32DatePickerControl(const Win32DatePickerControl&) = delete;
  Win32DatePickerControl& operator=(const Win32DatePickerControl&) = delete;

  CalendarDate date() override;
  void setDate(const CalendarDate& date) override;
  std::string text() override;
  CalendarDate today() override;

 private:
  HWND control();
  HWND control_ = nullptr;
  /// The date shown, kept here too, so that the text is right even without the control.
  std::optional<CalendarDate> date_;
};

class Win32Sound final : public Sound {
 public:
  void beep(int frequency, int milliseconds) override;
  void sleep(int milliseconds) override;
};

/// Standard message boxes, modal to the executive's active window.
class Win32MessageBoxes final : public MessageBoxes {
 public:
  int show(const std::string& text, const std::string& caption, int style) override;
};

class Win32EventPump final : public EventPump {
 public:
  void pumpEvents() override;
};

/// The system's millisecond clock (timeGetTime).
class Win32Clock final : public Clock {
 public:
  std::uint32_t milliseconds() override;
};

/// The user's locale: its decimal separator and the system's default code page.
class Win32Locale final : public Locale {
 public:
  std::string decimalSeparator() override;
  std::string toAnsi(const std::string& text) override;
  std::string fromAnsi(const std::string& bytes) override;
};

/// UTF-8 to UTF-16 and back.
std::wstring toWide(std::string_view utf8);
std::string fromWide(std::wstring_view text);

/// UTF-8 to the system's ANSI code page and back.
std::string toAnsi(std::string_view utf8);
std::string fromAnsi(std::string_view ansi);

}  // namespace rx9400::win
