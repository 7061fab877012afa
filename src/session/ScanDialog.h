// The scan dialog (FScanForDetectors): starts the device library's scan once per showing and polls it
// from a timer, with an animated picture, until the library reports the end or the user stops it.
#pragma once

#include "core/DialogView.h"
#include "core/PluginContext.h"

namespace rx9400 {

class ScanDialog;

class ScanDialogView : public DialogView {
 public:
  /// The presenter whose handlers the view calls (load, timer, Stop, activation).
  virtual void attach(ScanDialog& presenter) = 0;
  virtual void setTimerEnabled(bool enabled) = 0;
  virtual void setTimerInterval(int milliseconds) = 0;
  virtual int animationFrameCount() = 0;
  virtual void showAnimationFrame(int frame) = 0;
};

class ScanDialog {
 public:
  ScanDialog(PluginContext& context, ScanDialogView& view);

  /// Shows the dialog modally, in the topmost band when asked; returns when the scan is over.
  void showModal(bool topmost);
  /// True when the user pressed Stop.
  bool stopped() const { return stopped_; }

  // Handlers, called by the view.
  void load();
  void timerTick();
  void stopClicked();
  void activated();

 private:
  PluginContext& context_;
  ScanDialogView& view_;
  bool stopped_ = false;
  bool scanPending_ = false;
  bool topmost_ = false;
  int frame_ = 0;
};

}  // namespace rx9400
