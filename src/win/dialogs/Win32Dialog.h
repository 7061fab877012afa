// The base of the plug-in's Win32 dialogs: a modal dialog from the DLL's resources that keeps `this`
// on WM_INITDIALOG and forwards its messages to a virtual handler. Views stay thin: every decision is
// the presenter's.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "platform/WindowSystem.h"
#include "win/dialogs/DialogControls.h"

namespace rx9400::win {

class Win32Dialog {
 public:
  /// `templateId` is the dialog's resource; `captionIds` the controls whose captions are catalogue
  /// literals, in the order captions() gives them.
  Win32Dialog(int templateId, std::vector<int> captionIds);
  virtual ~Win32Dialog() = default;
  Win32Dialog(const Win32Dialog&) = delete;
  Win32Dialog& operator=(const Win32Dialog&) = delete;

  /// Runs the dialog modally, owned by the executive's active window.
  void runModal();
  void endModal();
  HWND handle() const { return dialog_; }
  WindowHandle focusedControlHandle() const;
  std::vector<std::string> controlCaptions() const;
  void setControlCaptions(const std::vector<std::string>& captions);
  void setControlText(int id, const std::string& text);
  HWND control(int id) const { return GetDlgItem(dialog_, id); }

 protected:
  /// The dialog exists: the presenter's load runs here.
  virtual void onInit() = 0;
  virtual void onActivate() {}
  /// A button with this id was pressed.
  virtual void onCommand(int id) = 0;
  /// Another notification of a control (LBN_SELCHANGE, CBN_SELCHANGE, EN_SETFOCUS...); answers
  /// whether it handled it.
  virtual bool onNotification(int /*id*/, int /*code*/) { return false; }
  virtual void onTimer() {}
  /// Other messages; answers whether it handled them (and the result in `result`).
  virtual bool onMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result);

 private:
  static INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

  int templateId_;
  std::vector<int> captionIds_;
  HWND dialog_ = nullptr;
};

}  // namespace rx9400::win

namespace rx9400::win {

/// A Win32 dialog as the view of one presenter: attaches the presenter, lets it load once the dialog
/// exists and tells it of each activation, and passes it the buttons pressed. A view adds only its
/// resource, its captions and what its own controls need.
template <typename View, typename Presenter>
class Win32DialogView : public Win32Dialog, public View {
 public:
  using Win32Dialog::Win32Dialog;

  void attach(Presenter& presenter) override { presenter_ = &presenter; }
  void showModal() override { runModal(); }
  void hide() override { endModal(); }
  WindowHandle window() override { return asWindowHandle(handle()); }
  WindowHandle focusedControl() override { return focusedControlHandle(); }
  void setTitle(const std::string& title) override { setWindowText(handle(), title); }
  std::vector<std::string> captions() override { return controlCaptions(); }
  void setCaptions(const std::vector<std::string>& captions) override { setControlCaptions(captions); }

 protected:
  /// The view's own set-up of its controls, before the presenter loads.
  virtual void prepare() {}
  /// A button was pressed (IDCANCEL: the window was closed).
  virtual void clicked(Presenter& presenter, int id) = 0;

  Presenter* presenter_ = nullptr;

 private:
  void onInit() final {
    prepare();
    if (presenter_ != nullptr) presenter_->load();
  }
  void onActivate() final {
    if (presenter_ != nullptr) presenter_->activated();
  }
  void onCommand(int id) final {
    if (presenter_ != nullptr) clicked(*presenter_, id);
  }
};

}  // namespace rx9400::win
