// Checks of the window automation against windows the host opens itself, before the plug-in's own
// dialogs rely on it: a message box and a list view with check boxes, each run modally on the main
// thread and driven from an automation thread (or, for the remote checks, from rx9400-automate).
#include <windows.h>

#include <commctrl.h>

#include <string>
#include <vector>

#include "Automation.h"
#include "Checks.h"

namespace rx9400::e2e {
namespace {

constexpr DWORD kFindMs = 10000;
constexpr wchar_t kListWindowClass[] = L"RX9400AutomationCheck";
const wchar_t* const kDetectors[] = {L"AIO+MAS 4711", L"DOSE 4712", L"MAS 4713"};
const std::vector<bool> kOnlySecondTicked = {false, true, false};

/// How a list-view window ended: the button pressed (IDOK for Connect, IDCANCEL, 0 when it timed
/// out) and each item's check box at that moment.
struct ListWindowResult {
  int answer = 0;
  std::vector<bool> checked;
};

struct ListWindowState {
  HWND listView = nullptr;
  ListWindowResult result;
  bool done = false;
};

LRESULT CALLBACK listWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NCCREATE) {
    const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
  }
  auto* state = reinterpret_cast<ListWindowState*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  switch (message) {
    case WM_COMMAND:
      if (HIWORD(wParam) == BN_CLICKED && (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL)) {
        state->result.answer = LOWORD(wParam);
        const int count = ListView_GetItemCount(state->listView);
        for (int i = 0; i < count; ++i)
          state->result.checked.push_back(ListView_GetCheckState(state->listView, i) != 0);
        DestroyWindow(window);
        return 0;
      }
      break;
    case WM_TIMER:
      DestroyWindow(window);
      return 0;
    case WM_DESTROY:
      state->done = true;
      return 0;
    default:
      break;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

/// Shows a dialog-like window with a list view of three detectors with check boxes and the buttons
/// Connect and Cancel, and runs its message loop until a button is pressed or `limitMs` have passed.
ListWindowResult runListWindow(const wchar_t* caption, DWORD limitMs) {
  INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_LISTVIEW_CLASSES};
  InitCommonControlsEx(&controls);
  const HINSTANCE instance = GetModuleHandleW(nullptr);
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = listWindowProc;
  windowClass.hInstance = instance;
  windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // the arrow
  windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
  windowClass.lpszClassName = kListWindowClass;
  RegisterClassW(&windowClass);  // fails harmlessly when already registered

  ListWindowState state;
  HWND window =
      CreateWindowExW(WS_EX_DLGMODALFRAME, kListWindowClass, caption, WS_POPUP | WS_CAPTION | WS_SYSMENU, 120,
                      120, 380, 260, nullptr, nullptr, instance, &state);
  if (window == nullptr) fail("the list-view window cannot be created");
  state.listView = CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"",
                                   WS_CHILD | WS_VISIBLE | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS, 10,
                                   10, 350, 160, window, reinterpret_cast<HMENU>(100), instance, nullptr);
  ListView_SetExtendedListViewStyle(state.listView, LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT);
  LVCOLUMNW column{};
  column.mask = LVCF_TEXT | LVCF_WIDTH;
  column.cx = 320;
  column.pszText = const_cast<LPWSTR>(L"Detector");
  SendMessageW(state.listView, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
  for (int i = 0; i < static_cast<int>(std::size(kDetectors)); ++i) {
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = i;
    item.pszText = const_cast<LPWSTR>(kDetectors[i]);
    SendMessageW(state.listView, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }
  CreateWindowExW(0, L"Button", L"&Connect", WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, 170, 185,
                  90, 28, window, reinterpret_cast<HMENU>(IDOK), instance, nullptr);
  CreateWindowExW(0, L"Button", L"Cancel", WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, 270, 185, 90,
                  28, window, reinterpret_cast<HMENU>(IDCANCEL), instance, nullptr);
  SetTimer(window, 1, limitMs, nullptr);
  ShowWindow(window, SW_SHOW);
  UpdateWindow(window);

  MSG message;
  while (!state.done && GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return state.result;
}

std::string describe(const std::vector<bool>& checked) {
  std::string text;
  for (bool item : checked) text += item ? '1' : '0';
  return "[" + text + "]";
}

void checkMessageBox(const HostOptions& options) {
  const std::wstring caption = L"RX9400 automation check";
  const std::wstring text = L"The automation thread reads this text.";
  const std::wstring picture = options.artifacts + L"\\automation-messagebox.bmp";
  struct Seen {
    std::string why;
    std::wstring caption, text, className;
    std::vector<std::wstring> buttons;
    RECT frame{};
  } seen;
  AutomationThread automation([&] {
    HWND box = waitForMessageBox(GetCurrentProcessId(), kFindMs);
    if (box == nullptr) {
      seen.why = "no message box appeared";
      return;
    }
    seen.caption = windowText(box);
    seen.className = windowClass(box);
    seen.text = messageBoxText(box);
    seen.buttons = buttonTexts(box);
    GetWindowRect(box, &seen.frame);
    std::wstring error;
    if (!saveWindowBitmap(box, picture, &error)) seen.why = "no picture: " + narrow(error);
    if (!clickButton(box, L"OK")) {
      seen.why = "the OK button cannot be pressed";
      PostMessageW(box, WM_CLOSE, 0, 0);
    }
    if (!waitUntilGone(box, kFindMs)) seen.why = "the message box stayed open after OK";
  });
  const int answer = MessageBoxW(nullptr, text.c_str(), caption.c_str(), MB_OKCANCEL | MB_ICONINFORMATION);
  automation.join();
  expect(seen.why.empty(), seen.why);
  expect(seen.className == kDialogClass, "the message box has the class " + narrow(seen.className));
  expect(seen.caption == caption, "the message box is titled \"" + narrow(seen.caption) + "\"");
  expect(seen.text == text, "the message box text read \"" + narrow(seen.text) + "\"");
  expect(seen.buttons == std::vector<std::wstring>{L"OK", L"Cancel"},
         "the message box buttons read differently");
  expect(answer == IDOK, "MessageBox answered " + std::to_string(answer) + ", not IDOK");
  expectPicture(picture, seen.frame);
}

void checkListView(const HostOptions& options) {
  const wchar_t* caption = L"RX9400 list view check";
  const std::wstring picture = options.artifacts + L"\\automation-listview.bmp";
  struct Seen {
    std::string why;
    int count = -1;
    std::wstring secondItem;
    bool tickedBefore = true;
    RECT frame{};
  } seen;
  AutomationThread automation([&] {
    WindowFilter filter;
    filter.processId = GetCurrentProcessId();
    filter.caption = caption;
    HWND window = waitForWindow(filter, kFindMs);
    if (window == nullptr) {
      seen.why = "the window did not appear";
      return;
    }
    HWND list = findControl(window, WC_LISTVIEWW, nullptr);
    seen.count = listViewItemCount(list);
    seen.secondItem = listViewItemText(list, 1);
    seen.tickedBefore = listViewItemChecked(list, 1);
    if (!setListViewItemChecked(list, 1, true)) seen.why = "the check box of item 1 cannot be ticked";
    GetWindowRect(window, &seen.frame);
    std::wstring error;
    if (!saveWindowBitmap(window, picture, &error) && seen.why.empty())
      seen.why = "no picture: " + narrow(error);
    if (!clickButton(window, L"Connect")) {
      seen.why = "the Connect button cannot be pressed";
      PostMessageW(window, WM_CLOSE, 0, 0);
    }
  });
  const ListWindowResult result = runListWindow(caption, 2 * kFindMs);
  automation.join();
  expect(seen.why.empty(), seen.why);
  expect(seen.count == 3, "the list view has " + std::to_string(seen.count) + " items");
  expect(seen.secondItem == kDetectors[1], "item 1 reads \"" + narrow(seen.secondItem) + "\"");
  expect(!seen.tickedBefore, "item 1 was ticked before the automation ticked it");
  expect(result.answer == IDOK, "the window ended with " + std::to_string(result.answer) + ", not Connect");
  expect(result.checked == kOnlySecondTicked, "the window saw the check boxes " + describe(result.checked));
  expectPicture(picture, seen.frame);
}

void checkTimeouts(const HostOptions&) {
  WindowFilter filter;
  filter.processId = GetCurrentProcessId();
  filter.caption = L"RX9400 no such window";
  const ULONGLONG start = GetTickCount64();
  const HWND none = waitForWindow(filter, 300);
  const ULONGLONG elapsed = GetTickCount64() - start;
  expect(none == nullptr, "a window that does not exist was found");
  expect(elapsed >= 300 && elapsed < 2000, "waiting 300 ms took " + std::to_string(elapsed) + " ms");
  expect(waitForMessageBox(GetCurrentProcessId(), 100) == nullptr,
         "a message box that does not exist was found");
  expect(!clickButton(nullptr), "a missing button counted as pressed");
}

// Driven by rx9400-automate from another process: it must press OK.
void checkRemoteMessageBox(const HostOptions&) {
  const int answer = MessageBoxW(nullptr, L"Driven from another process.", L"RX9400 remote check",
                                 MB_OKCANCEL | MB_ICONINFORMATION);
  expect(answer == IDOK, "MessageBox answered " + std::to_string(answer) + ", not IDOK");
}

// Driven by rx9400-automate from another process: it must tick item 1 only and press Connect.
void checkRemoteListView(const HostOptions&) {
  const ListWindowResult result = runListWindow(L"RX9400 remote list view", 40000);
  expect(result.answer == IDOK, "the window ended with " + std::to_string(result.answer) + ", not Connect");
  expect(result.checked == kOnlySecondTicked, "the window saw the check boxes " + describe(result.checked));
}

// Closed by rx9400-automate's dismiss-all, which prefers Cancel: a message box, then a list view.
void checkRemoteDismiss(const HostOptions&) {
  const int answer =
      MessageBoxW(nullptr, L"Close me.", L"RX9400 dismiss check", MB_OKCANCEL | MB_ICONWARNING);
  const ListWindowResult result = runListWindow(L"RX9400 dismiss list view", 40000);
  expect(answer == IDCANCEL, "the message box answered " + std::to_string(answer) + ", not IDCANCEL");
  expect(result.answer == IDCANCEL, "the list-view window ended with " + std::to_string(result.answer));
}

}  // namespace

std::vector<Check> automationChecks() {
  return {
      {"automation-messagebox", "an automation thread finds, reads, pictures and answers a modal message box",
       checkMessageBox},
      {"automation-listview", "an automation thread reads and ticks a list view and presses Connect",
       checkListView},
      {"automation-timeout", "searches for windows that never come end after their time-out", checkTimeouts},
  };
}

std::vector<Check> remoteChecks() {
  return {
      {"remote-messagebox", "a message box that rx9400-automate answers with OK", checkRemoteMessageBox},
      {"remote-listview", "a list view that rx9400-automate ticks (item 1) and confirms (Connect)",
       checkRemoteListView},
      {"remote-dismiss", "a message box and a list view that rx9400-automate dismiss-all closes (Cancel)",
       checkRemoteDismiss},
  };
}

}  // namespace rx9400::e2e
