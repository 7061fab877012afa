// Window and cursor placement.
#pragma once

#include <cstdint>
#include <optional>

namespace rx9400 {

using WindowHandle = std::uintptr_t;

struct WindowRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
};

class WindowSystem {
 public:
  virtual ~WindowSystem() = default;
  /// The window's rectangle on the screen; no value when it cannot be read.
  virtual std::optional<WindowRect> windowRect(WindowHandle window) = 0;
  virtual void setCursorPosition(int x, int y) = 0;
  /// Puts the window in the topmost band at this place and size, without activating it.
  virtual void makeTopmost(WindowHandle window, int x, int y, int width, int height) = 0;
};

}  // namespace rx9400
