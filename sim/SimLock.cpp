#include "SimLock.h"

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

namespace rx9400::sim {

static_assert(sizeof(SRWLOCK) == sizeof(void*));

void SimLock::lock() {
  AcquireSRWLockExclusive(reinterpret_cast<PSRWLOCK>(&state_));
}
void SimLock::unlock() {
  ReleaseSRWLockExclusive(reinterpret_cast<PSRWLOCK>(&state_));
}

}  // namespace rx9400::sim
#endif
