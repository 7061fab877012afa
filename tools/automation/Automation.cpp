// Window automation through plain Win32 calls (see Automation.h).
#include <windows.h>

#include <commctrl.h>
#include <tlhelp32.h>

#include <cstdio>
#include <cstring>
#include <cwchar>
#include <iterator>

#include "Automation.h"

namespace rx9400::tools {
namespace {

constexpr DWORD kPollMs = 50;
constexpr UINT kSendTimeoutMs = 3000;

DWORD processOf(HWND window) {
  DWORD processId = 0;
  GetWindowThreadProcessId(window, &processId);
  return processId;
}

bool sameClass(const std::wstring& actual, const wchar_t* wanted) {
  return _wcsicmp(actual.c_str(), wanted) == 0;
}

/// Polls `found` until it answers true or the time is up.
template <typename Found>
bool pollUntil(DWORD timeoutMs, Found found) {
  const ULONGLONG end = GetTickCount64() + timeoutMs;
  for (;;) {
    if (found()) return true;
    if (GetTickCount64() >= end) return false;
    Sleep(kPollMs);
  }
}

bool sendTimeout(HWND window, UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
  DWORD_PTR answer = 0;
  if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, kSendTimeoutMs, &answer) == 0) {
    return false;
  }
  if (result != nullptr) *result = static_cast<LRESULT>(answer);
  return true;
}

/// Memory that a message's lParam can point to in the process owning a window: plain memory for a
/// window of this process, memory allocated in the other process otherwise.
class WindowProcessMemory {
 public:
  WindowProcessMemory(HWND window, std::size_t size) : size_(size) {
    const DWORD owner = processOf(window);
    if (owner == GetCurrentProcessId()) {
      local_.assign(size, 0);
      address_ = local_.data();
      return;
    }
    process_ = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, owner);
    if (process_ != nullptr) {
      address_ = VirtualAllocEx(process_, nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    }
  }
  ~WindowProcessMemory() {
    if (process_ != nullptr) {
      if (address_ != nullptr) VirtualFreeEx(process_, address_, 0, MEM_RELEASE);
      CloseHandle(process_);
    }
  }
  WindowProcessMemory(const WindowProcessMemory&) = delete;
  WindowProcessMemory& operator=(const WindowProcessMemory&) = delete;

  /// The address as the window's process sees it; nullptr when the memory could not be had.
  char* address() const { return static_cast<char*>(address_); }

  bool write(const void* data, std::size_t size) {
    if (address_ == nullptr || size > size_) return false;
    if (process_ == nullptr) {
      std::memcpy(address_, data, size);
      return true;
    }
    SIZE_T written = 0;
    return WriteProcessMemory(process_, address_, data, size, &written) && written == size;
  }
  bool read(void* data, std::size_t size) const {
    if (address_ == nullptr || size > size_) return false;
    if (process_ == nullptr) {
      std::memcpy(data, address_, size);
      return true;
    }
    SIZE_T read = 0;
    return ReadProcessMemory(process_, address_, data, size, &read) && read == size;
  }

 private:
  std::size_t size_;
  std::vector<char> local_;
  HANDLE process_ = nullptr;
  void* address_ = nullptr;
};

struct FindChildContext {
  const wchar_t* className;
  std::wstring text;
  bool anyText;
  HWND found = nullptr;
};

BOOL CALLBACK matchChild(HWND child, LPARAM context) {
  auto& search = *reinterpret_cast<FindChildContext*>(context);
  if (search.className != nullptr && !sameClass(windowClass(child), search.className)) return TRUE;
  if (!search.anyText && withoutAccelerators(windowText(child)) != search.text) return TRUE;
  search.found = child;
  return FALSE;
}

BOOL CALLBACK collectChild(HWND child, LPARAM list) {
  reinterpret_cast<std::vector<HWND>*>(list)->push_back(child);
  return TRUE;
}

/// The direct and indirect children of `parent`, in child order.
std::vector<HWND> descendants(HWND parent) {
  std::vector<HWND> children;
  EnumChildWindows(parent, collectChild, reinterpret_cast<LPARAM>(&children));
  return children;
}

