// The scan dialog's presenter.
#include "session/ScanDialog.h"

#include "core/Placement.h"

namespace rx9400 {

ScanDialog::ScanDialog(PluginContext& context, ScanDialogView& view) : context_(context), view_(view) {
  view_.attach(*this);
}

void ScanDialog::showModal(bool topmost) {
  topmost_ = topmost;
  view_.showModal();
}

void ScanDialog::load() {
  stopped_ = false;
  view_.setTimerEnabled(false);
  localise(view_, context_.catalogue, catalogue::kScanning);  // untranslated texts do not stop the scan
  if (topmost_) makeTopmost(context_.services.windows, view_.window());
  view_.setTimerInterval(1);
  scanPending_ = true;
  view_.setTimerEnabled(true);
}

void ScanDialog::timerTick() {
  view_.setTimerEnabled(false);
  try {
    if (scanPending_) {
      context_.library.MBScanForDetectors();
      view_.setTimerInterval(200);
      scanPending_ = false;
    }
    const int frames = view_.animationFrameCount();
    if (frames > 0) {
      frame_ = (frame_ + 1) % frames;
      view_.showAnimationFrame(frame_);
    }
    context_.services.eventPump.pumpEvents();
    if (context_.library.MBGetScanCompleteStatus() == 1) {
      view_.setTimerEnabled(true);
    } else {
      view_.hide();
    }
  } catch (...) {
    // Without a device library there is no scan to wait for: the dialog closes and nothing is found.
    view_.hide();
  }
}

void ScanDialog::stopClicked() {
  view_.setTimerEnabled(false);
  stopped_ = true;
  view_.hide();
}

void ScanDialog::activated() {
  centreCursorOn(context_.services.windows, view_.focusedControl());
}

}  // namespace rx9400
