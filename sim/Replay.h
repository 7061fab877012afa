// Replay: the library answers from a recorded session file (TAMSA_SIM_REPLAY) instead of a scenario.
//
// Each call takes the next recorded call of the same function and detector, in the file's order: its
// result, the records the library filled and, after the calls that publish one, the shared-memory section.
// A status poll beyond the recorded ones repeats the last recorded answer. A call the recording cannot
// answer gets the function's failure value, and a note in the call log names the place in the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "CallLog.h"
#include "SharedSection.h"

namespace rx9400::sim {

/// One argument of a call as the replay sees it.
struct ReplayArg {
  std::int64_t value = 0;
  void* pointer = nullptr;
  std::size_t elementSize = 0;  ///< 0: passed by value
  bool writable = true;         ///< false for a summary that points inside a record (a name)
};

template <typename T>
requires std::is_integral_v<T> ReplayArg replayArg(T value) {
  return ReplayArg{static_cast<std::int64_t>(value), nullptr, 0, true};
}
template <typename T>
ReplayArg replayArg(T* pointer) {
  return ReplayArg{0, const_cast<std::remove_const_t<T>*>(pointer), sizeof(T), true};
}
inline ReplayArg replayArg(const IntList& list) {
  return ReplayArg{0, const_cast<std::int32_t*>(list.values), sizeof(std::int32_t), true};
}
inline ReplayArg replayArg(const ByteList& list) {
  return ReplayArg{0, const_cast<std::uint8_t*>(list.values), 1, true};
}
inline ReplayArg replayArg(const NameArg& name) {
  return ReplayArg{0, const_cast<char*>(name.bytes), 1, false};
}
inline ReplayArg replayArg(const WaveArg& wave) {
  return ReplayArg{0, const_cast<WaveformParameters*>(wave.parameters), sizeof(WaveformParameters), true};
}

class Replay {
 public:
  /// Reads the session file at `path`. A file that cannot be read, or whose header is not a session's,
  /// gives a replay without calls (every call is then reported), with the reason in `error`; a line that
  /// is cut off or not a call ends the recording there, noted in the log.
  static std::unique_ptr<Replay> load(const std::string& path, CallLog& log, std::string& error);

  template <typename... Args>
  std::int64_t answer(std::string_view name, std::int64_t failure, CallLog& log, const Args&... args) {
    std::vector<ReplayArg> arguments{replayArg(args)...};
    return answer(name, failure, log, arguments);
  }
  std::int64_t answer(std::string_view name, std::int64_t failure, CallLog& log,
                      std::vector<ReplayArg>& args);

 private:
  struct Call {
    std::size_t line = 0;
    std::string name;
    std::vector<std::optional<std::string>> bytes;  ///< per argument: its recorded bytes, if a pointer
    std::vector<std::int64_t> values;               ///< per argument: its value (0 for a pointer)
    std::int64_t result = 0;
    bool hasSection = false;
    std::optional<std::string> section;  ///< the section's bytes, or none: no section
  };
  struct Queue {
    std::vector<std::size_t> calls;
    std::size_t next = 0;
  };

  explicit Replay(std::string path) : path_(std::move(path)) {}
  void fill(const Call& recorded, std::vector<ReplayArg>& args) const;
  void clearOutputs(std::string_view name, std::vector<ReplayArg>& args) const;
  void publish(std::int32_t id, const std::optional<std::string>& bytes, CallLog& log);

  std::string path_;
  std::vector<Call> calls_;
  std::map<std::pair<std::string, std::int64_t>, Queue> queues_;
  std::size_t cutAt_ = 0;     ///< the line the recording breaks off at (0: complete)
  std::size_t lastLine_ = 0;  ///< the line of the last call answered
  std::map<std::int64_t, std::int64_t> detectorsOfType_;
  std::map<std::int32_t, std::unique_ptr<SharedSection>> sections_;
};

}  // namespace rx9400::sim
