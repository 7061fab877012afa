#include "ionchamber/EditIonChamberDialog.h"
