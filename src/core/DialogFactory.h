// Where the plug-in's dialogs come from: Win32 dialogs in the plug-in, scripted views in tests. The views
// are only declared here, so that a change to one dialog recompiles only the code that opens it.
#pragma once

#include <memory>

namespace rx9400 {

class ScanDialogView;
class ConnectDialogView;
class ZeroErrorDialogView;
class IonChamberSetupView;
class EditIonChamberView;
class DeleteIonChamberView;

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
