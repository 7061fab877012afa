// Creation of the plug-in's three COM classes, for the class factory.
#pragma once

#include <windows.h>

namespace rx9400::win {

HRESULT createQuery(REFIID iid, void** out);
HRESULT createInstrument(REFIID iid, void** out);
HRESULT createStoreDetectorType(REFIID iid, void** out);

}  // namespace rx9400::win
