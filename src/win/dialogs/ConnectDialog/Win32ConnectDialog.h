// The connect dialog as a Win32 dialog.
#pragma once

#include "session/ConnectDialog.h"
#include "win/dialogs/Win32Dialog.h"

namespace rx9400::win {

class Win32ConnectDialog final : public Win32DialogView<ConnectDialogView, ConnectDialog> {
 public:
  Win32ConnectDialog();

  void setRows(const std::vector<DetectorRow>& rows) override;
  std::vector<bool> tickedRows() override;
  void setDetails(const DetectorDetails& details) override;
  void setRadioStates(int usb, int zigBee) override;

 private:
  void prepare() override;
  void clicked(ConnectDialog& presenter, int id) override;
  bool onMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result) override;

  int usb_ = 0;
  int zigBee_ = 0;
  bool filling_ = false;
};

}  // namespace rx9400::win
