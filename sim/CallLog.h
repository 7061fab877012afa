// The log of every call into the library: one line per call, `Name(arg, arg, ...)`.
//
// Numbers passed by value are written in decimal, records and arrays passed by pointer as "*" ("null"
// for a null pointer), a few arguments as a short summary (the identifier and type arrays of a connect,
// a chamber name, the waveform parameters). Lines starting with "! " are the simulator's own notes about
// something unusual (an unbalanced pause, a scenario file that could not be read). When the
// environment variable TAMSA_SIM_LOG names a file, every line is appended to it as well.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>
#include <vector>

#include "device/EnumsStructs.h"

namespace rx9400::sim {

class CallLog {
 public:
  CallLog();
  CallLog(const CallLog&) = delete;
  CallLog& operator=(const CallLog&) = delete;
  ~CallLog();

  void append(const std::string& line);
  void note(const std::string& text) { append("! " + text); }
  /// Every line, each followed by "\n".
  const std::string& text() const { return text_; }
  void clear() {
    text_.clear();
    lines_ = 0;
  }
  std::size_t lineCount() const { return lines_; }

 private:
  std::string text_;  // one piece: a long waveform download writes hundreds of thousands of lines
  std::size_t lines_ = 0;
  std::FILE* file_ = nullptr;
};

// Argument summaries for the log.
struct IntList {
  const std::int32_t* values;
  std::size_t count;
};
struct ByteList {
  const std::uint8_t* values;
  std::size_t count;
};
/// A fixed-width one-byte name, written in double quotes.
struct NameArg {
  const char* bytes;
  std::size_t width;
};
struct WaveArg {
  const WaveformParameters* parameters;
};

template <typename T>
requires std::is_integral_v<T> std::string formatArg(T value) {
  return std::to_string(static_cast<long long>(value));
}
template <typename T>
std::string formatArg(T* pointer) {
  return pointer == nullptr ? "null" : "*";
}
std::string formatArg(const IntList& list);
std::string formatArg(const ByteList& list);
std::string formatArg(const NameArg& name);
std::string formatArg(const WaveArg& wave);

inline std::string formatArgs() {
  return {};
}
template <typename First, typename... Rest>
std::string formatArgs(const First& first, const Rest&... rest) {
  std::string text = formatArg(first);
  ((text += ", ", text += formatArg(rest)), ...);
  return text;
}

}  // namespace rx9400::sim
