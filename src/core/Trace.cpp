// The trace channel.
#include "core/Trace.h"

#include <exception>

#include "core/NumberText.h"

namespace rx9400 {
namespace {

std::string textOf(const TraceValue::Scalar& value) {
  struct {
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return doubleText(number); }
    std::string operator()(bool flag) const { return flag ? "True" : "False"; }
  } visitor;
  return std::visit(visitor, value);
}

}  // namespace

std::string traceText(std::initializer_list<TraceValue> values) {
  std::string text = ": ";
  for (const TraceValue& value : values) {
    for (const auto& element : value.elements()) {
      text += textOf(element);
      text += '\t';
    }
  }
  return text;
}

bool TraceChannel::active() noexcept {
  if (!searched_) {
    searched_ = true;
    try {
      viewerFound_ = sink_.findViewer();
    } catch (...) {
      viewerFound_ = false;
    }
  }
  return viewerFound_;
}

void TraceChannel::trace(std::initializer_list<TraceValue> values) noexcept {
  if (!active()) return;
  try {
    sink_.send(traceText(values));
  } catch (const std::exception& error) {
    reportFailure(error.what(), "in TamsaRX9400VTI.mTrace.SendTraceMessage ", __LINE__);
  } catch (...) {
    reportFailure("unknown failure", "in TamsaRX9400VTI.mTrace.SendTraceMessage ", __LINE__);
  }
}

void TraceChannel::traceAssert(bool condition, std::string_view where) noexcept {
  if (condition) return;
  try {
    trace({"Assert Failed", where});
  } catch (...) {
  }
}

void TraceChannel::reportFailure(const char* description, const char* place, int line) noexcept {
  try {
    sink_.send(traceText({std::string(description) + "\n" + place + "at line " + std::to_string(line)}));
  } catch (...) {
  }
}

}  // namespace rx9400
