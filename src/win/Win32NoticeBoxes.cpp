// The plug-in's notice boxes: the MsgForm server's form when it is registered, else the plug-in's own
// modeless box.
#include "win/Win32NoticeBoxes.h"

#include "win/MsgFormClient.h"
#include "win/MsgFormWindow.h"
#include "win/Win32Platform.h"

namespace rx9400::win {
namespace {

constexpr wchar_t kClassName[] = L"RX9400NoticeBox";

class Win32NoticeBox final : public NoticeBox {
 public:
  Win32NoticeBox(std::function<void()> onButton1, std::function<void()> onButton2)
      : window_(kClassName, std::move(onButton1), std::move(onButton2)) {}

  void show() override { window_.show(); }
  void close() override { window_.close(); }
  void setHeading(const std::string& text) override { set(MsgFormWindow::Text::Heading, text); }
  void setMessage(const std::string& text) override { set(MsgFormWindow::Text::Message, text); }
  void setButton1(const std::string& text) override { set(MsgFormWindow::Text::Button1, text); }
  void setButton2(const std::string& text) override { set(MsgFormWindow::Text::Button2, text); }
  void setCaption(const std::string& text) override { set(MsgFormWindow::Text::Caption, text); }

 private:
  void set(MsgFormWindow::Text which, const std::string& text) { window_.setText(which, toWide(text)); }

  MsgFormWindow window_;
};

}  // namespace

void unregisterNoticeBoxClass() {
  unregisterMsgFormWindowClass(kClassName);
}

std::unique_ptr<NoticeBox> Win32NoticeBoxes::create(std::function<void()> onButton1,
                                                    std::function<void()> onButton2) {
  if (std::unique_ptr<NoticeBox> box = createMsgFormBox(onButton1, onButton2)) return box;
  return std::make_unique<Win32NoticeBox>(std::move(onButton1), std::move(onButton2));
}

}  // namespace rx9400::win
