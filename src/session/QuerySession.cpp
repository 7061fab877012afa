// The query class's members.
#include "session/QuerySession.h"

namespace rx9400 {

QuerySession::QuerySession(PluginContext& context) : context_(context) {}

void QuerySession::RegisterApp() {
  try {
    context_.library.MBRegisterApplication(1);
  } catch (...) {
  }
}

void QuerySession::CloseApp() {
  try {
    context_.library.MBCloseApplication();
  } catch (...) {
  }
}

void QuerySession::ScanAndConnectToDetector() {}

bool QuerySession::IsDetectorConnected() {
  bool connected = false;
  try {
    for (std::size_t slot = 0; slot < context_.state.slotCount(); ++slot) {
      const std::int32_t id = context_.state.identifierAt(slot);
      connected = id >= 1 && context_.library.MBGetDetectorStatus(id).connectionState == kConnected;
    }
  } catch (...) {
  }
  return connected;
}

void QuerySession::SendDetectorType(std::int32_t) {}

void QuerySession::ResetTheDetectors() {
  try {
    resetFlag_ = true;
    context_.state.resetDetectors();
    context_.library.MBStopScanningAndReset();
  } catch (...) {
  }
}

}  // namespace rx9400
