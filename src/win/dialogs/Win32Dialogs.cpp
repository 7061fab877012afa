// The plug-in's dialogs as Win32 dialogs.
#include "win/dialogs/Win32Dialogs.h"

#include "win/dialogs/ConnectDialog/Win32ConnectDialog.h"
#include "win/dialogs/DeleteIonChamber/Win32DeleteIonChamberDialog.h"
#include "win/dialogs/EditIonChamber/Win32EditIonChamberDialog.h"
#include "win/dialogs/IonChamberSetup/Win32IonChamberSetupDialog.h"
#include "win/dialogs/ScanDialog/Win32ScanDialog.h"
#include "win/dialogs/ZeroErrorDialog/Win32ZeroErrorDialog.h"

namespace rx9400::win {

std::shared_ptr<ScanDialogView> Win32Dialogs::newScanView() {
  return std::make_shared<Win32ScanDialog>();
}
std::shared_ptr<ConnectDialogView> Win32Dialogs::newConnectView() {
  return std::make_shared<Win32ConnectDialog>();
}
std::shared_ptr<ZeroErrorDialogView> Win32Dialogs::newZeroErrorView() {
  return std::make_shared<Win32ZeroErrorDialog>();
}
std::shared_ptr<IonChamberSetupView> Win32Dialogs::newIonChamberSetupView() {
  return std::make_shared<Win32IonChamberSetupDialog>();
}
std::shared_ptr<EditIonChamberView> Win32Dialogs::newEditIonChamberView() {
  return std::make_shared<Win32EditIonChamberDialog>();
}
std::shared_ptr<DeleteIonChamberView> Win32Dialogs::newDeleteIonChamberView() {
  return std::make_shared<Win32DeleteIonChamberDialog>();
}

}  // namespace rx9400::win
