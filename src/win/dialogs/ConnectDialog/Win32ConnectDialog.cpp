// The connect dialog as a Win32 dialog.
#include "win/dialogs/ConnectDialog/Win32ConnectDialog.h"

#include <commctrl.h>

#include "win/Win32Platform.h"
#include "win/dialogs/ConnectDialog/ConnectDialogIds.h"

namespace rx9400::win {

Win32ConnectDialog::Win32ConnectDialog()
    : Win32DialogView(IDD_CONNECT,
                      {IDC_CONNECT_SELECT, IDC_CONNECT_CALDATE, IDC_CONNECT_DUEDATE, IDC_CONNECT_SW,
                       IDC_CONNECT_HW, IDC_CONNECT_CONNECT, IDC_CONNECT_CANCEL}) {}

HWND Win32ConnectDialog::list() const {
  return GetDlgItem(handle(), IDC_CONNECT_LIST);
}

void Win32ConnectDialog::onInit() {
  ListView_SetExtendedListViewStyle(list(), LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT);
  LVCOLUMNW column{};
  column.mask = LVCF_WIDTH;
  column.cx = 80;
  ListView_InsertColumn(list(), 0, &column);
  column.cx = 100;
  ListView_InsertColumn(list(), 1, &column);
  if (presenter_ != nullptr) presenter_->load();
}

void Win32ConnectDialog::onActivate() {
  if (presenter_ != nullptr) presenter_->activated();
}

void Win32ConnectDialog::onCommand(int id) {
  if (presenter_ == nullptr) return;
  if (id == IDC_CONNECT_CONNECT) presenter_->connectClicked();
  if (id == IDC_CONNECT_CANCEL || id == IDCANCEL) presenter_->cancelClicked();
}

void Win32ConnectDialog::setRows(const std::vector<DetectorRow>& rows) {
  filling_ = true;
  ListView_DeleteAllItems(list());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    std::wstring kind = toWide(rows[i].kind);
    std::wstring serial = toWide(rows[i].serialNumber);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = static_cast<int>(i);
    item.pszText = kind.data();
    const int index =
        static_cast<int>(SendMessageW(list(), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    item.iItem = index;
    item.iSubItem = 1;
    item.pszText = serial.data();
    SendMessageW(list(), LVM_SETITEMTEXTW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
  }
  if (!rows.empty())
    ListView_SetItemState(list(), 0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
  filling_ = false;
}

std::vector<bool> Win32ConnectDialog::tickedRows() {
  std::vector<bool> ticked;
  const int count = ListView_GetItemCount(list());
  for (int i = 0; i < count; ++i) ticked.push_back(ListView_GetCheckState(list(), i) != 0);
  return ticked;
}

void Win32ConnectDialog::setDetails(const DetectorDetails& details) {
  setControlText(IDC_CONNECT_SERIAL, details.serialNumber);
  setControlText(IDC_CONNECT_CALDATE, details.calibrationDate);
  setControlText(IDC_CONNECT_DUEDATE, details.calibrationDueDate);
  setControlText(IDC_CONNECT_SW, details.softwareVersion);
  setControlText(IDC_CONNECT_HW, details.hardwareVersion);
}

void Win32ConnectDialog::setRadioStates(int usb, int zigBee) {
  usb_ = usb;
  zigBee_ = zigBee;
  InvalidateRect(GetDlgItem(handle(), IDC_CONNECT_USB), nullptr, TRUE);
  InvalidateRect(GetDlgItem(handle(), IDC_CONNECT_ZIGBEE), nullptr, TRUE);
}

bool Win32ConnectDialog::onMessage(UINT message, WPARAM, LPARAM lParam, INT_PTR& result) {
  if (message == WM_NOTIFY) {
    const auto* header = reinterpret_cast<const NMHDR*>(lParam);
    if (header->idFrom != IDC_CONNECT_LIST || header->code != LVN_ITEMCHANGED || filling_) return false;
    const auto* change = reinterpret_cast<const NMLISTVIEW*>(lParam);
    if ((change->uChanged & LVIF_STATE) == 0 ||
        ((change->uNewState ^ change->uOldState) & LVIS_SELECTED) == 0) {
      return false;
    }
    if (presenter_ != nullptr) presenter_->rowSelected(ListView_GetNextItem(list(), -1, LVNI_SELECTED));
    return true;
  }
  if (message == WM_DRAWITEM) {
    // The link states: a lit dot for a link that is up, a grey one for a link that is down.
    const auto* item = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
    if (item->CtlID != IDC_CONNECT_USB && item->CtlID != IDC_CONNECT_ZIGBEE) return false;
    const bool up = (item->CtlID == IDC_CONNECT_USB ? usb_ : zigBee_) != 0;
    FillRect(item->hDC, &item->rcItem, GetSysColorBrush(COLOR_BTNFACE));
    HBRUSH brush = CreateSolidBrush(up ? RGB(40, 170, 60) : RGB(170, 170, 170));
    HGDIOBJ oldBrush = SelectObject(item->hDC, brush);
    Ellipse(item->hDC, item->rcItem.left + 2, item->rcItem.top + 2, item->rcItem.right - 2,
            item->rcItem.bottom - 2);
    SelectObject(item->hDC, oldBrush);
    DeleteObject(brush);
    result = TRUE;
    return true;
  }
  return false;
}

}  // namespace rx9400::win
