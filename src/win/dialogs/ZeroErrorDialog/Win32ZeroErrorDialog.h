// The zero-error dialog as a Win32 dialog.
#pragma once

#include "session/ZeroErrorDialog.h"
#include "win/dialogs/Win32Dialog.h"

namespace rx9400::win {

class Win32ZeroErrorDialog final : public Win32DialogView<ZeroErrorDialogView, ZeroErrorDialog> {
 public:
  Win32ZeroErrorDialog();

  void setDetectorLine(const std::string& line) override;

 private:
  void prepare() override;
  void clicked(ZeroErrorDialog& presenter, int id) override;
};

}  // namespace rx9400::win
