// The ion chamber and cal factor editor as a Win32 dialog.
#pragma once

#include "ionchamber/EditIonChamberDialog.h"
#include "win/dialogs/Win32Dialog.h"

namespace rx9400::win {

class Win32EditIonChamberDialog final : public Win32DialogView<EditIonChamberView, EditIonChamberDialog> {
 public:
  Win32EditIonChamberDialog();

  std::string fieldText(EditorField field) override;
  void setFieldText(EditorField field, const std::string& text) override;
  void focusField(EditorField field) override;
  void setHeading(const std::string& text) override;
  void setUnitEntries(const std::vector<std::string>& entries) override;
  void selectUnit(int index) override;
  int unitEntry() override;
  WindowHandle okButton() override;

 private:
  void prepare() override;
  void clicked(EditIonChamberDialog& presenter, int id) override;
  bool onNotification(int id, int code) override;
  HWND field(EditorField which) const;
  /// Whether the presenter lets this character into the field, as it stands now.
  bool acceptsCharacter(HWND edit, EditorField which, WPARAM character) const;
  /// The fields' window procedure in front of the edit control's: drops the characters refused.
  static LRESULT CALLBACK fieldProcedure(HWND edit, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                         DWORD_PTR self);
};

}  // namespace rx9400::win
