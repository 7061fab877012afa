// The trace channel to the external trace viewer: lines of values, each followed by a TAB, behind
// ": ". When no viewer ran at the first line of the process, tracing stays silent for the life of
// the process and costs one Boolean test per line.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/TraceSink.h"

namespace rx9400 {

/// One traced value: a text, a whole number, a number, a Boolean, or an array of those.
class TraceValue {
 public:
  using Scalar = std::variant<std::string, std::int64_t, double, bool>;

  TraceValue(std::string text) : elements_{Scalar(std::move(text))} {}
  TraceValue(const char* text) : elements_{Scalar(std::string(text))} {}
  TraceValue(std::string_view text) : elements_{Scalar(std::string(text))} {}
  TraceValue(int number) : elements_{Scalar(static_cast<std::int64_t>(number))} {}
  TraceValue(long number) : elements_{Scalar(static_cast<std::int64_t>(number))} {}
  TraceValue(long long number) : elements_{Scalar(static_cast<std::int64_t>(number))} {}
  TraceValue(double number) : elements_{Scalar(number)} {}
  TraceValue(bool flag) : elements_{Scalar(flag)} {}
  /// An array: one field per element.
  TraceValue(std::vector<Scalar> elements) : elements_(std::move(elements)) {}

  const std::vector<Scalar>& elements() const { return elements_; }

 private:
  std::vector<Scalar> elements_;
};

/// The text of a line as the viewer receives it: ": " then every field followed by a TAB.
std::string traceText(std::initializer_list<TraceValue> values);

class TraceChannel {
 public:
  explicit TraceChannel(TraceSink& sink) : sink_(sink) {}

  /// Sends one line made of all values. Never fails towards its caller.
  void trace(std::initializer_list<TraceValue> values) noexcept;
  /// Traces an "Assert Failed" line naming `where` when `condition` is false.
  void traceAssert(bool condition, std::string_view where) noexcept;
  /// Whether lines reach a viewer (searches once, on the first call of the process).
  bool active() noexcept;

 private:
  void reportFailure(const char* description, const char* place, int line) noexcept;

  TraceSink& sink_;
  bool searched_ = false;
  bool viewerFound_ = false;
};

}  // namespace rx9400
