// Registry, window placement, the trace viewer's channel and the hidden date picker on Windows.
#include "win/Win32Platform.h"

#include "win/WideText.h"

#include <windows.h>

#include <commctrl.h>
#include <mmsystem.h>

#include <string>

namespace rx9400::win {
namespace {

const std::string kViewerProperty = std::string("vbAcceleratorVBTRACER") + "_TRACEWIN";

HWND toWindow(WindowHandle handle) {
  return reinterpret_cast<HWND>(handle);
}

BOOL CALLBACK findViewerWindow(HWND window, LPARAM found) {
  if (reinterpret_cast<std::uintptr_t>(GetPropA(window, kViewerProperty.c_str())) != 1) return TRUE;
  *reinterpret_cast<HWND*>(found) = window;
  return FALSE;
}

}  // namespace

std::wstring toWide(std::string_view utf8) {
  return widen(utf8, CP_UTF8);
}
std::string fromWide(std::wstring_view text) {
  return narrow(text, CP_UTF8);
}

std::uint32_t Win32Clock::milliseconds() {
  return timeGetTime();
}

std::string Win32Locale::toAnsi(const std::string& text) {
  return win::toAnsi(text);
}
std::string Win32Locale::fromAnsi(const std::string& bytes) {
  return win::fromAnsi(bytes);
}

std::string Win32Locale::decimalSeparator() {
  wchar_t separator[8] = {};
  if (GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, separator, 8) == 0) return ".";
  return fromWide(separator);
}

void Win32Sound::beep(int frequency, int milliseconds) {
  Beep(static_cast<DWORD>(frequency), static_cast<DWORD>(milliseconds));
}

void Win32Sound::sleep(int milliseconds) {
  Sleep(static_cast<DWORD>(milliseconds));
}

int Win32MessageBoxes::show(const std::string& text, const std::string& caption, int style) {
  return MessageBoxW(GetActiveWindow(), toWide(text).c_str(), toWide(caption).c_str(),
                     static_cast<UINT>(style) | MB_SETFOREGROUND);
}

void Win32EventPump::pumpEvents() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) {
      PostQuitMessage(static_cast<int>(message.wParam));  // leave it for the host's own loop
      break;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

std::string toAnsi(std::string_view utf8) {
  return narrow(widen(utf8, CP_UTF8), CP_ACP);
}
std::string fromAnsi(std::string_view ansi) {
  return narrow(widen(ansi, CP_ACP), CP_UTF8);
}

std::optional<Registry::Key> Win32Registry::openLocalMachineKey(std::string_view subKey) {
  HKEY key = nullptr;
  const std::string name(subKey);
  if (RegOpenKeyA(HKEY_LOCAL_MACHINE, name.c_str(), &key) != ERROR_SUCCESS || key == nullptr)
    return std::nullopt;
  return reinterpret_cast<Key>(key);
}

std::optional<Registry::ValueInfo> Win32Registry::queryValueInfo(Key key, std::string_view name) {
  DWORD type = 0;
  DWORD size = 0;
  const std::string valueName(name);
  if (RegQueryValueExA(reinterpret_cast<HKEY>(key), valueName.c_str(), nullptr, &type, nullptr, &size) !=
      ERROR_SUCCESS) {
    return std::nullopt;
  }
  return ValueInfo{type, size};
}

std::optional<std::int32_t> Win32Registry::queryDword(Key key, std::string_view name) {
  DWORD type = 0;
  std::int32_t value = 0;
  DWORD size = sizeof(value);
  const std::string valueName(name);
  if (RegQueryValueExA(reinterpret_cast<HKEY>(key), valueName.c_str(), nullptr, &type,
                       reinterpret_cast<BYTE*>(&value), &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  return value;
}

std::optional<WindowRect> Win32WindowSystem::windowRect(WindowHandle window) {
  RECT rect{};
  if (!GetWindowRect(toWindow(window), &rect)) return std::nullopt;
  return WindowRect{rect.left, rect.top, rect.right, rect.bottom};
}

void Win32WindowSystem::setCursorPosition(int x, int y) {
  SetCursorPos(x, y);
}

void Win32WindowSystem::makeTopmost(WindowHandle window, int x, int y, int width, int height) {
  SetWindowPos(toWindow(window), HWND_TOPMOST, x, y, width, height, SWP_NOACTIVATE);
}

bool Win32TraceSink::findViewer() {
  viewer_ = nullptr;
  EnumWindows(findViewerWindow, reinterpret_cast<LPARAM>(&viewer_));
  return viewer_ != nullptr;
}

void Win32TraceSink::send(std::string_view line) {
  if (viewer_ == nullptr) return;
  std::string bytes = toAnsi(line);
  COPYDATASTRUCT data{0, static_cast<DWORD>(bytes.size()), bytes.data()};
  DWORD_PTR answer = 0;
  SendMessageTimeoutA(viewer_, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), SMTO_NORMAL, 5000, &answer);
}

Win32DatePickerControl::~Win32DatePickerControl() {
  if (control_ != nullptr) DestroyWindow(control_);
}

HWND Win32DatePickerControl::control() {
  if (control_ == nullptr) {
    INITCOMMONCONTROLSEX classes{sizeof(INITCOMMONCONTROLSEX), ICC_DATE_CLASSES};
    InitCommonControlsEx(&classes);
    control_ = CreateWindowExW(0, DATETIMEPICK_CLASSW, L"", WS_POPUP | DTS_SHORTDATEFORMAT, 0, 0, 120, 24,
                               nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
  }
  return control_;
}

CalendarDate Win32DatePickerControl::date() {
  if (!date_) date_ = today();
  return *date_;
}

void Win32DatePickerControl::setDate(const CalendarDate& date) {
  date_ = date;
  SYSTEMTIME time{};
  time.wYear = static_cast<WORD>(date.year);
  time.wMonth = static_cast<WORD>(date.month);
  time.wDay = static_cast<WORD>(date.day);
  if (control() != nullptr) DateTime_SetSystemtime(control_, GDT_VALID, &time);
}

std::string Win32DatePickerControl::text() {
  const CalendarDate shown = date();
  wchar_t buffer[128] = {};
  // The control's own rendering when there is a control, else the user's short date format it follows.
  if (control() != nullptr && GetWindowTextW(control_, buffer, 128) > 0) return narrow(buffer, CP_UTF8);
  SYSTEMTIME time{};
  time.wYear = static_cast<WORD>(shown.year);
  time.wMonth = static_cast<WORD>(shown.month);
  time.wDay = static_cast<WORD>(shown.day);
  if (GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &time, nullptr, buffer, 128) == 0) return {};
  return narrow(buffer, CP_UTF8);
}

CalendarDate Win32DatePickerControl::today() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  return CalendarDate{now.wYear, now.wMonth, now.wDay};
}

}  // namespace rx9400::win
