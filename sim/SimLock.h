// The lock that serialises every call into the library: the exports may be called from any thread.
//
// std::mutex is not available with every MinGW thread model, so Windows uses a slim reader/writer lock.
#pragma once

#ifndef _WIN32
#include <mutex>
#endif

namespace rx9400::sim {

#ifdef _WIN32
class SimLock {
 public:
  void lock();
  void unlock();

 private:
  void* state_ = nullptr;  // an SRWLOCK: one pointer, zero when unlocked
};
#else
using SimLock = std::mutex;
#endif

class SimGuard {
 public:
  explicit SimGuard(SimLock& lock) : lock_(lock) { lock_.lock(); }
  SimGuard(const SimGuard&) = delete;
  SimGuard& operator=(const SimGuard&) = delete;
  ~SimGuard() { lock_.unlock(); }

 private:
  SimLock& lock_;
};

}  // namespace rx9400::sim
