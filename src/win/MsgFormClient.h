// Notice boxes shown by the MsgForm server (MsgForm.MessageForm, an out-of-process automation
// component): its form shows the texts, its Button1Click and Button2Click events call the handlers.
#pragma once

#include <functional>
#include <memory>

#include "platform/NoticeBoxes.h"

namespace rx9400::win {

inline constexpr wchar_t kMsgFormProgId[] = L"MsgForm.MessageForm";

/// A box on a new form of the MsgForm server, its events advised; nullptr when the class is not
/// registered or the form cannot be created and advised (the caller shows a box of its own; a
/// registered class that fails is traced). A call that fails later (the server has gone, a setter
/// fails) is traced, ends the box (it shows nothing more and calls no handler) and throws
/// NoticeBoxFailure, so that the member making it ends there.
std::unique_ptr<NoticeBox> createMsgFormBox(const std::function<void()>& onButton1,
                                            const std::function<void()>& onButton2);

}  // namespace rx9400::win
