// The zero-error dialog as a Win32 dialog.
#include "win/dialogs/ZeroErrorDialog/Win32ZeroErrorDialog.h"

#include "win/dialogs/ZeroErrorDialog/ZeroErrorDialogIds.h"

namespace rx9400::win {

Win32ZeroErrorDialog::Win32ZeroErrorDialog()
    : Win32DialogView(IDD_ZERO_ERROR, {IDC_ZERO_RETRY, IDC_ZERO_CONNECT, IDC_ZERO_DETECTOR,
                                       IDC_ZERO_SUGGESTIONS, IDC_ZERO_RETRY_LINE, IDC_ZERO_CONNECT_LINE}) {}

void Win32ZeroErrorDialog::setDetectorLine(const std::string& line) {
  setControlText(IDC_ZERO_DETECTOR, line);
}

void Win32ZeroErrorDialog::prepare() {
  SendMessageW(control(IDC_ZERO_ICON), STM_SETICON,
               reinterpret_cast<WPARAM>(LoadIconW(nullptr, reinterpret_cast<LPCWSTR>(IDI_ERROR))), 0);
}

void Win32ZeroErrorDialog::clicked(ZeroErrorDialog& presenter, int id) {
  if (id == IDC_ZERO_CONNECT) presenter.connectClicked();
  // Closing the window answers as Retry does.
  if (id == IDC_ZERO_RETRY || id == IDCANCEL) presenter.retryClicked();
}

}  // namespace rx9400::win
