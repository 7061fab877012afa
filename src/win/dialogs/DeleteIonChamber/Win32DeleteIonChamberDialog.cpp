// The deletion dialog as a Win32 dialog.
#include "win/dialogs/DeleteIonChamber/Win32DeleteIonChamberDialog.h"

#include "win/dialogs/DeleteIonChamber/DeleteIonChamberIds.h"

namespace rx9400::win {
namespace {

/// The check box's state image: 1 clear, 2 ticked (0 before the list view gave the item one).
UINT checkImage(UINT state) {
  return (state & LVIS_STATEIMAGEMASK) >> 12;
}

}  // namespace

Win32DeleteIonChamberDialog::Win32DeleteIonChamberDialog()
    : Win32DialogView(IDD_DELETE_ION_CHAMBER, {IDC_DELETE_CHAMBERS_LABEL, IDC_DELETE_CAL_FACTORS_LABEL,
                                               IDC_DELETE_WAIT, IDC_DELETE_DELETE, IDC_DELETE_CANCEL}) {}

void Win32DeleteIonChamberDialog::prepare() {
  for (const int id : {IDC_DELETE_CHAMBERS, IDC_DELETE_CAL_FACTORS}) {
    // One column as wide as the list, less its vertical scroll bar.
    RECT client{};
    GetClientRect(control(id), &client);
    setUpCheckList(control(id), {static_cast<int>(client.right - GetSystemMetrics(SM_CXVSCROLL))});
  }
}

void Win32DeleteIonChamberDialog::clicked(DeleteIonChamberDialog& presenter, int id) {
  if (id == IDC_DELETE_DELETE) presenter.deleteClicked();
  if (id == IDC_DELETE_CANCEL) presenter.cancelClicked();
}

bool Win32DeleteIonChamberDialog::onMessage(UINT message, WPARAM, LPARAM lParam, INT_PTR&) {
  if (message != WM_NOTIFY) return false;
  const auto* header = reinterpret_cast<const NMHDR*>(lParam);
  const bool chambers = header->idFrom == IDC_DELETE_CHAMBERS;
  if ((!chambers && header->idFrom != IDC_DELETE_CAL_FACTORS) || header->code != LVN_ITEMCHANGED ||
      filling_ || presenter_ == nullptr) {
    return false;
  }
  const auto* change = reinterpret_cast<const NMLISTVIEW*>(lParam);
  if ((change->uChanged & LVIF_STATE) == 0 || change->iItem < 0) return false;
  const UINT before = checkImage(change->uOldState), after = checkImage(change->uNewState);
  if (before != 0 && after != 0 && before != after) {
    if (chambers) presenter_->chamberTicked(change->iItem, after == 2);
    if (!chambers) presenter_->calFactorTicked(change->iItem, after == 2);
  }
  if ((change->uNewState & ~change->uOldState & LVIS_SELECTED) != 0) {
    if (chambers) presenter_->chamberSelected(change->iItem);
    if (!chambers) presenter_->calFactorSelected(change->iItem);
  }
  return true;
}

void Win32DeleteIonChamberDialog::fill(int id, const std::vector<std::string>& names,
                                       const std::vector<bool>& ticks) {
  filling_ = true;
  HWND items = control(id);
  ListView_DeleteAllItems(items);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const int row = addRow(items, {names[i]});
    ListView_SetCheckState(items, row, i < ticks.size() && ticks[i] ? TRUE : FALSE);
  }
  filling_ = false;
}

void Win32DeleteIonChamberDialog::select(int id, int index) {
  filling_ = true;
  selectRow(control(id), index);
  filling_ = false;
}

void Win32DeleteIonChamberDialog::setChamberItems(const std::vector<std::string>& names,
                                                  const std::vector<bool>& ticks) {
  fill(IDC_DELETE_CHAMBERS, names, ticks);
}

void Win32DeleteIonChamberDialog::setCalFactorItems(const std::vector<std::string>& names,
                                                    const std::vector<bool>& ticks) {
  fill(IDC_DELETE_CAL_FACTORS, names, ticks);
}

void Win32DeleteIonChamberDialog::selectChamberItem(int index) {
  select(IDC_DELETE_CHAMBERS, index);
}

void Win32DeleteIonChamberDialog::selectCalFactorItem(int index) {
  select(IDC_DELETE_CAL_FACTORS, index);
}

void Win32DeleteIonChamberDialog::setChamberTicked(int index, bool ticked) {
  filling_ = true;
  ListView_SetCheckState(control(IDC_DELETE_CHAMBERS), index, ticked ? TRUE : FALSE);
  filling_ = false;
}

void Win32DeleteIonChamberDialog::setCalConstantText(const std::string& text) {
  setControlText(IDC_DELETE_CAL_CONSTANT, text);
}

void Win32DeleteIonChamberDialog::setWaitMessageVisible(bool visible) {
  HWND wait = control(IDC_DELETE_WAIT);
  ShowWindow(wait, visible ? SW_SHOW : SW_HIDE);
  // The dosimeter deletes within this handler: the notice must show before it starts.
  UpdateWindow(wait);
}

WindowHandle Win32DeleteIonChamberDialog::cancelButton() {
  return asWindowHandle(control(IDC_DELETE_CANCEL));
}

}  // namespace rx9400::win
