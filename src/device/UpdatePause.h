// The device library's update thread paused while the plug-in reads a shared section.
#pragma once

#include "device/MBdllFunctions.h"

namespace rx9400 {

/// The library's update thread paused for as long as this lives, resumed exactly once: by `resume()`
/// where the download says, or on leaving early through a failure.
class UpdatePause {
 public:
  explicit UpdatePause(MBdllFunctions& library) : library_(library) { library_.MBPauseUpdateThread(); }
  ~UpdatePause() {
    try {
      resume();
    } catch (...) {
    }
  }
  UpdatePause(const UpdatePause&) = delete;
  UpdatePause& operator=(const UpdatePause&) = delete;
  void resume() {
    if (paused_) {
      paused_ = false;
      library_.MBResumeUpdateThread();
    }
  }

 private:
  MBdllFunctions& library_;
  bool paused_ = true;
};

}  // namespace rx9400
