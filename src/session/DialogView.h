// What every dialog view offers its presenter: modal display, its window, and its captions for the
// catalogue.
#pragma once

#include <string>
#include <vector>

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

}  // namespace rx9400
