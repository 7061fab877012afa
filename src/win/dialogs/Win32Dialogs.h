// The session's dialogs as Win32 dialogs.
#pragma once

#include "session/DialogFactory.h"

namespace rx9400::win {

class Win32Dialogs final : public DialogFactory {
 public:
  std::shared_ptr<ScanDialogView> newScanView() override;
  std::shared_ptr<ConnectDialogView> newConnectView() override;
  std::shared_ptr<ZeroErrorDialogView> newZeroErrorView() override;
};

}  // namespace rx9400::win
