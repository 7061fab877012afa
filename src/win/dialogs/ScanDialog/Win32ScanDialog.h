// The scan dialog as a Win32 dialog.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include "session/ScanDialog.h"
#include "win/dialogs/Win32Dialog.h"

namespace rx9400::win {

class Win32ScanDialog final : public Win32DialogView<ScanDialogView> {
 public:
  Win32ScanDialog();
  ~Win32ScanDialog() override;

  void attach(ScanDialog& presenter) override { presenter_ = &presenter; }
  void setTimerEnabled(bool enabled) override;
  void setTimerInterval(int milliseconds) override;
  int animationFrameCount() override;
  void showAnimationFrame(int frame) override;

 private:
  void onInit() override;
  void onActivate() override;
  void onCommand(int id) override;
  void onTimer() override;
  bool onMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result) override;

  ScanDialog* presenter_ = nullptr;
  HIMAGELIST frames_ = nullptr;
  int frame_ = 0;
  int interval_ = 1;
  bool timerOn_ = false;
};

}  // namespace rx9400::win
