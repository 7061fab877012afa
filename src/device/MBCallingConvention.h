// The calling convention of the device library's exports.
#pragma once

// The library uses the standard Windows calling convention (callee cleans the stack); on 64-bit
// targets and natively there is only one convention and the macro is empty.
#if defined(_WIN32) && !defined(_WIN64)
#define MB_STDCALL __stdcall
#else
#define MB_STDCALL
#endif