bool isPushButton(HWND window) {
  if (!sameClass(windowClass(window), L"Button")) return false;
  const LONG_PTR type = GetWindowLongPtrW(window, GWL_STYLE) & BS_TYPEMASK;
  return type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON;
}

bool writeBmp(const std::wstring& path, int width, int height, const std::vector<unsigned char>& pixels) {
  BITMAPINFOHEADER info{};
  info.biSize = sizeof(info);
  info.biWidth = width;
  info.biHeight = height;
  info.biPlanes = 1;
  info.biBitCount = 24;
  info.biCompression = BI_RGB;
  info.biSizeImage = static_cast<DWORD>(pixels.size());
  BITMAPFILEHEADER file{};
  file.bfType = 0x4D42;  // "BM"
  file.bfOffBits = sizeof(file) + sizeof(info);
  file.bfSize = file.bfOffBits + info.biSizeImage;
  FILE* out = _wfopen(path.c_str(), L"wb");
  if (out == nullptr) return false;
  const bool written = std::fwrite(&file, sizeof(file), 1, out) == 1 &&
                       std::fwrite(&info, sizeof(info), 1, out) == 1 &&
                       std::fwrite(pixels.data(), 1, pixels.size(), out) == pixels.size();
  return std::fclose(out) == 0 && written;
}

/// Copies `width` x `height` pixels at (x, y) of `source` as bottom-up 24-bit rows.
std::vector<unsigned char> copyPixels(HDC source, int x, int y, int width, int height) {
  std::vector<unsigned char> pixels;
  HDC memory = CreateCompatibleDC(source);
  HBITMAP bitmap = CreateCompatibleBitmap(source, width, height);
  if (memory != nullptr && bitmap != nullptr) {
    HGDIOBJ previous = SelectObject(memory, bitmap);
    const bool copied = BitBlt(memory, 0, 0, width, height, source, x, y, SRCCOPY | CAPTUREBLT) != 0;
    SelectObject(memory, previous);
    if (copied) {
      BITMAPINFO info{};
      info.bmiHeader.biSize = sizeof(info.bmiHeader);
      info.bmiHeader.biWidth = width;
      info.bmiHeader.biHeight = height;
      info.bmiHeader.biPlanes = 1;
      info.bmiHeader.biBitCount = 24;
      info.bmiHeader.biCompression = BI_RGB;
      const std::size_t stride = (static_cast<std::size_t>(width) * 3 + 3) & ~static_cast<std::size_t>(3);
      pixels.assign(stride * static_cast<std::size_t>(height), 0);
      if (GetDIBits(memory, bitmap, 0, static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS) !=
          height) {
        pixels.clear();
      }
    }
  }
  if (bitmap != nullptr) DeleteObject(bitmap);
  if (memory != nullptr) DeleteDC(memory);
  return pixels;
}

/// True when every pixel has the colour of the first (a picture of nothing).
bool uniform(const std::vector<unsigned char>& pixels, int width, int height) {
  const std::size_t stride = (static_cast<std::size_t>(width) * 3 + 3) & ~static_cast<std::size_t>(3);
  for (int row = 0; row < height; ++row) {
    const unsigned char* line = pixels.data() + stride * static_cast<std::size_t>(row);
    for (int column = 0; column < width * 3; ++column) {
      if (line[column] != pixels[static_cast<std::size_t>(column % 3)]) return false;
    }
  }
  return true;
}

struct WindowSearch {
  const WindowFilter* filter;
  std::vector<HWND> found;
};

BOOL CALLBACK matchTopLevel(HWND window, LPARAM context) {
  auto& search = *reinterpret_cast<WindowSearch*>(context);
  const WindowFilter& filter = *search.filter;
  if (filter.processId != 0 && processOf(window) != filter.processId) return TRUE;
  if (filter.visibleOnly && !IsWindowVisible(window)) return TRUE;
  if (!filter.className.empty() && !sameClass(windowClass(window), filter.className.c_str())) return TRUE;
  if (!filter.caption.empty() && windowText(window) != filter.caption) return TRUE;
  search.found.push_back(window);
  return TRUE;
}

}  // namespace

