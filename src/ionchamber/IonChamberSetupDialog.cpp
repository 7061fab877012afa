#include "ionchamber/IonChamberSetupDialog.h"
