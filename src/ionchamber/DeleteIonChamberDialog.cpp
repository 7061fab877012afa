#include "ionchamber/DeleteIonChamberDialog.h"