std::vector<HWND> findWindows(const WindowFilter& filter) {
  WindowSearch search{&filter, {}};
  EnumWindows(matchTopLevel, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

HWND waitForWindow(const WindowFilter& filter, DWORD timeoutMs) {
  HWND found = nullptr;
  pollUntil(timeoutMs, [&] {
    const std::vector<HWND> windows = findWindows(filter);
    if (!windows.empty()) found = windows.front();
    return found != nullptr;
  });
  return found;
}

HWND waitForMessageBox(DWORD processId, DWORD timeoutMs) {
  WindowFilter filter;
  filter.processId = processId;
  filter.className = kDialogClass;
  HWND found = nullptr;
  pollUntil(timeoutMs, [&] {
    for (HWND window : findWindows(filter)) {
      if (GetDlgItem(window, kMessageBoxTextId) != nullptr) {
        found = window;
        return true;
      }
    }
    return false;
  });
  return found;
}

bool waitUntilGone(HWND window, DWORD timeoutMs) {
  return pollUntil(timeoutMs, [&] { return !IsWindow(window) || !IsWindowVisible(window); });
}

std::wstring windowText(HWND window) {
  wchar_t text[1024] = {};
  const int length = InternalGetWindowText(window, text, static_cast<int>(std::size(text)));
  return std::wstring(text, length > 0 ? static_cast<std::size_t>(length) : 0);
}

std::wstring windowClass(HWND window) {
  wchar_t name[256] = {};
  const int length = GetClassNameW(window, name, static_cast<int>(std::size(name)));
  return std::wstring(name, length > 0 ? static_cast<std::size_t>(length) : 0);
}

std::wstring withoutAccelerators(const std::wstring& text) {
  std::wstring plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == L'&' && i + 1 < text.size()) ++i;
    plain += text[i];
  }
  return plain;
}

