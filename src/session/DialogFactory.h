// Where the session's dialogs come from: Win32 dialogs in the plug-in, scripted views in tests.
#pragma once

#include <memory>

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
};

}  // namespace rx9400
