// The recorder: a device library that forwards every call to the real one and writes each call, with
// what the library filled, to a session file (format in sim/README.md).
//
// The file is written under a lock held across the forwarded call, so that its lines are in the order
// the library answered. Nothing the plug-in passes or gets back is changed. A failure of the recorder's
// own (a file it cannot open or write) ends the recording; the calls are still forwarded.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "SessionFormat.h"
#include "SimLock.h"
#include "device/MBFunctionTable.h"

namespace rx9400::recorder {

/// One argument of a call as the session file sees it.
struct Argument {
  std::int64_t value = 0;         ///< by value
  const void* pointer = nullptr;  ///< by pointer
  std::size_t elementSize = 0;    ///< 0: passed by value
  std::int64_t before = 0;        ///< the 32-bit count it pointed at before the call (Pointee counts)
};

template <typename T>
Argument argumentOf(T value) {
  if constexpr (std::is_pointer_v<T>) {
    return Argument{0, value, sizeof(std::remove_pointer_t<T>), 0};
  } else {
    return Argument{static_cast<std::int64_t>(value), nullptr, 0, 0};
  }
}

/// Where the session goes and how large one file may grow.
struct Settings {
  std::string file;
  std::size_t maxBytes = 256u << 20;
};

class Recorder {
 public:
  /// Loads the real library at `libraryPath`; false (and nothing loaded) when it cannot be loaded.
  bool loadLibrary(const std::string& libraryPath);
  /// Starts the session file (a failure leaves the recorder forwarding without recording).
  void startSession(const Settings& settings);

  const MBFunctionTable& real() const { return real_; }
  bool recording() const { return recording_.load(std::memory_order_relaxed); }
  sim::SimLock& lock() { return lock_; }

  /// Writes the line of one call of the export at `index` of the export list (under lock()).
  void write(std::size_t index, Argument* arguments, std::size_t count, std::int64_t result);

  /// Ends recording and closes the file.
  void stop();

 private:
  bool open(bool truncate);
  void put(const std::string& line);
  void appendSection(std::int32_t id, std::size_t bytes);

  MBFunctionTable real_{};
  void* handle_ = nullptr;
  std::string libraryPath_;
  Settings settings_;
  std::FILE* file_ = nullptr;
  std::size_t written_ = 0;
  int part_ = 0;
  std::atomic<bool> recording_{false};
  sim::SimLock lock_;
  std::int64_t startMicros_ = 0;
  std::string line_;
  std::vector<std::int64_t> values_;
  std::map<std::int64_t, std::int64_t> detectorsOfType_;  // MBGetNumberOfDetectors answers by type code
  std::map<std::int64_t, std::int64_t> waveformPoints_;   // points of the last MBSetWaveformParameters
};

Recorder& recorder();

/// The bytes of the section `name` (at most `bytes`), or nothing when there is no such section.
std::optional<std::string> readSection(const std::string& name, std::size_t bytes);

/// Forwards one call, recording it when the session is on.
template <typename R, typename Forward>
struct Call {
  std::size_t index;
  Forward forward;

  template <typename... A>
  R operator()(A... args) {
    Recorder& r = recorder();
    if (!r.recording()) return forward();
    sim::SimGuard guard(r.lock());
    Argument arguments[sizeof...(A) + 1] = {argumentOf(args)...};
    const session::ExportShape& shape = session::exportShapes()[index];
    for (std::size_t i = 0; i < sizeof...(A); ++i) {
      if (shape.pointer(static_cast<int>(i)).count == session::Count::Pointee) {
        const auto* counted =
            static_cast<const std::int32_t*>(arguments[shape.pointer(static_cast<int>(i)).from].pointer);
        arguments[i].before = counted != nullptr ? *counted : 0;
      }
    }
    const R result = forward();
    r.write(index, arguments, sizeof...(A), static_cast<std::int64_t>(result));
    return result;
  }
};

template <typename R, typename Forward>
Call<R, Forward> call(std::size_t index, Forward forward) {
  return Call<R, Forward>{index, forward};
}

}  // namespace rx9400::recorder
