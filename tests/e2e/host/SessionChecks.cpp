// The plug-in's session dialogs as a person at the test bench meets them: the scan dialog, the connect
// dialog listing what the scan found, and the message boxes that say why not. The main thread calls the
// plug-in as the executive does; an automation thread reads every text, ticks rows, presses buttons and
// keeps a picture of each window. Every text must come from the catalogue: under the test language
// component (--pseudo-language) each one shows as "[[text]]".
//
// Each check needs the scenario run.sh gives it (TAMSA_SIM_SCENARIO) and a host process of its own: a
// detector kind asked for with SendDetectorType stays asked for as long as the process lives.
#include <windows.h>

#include <string>
#include <tuple>
#include <vector>

#include "HostChecks.h"
#include "win/dialogs/ConnectDialog/ConnectDialogIds.h"
#include "win/dialogs/ScanDialog/ScanDialogIds.h"

namespace rx9400::e2e {
namespace {

/// A detector of the default scenario (and of scenarios/session.json) as the connect dialog shows it:
/// identifier, kind word, serial number, software and hardware version, calibration and due year.
struct ListedDetector {
  std::int32_t identifier;
  const wchar_t *kind, *serialNumber, *software, *hardware, *calibrated, *due;
};
const ListedDetector kDetectors[] = {
    {4711, L"AIO+MAS", L"94001207", L"2.14-1.3", L"3.1-1.2", L"2025", L"2027"},
    {4712, L"DOSE", L"93000518", L"1.8-1.1", L"2.0-1.2", L"2025", L"2027"},
};

std::wstring controlText(HWND dialog, int id) {
  HWND control = GetDlgItem(dialog, id);
  expect(control != nullptr, quoted(windowText(dialog)) + " has no control " + std::to_string(id));
  return windowText(control);
}

void expectText(HWND dialog, int id, const std::wstring& wanted, const char* what) {
  const std::wstring actual = controlText(dialog, id);
  expect(actual == wanted, std::string(what) + " reads " + quoted(actual) + ", expected " + quoted(wanted));
}

HWND scanDialog(const Options& options, const char* check, const Shown& shown) {
  HWND scan = waitForDialog(shown(L"Scanning..."), "the scan dialog");
  expectText(scan, IDC_SCAN_LABEL, shown(L"Scanning..."), "the scan dialog's label");
  expectText(scan, IDC_SCAN_STOP, shown(L"Stop"), "the scan dialog's button");
  expectCatalogueTexts(scan, shown);
  savePicture(scan, options.artifacts, std::string(check) + "-scanning");
  return scan;
}

/// The detector a row of the connect dialog lists, by its serial number and kind word.
const ListedDetector& detectorOfRow(HWND list, int row) {
  const std::wstring kind = listViewItemText(list, row, 0), serial = listViewItemText(list, row, 1);
  for (const ListedDetector& detector : kDetectors) {
    if (serial == detector.serialNumber && kind == detector.kind) return detector;
  }
  fail("row " + std::to_string(row) + " reads " + quoted(kind) + " " + quoted(serial));
}

/// The rows are the scenario's two detectors, once each, with their kind words; none is ticked.
void expectListedDetectors(HWND list) {
  expect(listViewItemCount(list) == 2, "the connect dialog lists " + std::to_string(listViewItemCount(list)));
  expect(&detectorOfRow(list, 0) != &detectorOfRow(list, 1), "a detector is listed twice");
  for (int row = 0; row < 2; ++row) {
    expect(!listViewItemChecked(list, row),
           "row " + std::to_string(row) + " is ticked before anyone ticked it");
  }
}

/// Selects each row in turn: the detail labels follow it (serial number, dates, versions).
void expectDetailsOfEachRow(HWND connect, HWND list, const Shown& shown) {
  expectCatalogueTexts(connect, shown, {IDC_CONNECT_SERIAL});
  for (int row = 0; row < 2; ++row) {
    expect(selectListViewItem(list, row), "row " + std::to_string(row) + " cannot be selected");
    const ListedDetector* detector = &detectorOfRow(list, row);
    const std::wstring serial = detector->serialNumber;
    pollFor(kStepMs, [&] { return controlText(connect, IDC_CONNECT_SERIAL) == serial; });
    expectText(connect, IDC_CONNECT_SERIAL, serial, "the serial number label");
    expectText(connect, IDC_CONNECT_SW, shown(L"SW Version: ") + detector->software, "the software version");
    expectText(connect, IDC_CONNECT_HW, shown(L"HW Version: ") + detector->hardware, "the hardware version");
    for (const auto& [id, opening, year] :
         {std::tuple{IDC_CONNECT_CALDATE, shown(L"Cal Date: "), detector->calibrated},
          std::tuple{IDC_CONNECT_DUEDATE, shown(L"Cal Due Date: "), detector->due}}) {
      const std::wstring text = controlText(connect, id);
      expect(text.rfind(opening, 0) == 0 && text.find(year, opening.size()) != std::wstring::npos,
             "a date label reads " + quoted(text) + ", expected a date in " + narrow(year));
    }
  }
}

void checkScanConnect(const Options& options) {
  const Shown shown{options.pseudoLanguage};
  Session session = openSession(options);
  driveModal(
      options, "scan-connect",
      [&] {
        HWND scan = scanDialog(options, "scan-connect", shown);
        HWND connect = waitForDialog(shown(L"Establish Connection"), "the connect dialog");
        expect(!IsWindow(scan) || !IsWindowVisible(scan),
               "the scan dialog stayed open beside the connect dialog");
        expectText(connect, IDC_CONNECT_SELECT, shown(L"Select Detector(s)"), "the list's heading");
        expectText(connect, IDC_CONNECT_CONNECT, shown(L"Connect"), "the connect button");
        HWND list = connectList(connect);
        expectListedDetectors(list);
        expectDetailsOfEachRow(connect, list, shown);
        savePicture(connect, options.artifacts, "scan-connect-listed");
        for (int row = 0; row < 2; ++row)
          expect(setListViewItemChecked(list, row, true), "a row cannot be ticked");
        savePicture(connect, options.artifacts, "scan-connect-ticked");
        press(connect, IDC_CONNECT_CONNECT, "Connect");
        expectGone(connect, "the connect dialog after Connect");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");
  expect(session.connected() == VARIANT_TRUE, "IsDetectorConnected is not True after Connect");
  for (const ListedDetector& detector : kDetectors) {
    expect(simulatorDetector(session.simulator, detector.identifier).connectionState == 1,
           "the simulator's detector " + std::to_string(detector.identifier) + " is not connected");
  }
  expectHr(session.query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  expect(session.connected() == VARIANT_FALSE, "IsDetectorConnected is not False after ResetTheDetectors");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

/// After the dialogs: nothing connected, in the plug-in and in the simulator.
void expectNothingConnected(const Session& session) {
  expect(session.connected() == VARIANT_FALSE, "IsDetectorConnected is not False");
  expect(calls(session.simulator, "MBConnectToDetectors").empty(), "the plug-in connected a detector");
  expect(simulatorState(session.simulator).connectedCount == 0, "the simulator has a detector connected");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

void checkScanStop(const Options& options) {
  const Shown shown{options.pseudoLanguage};
  Session session = openSession(options);
  driveModal(
      options, "scan-stop",
      [&] {
        HWND scan = scanDialog(options, "scan-stop", shown);
        press(scan, IDC_SCAN_STOP, "Stop");
        expectGone(scan, "the scan dialog after Stop");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");
  expect(simulatorState(session.simulator).scanState == 0, "the simulator still scans after Stop");
  expectNothingConnected(session);
}

void checkNoDetector(const Options& options) {
  const Shown shown{options.pseudoLanguage};
  Session session = openSession(options);
  const std::wstring indent = L"\n     ";
  driveModal(
      options, "no-detector",
      [&] {
        answerMessageBox(options, "no-detector-no-detector-found",
                         waitForBox("after a scan that found nothing"), shown(L"No Detector Found"),
                         shown(L"No Detector Found") + indent + shown(L"1) Please turn on the detector.") +
                             indent + shown(L"2) Bring the detector within range."),
                         shown);
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");
  expectNothingConnected(session);
}

void checkConnectRefusals(const Options& options) {
  const Shown shown{options.pseudoLanguage};
  Session session = openSession(options);
  // The executive asks for a dosimeter; the all-in-one detector with mAs meter has none.
  expectHr(session.query->SendDetectorType(3), S_OK, "SendDetectorType(3)");
  driveModal(
      options, "connect-refusals",
      [&] {
        HWND connect = waitForDialog(shown(L"Establish Connection"), "the connect dialog");
        HWND list = connectList(connect);
        expectListedDetectors(list);
        press(connect, IDC_CONNECT_CONNECT, "Connect");
        answerMessageBox(options, "connect-refusals-select-detector",
                         waitForBox("after Connect with nothing ticked"), shown(L"Select Detector"),
                         shown(L"No detector selected, please select a detector to proceed."), shown);
        expect(!waitUntilGone(connect, 300), "the connect dialog closed after Connect with nothing ticked");
        const int allInOne = listViewItemText(list, 0, 0) == L"AIO+MAS" ? 0 : 1;
        expect(setListViewItemChecked(list, allInOne, true), "the AIO+MAS row cannot be ticked");
        press(connect, IDC_CONNECT_CONNECT, "Connect");
        answerMessageBox(options, "connect-refusals-not-supported",
                         waitForBox("after Connect with the AIO+MAS row"),
                         shown(L"Tamsa RX9400 Plug-In Response"),
                         shown(L"The selected detector does not support " + shown(L"Kalmet") + L"."), shown);
        expect(!waitUntilGone(connect, 300), "the connect dialog closed after refusing the AIO+MAS detector");
        savePicture(connect, options.artifacts, "connect-refusals-after-refusals");
        press(connect, IDC_CONNECT_CANCEL, "Cancel");
        expectGone(connect, "the connect dialog after Cancel");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");
  expectNothingConnected(session);
}

}  // namespace

std::vector<Check> sessionChecks() {
  return {
      {"scan-connect", "scan, list both detectors with their details, tick and connect them (session.json)",
       checkScanConnect},
      {"scan-stop", "Stop ends a long scan: no connection, no message (slow-scan.json)", checkScanStop},
      {"no-detector", "a scan that finds nothing says \"No Detector Found\" (no-detectors.json)",
       checkNoDetector},
      {"connect-refusals", "Connect with nothing ticked, and with a detector of the wrong kind; Cancel",
       checkConnectRefusals},
  };
}

}  // namespace rx9400::e2e
