// The table of function pointers into the device library, with the library's exact calling convention.
//
// Only MBdllFunctions reads this table; every other module calls the typed wrapper.
#pragma once

#include <cstddef>
#include <cstdint>

#include "device/EnumsStructs.h"
#include "device/MBCallingConvention.h"

namespace rx9400 {

/// One typed pointer per export of the library; a null pointer is an export the library lacks.
struct MBFunctionTable {
#define MB_FUNCTION(Result, Name, Parameters, Arguments) Result(MB_STDCALL* Name) Parameters = nullptr;
#include "device/MBFunctionList.h"
};

/// The export names, in the order of the table.
inline constexpr const char* kMBFunctionNames[] = {
#define MB_FUNCTION(Result, Name, Parameters, Arguments) #Name,
#include "device/MBFunctionList.h"
};

inline constexpr std::size_t kMBFunctionCount = sizeof(kMBFunctionNames) / sizeof(kMBFunctionNames[0]);

}  // namespace rx9400
