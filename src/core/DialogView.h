// What every dialog view offers its presenter: modal display, its window, and its captions for the
// catalogue.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/Catalogue.h"
#include "platform/WindowSystem.h"

namespace rx9400 {

class DialogView {
 public:
  virtual ~DialogView() = default;
  /// Shows the dialog modally; returns when it has been hidden (or closed by the user).
  virtual void showModal() = 0;
  /// Hides the dialog, which ends its modal display.
  virtual void hide() = 0;
  virtual WindowHandle window() = 0;
  /// The control that has the focus (the pointer goes there on activation).
  virtual WindowHandle focusedControl() = 0;
  virtual void setTitle(const std::string& title) = 0;
  /// The design-time captions of the controls (catalogue literals), in a fixed order of the view's.
  virtual std::vector<std::string> captions() = 0;
  /// The translated captions, in the same order.
  virtual void setCaptions(const std::vector<std::string>& captions) = 0;
};

/// The dialog's title (when a literal is given) and its captions through the catalogue. A failing
/// language component leaves the design-time texts, and a failing title does not stop the captions.
inline void localise(DialogView& view, Catalogue& catalogue, std::string_view titleLiteral = {}) noexcept {
  try {
    if (!titleLiteral.empty()) view.setTitle(catalogue.text(titleLiteral));
  } catch (...) {
  }
  try {
    auto captions = view.captions();
    catalogue.translateCaptions(captions);
    view.setCaptions(captions);
  } catch (...) {
  }
}

}  // namespace rx9400
