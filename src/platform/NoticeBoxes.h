// Modeless notice boxes with a heading, a message and two custom buttons (the executive's
// message-box component).
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace rx9400 {

/// A box's component failed a call after the box was created (its server has gone, a setter failed).
class NoticeBoxFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Every call but the destructor may throw NoticeBoxFailure; the member that made it ends there with
/// the result it had reached.
class NoticeBox {
 public:
  virtual ~NoticeBox() = default;
  /// Shows the box and returns at once; its buttons answer later, from the message loop.
  virtual void show() = 0;
  virtual void close() = 0;
  virtual void setHeading(const std::string& text) = 0;
  virtual void setMessage(const std::string& text) = 0;
  virtual void setButton1(const std::string& text) = 0;
  /// An empty text hides the second button.
  virtual void setButton2(const std::string& text) = 0;
  virtual void setCaption(const std::string& text) = 0;
};

class NoticeBoxes {
 public:
  virtual ~NoticeBoxes() = default;
  /// A new box whose buttons call these handlers. A handler may close and destroy the box whose
  /// button it answers, and may call into the instrument, which may be in the middle of a member.
  virtual std::unique_ptr<NoticeBox> create(std::function<void()> onButton1,
                                            std::function<void()> onButton2) = 0;
};

}  // namespace rx9400
