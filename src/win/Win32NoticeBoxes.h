// The plug-in's notice boxes: on a form of the MsgForm server (MsgForm.MessageForm) where that
// component is registered, else a modeless box of the plug-in's own with the same layout. Either way a
// caption, a heading, a message and up to two buttons whose clicks reach the instrument through the
// message loop.
#pragma once

#include "platform/NoticeBoxes.h"

namespace rx9400::win {

class Win32NoticeBoxes final : public NoticeBoxes {
 public:
  /// Decided per box: a box whose form cannot be created is the plug-in's own.
  std::unique_ptr<NoticeBox> create(std::function<void()> onButton1,
                                    std::function<void()> onButton2) override;
};

/// Removes the built-in box's window class: a class keeps pointing into this module, so it must go
/// before the module may be unloaded (no box can be open then: the instruments that own them are gone).
void unregisterNoticeBoxClass();

}  // namespace rx9400::win
