// The session's dialogs as Win32 dialogs.
#pragma once

#include "session/DialogFactory.h"

namespace rx9400::win {

class Win32Dialogs final : public DialogFactory {
 public:
  std::shared_ptr<ScanDialogView> newScanView() override;
  std::shared_ptr<ConnectDialogView> newConnectView() override;
  std::shared_ptr<ZeroErrorDialogView> newZeroErrorView() override;
  // The ion chamber dialogs' Win32 views are not built yet: no view, and nothing is shown.
  std::shared_ptr<IonChamberSetupView> newIonChamberSetupView() override { return nullptr; }
  std::shared_ptr<EditIonChamberView> newEditIonChamberView() override { return nullptr; }
  std::shared_ptr<DeleteIonChamberView> newDeleteIonChamberView() override { return nullptr; }
};

}  // namespace rx9400::win
