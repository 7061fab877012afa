// The ion chamber setup dialog as a Win32 dialog.
#pragma once

#include "ionchamber/IonChamberSetupDialog.h"
#include "win/dialogs/Win32Dialog.h"

namespace rx9400::win {

class Win32IonChamberSetupDialog final : public Win32DialogView<IonChamberSetupView> {
 public:
  Win32IonChamberSetupDialog();

  void attach(IonChamberSetupDialog& presenter) override { presenter_ = &presenter; }
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
  void onInit() override;
  void onActivate() override;
  void onCommand(int id) override;
  bool onNotification(int id, int code) override;
  HWND control(int id) const { return GetDlgItem(handle(), id); }
  HWND button(SetupButton which) const;

  IonChamberSetupDialog* presenter_ = nullptr;
};

}  // namespace rx9400::win
