// Standard modal message boxes, and the user-interface messages that wait while code runs.
#pragma once

#include <string>

namespace rx9400 {

/// Styles of a standard message box (the platform's values).
inline constexpr int kBoxOk = 0;
inline constexpr int kBoxOkCancel = 1;
inline constexpr int kBoxYesNo = 4;
inline constexpr int kBoxCritical = 16;
inline constexpr int kBoxQuestion = 32;
inline constexpr int kBoxInformation = 64;
/// Answers.
inline constexpr int kAnswerOk = 1;
inline constexpr int kAnswerCancel = 2;
inline constexpr int kAnswerYes = 6;
inline constexpr int kAnswerNo = 7;

class MessageBoxes {
 public:
  virtual ~MessageBoxes() = default;
  /// Shows a modal box and returns the button the user pressed.
  virtual int show(const std::string& text, const std::string& caption, int style) = 0;
};

class EventPump {
 public:
  virtual ~EventPump() = default;
  /// Lets the user-interface messages that are waiting run once.
  virtual void pumpEvents() = 0;
};

}  // namespace rx9400
