// A simple modeless notice box of the plug-in's own, standing in for the executive's message-box
// component: a caption, a heading, a message and up to two buttons whose clicks reach the instrument
// through the message loop.
#pragma once

#include "platform/NoticeBoxes.h"

namespace rx9400::win {

class Win32NoticeBoxes final : public NoticeBoxes {
 public:
  std::unique_ptr<NoticeBox> create(std::function<void()> onButton1,
                                    std::function<void()> onButton2) override;
};

}  // namespace rx9400::win
