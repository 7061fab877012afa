// The ion chamber setup dialog (frmIonChamberSetup): the user picks the chamber and cal factor the
// dosimeter measures with, and opens the editor and the deletion dialog from here. Continue hands the
// choice to every connected dosimeter.
//
// Every refill of the lists (at load, and after an addition, an edit or a deletion that was not
// cancelled) chooses the chamber and cal factor whose numbers are the shared selection's, whatever the
// user chose in the lists meanwhile; a cal factor number no factor has chooses none. Choosing a chamber
// in the list chooses the factor of the shared selection when it is that chamber's, else its first.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/DialogView.h"
#include "core/PluginContext.h"
#include "ionchamber/EditIonChamberDialog.h"

namespace rx9400 {

class IonChamberSetupDialog;

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
  /// Refills both lists, choosing the chamber and cal factor of the shared selection where they exist.
  void fillLists();
  /// Fills the cal factor list of the chamber at list entry `entry` and chooses the factor with this
  /// number; when none has it, the first one if `firstByDefault`, else none.
  void fillCalFactors(int entry, std::int16_t calFactorNumber, bool firstByDefault);
  void showCalConstant(int chamberEntry, int calFactorEntry);
  /// Delete, Edit (unless read-only) and Continue together.
  void enableButtons(bool enabled);
  /// Edit and Delete, unless read-only.
  void enableEditAndDelete(bool enabled);
  bool isNewEntry(int entry, int entryCount) const { return !readOnly() && entry == entryCount - 1; }
  bool readOnly() const { return context_.state.ionChambers.readOnly; }
  /// Opens the editor; false when it was cancelled.
  bool runEditor(EditorMode mode, std::string_view caption, int chamberIndex, int calFactorIndex);
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
