// rx9400-traceviewer: shows the plug-in's trace lines as they arrive.
//
// The plug-in looks for the viewer once, at its first trace line, by the window property
// "vbAcceleratorVBTRACER_TRACEWIN" = 1; start the viewer before the executive loads the plug-in. Each line
// arrives as WM_COPYDATA with the ANSI bytes of the text and no terminator.
//
//   rx9400-traceviewer [--record FILE] [--quit-after N]
//
// --record appends every message to FILE exactly as received, each as "<byte count>:<bytes>\n".
// --quit-after ends the viewer after N messages.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const char* const kPropertyName = "vbAcceleratorVBTRACER_TRACEWIN";
const wchar_t* const kClassName = L"RX9400TraceViewer";

HWND gList = nullptr;
std::FILE* gRecord = nullptr;
long gQuitAfter = -1;
long gReceived = 0;

/// Shows one received line: tabs between fields become " | ", line feeds start a new list entry.
void show(const std::string& text) {
  std::string line = text;
  for (std::size_t at = 0; (at = line.find('\t', at)) != std::string::npos; at += 3)
    line.replace(at, 1, " | ");
  std::size_t start = 0;
  while (start <= line.size()) {
    const std::size_t end = line.find('\n', start);
    const std::string part = line.substr(start, end == std::string::npos ? std::string::npos : end - start);
    const LRESULT index = SendMessageA(gList, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(part.c_str()));
    SendMessageA(gList, LB_SETTOPINDEX, static_cast<WPARAM>(index), 0);
    std::printf("%s\n", part.c_str());
    if (end == std::string::npos) break;
    start = end + 1;
  }
  std::fflush(stdout);
}

LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE:
      gList = CreateWindowExW(WS_EX_CLIENTEDGE, L"LISTBOX", L"",
                              WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL | LBS_NOINTEGRALHEIGHT, 0, 0, 0,
                              0, window, nullptr, GetModuleHandleW(nullptr), nullptr);
      SendMessageW(gList, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(ANSI_FIXED_FONT)), FALSE);
      return 0;
    case WM_SIZE:
      MoveWindow(gList, 0, 0, LOWORD(lParam), HIWORD(lParam), TRUE);
      return 0;
    case WM_COPYDATA: {
      const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
      const std::string bytes(static_cast<const char*>(data->lpData), data->cbData);
      if (gRecord != nullptr) {
        std::fprintf(gRecord, "%lu:", static_cast<unsigned long>(data->cbData));
        std::fwrite(bytes.data(), 1, bytes.size(), gRecord);
        std::fputc('\n', gRecord);
        std::fflush(gRecord);
      }
      show(bytes);
      if (gQuitAfter > 0 && ++gReceived >= gQuitAfter) PostMessageW(window, WM_CLOSE, 0, 0);
      return TRUE;
    }
    case WM_DESTROY:
      RemovePropA(window, kPropertyName);
      PostQuitMessage(0);
      return 0;
    default:
      return DefWindowProcW(window, message, wParam, lParam);
  }
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--record") == 0 && i + 1 < argc) {
      gRecord = std::fopen(argv[++i], "ab");
      if (gRecord == nullptr) {
        std::fprintf(stderr, "rx9400-traceviewer: cannot open %s\n", argv[i]);
        return 1;
      }
    } else if (std::strcmp(argv[i], "--quit-after") == 0 && i + 1 < argc) {
      gQuitAfter = std::atol(argv[++i]);
    } else {
      std::fprintf(stderr, "usage: rx9400-traceviewer [--record FILE] [--quit-after N]\n");
      return 64;
    }
  }
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = windowProcedure;
  windowClass.hInstance = GetModuleHandleW(nullptr);
  windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
  windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
  windowClass.lpszClassName = kClassName;
  RegisterClassW(&windowClass);
  HWND window = CreateWindowExW(0, kClassName, L"RX9400 trace", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                                CW_USEDEFAULT, 900, 500, nullptr, nullptr, windowClass.hInstance, nullptr);
  if (window == nullptr) return 1;
  SetPropA(window, kPropertyName, reinterpret_cast<HANDLE>(1));
  ShowWindow(window, SW_SHOWNORMAL);
  std::printf("rx9400-traceviewer ready\n");
  std::fflush(stdout);
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  if (gRecord != nullptr) std::fclose(gRecord);
  return 0;
}