HWND findControl(HWND parent, const wchar_t* className, const wchar_t* text) {
  FindChildContext search{className, text != nullptr ? withoutAccelerators(text) : std::wstring(),
                          text == nullptr};
  EnumChildWindows(parent, matchChild, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

HWND findControlById(HWND parent, int id) {
  for (HWND child : descendants(parent)) {
    if (GetDlgCtrlID(child) == id) return child;
  }
  return nullptr;
}

std::vector<std::wstring> staticTexts(HWND parent) {
  std::vector<std::wstring> texts;
  for (HWND child : descendants(parent)) {
    if (sameClass(windowClass(child), L"Static")) texts.push_back(windowText(child));
  }
  return texts;
}

std::wstring messageBoxText(HWND box) {
  HWND text = GetDlgItem(box, kMessageBoxTextId);
  return text != nullptr ? windowText(text) : std::wstring();
}

std::vector<std::wstring> buttonTexts(HWND parent) {
  std::vector<std::wstring> texts;
  for (HWND child : descendants(parent)) {
    if (isPushButton(child) && IsWindowVisible(child))
      texts.push_back(withoutAccelerators(windowText(child)));
  }
  return texts;
}

bool clickButton(HWND button) {
  if (button == nullptr || !IsWindowEnabled(button)) return false;
  return PostMessageW(button, BM_CLICK, 0, 0) != 0;
}

bool clickButton(HWND parent, const wchar_t* text) {
  return clickButton(findControl(parent, L"Button", text));
}

int listViewItemCount(HWND listView) {
  LRESULT count = 0;
  return sendTimeout(listView, LVM_GETITEMCOUNT, 0, 0, &count) ? static_cast<int>(count) : -1;
}

bool listViewItemChecked(HWND listView, int item) {
  LRESULT state = 0;
  if (!sendTimeout(listView, LVM_GETITEMSTATE, static_cast<WPARAM>(item), LVIS_STATEIMAGEMASK, &state)) {
    return false;
  }
  return ((static_cast<UINT>(state) & LVIS_STATEIMAGEMASK) >> 12) == 2;
}

bool setListViewItemChecked(HWND listView, int item, bool checked) {
  LVITEMW change{};
  change.stateMask = LVIS_STATEIMAGEMASK;
  change.state = INDEXTOSTATEIMAGEMASK(checked ? 2 : 1);
  WindowProcessMemory memory(listView, sizeof(change));
  if (!memory.write(&change, sizeof(change))) return false;
  LRESULT done = FALSE;
  if (!sendTimeout(listView, LVM_SETITEMSTATE, static_cast<WPARAM>(item),
                   reinterpret_cast<LPARAM>(memory.address()), &done) ||
      done == FALSE) {
    return false;
  }
  return listViewItemChecked(listView, item) == checked;
}

bool selectListViewItem(HWND listView, int item) {
  LVITEMW change{};
  change.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
  change.state = LVIS_SELECTED | LVIS_FOCUSED;
  WindowProcessMemory memory(listView, sizeof(change));
  if (!memory.write(&change, sizeof(change))) return false;
  LRESULT done = FALSE;
  return sendTimeout(listView, LVM_SETITEMSTATE, static_cast<WPARAM>(item),
                     reinterpret_cast<LPARAM>(memory.address()), &done) &&
         done != FALSE && selectedListViewItem(listView) == item;
}

int selectedListViewItem(HWND listView) {
  LRESULT item = -1;
  return sendTimeout(listView, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED, &item)
             ? static_cast<int>(item)
             : -1;
}

std::wstring listViewItemText(HWND listView, int item, int subItem) {
  constexpr int kCharacters = 512;
  WindowProcessMemory memory(listView, sizeof(LVITEMW) + kCharacters * sizeof(wchar_t));
  if (memory.address() == nullptr) return {};
  LVITEMW request{};
  request.iSubItem = subItem;
  request.cchTextMax = kCharacters;
  request.pszText = reinterpret_cast<LPWSTR>(memory.address() + sizeof(LVITEMW));
  std::vector<char> buffer(sizeof(LVITEMW) + kCharacters * sizeof(wchar_t), 0);
  std::memcpy(buffer.data(), &request, sizeof(request));
  LRESULT length = 0;
  if (!memory.write(buffer.data(), buffer.size()) ||
      !sendTimeout(listView, LVM_GETITEMTEXTW, static_cast<WPARAM>(item),
                   reinterpret_cast<LPARAM>(memory.address()), &length) ||
      !memory.read(buffer.data(), buffer.size())) {
    return {};
  }
  const auto* text = reinterpret_cast<const wchar_t*>(buffer.data() + sizeof(LVITEMW));
  return std::wstring(text, wcsnlen(text, kCharacters - 1));
}

std::vector<std::wstring> listBoxItems(HWND listBox) {
  std::vector<std::wstring> items;
  LRESULT count = 0;
  if (!sendTimeout(listBox, LB_GETCOUNT, 0, 0, &count)) return items;
  for (int item = 0; item < count; ++item) {
    LRESULT length = 0;
    if (!sendTimeout(listBox, LB_GETTEXTLEN, static_cast<WPARAM>(item), 0, &length) || length < 0) break;
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    if (!sendTimeout(listBox, LB_GETTEXT, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(text.data()),
                     &length) ||
        length < 0) {
      break;
    }
    text.resize(static_cast<std::size_t>(length));
    items.push_back(text);
  }
  return items;
}

int selectedListBoxItem(HWND listBox) {
  LRESULT item = LB_ERR;
  return sendTimeout(listBox, LB_GETCURSEL, 0, 0, &item) && item != LB_ERR ? static_cast<int>(item) : -1;
}

bool chooseListBoxItem(HWND listBox, int item) {
  LRESULT chosen = LB_ERR;
  if (!sendTimeout(listBox, LB_SETCURSEL, static_cast<WPARAM>(item), 0, &chosen) || chosen != item)
    return false;
  return PostMessageW(GetParent(listBox), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(listBox), LBN_SELCHANGE),
                      reinterpret_cast<LPARAM>(listBox)) != 0;
}

bool chooseComboBoxItem(HWND comboBox, int item) {
  LRESULT chosen = CB_ERR;
  if (!sendTimeout(comboBox, CB_SETCURSEL, static_cast<WPARAM>(item), 0, &chosen) || chosen != item)
    return false;
  return PostMessageW(GetParent(comboBox), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(comboBox), CBN_SELCHANGE),
                      reinterpret_cast<LPARAM>(comboBox)) != 0;
}

