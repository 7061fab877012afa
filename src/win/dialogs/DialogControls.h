// What the dialog views do with their controls: texts, entry lists and list views with check boxes.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "platform/WindowSystem.h"

namespace rx9400::win {

inline WindowHandle asWindowHandle(HWND window) {
  return reinterpret_cast<WindowHandle>(window);
}

/// The text of a window or control.
std::string windowText(HWND window);
void setWindowText(HWND window, const std::string& text);

/// Replaces a list box's entries (a combo box's with CB_RESETCONTENT and CB_ADDSTRING); nothing stays
/// chosen.
void setEntries(HWND list, const std::vector<std::string>& entries, UINT reset = LB_RESETCONTENT,
                UINT add = LB_ADDSTRING);
/// The chosen entry of a list box (a combo box's with CB_GETCURSEL); -1 for none.
int chosenEntry(HWND list, UINT getSelection = LB_GETCURSEL);
/// The text of a list box's entry.
std::string entryText(HWND list, int entry);

/// Makes a list view a list of rows with check boxes, with columns of these widths.
void setUpCheckList(HWND list, std::initializer_list<int> columnWidths);
/// Adds a row with the texts of its cells, first column first; answers the row's index.
int addRow(HWND list, const std::vector<std::string>& cells);
/// Selects and focuses one row (none for -1) and scrolls it into view; every other row is cleared.
void selectRow(HWND list, int row);

}  // namespace rx9400::win
