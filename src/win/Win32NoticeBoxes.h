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

/// Removes the notice box's window class: a class keeps pointing into this module, so it must go
/// before the module may be unloaded (no box can be open then: the instruments that own them are gone).
void unregisterNoticeBoxClass();

}  // namespace rx9400::win
