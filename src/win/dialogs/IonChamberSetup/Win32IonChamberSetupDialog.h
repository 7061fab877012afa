// The ion chamber setup dialog as a Win32 dialog.
#pragma once

#include "ionchamber/IonChamberSetupDialog.h"
#include "win/dialogs/Win32Dialog.h"

namespace rx9400::win {

class Win32IonChamberSetupDialog final : public Win32DialogView<IonChamberSetupView, IonChamberSetupDialog> {
 public:
  Win32IonChamberSetupDialog();

  void setChamberEntries(const std::vector<std::string>& entries) override;
  void setCalFactorEntries(const std::vector<std::string>& entries) override;
  void selectChamberEntry(int index) override;
  void selectCalFactorEntry(int index) override;
  int chamberEntry() override;
  int calFactorEntry() override;
  std::string chamberEntryText() override;
  void setCalConstantText(const std::string& text) override;
  void setButtonVisible(SetupButton button, bool visible) override;
  void setButtonEnabled(SetupButton button, bool enabled) override;
  int buttonLeft(SetupButton button) override;
  void setButtonLeft(SetupButton button, int left) override;
  WindowHandle buttonWindow(SetupButton button) override;

 private:
  void clicked(IonChamberSetupDialog& presenter, int id) override;
  bool onNotification(int id, int code) override;
  HWND button(SetupButton which) const;
  /// A button's bounds, in the dialog's client coordinates.
  RECT buttonBounds(SetupButton which) const;
};

}  // namespace rx9400::win
