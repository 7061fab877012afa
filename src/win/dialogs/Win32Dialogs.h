// The plug-in's dialogs as Win32 dialogs.
#pragma once

#include "core/DialogFactory.h"

namespace rx9400::win {

class Win32Dialogs final : public DialogFactory {
 public:
  std::shared_ptr<ScanDialogView> newScanView() override;
  std::shared_ptr<ConnectDialogView> newConnectView() override;
  std::shared_ptr<ZeroErrorDialogView> newZeroErrorView() override;
  std::shared_ptr<IonChamberSetupView> newIonChamberSetupView() override;
  std::shared_ptr<EditIonChamberView> newEditIonChamberView() override;
  std::shared_ptr<DeleteIonChamberView> newDeleteIonChamberView() override;
};

}  // namespace rx9400::win
