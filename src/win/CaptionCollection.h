// A dialog's control captions as the automation collection the language component translates.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <string>
#include <vector>

namespace rx9400::win {

/// A new collection (reference count 1) over `captions`: writing an item's Caption writes the string.
/// `captions` must outlive every use of the collection. Null when out of memory.
IDispatch* newCaptionCollection(std::vector<std::string>& captions);

}  // namespace rx9400::win
