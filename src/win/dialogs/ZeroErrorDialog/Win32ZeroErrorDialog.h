// The zero-error dialog as a Win32 dialog.
#pragma once

#include "session/ZeroErrorDialog.h"
#include "win/dialogs/Win32Dialog.h"

namespace rx9400::win {

class Win32ZeroErrorDialog final : public Win32DialogView<ZeroErrorDialogView> {
 public:
  Win32ZeroErrorDialog();

  void attach(ZeroErrorDialog& presenter) override { presenter_ = &presenter; }
  void setDetectorLine(const std::string& line) override;

 private:
  void onInit() override;
  void onActivate() override;
  void onCommand(int id) override;

  ZeroErrorDialog* presenter_ = nullptr;
};

}  // namespace rx9400::win
