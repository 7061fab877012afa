// The ion chamber dialogs as a person at the bench uses them, opened by DisplayIonChamber with a
// dosimeter connected: a chamber added through the editor (a key the field refuses changes nothing), a
// cal factor added to it, both edited, the first cal factor ticked and deleted, and the choice handed
// to the dosimeter with Continue. The simulator's call log and its chamber file show what arrived;
// every caption, label and button comes from the catalogue.
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "HostChecks.h"
#include "win/dialogs/DeleteIonChamber/DeleteIonChamberIds.h"
#include "win/dialogs/EditIonChamber/EditIonChamberIds.h"
#include "win/dialogs/IonChamberSetup/IonChamberSetupIds.h"

namespace rx9400::e2e {
namespace {

/// The dosimeter of scenarios/ion-chambers.json.
constexpr std::int32_t kDosimeter = 4712;

HWND control(HWND dialog, int id) {
  HWND found = GetDlgItem(dialog, id);
  expect(found != nullptr, quoted(windowText(dialog)) + " has no control " + std::to_string(id));
  return found;
}

std::string listed(const std::vector<std::wstring>& entries) {
  std::vector<std::string> texts;
  for (const std::wstring& entry : entries) texts.push_back(quoted(entry));
  return joined(texts);
}

/// Waits until a list box shows these entries with `chosen` chosen (the lists refill after an editor).
void expectEntries(HWND dialog, int id, const std::vector<std::wstring>& entries, const std::wstring& chosen,
                   const char* what) {
  HWND list = control(dialog, id);
  const auto shows = [&] {
    const int entry = selectedListBoxItem(list);
    return listBoxItems(list) == entries && entry >= 0 && entries[static_cast<std::size_t>(entry)] == chosen;
  };
  pollFor(kStepMs, shows);
  const int entry = selectedListBoxItem(list);
  expect(shows(), std::string(what) + " lists " + listed(listBoxItems(list)) + " with entry " +
                      std::to_string(entry) + " chosen, expected " + listed(entries) + " with " +
                      quoted(chosen));
}

/// Chooses the last entry of a list, "New", as a click on it would.
void chooseNew(HWND dialog, int id) {
  HWND list = control(dialog, id);
  expect(chooseListBoxItem(list, static_cast<int>(listBoxItems(list).size()) - 1), "New cannot be chosen");
}

void expectFieldText(HWND editor, int id, const std::wstring& wanted, const char* what) {
  const std::wstring actual = editText(control(editor, id));
  expect(actual == wanted, std::string(what) + " reads " + quoted(actual) + ", expected " + quoted(wanted));
}

/// What is typed into the editor's fields (an empty text leaves a field alone) and the unit chosen.
struct Entry {
  std::wstring chamber, calFactor, mantissa, exponent;
  int unit;
};

void fillEditor(HWND editor, const Entry& entry) {
  for (const auto& [id, text] :
       {std::pair{IDC_EDIT_CHAMBER, entry.chamber}, std::pair{IDC_EDIT_CAL_FACTOR, entry.calFactor},
        std::pair{IDC_EDIT_MANTISSA, entry.mantissa}, std::pair{IDC_EDIT_EXPONENT, entry.exponent}}) {
    if (!text.empty()) expect(typeText(control(editor, id), text), "typing " + quoted(text) + " failed");
  }
  expect(chooseComboBoxItem(control(editor, IDC_EDIT_UNIT), entry.unit), "the unit cannot be chosen");
}

/// The editor under its title, its fields under the mode's heading.
HWND waitForEditor(const Shown& shown, const wchar_t* title, const wchar_t* heading) {
  HWND editor = waitForDialog(shown(title), "the editor");
  const std::wstring shownHeading = windowText(control(editor, IDC_EDIT_HEADING));
  expect(shownHeading == shown(heading), "the editor's heading reads " + quoted(shownHeading));
  expectCatalogueTexts(editor, shown, {IDC_EDIT_HEADING});
  return editor;
}

/// The plug-in's box saying `text`, answered with `button`.
void answerBox(const std::string& when, const std::wstring& text, int button, const char* buttonName) {
  HWND box = waitForBox(when);
  expect(messageBoxText(box) == text, "the box " + when + " says " + quoted(messageBoxText(box)));
  press(box, button, buttonName);
  expectGone(box, "the box " + when);
}

void addChamber(const Options& options, const Shown& shown, HWND setup) {
  chooseNew(setup, IDC_SETUP_CHAMBERS);
  HWND editor = waitForEditor(shown, L"New Ion Chamber", L"New IC");
  // A third exponent digit is refused: the field keeps two.
  fillEditor(editor, {L"IC-C 30cc", L"RQA5", L"2.5", L"-123", 2});
  expectFieldText(editor, IDC_EDIT_EXPONENT, L"-12", "the exponent after typing -123");
  savePicture(editor, options.artifacts, "ion-chambers-new-chamber");
  press(editor, IDC_EDIT_OK, "OK");
  answerBox("after a chamber was added", shown(L"New Ion Chamber is added successfully."), IDOK, "OK");
  expectGone(editor, "the editor after a chamber was added");
}

void addCalFactor(const Shown& shown, HWND setup) {
  chooseNew(setup, IDC_SETUP_CAL_FACTORS);
  HWND editor = waitForEditor(shown, L"New Cal Factor", L"New CF");
  expectFieldText(editor, IDC_EDIT_CHAMBER, L"IC-C 30cc", "the chamber of a new cal factor");
  fillEditor(editor, {L"", L"RQA9", L"4", L"2", 0});
  press(editor, IDC_EDIT_OK, "OK");
  answerBox("after a cal factor was added", shown(L"New Cal Factor is added successfully."), IDOK, "OK");
  expectGone(editor, "the editor after a cal factor was added");
}

void edit(const Options& options, const Shown& shown, HWND setup) {
  press(setup, IDC_SETUP_EDIT, "Edit");
  HWND editor = waitForEditor(shown, L"Edit Ion Chamber", L"Edit IC");
  expectFieldText(editor, IDC_EDIT_CHAMBER, L"IC-C 30cc", "the chamber edited");
  expectFieldText(editor, IDC_EDIT_CAL_FACTOR, L"RQA9", "the cal factor edited");
  fillEditor(editor, {L"IC-D 30cc", L"RQA9b", L"5", L"2", 3});
  savePicture(editor, options.artifacts, "ion-chambers-edit");
  press(editor, IDC_EDIT_OK, "OK");
  expectGone(editor, "the editor after OK");
}

/// Ticks the chamber, which ticks its cal factors, and clears it again; then ticks the first cal
/// factor alone and deletes it.
void deleteTicked(const Options& options, const Shown& shown, HWND setup) {
  press(setup, IDC_SETUP_DELETE, "Delete");
  HWND dialog = waitForDialog(shown(L"Delete Ion Chamber"), "the deletion dialog");
  expectCatalogueTexts(dialog, shown, {IDC_DELETE_CAL_CONSTANT});
  HWND chambers = control(dialog, IDC_DELETE_CHAMBERS), calFactors = control(dialog, IDC_DELETE_CAL_FACTORS);
  expect(listViewItemCount(chambers) == 1 && listViewItemText(chambers, 0) == L"IC-D 30cc",
         "the deletion dialog does not list IC-D 30cc alone");
  expect(listViewItemCount(calFactors) == 2 && listViewItemText(calFactors, 1) == L"RQA9b",
         "the deletion dialog does not list the chamber's two cal factors");
  for (const bool ticked : {true, false}) {
    expect(setListViewItemChecked(chambers, 0, ticked), "the chamber cannot be ticked or cleared");
    const auto follow = [&] {
      return listViewItemChecked(calFactors, 0) == ticked && listViewItemChecked(calFactors, 1) == ticked;
    };
    pollFor(kStepMs, follow);
    expect(follow(),
           std::string("the cal factors are not ") + (ticked ? "ticked" : "cleared") + " with the chamber");
  }
  expect(setListViewItemChecked(calFactors, 0, true), "RQA5 cannot be ticked");
  savePicture(dialog, options.artifacts, "ion-chambers-delete");
  press(dialog, IDC_DELETE_DELETE, "Delete");
  answerBox("after Delete", shown(L"Do you want to delete all selected Ion Chambers and its Cal Factors?"),
            IDYES, "Yes");
  expectGone(dialog, "the deletion dialog after Delete");
}

/// Each function's calls in the simulator's log, as expected.
void expectCalls(HMODULE simulator,
                 const std::vector<std::pair<const char*, std::vector<std::string>>>& wanted) {
  std::string why;
  for (const auto& [function, arguments] : wanted) {
    const std::vector<std::string> actual = calls(simulator, function);
    if (actual != arguments) why += std::string(why.empty() ? "" : "; ") + function + joined(actual);
  }
  expect(why.empty(), "the dosimeter received " + why);
}

std::string chamberFile(HMODULE simulator) {
  const auto text = exportOf<decltype(&SimGetChamberFile)>(simulator, "SimGetChamberFile");
  std::string file(static_cast<std::size_t>(std::max(text(kDosimeter, nullptr, 0), 1)), '\0');
  text(kDosimeter, file.data(), static_cast<std::int32_t>(file.size()));
  file.resize(std::strlen(file.c_str()));
  return file;
}

void checkIonChambers(const Options& options) {
  const Shown shown{options.pseudoLanguage};
  Session session = openSession(options, L"ion-chambers.json");
  connectAll(options, "ion-chambers", session);
  auto instrument = instrumentIn(L"RADIO");
  driveModal(
      options, "ion-chambers",
      [&] {
        HWND setup = waitForDialog(shown(L"Ion Chamber Setup"), "the setup dialog");
        expectCatalogueTexts(setup, shown, {IDC_SETUP_CAL_CONSTANT});
        const std::wstring none = shown(L"No Ion Chamber"), added = shown(L"New");
        expectEntries(setup, IDC_SETUP_CHAMBERS, {none, added}, none, "the chamber list");
        savePicture(setup, options.artifacts, "ion-chambers-setup-empty");
        addChamber(options, shown, setup);
        expectEntries(setup, IDC_SETUP_CHAMBERS, {none, L"IC-C 30cc", added}, L"IC-C 30cc",
                      "the chamber list");
        expectEntries(setup, IDC_SETUP_CAL_FACTORS, {L"RQA5", added}, L"RQA5",
                      "the new chamber's cal factors");
        addCalFactor(shown, setup);
        expectEntries(setup, IDC_SETUP_CAL_FACTORS, {L"RQA5", L"RQA9", added}, L"RQA9", "the cal factors");
        edit(options, shown, setup);
        expectEntries(setup, IDC_SETUP_CAL_FACTORS, {L"RQA5", L"RQA9b", added}, L"RQA9b",
                      "the edited factors");
        savePicture(setup, options.artifacts, "ion-chambers-setup");
        deleteTicked(options, shown, setup);
        expectEntries(setup, IDC_SETUP_CAL_FACTORS, {L"RQA9b", added}, L"RQA9b", "the factors left");
        press(setup, IDC_SETUP_CONTINUE, "Continue");
        expectGone(setup, "the setup dialog after Continue");
      },
      [&] {
        VARIANT result;
        VariantInit(&result);
        const HRESULT hr = instrument->DisplayIonChamber(&result);
        VariantClear(&result);
        return hr;
      },
      "DisplayIonChamber");
  expectCalls(session.simulator, {{"MBAddNewIonChamber", {"4712, \"IC-C 30cc\""}},
                                  {"MBAddNewCalFactor", {"4712, 1, \"RQA5\"", "4712, 1, \"RQA9\""}},
                                  {"MBEditIonChamber", {"4712, 1, \"IC-D 30cc\""}},
                                  {"MBEditCalfactor", {"4712, 1, \"RQA9b\""}},
                                  {"MBDeleteIonChamber", {}},
                                  {"MBDeleteCalfactor", {"4712, 1, 1"}},
                                  {"MBDeleteAllIonChambers", {}},
                                  {"MBSetIonChamberCalFactor", {"4712, 1, 2"}}});
  // The edited factor with the unit chosen and the constant typed.
  const std::string file = chamberFile(session.simulator);
  expect(file == "1\t1\tIC-D 30cc\t1\t2\tRQA9b\t4\t500\t",
         "the dosimeter's chamber file reads " + quoted(widen(file)));
  expectHr(session.query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  expectHr(session.query->CloseApp(), S_OK, "CloseApp");
}

}  // namespace

std::vector<Check> ionChamberChecks() {
  return {{"ion-chambers",
           "add a chamber and a cal factor, edit both, delete ticked ones, Continue (ion-chambers.json)",
           checkIonChambers}};
}

}  // namespace rx9400::e2e
