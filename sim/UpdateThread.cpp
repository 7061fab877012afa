#include "UpdateThread.h"

#include "ExportSupport.h"

#ifdef _WIN32

#include <cstdint>
#include <string>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

namespace rx9400::sim {

namespace {

constexpr DWORD kTickMilliseconds = 5;
/// Longer than any wait for the thread's next wake-up; a join that takes longer is noted in the log
/// (MBCloseApplication called while the caller holds the loader lock, which the ending thread needs).
constexpr DWORD kJoinMilliseconds = 5000;

/// One run of the thread: `parameter` is the run number it was started for. It ends once the library's
/// run number differs, which stopUpdateThread (and any later start) brings about.
DWORD WINAPI updateThreadMain(void* parameter) {
  const auto run = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(parameter));
  Library& lib = library();
  for (;;) {
    Sleep(kTickMilliseconds);
    SimGuard guard(lib.lock);
    if (lib.updateRun != run) return 0;
    // The work: counting the tick. Nothing the simulation answers depends on it.
    if (lib.simulator != nullptr && !lib.simulator->updatesPaused()) ++lib.updateTicks;
  }
}

}  // namespace

void startUpdateThread(Library& lib) {
  if (lib.updateThread != nullptr) return;
  ++lib.updateRun;
  lib.updateTicks = 0;
  HANDLE thread =
      CreateThread(nullptr, 0, updateThreadMain,
                   reinterpret_cast<void*>(static_cast<std::uintptr_t>(lib.updateRun)), 0, nullptr);
  if (thread == nullptr) {
    lib.log->note("update thread not started: error " + std::to_string(GetLastError()));
    return;
  }
  lib.updateThread = thread;
}

void* stopUpdateThread(Library& lib) {
  void* thread = lib.updateThread;
  lib.updateThread = nullptr;
  ++lib.updateRun;
  return thread;
}

void joinUpdateThread(void* thread) {
  if (thread == nullptr) return;
  if (WaitForSingleObject(thread, kJoinMilliseconds) != WAIT_OBJECT_0) {
    Library& lib = library();
    SimGuard guard(lib.lock);
    lib.log->note("MBCloseApplication: the update thread did not end within " +
                  std::to_string(kJoinMilliseconds) + " ms");
  }
  CloseHandle(thread);
}

}  // namespace rx9400::sim

#else

namespace rx9400::sim {

void startUpdateThread(Library&) {}

void* stopUpdateThread(Library&) {
  return nullptr;
}

void joinUpdateThread(void*) {}

}  // namespace rx9400::sim

#endif
