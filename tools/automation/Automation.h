// Driving windows the way a person at the test bench would: find a top-level window of a process by
// its caption or class, read its texts, tick list-view check boxes, press buttons and keep a picture
// of it.
//
// Every function may be called from any thread. To drive a modal dialog that the calling process
// opens itself, call these from a second thread (the automation thread) while the opening thread
// runs the dialog's message loop. Windows of another process work too: texts are read without
// sending messages, list-view items are passed through memory allocated in the owning process
// (the tool must have the target's bitness), and buttons are pressed with PostMessage, which never
// waits for the target.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "Text.h"

namespace rx9400::tools {

/// The class of dialogs and message boxes.
inline constexpr wchar_t kDialogClass[] = L"#32770";
/// The control id of a message box's text.
inline constexpr int kMessageBoxTextId = 0xFFFF;

/// Which top-level windows a search accepts; an empty text or a zero process accepts any.
struct WindowFilter {
  DWORD processId = 0;
  std::wstring caption;    ///< the exact window text
  std::wstring className;  ///< for example kDialogClass
  bool visibleOnly = true;
};

/// The top-level windows that match, in z-order.
std::vector<HWND> findWindows(const WindowFilter& filter);
/// The first matching window, polling until one appears; nullptr after `timeoutMs`.
HWND waitForWindow(const WindowFilter& filter, DWORD timeoutMs);
/// A message box of the process (a dialog with a static control of id kMessageBoxTextId).
HWND waitForMessageBox(DWORD processId, DWORD timeoutMs);
/// True once `window` is destroyed or hidden, false after `timeoutMs`.
bool waitUntilGone(HWND window, DWORD timeoutMs);

/// A window's text, read without sending it a message.
std::wstring windowText(HWND window);
std::wstring windowClass(HWND window);
/// A caption without the accelerator marks: "&Connect" reads "Connect", "&&" reads "&".
std::wstring withoutAccelerators(const std::wstring& text);

/// The first descendant control of `parent` with that class and that text (accelerator marks
/// ignored); nullptr for either accepts any. nullptr when there is none.
HWND findControl(HWND parent, const wchar_t* className, const wchar_t* text);
HWND findControlById(HWND parent, int id);
/// The texts of the static controls of `parent`, in child order.
std::vector<std::wstring> staticTexts(HWND parent);
/// The text of a message box (its static control kMessageBoxTextId); empty when it has none.
std::wstring messageBoxText(HWND box);
/// The texts of the push buttons of `parent`, accelerator marks removed.
std::vector<std::wstring> buttonTexts(HWND parent);

/// Presses a button (BM_CLICK, posted). False when the button is not there or disabled.
bool clickButton(HWND button);
/// Presses the button of `parent` with that text.
bool clickButton(HWND parent, const wchar_t* text);

int listViewItemCount(HWND listView);
bool listViewItemChecked(HWND listView, int item);
/// Ticks or clears an item's check box (state image 2 or 1) and reads it back.
bool setListViewItemChecked(HWND listView, int item, bool checked);
std::wstring listViewItemText(HWND listView, int item, int subItem = 0);
/// Selects and focuses an item as a click on it would; false when the list view refused.
bool selectListViewItem(HWND listView, int item);
/// The selected item, -1 for none.
int selectedListViewItem(HWND listView);

/// The entries of a list box.
std::vector<std::wstring> listBoxItems(HWND listBox);
/// The chosen entry of a list box, -1 for none.
int selectedListBoxItem(HWND listBox);
/// Chooses a list box entry as a click on it would: selects it, then tells the dialog (LBN_SELCHANGE,
/// posted: the dialog may open another window in answer). False when the list box refused.
bool chooseListBoxItem(HWND listBox, int item);
/// Chooses a drop-down list entry as a person picking it would (CBN_SELCHANGE posted to the dialog).
bool chooseComboBoxItem(HWND comboBox, int item);
/// The text of an edit control, asked of the control (it keeps its text to itself).
std::wstring editText(HWND edit);
/// Types into an edit control of a dialog as a person would: moves the focus there as the Tab key does
/// (which selects its text), then one WM_CHAR per character. False when a message was not taken.
bool typeText(HWND edit, const std::wstring& text);

/// Saves the window as it shows on the screen, frame included, as a 24-bit BMP file. `error` gets the
/// reason of a failure.
bool saveWindowBitmap(HWND window, const std::wstring& path, std::wstring* error = nullptr);

/// The processes whose executable has that file name (case ignored).
std::vector<DWORD> processesNamed(const std::wstring& fileName);
/// The first such process, polling; 0 after `timeoutMs`.
DWORD waitForProcess(const std::wstring& fileName, DWORD timeoutMs);
bool processRunning(DWORD processId);

/// Runs `body` on a thread of its own (the automation thread) and joins it on destruction.
class AutomationThread {
 public:
  template <typename Body>
  explicit AutomationThread(Body body) : body_(new Holder<Body>(std::move(body))) {
    thread_ = CreateThread(nullptr, 0, &AutomationThread::run, body_, 0, nullptr);
  }
  ~AutomationThread() { join(); }
  AutomationThread(const AutomationThread&) = delete;
  AutomationThread& operator=(const AutomationThread&) = delete;

  /// Waits for the body to return.
  void join() {
    if (thread_ != nullptr) {
      WaitForSingleObject(thread_, INFINITE);
      CloseHandle(thread_);
      thread_ = nullptr;
    }
    delete body_;
    body_ = nullptr;
  }
  bool started() const { return thread_ != nullptr; }

 private:
  struct HolderBase {
    virtual ~HolderBase() = default;
    virtual void run() = 0;
  };
  template <typename Body>
  struct Holder final : HolderBase {
    explicit Holder(Body b) : body(std::move(b)) {}
    void run() override { body(); }
    Body body;
  };
  static DWORD WINAPI run(void* holder) {
    static_cast<HolderBase*>(holder)->run();
    return 0;
  }

  HolderBase* body_;
  HANDLE thread_ = nullptr;
};

}  // namespace rx9400::tools
