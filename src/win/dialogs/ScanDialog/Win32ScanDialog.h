// The scan dialog as a Win32 dialog.
#pragma once

#include "session/ScanDialog.h"
#include "win/dialogs/Win32Dialog.h"

namespace rx9400::win {

class Win32ScanDialog final : public Win32DialogView<ScanDialogView, ScanDialog> {
 public:
  Win32ScanDialog();
  ~Win32ScanDialog() override;

  void setTimerEnabled(bool enabled) override;
  void setTimerInterval(int milliseconds) override;
  int animationFrameCount() override;
  void showAnimationFrame(int frame) override;

 private:
  void prepare() override;
  void clicked(ScanDialog& presenter, int id) override;
  void onTimer() override;
  bool onMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result) override;

  HIMAGELIST frames_ = nullptr;
  int frame_ = 0;
  int interval_ = 1;
  bool timerOn_ = false;
};

}  // namespace rx9400::win
