// The ion chamber setup dialog as a Win32 dialog.
#include "win/dialogs/IonChamberSetup/Win32IonChamberSetupDialog.h"

#include "win/dialogs/IonChamberSetup/IonChamberSetupIds.h"

namespace rx9400::win {
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

void Win32IonChamberSetupDialog::clicked(IonChamberSetupDialog& presenter, int id) {
  if (id == IDC_SETUP_EDIT) presenter.editClicked();
  if (id == IDC_SETUP_DELETE) presenter.deleteClicked();
  if (id == IDC_SETUP_CONTINUE) presenter.continueClicked();
  if (id == IDC_SETUP_CANCEL) presenter.cancelClicked();
}

bool Win32IonChamberSetupDialog::onNotification(int id, int code) {
  // Only a person's choice notifies: LB_SETCURSEL does not.
  if (presenter_ == nullptr || code != LBN_SELCHANGE) return false;
  if (id == IDC_SETUP_CHAMBERS) presenter_->chamberChosen(chosenEntry(control(id)));
  if (id == IDC_SETUP_CAL_FACTORS) presenter_->calFactorChosen(chosenEntry(control(id)));
  return id == IDC_SETUP_CHAMBERS || id == IDC_SETUP_CAL_FACTORS;
}

void Win32IonChamberSetupDialog::setChamberEntries(const std::vector<std::string>& entries) {
  setEntries(control(IDC_SETUP_CHAMBERS), entries);
}

void Win32IonChamberSetupDialog::setCalFactorEntries(const std::vector<std::string>& entries) {
  setEntries(control(IDC_SETUP_CAL_FACTORS), entries);
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
  return entry < 0 ? std::string() : entryText(list, entry);
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

RECT Win32IonChamberSetupDialog::buttonBounds(SetupButton which) const {
  RECT bounds{};
  GetWindowRect(button(which), &bounds);
  MapWindowPoints(nullptr, handle(), reinterpret_cast<POINT*>(&bounds), 2);
  return bounds;
}

int Win32IonChamberSetupDialog::buttonLeft(SetupButton which) {
  return buttonBounds(which).left;
}

void Win32IonChamberSetupDialog::setButtonLeft(SetupButton which, int left) {
  const RECT bounds = buttonBounds(which);
  MoveWindow(button(which), left, bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top, TRUE);
}

WindowHandle Win32IonChamberSetupDialog::buttonWindow(SetupButton which) {
  return asWindowHandle(button(which));
}

}  // namespace rx9400::win
