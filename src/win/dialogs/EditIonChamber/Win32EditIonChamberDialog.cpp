// The ion chamber and cal factor editor as a Win32 dialog.
#include "win/dialogs/EditIonChamber/Win32EditIonChamberDialog.h"

#include <array>

#include "win/dialogs/EditIonChamber/EditIonChamberIds.h"

namespace rx9400::win {
namespace {

/// The edit controls in the order of EditorField: chamber name, cal factor name, mantissa, exponent.
constexpr std::array kFieldIds{IDC_EDIT_CHAMBER, IDC_EDIT_CAL_FACTOR, IDC_EDIT_MANTISSA, IDC_EDIT_EXPONENT};
/// The most characters a name field takes: the device library's name length.
constexpr WPARAM kNameLimit = kChamberNameLength;

/// The field an edit control of the dialog holds, if it is one.
bool fieldOf(int id, EditorField& which) {
  for (std::size_t i = 0; i < kFieldIds.size(); ++i) {
    if (kFieldIds[i] == id) {
      which = static_cast<EditorField>(i);
      return true;
    }
  }
  return false;
}

}  // namespace

Win32EditIonChamberDialog::Win32EditIonChamberDialog()
    : Win32DialogView(IDD_EDIT_ION_CHAMBER,
                      {IDC_EDIT_CHAMBER_LABEL, IDC_EDIT_CAL_FACTOR_LABEL, IDC_EDIT_CONSTANT_LABEL,
                       IDC_EDIT_EXPONENT_LABEL, IDC_EDIT_OK, IDC_EDIT_CANCEL}) {}

HWND Win32EditIonChamberDialog::field(EditorField which) const {
  return control(kFieldIds.at(static_cast<std::size_t>(which)));
}

void Win32EditIonChamberDialog::prepare() {
  for (std::size_t i = 0; i < kFieldIds.size(); ++i) {
    HWND edit = control(kFieldIds[i]);
    SetWindowSubclass(edit, fieldProcedure, 1, reinterpret_cast<DWORD_PTR>(this));
    if (i < 2) SendMessageW(edit, EM_LIMITTEXT, kNameLimit, 0);
  }
}

void Win32EditIonChamberDialog::clicked(EditIonChamberDialog& presenter, int id) {
  if (id == IDC_EDIT_OK) presenter.okClicked();
  if (id == IDC_EDIT_CANCEL) presenter.cancelClicked();
}

bool Win32EditIonChamberDialog::onNotification(int id, int code) {
  EditorField which{};
  if (presenter_ == nullptr || code != EN_SETFOCUS || !fieldOf(id, which)) return false;
  presenter_->fieldFocused(which);
  return true;
}

bool Win32EditIonChamberDialog::acceptsCharacter(HWND edit, EditorField which, WPARAM character) const {
  // Every field takes plain ASCII at most; the presenter decides the rest.
  if (character >= 128) return false;
  if (presenter_ == nullptr) return true;
  DWORD start = 0, end = 0;
  SendMessageW(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
  return presenter_->acceptsKey(which, windowText(edit), static_cast<int>(start),
                                static_cast<int>(end - start), static_cast<char>(character));
}

LRESULT CALLBACK Win32EditIonChamberDialog::fieldProcedure(HWND edit, UINT message, WPARAM wParam,
                                                           LPARAM lParam, UINT_PTR, DWORD_PTR self) {
  if (message == WM_NCDESTROY) {
    RemoveWindowSubclass(edit, fieldProcedure, 1);
  } else if (message == WM_CHAR) {
    EditorField which{};
    bool accepted = true;
    // Nothing may leave a window procedure: a presenter that fails lets the character through.
    try {
      accepted =
          !fieldOf(GetDlgCtrlID(edit), which) ||
          reinterpret_cast<const Win32EditIonChamberDialog*>(self)->acceptsCharacter(edit, which, wParam);
    } catch (...) {
    }
    if (!accepted) return 0;
  }
  return DefSubclassProc(edit, message, wParam, lParam);
}

std::string Win32EditIonChamberDialog::fieldText(EditorField which) {
  return windowText(field(which));
}

void Win32EditIonChamberDialog::setFieldText(EditorField which, const std::string& text) {
  setWindowText(field(which), text);
}

void Win32EditIonChamberDialog::focusField(EditorField which) {
  // Posted: the focus moves once the handler asking for it has returned (also during WM_INITDIALOG).
  PostMessageW(handle(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field(which)), TRUE);
}

void Win32EditIonChamberDialog::setHeading(const std::string& text) {
  setControlText(IDC_EDIT_HEADING, text);
}

void Win32EditIonChamberDialog::setUnitEntries(const std::vector<std::string>& entries) {
  setEntries(control(IDC_EDIT_UNIT), entries, CB_RESETCONTENT, CB_ADDSTRING);
}

void Win32EditIonChamberDialog::selectUnit(int index) {
  SendMessageW(control(IDC_EDIT_UNIT), CB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

int Win32EditIonChamberDialog::unitEntry() {
  return chosenEntry(control(IDC_EDIT_UNIT), CB_GETCURSEL);
}

WindowHandle Win32EditIonChamberDialog::okButton() {
  return asWindowHandle(control(IDC_EDIT_OK));
}

}  // namespace rx9400::win
