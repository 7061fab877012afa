// A crash in a Windows test program ends it with a FAIL line naming the check that ran, instead of
// Wine's debugger. Install with SetUnhandledExceptionFilter(rx9400::e2e::reportCrash).
#pragma once

#include <windows.h>

#include <cstdio>

namespace rx9400::e2e {

/// The check running now; the FAIL line names it.
inline const char* gCurrentCheck = "start-up";

inline LONG WINAPI reportCrash(EXCEPTION_POINTERS* exception) {
  std::printf("FAIL %s: unhandled exception 0x%08lX at %p\n", gCurrentCheck,
              static_cast<unsigned long>(exception->ExceptionRecord->ExceptionCode),
              exception->ExceptionRecord->ExceptionAddress);
  std::fflush(stdout);
  ExitProcess(3);
}

}  // namespace rx9400::e2e
