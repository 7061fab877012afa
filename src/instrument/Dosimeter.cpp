// The instrument's dosimeter configuration: the ion chamber dialogs opened for the executive.
#include "core/Placement.h"
#include "instrument/Instrument.h"
#include "ionchamber/IonChamberSetupDialog.h"
#include "session/DialogFactory.h"

namespace rx9400 {

AutomationValue Instrument::DisplayIonChamber() {
  auto view = context_.services.dialogs.newIonChamberSetupView();
  if (!view) return {};
  IonChamberSetupDialog dialog(context_, *view);
  dialog.show(topmostRequired(context_.services.registry));
  return {};
}

}  // namespace rx9400
