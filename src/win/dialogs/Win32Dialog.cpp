// The base of the plug-in's Win32 dialogs.
#include "win/dialogs/Win32Dialog.h"

#include "win/ComSupport.h"

namespace rx9400::win {

Win32Dialog::Win32Dialog(int templateId, std::vector<int> captionIds)
    : templateId_(templateId), captionIds_(std::move(captionIds)) {}

void Win32Dialog::runModal() {
  DialogBoxParamW(moduleHandle(), MAKEINTRESOURCEW(templateId_), GetActiveWindow(), procedure,
                  reinterpret_cast<LPARAM>(this));
  dialog_ = nullptr;
}

void Win32Dialog::endModal() {
  if (dialog_ != nullptr) EndDialog(dialog_, 0);
}

WindowHandle Win32Dialog::focusedControlHandle() const {
  HWND focus = GetFocus();
  return asWindowHandle(focus != nullptr && IsChild(dialog_, focus) ? focus : dialog_);
}

std::vector<std::string> Win32Dialog::controlCaptions() const {
  std::vector<std::string> captions;
  for (const int id : captionIds_) captions.push_back(windowText(control(id)));
  return captions;
}

void Win32Dialog::setControlCaptions(const std::vector<std::string>& captions) {
  for (std::size_t i = 0; i < captions.size() && i < captionIds_.size(); ++i) {
    setWindowText(control(captionIds_[i]), captions[i]);
  }
}

void Win32Dialog::setControlText(int id, const std::string& text) {
  setWindowText(control(id), text);
}

bool Win32Dialog::onMessage(UINT, WPARAM, LPARAM, INT_PTR&) {
  return false;
}

INT_PTR CALLBACK Win32Dialog::procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<Win32Dialog*>(GetWindowLongPtrW(dialog, DWLP_USER));
  if (message == WM_INITDIALOG) {
    self = reinterpret_cast<Win32Dialog*>(lParam);
    SetWindowLongPtrW(dialog, DWLP_USER, lParam);
    self->dialog_ = dialog;
  }
  if (self == nullptr) return FALSE;
  // Every handler traps its own failures: nothing may leave a window procedure.
  try {
    switch (message) {
      case WM_INITDIALOG:
        self->onInit();
        return TRUE;
      case WM_ACTIVATE:
        if (LOWORD(wParam) != WA_INACTIVE) self->onActivate();
        return FALSE;
      case WM_COMMAND:
        if (HIWORD(wParam) == BN_CLICKED) {
          self->onCommand(LOWORD(wParam));
          return TRUE;
        }
        return lParam != 0 && self->onNotification(LOWORD(wParam), HIWORD(wParam)) ? TRUE : FALSE;
      case WM_TIMER:
        self->onTimer();
        return TRUE;
      case WM_CLOSE:
        self->onCommand(IDCANCEL);
        return TRUE;
      default: {
        INT_PTR result = FALSE;
        if (self->onMessage(message, wParam, lParam, result)) return result;
        return FALSE;
      }
    }
  } catch (...) {
    return FALSE;
  }
}

}  // namespace rx9400::win
