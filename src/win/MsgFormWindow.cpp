// The message form's window (MsgFormWindow.h).
#include "win/MsgFormWindow.h"

#include "win/ComSupport.h"

namespace rx9400::win {
namespace {

constexpr int kHeading = 101;
constexpr int kMessage = 102;
constexpr int kButton1 = 103;
constexpr int kButton2 = 104;
/// The control of each text but the caption, in the order of MsgFormWindow::Text.
constexpr int kControls[] = {kHeading, kMessage, kButton1, kButton2};

std::size_t index(MsgFormWindow::Text which) {
  return static_cast<std::size_t>(which);
}

}  // namespace

MsgFormWindow::MsgFormWindow(const wchar_t* className, std::function<void()> onButton1,
                             std::function<void()> onButton2)
    : className_(className), onButton1_(std::move(onButton1)), onButton2_(std::move(onButton2)) {}

void MsgFormWindow::show() {
  create();
  if (window_ == nullptr) return;
  layout();
  ShowWindow(window_, SW_SHOWNORMAL);
  SetForegroundWindow(window_);
}

void MsgFormWindow::close() {
  if (window_ != nullptr) {
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    DestroyWindow(window_);
    window_ = nullptr;
  }
}

void MsgFormWindow::setText(Text which, std::wstring text) {
  texts_[index(which)] = std::move(text);
  if (window_ != nullptr) layout();
}

LRESULT CALLBACK MsgFormWindow::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<MsgFormWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  const bool click = message == WM_COMMAND && HIWORD(wParam) == BN_CLICKED;
  if (self != nullptr && (click || message == WM_CLOSE)) {
    // A copy: the handler may close and destroy this window, so nothing of it is used afterwards.
    const std::function<void()> handler =
        click ? (LOWORD(wParam) == kButton1 ? self->onButton1_ : self->onButton2_)
              : (self->onButton2_ ? self->onButton2_ : self->onButton1_);
    try {
      if (handler) handler();
    } catch (...) {
    }
    return 0;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

void MsgFormWindow::create() {
  if (window_ != nullptr) return;
  WNDCLASSW windowClass{};
  if (!GetClassInfoW(moduleHandle(), className_, &windowClass)) {
    windowClass = WNDCLASSW{};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = moduleHandle();
    windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    windowClass.lpszClassName = className_;
    RegisterClassW(&windowClass);
  }
  window_ = CreateWindowExW(WS_EX_TOPMOST | WS_EX_DLGMODALFRAME, className_, L"",
                            WS_POPUP | WS_CAPTION | WS_SYSMENU, CW_USEDEFAULT, CW_USEDEFAULT, 420, 190,
                            nullptr, nullptr, moduleHandle(), nullptr);
  if (window_ == nullptr) return;
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  const auto font = reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT));
  const auto control = [&](const wchar_t* type, int id, DWORD style) {
    HWND child = CreateWindowExW(0, type, L"", WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, window_,
                                 reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), moduleHandle(), nullptr);
    SendMessageW(child, WM_SETFONT, font, FALSE);
  };
  control(L"STATIC", kHeading, SS_LEFT);
  control(L"STATIC", kMessage, SS_LEFT);
  control(L"BUTTON", kButton1, BS_DEFPUSHBUTTON | WS_TABSTOP);
  control(L"BUTTON", kButton2, BS_PUSHBUTTON | WS_TABSTOP);
}

void MsgFormWindow::layout() {
  SetWindowTextW(window_, texts_[index(Text::Caption)].c_str());
  for (std::size_t i = 0; i < std::size(kControls); ++i)
    SetDlgItemTextW(window_, kControls[i], texts_[i].c_str());
  MoveWindow(GetDlgItem(window_, kHeading), 16, 14, 380, 20, FALSE);
  MoveWindow(GetDlgItem(window_, kMessage), 16, 40, 380, 60, FALSE);
  const bool second = !texts_[index(Text::Button2)].empty();
  MoveWindow(GetDlgItem(window_, kButton1), second ? 200 : 300, 112, 90, 26, FALSE);
  MoveWindow(GetDlgItem(window_, kButton2), 300, 112, 90, 26, FALSE);
  ShowWindow(GetDlgItem(window_, kButton2), second ? SW_SHOW : SW_HIDE);
  InvalidateRect(window_, nullptr, TRUE);
}

void unregisterMsgFormWindowClass(const wchar_t* className) {
  UnregisterClassW(className, moduleHandle());
}

}  // namespace rx9400::win
