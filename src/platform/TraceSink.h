// Where trace lines go: the trace viewer's window, when one runs.
#pragma once

#include <string_view>

namespace rx9400 {

class TraceSink {
 public:
  virtual ~TraceSink() = default;
  /// Looks for the trace viewer's window among the top-level windows; true when one was found.
  virtual bool findViewer() = 0;
  /// Sends one line to the viewer found (converted to the system's ANSI code page, no terminator).
  virtual void send(std::string_view line) = 0;
};

}  // namespace rx9400
