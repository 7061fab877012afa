// The deletion dialog (frmDeleteIC): the user ticks chambers and cal factors and deletes them from the
// dosimeter in one step. Ticks live in a working copy of the table; only Delete changes the table.
//
// In detail: one column per list, in table order; the wait notice shows while
// the dosimeter deletes; with no dosimeter connected Delete says so and changes nothing.
#pragma once

#include <string>
#include <vector>

#include "core/DialogView.h"
#include "core/IonChamberTable.h"
#include "core/PluginContext.h"

namespace rx9400 {

class DeleteIonChamberDialog;

class DeleteIonChamberView : public DialogView {
 public:
  virtual void attach(DeleteIonChamberDialog& presenter) = 0;
  /// Replaces the items of a list with these names and ticks; nothing stays chosen.
  virtual void setChamberItems(const std::vector<std::string>& names, const std::vector<bool>& ticks) = 0;
  virtual void setCalFactorItems(const std::vector<std::string>& names, const std::vector<bool>& ticks) = 0;
  /// Chooses an item (-1: none), or ticks one, without calling the presenter back.
  virtual void selectChamberItem(int index) = 0;
  virtual void selectCalFactorItem(int index) = 0;
  virtual void setChamberTicked(int index, bool ticked) = 0;
  virtual void setCalConstantText(const std::string& text) = 0;
  virtual void setWaitMessageVisible(bool visible) = 0;
  virtual WindowHandle cancelButton() = 0;
};

class DeleteIonChamberDialog {
 public:
  DeleteIonChamberDialog(PluginContext& context, DeleteIonChamberView& view);

  /// The chamber (table index) and cal factor (slot) chosen in the setup dialog, set by the opener.
  int pSelectedICIndex = 0;
  int pSelectedCFIndex = 0;
  void show();
  bool pCancelClick() const { return cancelled_; }

  // Handlers, called by the view.
  void load();
  void activated();
  void chamberSelected(int item);
  void calFactorSelected(int item);
  void chamberTicked(int item, bool ticked);
  void calFactorTicked(int item, bool ticked);
  void deleteClicked();
  void cancelClicked();

 private:
  void showCalFactors(int chamber);
  /// Deletes what is ticked from the dosimeter and the table (with one call when every chamber is).
  void deleteTicked(std::int32_t dosimeter, bool everyChamber);

  PluginContext& context_;
  DeleteIonChamberView& view_;
  IonChamberTable copy_;
  int chamber_ = -1;  ///< the chamber whose cal factors are listed
  bool cancelled_ = false;
};

}  // namespace rx9400
