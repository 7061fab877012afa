// The plug-in's own modeless notice box.
#include "win/Win32NoticeBoxes.h"

#include <windows.h>

#include "win/ComSupport.h"
#include "win/Win32Platform.h"

namespace rx9400::win {
namespace {

constexpr wchar_t kClassName[] = L"RX9400NoticeBox";
constexpr int kHeading = 101;
constexpr int kMessage = 102;
constexpr int kButton1 = 103;
constexpr int kButton2 = 104;

class Win32NoticeBox final : public NoticeBox {
 public:
  Win32NoticeBox(std::function<void()> onButton1, std::function<void()> onButton2)
      : onButton1_(std::move(onButton1)), onButton2_(std::move(onButton2)) {}
  ~Win32NoticeBox() override { close(); }
  Win32NoticeBox(const Win32NoticeBox&) = delete;
  Win32NoticeBox& operator=(const Win32NoticeBox&) = delete;

  void show() override {
    create();
    layout();
    ShowWindow(window_, SW_SHOWNORMAL);
    SetForegroundWindow(window_);
  }
  void close() override {
    if (window_ != nullptr) {
      SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
      DestroyWindow(window_);
      window_ = nullptr;
    }
  }
  void setHeading(const std::string& text) override { heading_ = text; }
  void setMessage(const std::string& text) override { message_ = text; }
  void setButton1(const std::string& text) override { button1_ = text; }
  void setButton2(const std::string& text) override { button2_ = text; }
  void setCaption(const std::string& text) override { caption_ = text; }

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<Win32NoticeBox*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self != nullptr && message == WM_COMMAND && HIWORD(wParam) == BN_CLICKED) {
      // The handler may close and destroy this box: nothing of it is used afterwards.
      const std::function<void()> handler = LOWORD(wParam) == kButton1 ? self->onButton1_ : self->onButton2_;
      try {
        if (handler) handler();
      } catch (...) {
      }
      return 0;
    }
    if (self != nullptr && message == WM_CLOSE) {
      const std::function<void()> handler = self->onButton2_ ? self->onButton2_ : self->onButton1_;
      try {
        if (handler) handler();
      } catch (...) {
      }
      return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
  }

  void create() {
    if (window_ != nullptr) return;
    // Registered when missing: the plug-in unregisters it before it may be unloaded.
    WNDCLASSW windowClass{};
    if (!GetClassInfoW(moduleHandle(), kClassName, &windowClass)) {
      windowClass = WNDCLASSW{};
      windowClass.lpfnWndProc = procedure;
      windowClass.hInstance = moduleHandle();
      windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
      windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
      windowClass.lpszClassName = kClassName;
      RegisterClassW(&windowClass);
    }
    window_ = CreateWindowExW(WS_EX_TOPMOST | WS_EX_DLGMODALFRAME, kClassName, toWide(caption_).c_str(),
                              WS_POPUP | WS_CAPTION | WS_SYSMENU, CW_USEDEFAULT, CW_USEDEFAULT, 420, 190,
                              nullptr, nullptr, moduleHandle(), nullptr);
    if (window_ == nullptr) return;
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    const auto font = reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT));
    const auto control = [&](const wchar_t* type, int id, DWORD style) {
      HWND child =
          CreateWindowExW(0, type, L"", WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, window_,
                          reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), moduleHandle(), nullptr);
      SendMessageW(child, WM_SETFONT, font, FALSE);
    };
    control(L"STATIC", kHeading, SS_LEFT);
    control(L"STATIC", kMessage, SS_LEFT);
    control(L"BUTTON", kButton1, BS_DEFPUSHBUTTON | WS_TABSTOP);
    control(L"BUTTON", kButton2, BS_PUSHBUTTON | WS_TABSTOP);
  }

  void layout() {
    if (window_ == nullptr) return;
    SetWindowTextW(window_, toWide(caption_).c_str());
    SetDlgItemTextW(window_, kHeading, toWide(heading_).c_str());
    SetDlgItemTextW(window_, kMessage, toWide(message_).c_str());
    SetDlgItemTextW(window_, kButton1, toWide(button1_).c_str());
    SetDlgItemTextW(window_, kButton2, toWide(button2_).c_str());
    MoveWindow(GetDlgItem(window_, kHeading), 16, 14, 380, 20, FALSE);
    MoveWindow(GetDlgItem(window_, kMessage), 16, 40, 380, 60, FALSE);
    const bool second = !button2_.empty();
    MoveWindow(GetDlgItem(window_, kButton1), second ? 200 : 300, 112, 90, 26, FALSE);
    MoveWindow(GetDlgItem(window_, kButton2), 300, 112, 90, 26, FALSE);
    ShowWindow(GetDlgItem(window_, kButton2), second ? SW_SHOW : SW_HIDE);
  }

  std::function<void()> onButton1_;
  std::function<void()> onButton2_;
  std::string heading_;
  std::string message_;
  std::string button1_;
  std::string button2_;
  std::string caption_;
  HWND window_ = nullptr;
};

}  // namespace

void unregisterNoticeBoxClass() {
  UnregisterClassW(kClassName, moduleHandle());
}

std::unique_ptr<NoticeBox> Win32NoticeBoxes::create(std::function<void()> onButton1,
                                                    std::function<void()> onButton2) {
  return std::make_unique<Win32NoticeBox>(std::move(onButton1), std::move(onButton2));
}

}  // namespace rx9400::win
