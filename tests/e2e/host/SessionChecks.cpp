// The plug-in's session and detector connection as the executive and a person at the test bench meet
// them: the query class scans in its scan dialog, lists what it found in its connect dialog and
// connects the detectors ticked there, or says why not in a message box. The main thread calls the
// plug-in as the executive does; an automation thread plays the person, reads every text and keeps a
// picture of each window. The simulator's call log shows what reached the device library.
//
// Each check needs the scenario run.sh gives it (TAMSA_SIM_SCENARIO) and a host process of its own: a
// detector kind asked for with SendDetectorType stays asked for as long as the process lives.
#include <windows.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Automation.h"
#include "Checks.h"
#include "SessionSupport.h"
#include "SimulatorAccess.h"
#include "win/dialogs/ConnectDialog/ConnectDialogIds.h"
#include "win/dialogs/ScanDialog/ScanDialogIds.h"

namespace rx9400::e2e {
namespace {

/// A detector of the default scenario (and of scenarios/session.json) as the connect dialog shows it.
struct ListedDetector {
  std::int32_t identifier;
  const wchar_t* kind;  ///< the kind word of its row
  const wchar_t* serialNumber;
  const wchar_t* softwareVersion;  ///< after "SW Version: "
  const wchar_t* hardwareVersion;  ///< after "HW Version: "
  const wchar_t* calibrationYear;
  const wchar_t* dueYear;
};
const ListedDetector kDetectors[] = {
    {4711, L"AIO+MAS", L"94001207", L"2.14-1.3", L"3.1-1.2", L"2025", L"2027"},
    {4712, L"DOSE", L"93000518", L"1.8-1.1", L"2.0-1.2", L"2025", L"2027"},
};

/// The text the plug-in shows for a text of its catalogue: the default English text, or under the
/// test language component "[[" + text + "]]".
class Shown {
 public:
  explicit Shown(bool pseudoLanguage) : pseudo_(pseudoLanguage) {}
  std::wstring operator()(const std::wstring& text) const { return pseudo_ ? L"[[" + text + L"]]" : text; }
  /// True for a text the catalogue gave: never empty nor a whole literal ("22401::..."), and under
  /// the test language one that begins with "[[".
  bool fromCatalogue(const std::wstring& text) const {
    if (text.empty() || text.find(L"::") != std::wstring::npos) return false;
    return !pseudo_ || text.rfind(L"[[", 0) == 0;
  }

