// The zero-error dialog's presenter.
#include "session/ZeroErrorDialog.h"

#include "core/Placement.h"

namespace rx9400 {

ZeroErrorDialog::ZeroErrorDialog(PluginContext& context, ZeroErrorDialogView& view)
    : context_(context), view_(view) {
  view_.attach(*this);
}

bool ZeroErrorDialog::ask(const std::string& caption, const std::string& detectorLine, bool topmost) {
  topmost_ = topmost;
  caption_ = caption;
  detectorLine_ = detectorLine;
  connectChosen_ = false;
  view_.showModal();
  return connectChosen_;
}

void ZeroErrorDialog::load() {
  connectChosen_ = false;
  localise(view_, context_.catalogue, catalogue::kZeroError);
  // The caller's caption and detector line replace the design-time ones.
  if (!caption_.empty()) view_.setTitle(caption_);
  if (!detectorLine_.empty()) view_.setDetectorLine(detectorLine_);
  if (topmost_) makeTopmost(context_.services.windows, view_.window());
}

void ZeroErrorDialog::activated() {
  centreCursorOn(context_.services.windows, view_.focusedControl());
}

void ZeroErrorDialog::retryClicked() {
  view_.hide();
}

void ZeroErrorDialog::connectClicked() {
  connectChosen_ = true;
  view_.hide();
}

}  // namespace rx9400
