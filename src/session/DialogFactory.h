// Where the plug-in's dialogs come from: Win32 dialogs in the plug-in, scripted views in tests.
#pragma once

#include <memory>

#include "ionchamber/DeleteIonChamberDialog.h"
#include "ionchamber/EditIonChamberDialog.h"
#include "ionchamber/IonChamberSetupDialog.h"
#include "session/ConnectDialog.h"
#include "session/ScanDialog.h"
#include "session/ZeroErrorDialog.h"

namespace rx9400 {

/// Each call gives a view for one showing of its dialog (the caller keeps it while it shows it).
class DialogFactory {
 public:
  virtual ~DialogFactory() = default;
  virtual std::shared_ptr<ScanDialogView> newScanView() = 0;
  virtual std::shared_ptr<ConnectDialogView> newConnectView() = 0;
  virtual std::shared_ptr<ZeroErrorDialogView> newZeroErrorView() = 0;
  virtual std::shared_ptr<IonChamberSetupView> newIonChamberSetupView() = 0;
  virtual std::shared_ptr<EditIonChamberView> newEditIonChamberView() = 0;
  virtual std::shared_ptr<DeleteIonChamberView> newDeleteIonChamberView() = 0;
};

}  // namespace rx9400
