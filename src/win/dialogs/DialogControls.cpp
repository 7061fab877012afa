// What the dialog views do with their controls.
#include "win/dialogs/DialogControls.h"

#include "win/Win32Platform.h"

namespace rx9400::win {

std::string windowText(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return fromWide(text);
}

void setWindowText(HWND window, const std::string& text) {
  SetWindowTextW(window, toWide(text).c_str());
}

void setEntries(HWND list, const std::vector<std::string>& entries, UINT reset, UINT add) {
  SendMessageW(list, WM_SETREDRAW, FALSE, 0);
  SendMessageW(list, reset, 0, 0);
  for (const std::string& entry : entries) {
    const std::wstring text = toWide(entry);
    SendMessageW(list, add, 0, reinterpret_cast<LPARAM>(text.c_str()));
  }
  SendMessageW(list, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(list, nullptr, TRUE);
}

int chosenEntry(HWND list, UINT getSelection) {
  const LRESULT entry = SendMessageW(list, getSelection, 0, 0);
  return entry < 0 ? -1 : static_cast<int>(entry);
}

std::string entryText(HWND list, int entry) {
  std::wstring text(static_cast<std::size_t>(SendMessageW(list, LB_GETTEXTLEN, entry, 0)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(
      SendMessageW(list, LB_GETTEXT, static_cast<WPARAM>(entry), reinterpret_cast<LPARAM>(text.data()))));
  return fromWide(text);
}

void setUpCheckList(HWND list, std::initializer_list<int> columnWidths) {
  ListView_SetExtendedListViewStyle(list, LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT);
  LVCOLUMNW column{};
  column.mask = LVCF_WIDTH;
  int index = 0;
  for (const int width : columnWidths) {
    column.cx = width;
    ListView_InsertColumn(list, index++, &column);
  }
}

int addRow(HWND list, const std::vector<std::string>& cells) {
  LVITEMW item{};
  item.mask = LVIF_TEXT;
  item.iItem = ListView_GetItemCount(list);
  for (std::size_t cell = 0; cell < cells.size(); ++cell) {
    std::wstring text = toWide(cells[cell]);
    item.pszText = text.data();
    item.iSubItem = static_cast<int>(cell);
    if (cell == 0) {
      item.iItem = static_cast<int>(SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    } else {
      SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(item.iItem), reinterpret_cast<LPARAM>(&item));
    }
  }
  return item.iItem;
}

void selectRow(HWND list, int row) {
  ListView_SetItemState(list, -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
  if (row < 0) return;
  ListView_SetItemState(list, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
  ListView_EnsureVisible(list, row, FALSE);
}

}  // namespace rx9400::win
