// The message form's window: a modeless top-level box with a caption, a heading line, a message and
// one or two buttons. The plug-in's built-in notice box shows it, and so does the MsgForm server
// (tools/msgform), so that both look and answer alike.
#pragma once

#include <windows.h>

#include <array>
#include <functional>
#include <string>

namespace rx9400::win {

class MsgFormWindow {
 public:
  enum class Text { Heading, Message, Button1, Button2, Caption };

  /// The window is of class `className`, registered in moduleHandle() when first needed. A button
  /// calls its handler; the close box calls the second handler (the first when there is none). A
  /// handler may close and destroy this window: nothing of it is used after a handler returns.
  MsgFormWindow(const wchar_t* className, std::function<void()> onButton1, std::function<void()> onButton2);
  ~MsgFormWindow() { close(); }
  MsgFormWindow(const MsgFormWindow&) = delete;
  MsgFormWindow& operator=(const MsgFormWindow&) = delete;

  /// Creates the window when needed, lays it out with the texts set and shows it; returns at once.
  void show();
  /// Destroys the window: no handler is called any more. The texts stay for a later show().
  void close();
  /// A text, shown at once when the window is on screen. An empty second button text hides it.
  void setText(Text which, std::wstring text);

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  void create();
  void layout();

  const wchar_t* className_;
  std::function<void()> onButton1_;
  std::function<void()> onButton2_;
  std::array<std::wstring, 5> texts_;
  HWND window_ = nullptr;
};

/// Removes a window class that show() registered: a class keeps pointing into its module, so it must
/// go before the module may be unloaded (when no window of it is left).
void unregisterMsgFormWindowClass(const wchar_t* className);

}  // namespace rx9400::win
