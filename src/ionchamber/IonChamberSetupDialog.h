// The ion chamber setup dialog (frmIonChamberSetup): the user picks the chamber and cal factor the
// dosimeter measures with, and opens the editor and the deletion dialog from here. Continue hands the
// choice to every connected dosimeter.
//
// In detail: choosing a chamber preselects its first cal factor (or the
// factor chosen before, when it belongs to that chamber); after an addition the new chamber or factor
// is chosen; when the editor is cancelled the entry chosen before "New" is chosen again.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/DialogView.h"
#include "core/PluginContext.h"

namespace rx9400 {

class IonChamberSetupDialog;

/// A cal constant as the dialogs show it: scientific text with the catalogue's exponent letter, then
/// the unit text by unit code.
std::string calConstantLabel(PluginContext& context, const CalFactor& calFactor);

enum class SetupButton { Edit, Delete, Continue, Cancel };

class IonChamberSetupView : public DialogView {
 public:
  virtual void attach(IonChamberSetupDialog& presenter) = 0;
  /// Replaces the entries of a list; nothing stays chosen.
  virtual void setChamberEntries(const std::vector<std::string>& entries) = 0;
  virtual void setCalFactorEntries(const std::vector<std::string>& entries) = 0;
  /// Chooses an entry (-1: none) without calling the presenter back.
  virtual void selectChamberEntry(int index) = 0;
  virtual void selectCalFactorEntry(int index) = 0;
  /// The chosen entry, -1 when none is.
  virtual int chamberEntry() = 0;
  virtual int calFactorEntry() = 0;
  /// The text of the chamber list's chosen entry, empty when none is.
  virtual std::string chamberEntryText() = 0;
  virtual void setCalConstantText(const std::string& text) = 0;
  virtual void setButtonVisible(SetupButton button, bool visible) = 0;
  virtual void setButtonEnabled(SetupButton button, bool enabled) = 0;
  /// A button's horizontal position in the dialog.
  virtual int buttonLeft(SetupButton button) = 0;
  virtual void setButtonLeft(SetupButton button, int left) = 0;
  virtual WindowHandle buttonWindow(SetupButton button) = 0;
};

class IonChamberSetupDialog {
 public:
  IonChamberSetupDialog(PluginContext& context, IonChamberSetupView& view);

  /// Shows the dialog modally, in the topmost band when asked. The table's read-only flag and
  /// selection are the opener's; afterwards pCancelClick() says whether the user cancelled.
  void show(bool topmost);
  bool pCancelClick() const { return cancelled_; }

  // Handlers, called by the view.
  void load();
  void activated();
  void chamberChosen(int entry);
  void calFactorChosen(int entry);
  void editClicked();
  void deleteClicked();
  void continueClicked();
  void cancelClicked();

 private:
  /// Refills both lists, choosing the chamber and cal factor with these numbers where they exist.
  void fillLists(std::int16_t chamberNumber, std::int16_t calFactorNumber);
  /// Fills the cal factor list of the chamber at list entry `entry` and chooses the factor with this
  /// number, or the first one.
  void fillCalFactors(int entry, std::int16_t calFactorNumber);
  void showCalConstant(int chamberEntry, int calFactorEntry);
  /// Delete, Edit (unless read-only) and Continue together.
  void enableButtons(bool enabled);
  /// Edit and Delete, unless read-only.
  void enableEditAndDelete(bool enabled);
  bool isNewEntry(int entry, int entryCount) const { return !readOnly() && entry == entryCount - 1; }
  bool readOnly() const { return context_.state.ionChambers.readOnly; }
  /// The numbers of the chosen chamber and cal factor (0 where none is).
  std::pair<std::int16_t, std::int16_t> chosenNumbers();
  /// Opens the editor; answers the numbers it added (0 and 0 when it was cancelled or added nothing),
  /// or nothing when it was cancelled.
  std::optional<std::pair<std::int16_t, std::int16_t>> runEditor(int mode, std::string_view caption,
                                                                 int chamberIndex, int calFactorIndex);
  void addChamber();
  void addCalFactor();

  PluginContext& context_;
  IonChamberSetupView& view_;
  bool topmost_ = false;
  bool cancelled_ = false;
  int chamberEntries_ = 0;
  int calFactorEntries_ = 0;
  int lastChamberEntry_ = -1;
  int lastCalFactorEntry_ = -1;
};

}  // namespace rx9400
