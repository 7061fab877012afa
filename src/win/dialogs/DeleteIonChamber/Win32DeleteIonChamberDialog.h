// The deletion dialog as a Win32 dialog.
#pragma once

#include "ionchamber/DeleteIonChamberDialog.h"
#include "win/dialogs/Win32Dialog.h"

namespace rx9400::win {

class Win32DeleteIonChamberDialog final
    : public Win32DialogView<DeleteIonChamberView, DeleteIonChamberDialog> {
 public:
  Win32DeleteIonChamberDialog();

  void setChamberItems(const std::vector<std::string>& names, const std::vector<bool>& ticks) override;
  void setCalFactorItems(const std::vector<std::string>& names, const std::vector<bool>& ticks) override;
  void selectChamberItem(int index) override;
  void selectCalFactorItem(int index) override;
  void setChamberTicked(int index, bool ticked) override;
  void setCalConstantText(const std::string& text) override;
  void setWaitMessageVisible(bool visible) override;
  WindowHandle cancelButton() override;

 private:
  void prepare() override;
  void clicked(DeleteIonChamberDialog& presenter, int id) override;
  bool onMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result) override;
  void fill(int id, const std::vector<std::string>& names, const std::vector<bool>& ticks);
  void select(int id, int index);

  /// The view changes a list itself: its notifications are not the user's.
  bool filling_ = false;
};

}  // namespace rx9400::win
