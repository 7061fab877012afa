// The connect dialog as a Win32 dialog.
#include "win/dialogs/ConnectDialog/Win32ConnectDialog.h"

#include "win/dialogs/ConnectDialog/ConnectDialogIds.h"

namespace rx9400::win {

Win32ConnectDialog::Win32ConnectDialog()
    : Win32DialogView(IDD_CONNECT,
                      {IDC_CONNECT_SELECT, IDC_CONNECT_CALDATE, IDC_CONNECT_DUEDATE, IDC_CONNECT_SW,
                       IDC_CONNECT_HW, IDC_CONNECT_CONNECT, IDC_CONNECT_CANCEL}) {}

void Win32ConnectDialog::prepare() {
  setUpCheckList(control(IDC_CONNECT_LIST), {80, 100});
}

void Win32ConnectDialog::clicked(ConnectDialog& presenter, int id) {
  if (id == IDC_CONNECT_CONNECT) presenter.connectClicked();
  if (id == IDC_CONNECT_CANCEL || id == IDCANCEL) presenter.cancelClicked();
}

void Win32ConnectDialog::setRows(const std::vector<DetectorRow>& rows) {
  HWND list = control(IDC_CONNECT_LIST);
  filling_ = true;
  ListView_DeleteAllItems(list);
  for (const DetectorRow& row : rows) addRow(list, {row.kind, row.serialNumber});
  if (!rows.empty()) selectRow(list, 0);
  filling_ = false;
}

std::vector<bool> Win32ConnectDialog::tickedRows() {
  HWND list = control(IDC_CONNECT_LIST);
  std::vector<bool> ticked;
  const int count = ListView_GetItemCount(list);
  for (int i = 0; i < count; ++i) ticked.push_back(ListView_GetCheckState(list, i) != 0);
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
  InvalidateRect(control(IDC_CONNECT_USB), nullptr, TRUE);
  InvalidateRect(control(IDC_CONNECT_ZIGBEE), nullptr, TRUE);
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
    if (presenter_ != nullptr)
      presenter_->rowSelected(ListView_GetNextItem(control(IDC_CONNECT_LIST), -1, LVNI_SELECTED));
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
