// The query class the executive creates first (CRX9400Query behind its COM shell): the session with
// the device library, the scan and connection of detectors, and the reset of the detector lists.
//
// Every member traps its own failures: a device library that fails never reaches the executive.
#pragma once

#include <cstdint>

#include "core/PluginContext.h"

namespace rx9400 {

class QuerySession {
 public:
  explicit QuerySession(PluginContext& context);

  /// Opens the session with the device library.
  void RegisterApp();
  /// Closes the session; the detector table is left as it is.
  void CloseApp();
  /// Scans for detectors, lets the user choose and connects them.
  void ScanAndConnectToDetector();
  /// True when the last slot of the detector table holds a connected detector: every slot is asked in
  /// turn and the last one decides.
  bool IsDetectorConnected();
  /// Restricts the connect dialog to detectors of a kind; 0 does nothing.
  void SendDetectorType(std::int32_t mednDetector);
  /// Stops a scan and empties the detector lists to one empty slot each.
  void ResetTheDetectors();

  /// True after ResetTheDetectors and after a scan the user stopped.
  bool resetFlag() const { return resetFlag_; }

 private:
  PluginContext& context_;
  bool resetFlag_ = false;
};

}  // namespace rx9400