std::wstring editText(HWND edit) {
  LRESULT length = 0;
  if (!sendTimeout(edit, WM_GETTEXTLENGTH, 0, 0, &length) || length <= 0) return {};
  std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
  if (!sendTimeout(edit, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), &length)) return {};
  text.resize(static_cast<std::size_t>(length));
  return text;
}

bool typeText(HWND edit, const std::wstring& text) {
  if (!sendTimeout(GetParent(edit), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(edit), TRUE, nullptr))
    return false;
  for (const wchar_t character : text) {
    if (!sendTimeout(edit, WM_CHAR, character, 1, nullptr)) return false;
  }
  return true;
}

bool saveWindowBitmap(HWND window, const std::wstring& path, std::wstring* error) {
  auto fail = [&](const wchar_t* why) {
    if (error != nullptr) *error = why;
    return false;
  };
  RECT frame{};
  if (!IsWindow(window) || !GetWindowRect(window, &frame)) return fail(L"no such window");
  const int width = frame.right - frame.left;
  const int height = frame.bottom - frame.top;
  if (width <= 0 || height <= 0) return fail(L"the window has no area");
  // Let the window's thread finish painting what is pending before the picture is taken.
  sendTimeout(window, WM_NULL, 0, 0, nullptr);
  Sleep(200);

  // The window's own DC shows the window whoever covers it; the screen is the fallback for windows
  // whose pixels only the display holds (another process's window on some drivers).
  std::vector<unsigned char> pixels;
  if (HDC windowDc = GetWindowDC(window)) {
    pixels = copyPixels(windowDc, 0, 0, width, height);
    ReleaseDC(window, windowDc);
  }
  if (pixels.empty() || uniform(pixels, width, height)) {
    if (HDC screen = GetDC(nullptr)) {
      pixels = copyPixels(screen, frame.left, frame.top, width, height);
      ReleaseDC(nullptr, screen);
    }
  }
  if (pixels.empty()) return fail(L"the window's pixels cannot be read");
  if (!writeBmp(path, width, height, pixels)) return fail(L"the file cannot be written");
  return true;
}

std::vector<DWORD> processesNamed(const std::wstring& fileName) {
  std::vector<DWORD> found;
  HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (snapshot == INVALID_HANDLE_VALUE) return found;
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof(entry);
  for (BOOL more = Process32FirstW(snapshot, &entry); more; more = Process32NextW(snapshot, &entry)) {
    const wchar_t* name = entry.szExeFile;
    if (const wchar_t* slash = std::wcsrchr(name, L'\\')) name = slash + 1;
    if (_wcsicmp(name, fileName.c_str()) == 0 && entry.th32ProcessID != GetCurrentProcessId()) {
      found.push_back(entry.th32ProcessID);
    }
  }
  CloseHandle(snapshot);
  return found;
}

DWORD waitForProcess(const std::wstring& fileName, DWORD timeoutMs) {
  DWORD found = 0;
  pollUntil(timeoutMs, [&] {
    const std::vector<DWORD> processes = processesNamed(fileName);
    if (!processes.empty()) found = processes.front();
    return found != 0;
  });
  return found;
}

bool processRunning(DWORD processId) {
  HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, processId);
  if (process == nullptr) return false;
  const bool running = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
  CloseHandle(process);
  return running;
}

}  // namespace rx9400::tools
