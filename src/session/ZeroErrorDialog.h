// The zero-error dialog (FZeroMeasurement): tells the user that a detector has a zero error and asks
// whether to check again (Retry) or to turn the detector off and scan again (Connect).
#pragma once

#include <string>

#include "core/DialogView.h"
#include "core/PluginContext.h"

namespace rx9400 {

class ZeroErrorDialog;

class ZeroErrorDialogView : public DialogView {
 public:
  virtual void attach(ZeroErrorDialog& presenter) = 0;
  /// The line naming the detector (lblSerialNumber).
  virtual void setDetectorLine(const std::string& line) = 0;
};

class ZeroErrorDialog {
 public:
  ZeroErrorDialog(PluginContext& context, ZeroErrorDialogView& view);

  /// Shows the dialog modally with this caption and detector line, in the topmost band when `topmost`.
  /// Returns True when the user chose Connect; Retry, or closing the dialog, answers False.
  bool ask(const std::string& caption, const std::string& detectorLine, bool topmost);
  bool connectChosen() const { return connectChosen_; }

  // Handlers, called by the view.
  void load();
  void activated();
  void retryClicked();
  void connectClicked();

 private:
  PluginContext& context_;
  ZeroErrorDialogView& view_;
  bool connectChosen_ = false;
  bool topmost_ = false;
  std::string caption_;
  std::string detectorLine_;
};

}  // namespace rx9400
