// The ion chamber setup dialog as a Win32 dialog.
#include "win/dialogs/IonChamberSetup/Win32IonChamberSetupDialog.h"

#include "win/Win32Platform.h"
#include "win/dialogs/IonChamberSetup/IonChamberSetupIds.h"

namespace rx9400::win {
namespace {

/// Replaces a list box's entries; nothing stays chosen.
void fillListBox(HWND list, const std::vector<std::string>& entries) {
  SendMessageW(list, WM_SETREDRAW, FALSE, 0);
  SendMessageW(list, LB_RESETCONTENT, 0, 0);
  for (const std::string& entry : entries) {
    const std::wstring text = toWide(entry);
    SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
  }
  SendMessageW(list, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(list, nullptr, TRUE);
}

int chosenEntry(HWND list) {
  const LRESULT entry = SendMessageW(list, LB_GETCURSEL, 0, 0);
  return entry == LB_ERR ? -1 : static_cast<int>(entry);
}

}  // namespace

Win32IonChamberSetupDialog::Win32IonChamberSetupDialog()
    : Win32DialogView(IDD_ION_CHAMBER_SETUP,
                      {IDC_SETUP_CHAMBERS_LABEL, IDC_SETUP_CAL_FACTORS_LABEL, IDC_SETUP_EDIT,
                       IDC_SETUP_DELETE, IDC_SETUP_CONTINUE, IDC_SETUP_CANCEL}) {}

HWND Win32IonChamberSetupDialog::button(SetupButton which) const {
  switch (which) {
    case SetupButton::Edit:
      return control(IDC_SETUP_EDIT);
    case SetupButton::Delete:
      return control(IDC_SETUP_DELETE);
    case SetupButton::Continue:
      return control(IDC_SETUP_CONTINUE);
    case SetupButton::Cancel:
      break;
  }
  return control(IDC_SETUP_CANCEL);
}

void Win32IonChamberSetupDialog::onInit() {
  if (presenter_ != nullptr) presenter_->load();
}

void Win32IonChamberSetupDialog::onActivate() {
  if (presenter_ != nullptr) presenter_->activated();
}

void Win32IonChamberSetupDialog::onCommand(int id) {
  if (presenter_ == nullptr) return;
  if (id == IDC_SETUP_EDIT) presenter_->editClicked();
  if (id == IDC_SETUP_DELETE) presenter_->deleteClicked();
  if (id == IDC_SETUP_CONTINUE) presenter_->continueClicked();
  if (id == IDC_SETUP_CANCEL) presenter_->cancelClicked();
}

bool Win32IonChamberSetupDialog::onNotification(int id, int code) {
  // Only a person's choice notifies: LB_SETCURSEL does not.
  if (presenter_ == nullptr || code != LBN_SELCHANGE) return false;
  if (id == IDC_SETUP_CHAMBERS) presenter_->chamberChosen(chosenEntry(control(id)));
  if (id == IDC_SETUP_CAL_FACTORS) presenter_->calFactorChosen(chosenEntry(control(id)));
  return id == IDC_SETUP_CHAMBERS || id == IDC_SETUP_CAL_FACTORS;
}

void Win32IonChamberSetupDialog::setChamberEntries(const std::vector<std::string>& entries) {
  fillListBox(control(IDC_SETUP_CHAMBERS), entries);
}

void Win32IonChamberSetupDialog::setCalFactorEntries(const std::vector<std::string>& entries) {
  fillListBox(control(IDC_SETUP_CAL_FACTORS), entries);
}

void Win32IonChamberSetupDialog::selectChamberEntry(int index) {
  SendMessageW(control(IDC_SETUP_CHAMBERS), LB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

void Win32IonChamberSetupDialog::selectCalFactorEntry(int index) {
  SendMessageW(control(IDC_SETUP_CAL_FACTORS), LB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

int Win32IonChamberSetupDialog::chamberEntry() {
  return chosenEntry(control(IDC_SETUP_CHAMBERS));
}

int Win32IonChamberSetupDialog::calFactorEntry() {
  return chosenEntry(control(IDC_SETUP_CAL_FACTORS));
}

std::string Win32IonChamberSetupDialog::chamberEntryText() {
  HWND list = control(IDC_SETUP_CHAMBERS);
  const int entry = chosenEntry(list);
  if (entry < 0) return {};
  std::wstring text(static_cast<std::size_t>(SendMessageW(list, LB_GETTEXTLEN, entry, 0)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(
      SendMessageW(list, LB_GETTEXT, static_cast<WPARAM>(entry), reinterpret_cast<LPARAM>(text.data()))));
  return fromWide(text);
}

void Win32IonChamberSetupDialog::setCalConstantText(const std::string& text) {
  setControlText(IDC_SETUP_CAL_CONSTANT, text);
}

void Win32IonChamberSetupDialog::setButtonVisible(SetupButton which, bool visible) {
  ShowWindow(button(which), visible ? SW_SHOW : SW_HIDE);
}

void Win32IonChamberSetupDialog::setButtonEnabled(SetupButton which, bool enabled) {
  EnableWindow(button(which), enabled ? TRUE : FALSE);
}

int Win32IonChamberSetupDialog::buttonLeft(SetupButton which) {
  RECT bounds{};
  GetWindowRect(button(which), &bounds);
  POINT topLeft{bounds.left, bounds.top};
  ScreenToClient(handle(), &topLeft);
  return topLeft.x;
}

void Win32IonChamberSetupDialog::setButtonLeft(SetupButton which, int left) {
  HWND moved = button(which);
  RECT bounds{};
  GetWindowRect(moved, &bounds);
  POINT topLeft{bounds.left, bounds.top};
  ScreenToClient(handle(), &topLeft);
  MoveWindow(moved, left, topLeft.y, bounds.right - bounds.left, bounds.bottom - bounds.top, TRUE);
}

WindowHandle Win32IonChamberSetupDialog::buttonWindow(SetupButton which) {
  return reinterpret_cast<WindowHandle>(button(which));
}

}  // namespace rx9400::win
