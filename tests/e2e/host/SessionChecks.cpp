// The plug-in's session dialogs and message boxes as Win32 windows, driven from an automation thread
// while the main thread is inside ScanAndConnectToDetector: the scan dialog, the connect dialog's list
// view with its check boxes, and a refusal's message box in front of it. Which texts they show and which
// choices are refused is tested natively; here the windows themselves.
//
// Each check needs the scenario run.sh gives it (TAMSA_SIM_SCENARIO) and a host process of its own: a
// detector kind asked for with SendDetectorType stays asked for as long as the process lives.
#include <windows.h>

#include <string>
#include <vector>

#include "HostChecks.h"
#include "win/dialogs/ConnectDialog/ConnectDialogIds.h"
#include "win/dialogs/ScanDialog/ScanDialogIds.h"

namespace rx9400::e2e {
namespace {

void checkScanConnect(const Options& options) {
  Session session = openSession(options);
  driveModal(
      [&] {
        HWND scan = waitForDialog(L"Scanning...", "the scan dialog");
        savePicture(scan, options.artifacts, "scan-connect-scanning");
        HWND connect = waitForDialog(L"Establish Connection", "the connect dialog");
        HWND list = connectList(connect);
        expect(listViewItemCount(list) == 2,
               "the connect dialog lists " + std::to_string(listViewItemCount(list)));
        // Selecting a row fills the detail labels from the list view's notification.
        expect(selectListViewItem(list, 1), "a row cannot be selected");
        const std::wstring serial = listViewItemText(list, 1, 1);
        expect(
            pollFor(kStepMs, [&] { return windowText(GetDlgItem(connect, IDC_CONNECT_SERIAL)) == serial; }),
            "the serial number label does not follow the selected row " + quoted(serial));
        for (int row = 0; row < 2; ++row)
          expect(setListViewItemChecked(list, row, true), "a row cannot be ticked");
        savePicture(connect, options.artifacts, "scan-connect-ticked");
        press(connect, IDC_CONNECT_CONNECT, "Connect");
        expectGone(connect, "the connect dialog after Connect");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");
  expect(session.connected() == VARIANT_TRUE, "IsDetectorConnected is not True after Connect");
  expect(simulatorState(session.simulator).connectedCount == 2,
         "the simulator has not both detectors connected");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

void checkConnectRefusal(const Options& options) {
  Session session = openSession(options);
  driveModal(
      [&] {
        HWND connect = waitForDialog(L"Establish Connection", "the connect dialog");
        connectList(connect);
        press(connect, IDC_CONNECT_CONNECT, "Connect");
        answerMessageBox(options, "connect-refusal-select-detector", L"Select Detector",
                         L"No detector selected, please select a detector to proceed.");
        expect(!waitUntilGone(connect, 300), "the connect dialog closed after the refusal");
        press(connect, IDC_CONNECT_CANCEL, "Cancel");
        expectGone(connect, "the connect dialog after Cancel");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");
  expect(session.connected() == VARIANT_FALSE, "IsDetectorConnected is not False after Cancel");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

}  // namespace

std::vector<Check> sessionChecks() {
  return {
      {"scan-connect", "the scan dialog, then the connect dialog's rows selected, ticked and connected",
       checkScanConnect},
      {"connect-refusal", "a message box over the connect dialog, answered; Cancel connects nothing",
       checkConnectRefusal},
  };
}

}  // namespace rx9400::e2e
