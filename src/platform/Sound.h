// Audible signals and pauses.
#pragma once

namespace rx9400 {

class Sound {
 public:
  virtual ~Sound() = default;
  /// A tone of `frequency` hertz for `milliseconds`; returns when it has sounded.
  virtual void beep(int frequency, int milliseconds) = 0;
  virtual void sleep(int milliseconds) = 0;
};

}  // namespace rx9400