 private:
  bool pseudo_;
};

// --- windows and their texts --------------------------------------------------------------------

HWND waitForBox(const std::string& when) {
  HWND box = waitForMessageBox(GetCurrentProcessId(), kStepMs);
  expect(box != nullptr, "no message box appeared " + when);
  return box;
}

std::wstring controlText(HWND dialog, int id) {
  HWND control = GetDlgItem(dialog, id);
  expect(control != nullptr,
         "the dialog " + quoted(windowText(dialog)) + " has no control " + std::to_string(id));
  return windowText(control);
}

void expectText(HWND dialog, int id, const std::wstring& wanted, const char* what) {
  const std::wstring actual = controlText(dialog, id);
  expect(actual == wanted, std::string(what) + " reads " + quoted(actual) + ", expected " + quoted(wanted));
}

void expectStaysOpen(HWND window, const std::string& what) {
  expect(!waitUntilGone(window, 300), what + " closed");
}

/// Every text a window of the plug-in shows other than values (the ids in `values`): its caption,
/// labels and buttons; of a message box its caption and text (its buttons are the system's).
void expectCatalogueTexts(HWND window, const Shown& shown, const std::vector<int>& values = {}) {
  const std::wstring caption = windowText(window);
  expect(shown.fromCatalogue(caption), "the window caption " + quoted(caption) + " is not a catalogue text");
  if (GetDlgItem(window, kMessageBoxTextId) != nullptr) {
    const std::wstring text = messageBoxText(window);
    expect(shown.fromCatalogue(text), "the message box text " + quoted(text) + " is not a catalogue text");
    return;
  }
  for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
    const int id = GetDlgCtrlID(child);
    if (std::find(values.begin(), values.end(), id) != values.end()) continue;
    const std::wstring type = windowClass(child);
    const LONG_PTR style = GetWindowLongPtrW(child, GWL_STYLE);
    const bool picture = (style & SS_TYPEMASK) == SS_OWNERDRAW || (style & SS_TYPEMASK) == SS_ICON ||
                         (style & SS_TYPEMASK) == SS_BITMAP;
    if ((_wcsicmp(type.c_str(), L"Static") == 0 && !picture) || _wcsicmp(type.c_str(), L"Button") == 0) {
      const std::wstring text = windowText(child);
      expect(shown.fromCatalogue(text), "the control " + std::to_string(id) + " of " + quoted(caption) +
                                            " shows " + quoted(text) + ", not a catalogue text");
    }
  }
}

/// The system icon of a critical message box (style 16), IDI_HAND.
constexpr WORD kCriticalIcon = 32513;

/// True when the message box shows the system icon `icon`.
bool showsIcon(HWND box, WORD icon) {
  const HICON wanted = LoadIconW(nullptr, MAKEINTRESOURCEW(icon));
  for (HWND child = GetWindow(box, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
    if ((GetWindowLongPtrW(child, GWL_STYLE) & SS_TYPEMASK) != SS_ICON ||
        _wcsicmp(windowClass(child).c_str(), L"Static") != 0) {
      continue;
    }
    DWORD_PTR shownIcon = 0;
    if (SendMessageTimeoutW(child, STM_GETICON, 0, 0, SMTO_ABORTIFHUNG, 3000, &shownIcon) != 0 &&
        reinterpret_cast<HICON>(shownIcon) == wanted) {
      return true;
    }
  }
  return false;
}

/// A message box of the plug-in: its caption and text, OK alone, the critical icon; pictured, then
/// answered with OK.
void answerMessageBox(HWND box, const std::wstring& caption, const std::wstring& text, const Shown& shown,
                      const Pictures& pictures, const std::string& picture) {
  expect(windowText(box) == caption,
         "the message box is titled " + quoted(windowText(box)) + ", expected " + quoted(caption));
  expect(messageBoxText(box) == text,
         "the message box says " + quoted(messageBoxText(box)) + ", expected " + quoted(text));
  const std::vector<std::wstring> buttons = buttonTexts(box);
  expect(buttons == std::vector<std::wstring>{L"OK"}, "the message box " + quoted(caption) + " offers " +
                                                          std::to_string(buttons.size()) +
                                                          " buttons, not OK alone");
  expect(showsIcon(box, kCriticalIcon),
         "the message box " + quoted(caption) + " does not show the critical icon");
  expectCatalogueTexts(box, shown);
  pictures.save(box, picture);
  press(box, IDOK, "OK");
  expectGone(box, "the message box " + quoted(caption));
}

// --- the scan and connect dialogs ---------------------------------------------------------------

void expectScanDialog(HWND scan, const Shown& shown) {
  expectText(scan, IDC_SCAN_LABEL, shown(L"Scanning..."), "the scan dialog's label");
  expectText(scan, IDC_SCAN_STOP, shown(L"Stop"), "the scan dialog's button");
  expectCatalogueTexts(scan, shown);
}

const ListedDetector* detectorWithSerial(const std::wstring& serialNumber) {
  for (const ListedDetector& detector : kDetectors) {
    if (serialNumber == detector.serialNumber) return &detector;
  }
  return nullptr;
}

/// The rows are the scenario's two detectors, once each, with their kind words; none is ticked.
void expectListedDetectors(HWND list) {
  const int count = listViewItemCount(list);
  expect(count == static_cast<int>(std::size(kDetectors)),
         "the connect dialog lists " + std::to_string(count) + " detectors, expected 2");
  std::vector<std::int32_t> listed;
  for (int row = 0; row < count; ++row) {
    const std::wstring kind = listViewItemText(list, row, 0);
    const std::wstring serial = listViewItemText(list, row, 1);
    const ListedDetector* detector = detectorWithSerial(serial);
    expect(detector != nullptr && kind == detector->kind,
           "row " + std::to_string(row) + " reads " + quoted(kind) + " " + quoted(serial));
    listed.push_back(detector->identifier);
    expect(!listViewItemChecked(list, row),
           "row " + std::to_string(row) + " is ticked before anyone ticked it");
  }
  std::sort(listed.begin(), listed.end());
  expect(std::adjacent_find(listed.begin(), listed.end()) == listed.end(), "a detector is listed twice");
}

int rowOfKind(HWND list, const std::wstring& kind) {
  for (int row = 0; row < listViewItemCount(list); ++row) {
    if (listViewItemText(list, row, 0) == kind) return row;
  }
  fail("the connect dialog lists no " + narrow(kind) + " detector");
}

/// The detail labels describe the selected row's detector.
void expectDetailsOfSelectedRow(HWND connect, HWND list, const Shown& shown) {
  const int row = selectedListViewItem(list);
  expect(row >= 0, "no row of the connect dialog is selected");
  const std::wstring serial = listViewItemText(list, row, 1);
  // The labels follow a new selection on the dialog's own thread.
  pollFor(kStepMs, [&] { return controlText(connect, IDC_CONNECT_SERIAL) == serial; });
  const ListedDetector* detector = detectorWithSerial(serial);
  expect(detector != nullptr, "the selected row reads " + quoted(serial));
  expectText(connect, IDC_CONNECT_SERIAL, serial, "the serial number label");
  expectText(connect, IDC_CONNECT_SW, shown(L"SW Version: ") + detector->softwareVersion,
             "the software version label");
  expectText(connect, IDC_CONNECT_HW, shown(L"HW Version: ") + detector->hardwareVersion,
             "the hardware version label");
  const struct {
    int id;
    std::wstring opening;
    const wchar_t* year;
  } dates[] = {{IDC_CONNECT_CALDATE, shown(L"Cal Date: "), detector->calibrationYear},
               {IDC_CONNECT_DUEDATE, shown(L"Cal Due Date: "), detector->dueYear}};
  for (const auto& date : dates) {
    const std::wstring text = controlText(connect, date.id);
    expect(
        text.rfind(date.opening, 0) == 0 && text.find(date.year, date.opening.size()) != std::wstring::npos,
        "a date label reads " + quoted(text) + ", expected " + quoted(date.opening) + " and a date in " +
            narrow(date.year));
  }
}

/// The connect dialog's captions, and the details of the selected row and then of the other one.
void expectConnectDialog(HWND connect, HWND list, const Shown& shown) {
  expectText(connect, IDC_CONNECT_SELECT, shown(L"Select Detector(s)"), "the list's heading");
  expectText(connect, IDC_CONNECT_CONNECT, shown(L"Connect"), "the connect button");
  expectText(connect, IDC_CONNECT_CANCEL, shown(L"Cancel"), "the cancel button");
  expectCatalogueTexts(connect, shown, {IDC_CONNECT_SERIAL});
  expectDetailsOfSelectedRow(connect, list, shown);
  const int other = selectedListViewItem(list) == 0 ? 1 : 0;
  expect(selectListViewItem(list, other), "row " + std::to_string(other) + " cannot be selected");
  expectDetailsOfSelectedRow(connect, list, shown);
}

// --- the checks ----------------------------------------------------------------------------------

void checkScanConnect(const HostOptions& options) {
  const Shown shown(options.pseudoLanguage);
  const Pictures pictures(options, "scan-connect");
  Session session = openSession(options);
  driveModal(
      pictures,
      [&] {
        HWND scan = waitForDialog(shown(L"Scanning..."), "the scan dialog");
        expectScanDialog(scan, shown);
        pictures.save(scan, "scanning");
        HWND connect = waitForDialog(shown(L"Establish Connection"), "the connect dialog");
        expect(!IsWindow(scan) || !IsWindowVisible(scan),
               "the scan dialog stayed open beside the connect dialog");
        HWND list = connectList(connect);
        expectListedDetectors(list);
        expectConnectDialog(connect, list, shown);
        pictures.save(connect, "listed");
        for (int row = 0; row < listViewItemCount(list); ++row) {
          expect(setListViewItemChecked(list, row, true), "row " + std::to_string(row) + " cannot be ticked");
        }
        pictures.save(connect, "ticked");
        press(connect, IDC_CONNECT_CONNECT, "Connect");
        expectGone(connect, "the connect dialog after Connect");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");

  expect(isDetectorConnected(session) == VARIANT_TRUE, "IsDetectorConnected is not True after Connect");
  const std::vector<std::string> lines = callLog(session);
  expectCalls(lines, "MBScanForDetectors", {""});
  // The counts are asked in the library's order of detector types, not in code order.
  expectCalls(lines, "MBGetNumberOfDetectors", {"1", "3", "2", "5", "4"});
  // One connection for every detector ticked, the all-in-one detector before the dosimeter.
  expectCalls(lines, "MBConnectToDetectors", {"[4711,4712], [4,3], 2"});
  expectInOrder(lines, {"MBScanForDetectors", "MBGetNumberOfDetectors", "MBConnectToDetectors"});
  for (const ListedDetector& detector : kDetectors) {
    expect(simulatorDetector(session.simulator, detector.identifier).connectionState == 1,
           "the simulator's detector " + std::to_string(detector.identifier) + " is not connected");
  }

  expectHr(session.query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  expect(isDetectorConnected(session) == VARIANT_FALSE,
         "IsDetectorConnected is not False after ResetTheDetectors");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

void checkScanStop(const HostOptions& options) {
  const Shown shown(options.pseudoLanguage);
  const Pictures pictures(options, "scan-stop");
  Session session = openSession(options);
  driveModal(
      pictures,
      [&] {
        HWND scan = waitForDialog(shown(L"Scanning..."), "the scan dialog");
        expectScanDialog(scan, shown);
        pictures.save(scan, "scanning");
        press(scan, IDC_SCAN_STOP, "Stop");
        expectGone(scan, "the scan dialog after Stop");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");

  expect(isDetectorConnected(session) == VARIANT_FALSE,
         "IsDetectorConnected is not False after a stopped scan");
  const std::vector<std::string> lines = callLog(session);
  expectCalls(lines, "MBScanForDetectors", {""});
  const std::size_t polls = callArguments(lines, "MBGetScanCompleteStatus").size();
  expect(polls < 200, "the scan ran to its end (" + std::to_string(polls) + " polls) instead of stopping");
  // The stopped scan is stopped and reset in the device library too.
  expectInOrder(lines, {"MBScanForDetectors", "MBStopScanningAndReset"});
  expectCalls(lines, "MBGetNumberOfDetectors", {});
  expectCalls(lines, "MBGetDetectorInfoOfType", {});
  expectCalls(lines, "MBConnectToDetectors", {});
  const SimLibraryState state = simulatorState(session.simulator);
  expect(state.scanState == 0 && state.connectedCount == 0,
         "after Stop the simulator is in scan state " + std::to_string(state.scanState) + " with " +
             std::to_string(state.connectedCount) + " detectors connected");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

void checkNoDetector(const HostOptions& options) {
  const Shown shown(options.pseudoLanguage);
  const Pictures pictures(options, "no-detector");
  Session session = openSession(options);
  driveModal(
      pictures,
      [&] {
        HWND box = waitForBox("after a scan that found nothing");
        const std::wstring indent = L"     ";
        answerMessageBox(box, shown(L"No Detector Found"),
                         shown(L"No Detector Found") + L"\n" + indent +
                             shown(L"1) Please turn on the detector.") + L"\n" + indent +
                             shown(L"2) Bring the detector within range."),
                         shown, pictures, "no-detector-found");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");

  expect(isDetectorConnected(session) == VARIANT_FALSE,
         "IsDetectorConnected is not False after finding nothing");
  const std::vector<std::string> lines = callLog(session);
  expectCalls(lines, "MBGetNumberOfDetectors", {"1", "3", "2", "5", "4"});
  expectCalls(lines, "MBConnectToDetectors", {});
  expect(simulatorState(session.simulator).connectedCount == 0, "the simulator has a detector connected");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

void checkConnectRefusals(const HostOptions& options) {
  const Shown shown(options.pseudoLanguage);
  const Pictures pictures(options, "connect-refusals");
  Session session = openSession(options);
  // The executive asks for a dosimeter; the all-in-one detector with mAs meter has none.
  expectHr(session.query->SendDetectorType(3), S_OK, "SendDetectorType(3)");
  driveModal(
      pictures,
      [&] {
        HWND connect = waitForDialog(shown(L"Establish Connection"), "the connect dialog");
        HWND list = connectList(connect);
        expectListedDetectors(list);

        press(connect, IDC_CONNECT_CONNECT, "Connect");
        answerMessageBox(waitForBox("after Connect with nothing ticked"), shown(L"Select Detector"),
                         shown(L"No detector selected, please select a detector to proceed."), shown,
                         pictures, "select-detector");
        expectStaysOpen(connect, "the connect dialog, after Connect with nothing ticked,");

        const int allInOne = rowOfKind(list, L"AIO+MAS");
        expect(setListViewItemChecked(list, allInOne, true), "the AIO+MAS row cannot be ticked");
        press(connect, IDC_CONNECT_CONNECT, "Connect");
        answerMessageBox(waitForBox("after Connect with the AIO+MAS detector while a dosimeter is asked for"),
                         shown(L"Tamsa RX9400 Plug-In Response"),
                         shown(L"The selected detector does not support " + shown(L"Kalmet") + L"."), shown,
                         pictures, "not-supported");
        expectStaysOpen(connect, "the connect dialog, after refusing the AIO+MAS detector,");
        pictures.save(connect, "after-refusals");

        press(connect, IDC_CONNECT_CANCEL, "Cancel");
        expectGone(connect, "the connect dialog after Cancel");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");

  expect(isDetectorConnected(session) == VARIANT_FALSE, "IsDetectorConnected is not False after Cancel");
  const std::vector<std::string> lines = callLog(session);
  expectCalls(lines, "MBConnectToDetectors", {});
  // Cancel stops and resets the device library.
  expectInOrder(lines, {"MBGetDetectorInfoOfType", "MBStopScanningAndReset"});
  expect(simulatorState(session.simulator).connectedCount == 0, "the simulator has a detector connected");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

}  // namespace

std::vector<Check> sessionChecks() {
  return {
      {"scan-connect",
       "scan, list both detectors, tick and connect them (scenarios/session.json); the device library's "
       "calls",
       checkScanConnect},
      {"scan-stop", "Stop ends a long scan: no connection, no message (scenarios/slow-scan.json)",
       checkScanStop},
      {"no-detector", "a scan that finds nothing says \"No Detector Found\" (no-detectors.json)",
       checkNoDetector},
      {"connect-refusals", "Connect with nothing ticked, and with a detector of the wrong kind; Cancel",
       checkConnectRefusals},
  };
}

}  // namespace rx9400::e2e
