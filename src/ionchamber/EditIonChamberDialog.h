// The ion chamber and cal factor editor (frmEditIonChamber): a new chamber with its first cal factor,
// a new cal factor of a chamber, or a chamber's and one factor's new names and constant. The dosimeter
// is told first; the table changes only when it accepted.
//
// In detail: the window title is the opener's caption and the mode's short
// caption heads the fields; validation boxes carry the window title (the cal factor name clash of an
// edit carries "Edit CF"); with no dosimeter connected, OK refuses with a message after the checks.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/DialogView.h"
#include "core/PluginContext.h"

namespace rx9400 {

class EditIonChamberDialog;

enum class EditorField { IonChamberName, CalFactorName, Mantissa, Exponent };
enum class EditorMode { NewChamber = 1, NewCalFactor = 2, Edit = 3 };

/// Whether a field takes a typed character: `text` is the field before the key, the selection starts
/// at `selStart` (where the caret stands) and is `selLength` long. Backspace is '\b'.
bool editorAcceptsKey(EditorField field, std::string_view text, int selStart, int selLength, char key);

class EditIonChamberView : public DialogView {
 public:
  virtual void attach(EditIonChamberDialog& presenter) = 0;
  virtual std::string fieldText(EditorField field) = 0;
  virtual void setFieldText(EditorField field, const std::string& text) = 0;
  virtual void focusField(EditorField field) = 0;
  /// The heading above the fields (the mode's caption).
  virtual void setHeading(const std::string& text) = 0;
  virtual void setUnitEntries(const std::vector<std::string>& entries) = 0;
  virtual void selectUnit(int index) = 0;
  /// The chosen unit entry, -1 when none is.
  virtual int unitEntry() = 0;
  virtual WindowHandle okButton() = 0;
};

class EditIonChamberDialog {
 public:
  EditIonChamberDialog(PluginContext& context, EditIonChamberView& view);

  /// The chamber (table index) and cal factor (slot) the editor works on, set by the opener.
  int pSelectedICIndex = 0;
  int pSelectedCFIndex = 0;
  /// Chooses the mode; the fields follow it when shown.
  void Formsetting(EditorMode mode);
  /// Shows the editor modally under this title.
  void show(const std::string& title);
  bool pCancelClick() const { return cancelled_; }

  // Handlers, called by the view.
  void load();
  void activated();
  void fieldFocused(EditorField field);
  bool acceptsKey(EditorField field, std::string_view text, int selStart, int selLength, char key) const {
    return editorAcceptsKey(field, text, selStart, selLength, key);
  }
  void okClicked();
  void cancelClicked();

 private:
  /// A critical box with the editor's title; always false, so that a check reads `return refuse(...)`.
  bool refuse(const std::string& text, const std::string& title = {});
  bool namesAndNumbersValid();
  /// The cal factor fields into a slot; `exponentLetter` joins mantissa and exponent.
  void fillCalFactor(CalFactor& slot, const std::string& exponentLetter);
  // Each answers false when a check refused (the editor stays open), true when the editor may close.
  bool addChamber(std::int32_t dosimeter);
  bool addCalFactor(std::int32_t dosimeter);
  bool edit(std::int32_t dosimeter);

  PluginContext& context_;
  EditIonChamberView& view_;
  EditorMode mode_ = EditorMode::NewChamber;
  std::string title_;
  bool cancelled_ = false;
};

}  // namespace rx9400
