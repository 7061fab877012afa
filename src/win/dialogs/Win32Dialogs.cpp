// The session's dialogs as Win32 dialogs.
#include "win/dialogs/Win32Dialogs.h"

#include "win/dialogs/ConnectDialog/Win32ConnectDialog.h"
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

}  // namespace rx9400::win
