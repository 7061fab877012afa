// In-process fakes of the platform services and scripted dialog views, so that the plug-in's portable
// code runs natively against the simulator exactly as it runs inside the executive.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "core/DialogFactory.h"
#include "core/PluginContext.h"
#include "ionchamber/DeleteIonChamberDialog.h"
#include "ionchamber/EditIonChamberDialog.h"
#include "ionchamber/IonChamberSetupDialog.h"
#include "session/ConnectDialog.h"
#include "session/ScanDialog.h"
#include "session/ZeroErrorDialog.h"

namespace rx9400::testing {

/// The trace viewer: the lines it received. It may not be running, and a send may fail.
struct RecordingTraceSink final : TraceSink {
  std::vector<std::string> lines;
  bool viewerRunning = true;
  bool failSending = false;  ///< the next send throws
  int searches = 0;
  bool findViewer() override {
    ++searches;
    return viewerRunning;
  }
  void send(std::string_view line) override {
    if (std::exchange(failSending, false)) throw std::runtime_error("viewer gone");
    lines.emplace_back(line);
  }
  bool contains(const std::string& text) const {
    for (const auto& line : lines) {
      if (line.find(text) != std::string::npos) return true;
    }
    return false;
  }
};

/// The executive's settings key, missing unless a test gives it; every opening is counted.
struct FakeRegistry final : Registry {
  bool keyExists = false;
  std::optional<ValueInfo> info;
  std::optional<std::int32_t> dword;
  int opens = 0;
  std::optional<Key> openLocalMachineKey(std::string_view subKey) override {
    ++opens;
    EXPECT_EQ(subKey, "Software\\Brume\\tamsa\\Executive\\System");
    return keyExists ? std::optional<Key>(42) : std::nullopt;
  }
  std::optional<ValueInfo> queryValueInfo(Key key, std::string_view name) override {
    EXPECT_EQ(key, 42u);
    EXPECT_EQ(name, "Test guide settings");
    return info;
  }
  std::optional<std::int32_t> queryDword(Key, std::string_view) override { return dword; }
};

/// Windows with the given rectangles (the scripted views' window and focused control among them); the
/// pointer's moves as {x, y} and topmost placements as {window, x, y, width, height}, in order.
struct FakeWindows final : WindowSystem {
  std::map<WindowHandle, WindowRect> rects{{0x1000, {0, 0, 100, 50}},
                                           {0x1001, {10, 10, 60, 30}},
                                           {0x2002, {200, 100, 260, 120}},
                                           {0x3000, {300, 100, 360, 120}},
                                           {0x4000, {400, 100, 460, 120}}};
  std::vector<std::vector<int>> calls;
  std::optional<WindowRect> windowRect(WindowHandle window) override {
    const auto found = rects.find(window);
    return found == rects.end() ? std::nullopt : std::optional<WindowRect>(found->second);
  }
  void setCursorPosition(int x, int y) override { calls.push_back({x, y}); }
  void makeTopmost(WindowHandle window, int x, int y, int width, int height) override {
    calls.push_back({static_cast<int>(window), x, y, width, height});
  }
  /// How many calls had `arguments` arguments: 2 for the pointer, 5 for topmost placements.
  long count(std::size_t arguments) const {
    return std::count_if(calls.begin(), calls.end(),
                         [&](const auto& call) { return call.size() == arguments; });
  }
};

struct FakeDatePicker final : DatePickerControl {
  CalendarDate shown{2026, 11, 22};
  CalendarDate now{2026, 11, 22};
  CalendarDate date() override { return shown; }
  void setDate(const CalendarDate& date) override { shown = date; }
  std::string text() override {
    char text[16];
    std::snprintf(text, sizeof text, "%02d/%02d/%04d", shown.day, shown.month, shown.year);
    return text;
  }
  CalendarDate today() override { return now; }
};

struct FakeSound final : Sound {
  std::vector<std::string> calls;
  void beep(int frequency, int milliseconds) override {
    calls.push_back("beep " + std::to_string(frequency) + " " + std::to_string(milliseconds));
  }
  void sleep(int milliseconds) override { calls.push_back("sleep " + std::to_string(milliseconds)); }
};

/// Boxes the user answers with the next of `answers`, or OK when none is left.
struct FakeMessageBoxes final : MessageBoxes {
  struct Box {
    std::string text, caption;
    int style;
  };
  std::vector<Box> shown;
  std::deque<int> answers;
  int show(const std::string& text, const std::string& caption, int style) override {
    shown.push_back({text, caption, style});
    if (answers.empty()) return kAnswerOk;
    const int answer = answers.front();
    answers.pop_front();
    return answer;
  }
};

/// Counts its pumpings; runs `nested` once, from inside its second pumping (a call arriving while the
/// plug-in waits).
struct TestPump final : EventPump {
  std::function<void()> nested;
  int pumps = 0;
  void pumpEvents() override {
    if (++pumps == 2 && nested) nested();
  }
};

/// A clock that moves only when told, or by `step` after each reading.
struct ManualClock final : Clock {
  std::uint32_t now = 1000;
  std::uint32_t step = 0;
  std::uint32_t milliseconds() override { return std::exchange(now, now + step); }
};

/// A locale with a chosen decimal separator whose code page is UTF-8.
struct FixedLocale final : Locale {
  std::string separator = ".";
  std::string decimalSeparator() override { return separator; }
  std::string toAnsi(const std::string& text) override { return text; }
  std::string fromAnsi(const std::string& bytes) override { return bytes; }
};

/// Notice boxes that record what they showed; a test presses their buttons. The records outlive the
/// boxes the instrument owns and destroys. While `failing`, every call on a box throws, as when the
/// component's server has gone.
struct RecordingNoticeBoxes final : NoticeBoxes {
  struct Record {
    std::string heading, message, button1, button2, caption;
    bool shown = false;
    bool closed = false;
    std::function<void()> onButton1, onButton2;
  };
  struct Box final : NoticeBox {
    Box(std::shared_ptr<Record> to, const bool& fails) : record(std::move(to)), failing(fails) {}
    std::shared_ptr<Record> record;
    const bool& failing;
    Record& checked() const {
      if (failing) throw std::runtime_error("the box's server has gone");
      return *record;
    }
    void show() override { checked().shown = true; }
    void close() override { checked().closed = true; }
    void setHeading(const std::string& text) override { checked().heading = text; }
    void setMessage(const std::string& text) override { checked().message = text; }
    void setButton1(const std::string& text) override { checked().button1 = text; }
    void setButton2(const std::string& text) override { checked().button2 = text; }
    void setCaption(const std::string& text) override { checked().caption = text; }
  };
  /// Every box created, in order.
  std::vector<std::shared_ptr<Record>> boxes;
  bool failing = false;
  std::unique_ptr<NoticeBox> create(std::function<void()> onButton1,
                                    std::function<void()> onButton2) override {
    auto record = std::make_shared<Record>();
    record->onButton1 = std::move(onButton1);
    record->onButton2 = std::move(onButton2);
    boxes.push_back(record);
    return std::make_unique<Box>(record, failing);
  }
};

/// Common parts of the scripted views: the presenter, captions, title, modal display.
template <typename Interface, typename Presenter>
class ScriptedView : public Interface {
 public:
  explicit ScriptedView(std::vector<std::string> designCaptions) : captions_(std::move(designCaptions)) {}
  void attach(Presenter& presenter) override { presenter_ = &presenter; }
  void hide() override { hidden_ = true; }
  WindowHandle window() override { return 0x1000; }
  WindowHandle focusedControl() override { return 0x1001; }
  void setTitle(const std::string& title) override { title_ = title; }
  std::vector<std::string> captions() override {
    if (captionsFail) throw std::runtime_error("the captions cannot be read");
    return captions_;
  }
  void setCaptions(const std::vector<std::string>& captions) override { captions_ = captions; }

  const std::string& title() const { return title_; }
  const std::vector<std::string>& shownCaptions() const { return captions_; }
  bool hidden() const { return hidden_; }
  int showings = 0;
  bool captionsFail = false;  ///< the translation of the captions fails

 protected:
  /// A showing begins: the presenter loads the dialog.
  Presenter& open() {
    ++showings;
    hidden_ = false;
    presenter_->load();
    return *presenter_;
  }
  bool hidden_ = false;
  Presenter* presenter_ = nullptr;

 private:
  std::vector<std::string> captions_;
  std::string title_;
};

/// The scan dialog run by its timer; the user presses Stop after `stopAfterTicks` ticks (never when
/// negative). A dialog that neither closes nor is stopped fails the test after 1000 ticks.
class ScriptedScanView final : public ScriptedView<ScanDialogView, ScanDialog> {
 public:
  ScriptedScanView() : ScriptedView({"22413::Scanning...", "22412::Stop"}) {}
  void showModal() override {
    open().activated();
    for (ticks = 0; !hidden_; ++ticks) {
      if (ticks == stopAfterTicks) {
        presenter_->stopClicked();
        break;
      }
      ASSERT_LT(ticks, 1000) << "the scan dialog never closed";
      ASSERT_TRUE(timerEnabled) << "the timer was left off with the dialog open";
      presenter_->timerTick();
    }
  }
  void setTimerEnabled(bool enabled) override { timerEnabled = enabled; }
  void setTimerInterval(int milliseconds) override { intervals.push_back(milliseconds); }
  int animationFrameCount() override { return 8; }
  void showAnimationFrame(int frame) override { frames.push_back(frame); }

  int stopAfterTicks = -1;
  int ticks = 0;
  bool timerEnabled = false;
  std::vector<int> intervals;
  std::vector<int> frames;
};

/// The connect dialog: on each showing, runs the next script (the user's actions) against the
/// presenter; a showing without a script, or whose script ends with the dialog open, is closed.
class ScriptedConnectView final : public ScriptedView<ConnectDialogView, ConnectDialog> {
 public:
  using Script = std::function<void(ConnectDialog&, ScriptedConnectView&)>;
  ScriptedConnectView() : ScriptedView({"25701::Select Detector(s)", "22407::Connect", "22408::Cancel"}) {}
  void showModal() override {
    open();
    if (!scripts.empty()) {
      Script script = scripts.front();
      scripts.pop_front();
      script(*presenter_, *this);
    }
  }
  void setRows(const std::vector<DetectorRow>& newRows) override {
    rows = newRows;
    ticks.assign(rows.size(), false);
  }
  std::vector<bool> tickedRows() override { return ticks; }
  void setDetails(const DetectorDetails& newDetails) override { details = newDetails; }
  void setRadioStates(int usb, int zigBee) override { radio = {usb, zigBee}; }

  /// Ticks the rows with these kind words.
  void tickKinds(const std::vector<std::string>& kinds) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      for (const std::string& kind : kinds) {
        if (rows[i].kind == kind) ticks[i] = true;
      }
    }
  }

  std::deque<Script> scripts;
  std::vector<DetectorRow> rows;
  std::vector<bool> ticks;
  DetectorDetails details;
  std::vector<int> radio;
};

class ScriptedZeroErrorView final : public ScriptedView<ZeroErrorDialogView, ZeroErrorDialog> {
 public:
  enum class Answer { Retry, Connect, Close };
  ScriptedZeroErrorView()
      : ScriptedView(
            {"22418::Retry", "22407::Connect", "22415:: Detector Zero Error.", "22409::Suggestions :"}) {}
  void showModal() override {
    open().activated();
    if (answer == Answer::Retry) presenter_->retryClicked();
    if (answer == Answer::Connect) presenter_->connectClicked();
  }
  void setDetectorLine(const std::string& line) override { detectorLine = line; }

  Answer answer = Answer::Retry;
  std::string detectorLine;
};

/// The ion chamber dialogs: on each showing, the view loads, activates and runs the next script (the
/// user's actions); a showing whose script leaves the dialog open is cancelled.
template <typename Interface, typename Presenter>
class ScriptedIonChamberView : public ScriptedView<Interface, Presenter> {
 public:
  using Script = std::function<void(Presenter&)>;
  using ScriptedView<Interface, Presenter>::ScriptedView;
  void showModal() override {
    Presenter& presenter = this->open();
    presenter.activated();
    if (!scripts.empty()) {
      Script script = std::move(scripts.front());
      scripts.pop_front();
      if (script) script(presenter);
    }
    if (!this->hidden_) presenter.cancelClicked();
  }
  std::deque<Script> scripts;
  std::string calConstant;
};

class ScriptedSetupView final : public ScriptedIonChamberView<IonChamberSetupView, IonChamberSetupDialog> {
 public:
  ScriptedSetupView() : ScriptedIonChamberView({"25271::Ion Chambers", "25275::&Continue"}) {}
  void setChamberEntries(const std::vector<std::string>& entries) override {
    chambers = entries, chamber = -1;
  }
  void setCalFactorEntries(const std::vector<std::string>& entries) override {
    calFactors = entries, calFactor = -1;
  }
  void selectChamberEntry(int index) override { chamber = index; }
  void selectCalFactorEntry(int index) override { calFactor = index; }
  int chamberEntry() override { return chamber; }
  int calFactorEntry() override { return calFactor; }
  std::string chamberEntryText() override { return chamber < 0 ? "" : chambers.at(chamber); }
  void setCalConstantText(const std::string& text) override { calConstant = text; }
  void setButtonVisible(SetupButton button, bool visible) override { buttons[button].visible = visible; }
  void setButtonEnabled(SetupButton button, bool enabled) override { buttons[button].enabled = enabled; }
  int buttonLeft(SetupButton button) override { return buttons[button].left; }
  void setButtonLeft(SetupButton button, int left) override { buttons[button].left = left; }
  /// Continue's window is 0x2002.
  WindowHandle buttonWindow(SetupButton button) override { return 0x2000 + static_cast<int>(button); }

  /// The user chooses an entry by its text.
  void choose(IonChamberSetupDialog& dialog, const std::string& text, bool calFactorList = false) {
    const auto& list = calFactorList ? calFactors : chambers;
    const int index = static_cast<int>(std::find(list.begin(), list.end(), text) - list.begin());
    ASSERT_LT(index, static_cast<int>(list.size())) << text << " is not listed";
    (calFactorList ? calFactor : chamber) = index;
    calFactorList ? dialog.calFactorChosen(index) : dialog.chamberChosen(index);
  }

  struct Button {
    bool visible = true, enabled = true;
    int left = 0;
  };
  std::map<SetupButton, Button> buttons{{SetupButton::Edit, {true, true, 10}},
                                        {SetupButton::Delete, {true, true, 70}},
                                        {SetupButton::Continue, {true, true, 130}},
                                        {SetupButton::Cancel, {true, true, 190}}};
  std::vector<std::string> chambers, calFactors;
  int chamber = -1, calFactor = -1;
};

class ScriptedEditorView final : public ScriptedIonChamberView<EditIonChamberView, EditIonChamberDialog> {
 public:
  ScriptedEditorView() : ScriptedIonChamberView({"25278::Ion Chamber", "25282::&OK"}) {}
  std::string fieldText(EditorField field) override { return fields[field]; }
  void setFieldText(EditorField field, const std::string& text) override { fields[field] = text; }
  void focusField(EditorField field) override { focused = field; }
  void setHeading(const std::string& text) override { heading = text; }
  void setUnitEntries(const std::vector<std::string>& entries) override { units = entries; }
  void selectUnit(int index) override { unit = index; }
  int unitEntry() override { return unit; }
  WindowHandle okButton() override { return 0x3000; }

  /// The user fills the four fields and the unit, then presses OK.
  void type(EditIonChamberDialog& dialog, const std::vector<std::string>& texts, int unitIndex) {
    for (std::size_t i = 0; i < texts.size(); ++i) fields[static_cast<EditorField>(i)] = texts[i];
    unit = unitIndex;
    dialog.okClicked();
  }

  std::map<EditorField, std::string> fields;
  std::optional<EditorField> focused;
  std::string heading;
  std::vector<std::string> units;
  int unit = -1;
};

class ScriptedDeleteView final : public ScriptedIonChamberView<DeleteIonChamberView, DeleteIonChamberDialog> {
 public:
  ScriptedDeleteView() : ScriptedIonChamberView({"25271::Ion Chambers"}) {}
  void setChamberItems(const std::vector<std::string>& names, const std::vector<bool>& newTicks) override {
    chambers = names, chamberTicks = newTicks;
  }
  void setCalFactorItems(const std::vector<std::string>& names, const std::vector<bool>& newTicks) override {
    calFactors = names, calFactorTicks = newTicks;
  }
  void selectChamberItem(int index) override { chamber = index; }
  void selectCalFactorItem(int index) override { calFactor = index; }
  void setChamberTicked(int index, bool ticked) override { chamberTicks.at(index) = ticked; }
  void setCalConstantText(const std::string& text) override { calConstant = text; }
  void setWaitMessageVisible(bool) override {}
  WindowHandle cancelButton() override { return 0x4000; }

  std::vector<std::string> chambers, calFactors;
  std::vector<bool> chamberTicks, calFactorTicks;
  int chamber = -1, calFactor = -1;
};

/// Hands out the scripted views, which the test configures before the code shows them.
struct ScriptedDialogs final : DialogFactory {
  std::shared_ptr<ScriptedScanView> scan = std::make_shared<ScriptedScanView>();
  std::shared_ptr<ScriptedConnectView> connect = std::make_shared<ScriptedConnectView>();
  std::shared_ptr<ScriptedZeroErrorView> zeroError = std::make_shared<ScriptedZeroErrorView>();

  std::shared_ptr<ScanDialogView> newScanView() override { return scan; }
  std::shared_ptr<ConnectDialogView> newConnectView() override { return connect; }
  std::shared_ptr<ZeroErrorDialogView> newZeroErrorView() override { return zeroError; }
  std::shared_ptr<ScriptedSetupView> setup = std::make_shared<ScriptedSetupView>();
  std::shared_ptr<ScriptedEditorView> editor = std::make_shared<ScriptedEditorView>();
  std::shared_ptr<ScriptedDeleteView> deletion = std::make_shared<ScriptedDeleteView>();
  std::shared_ptr<IonChamberSetupView> newIonChamberSetupView() override { return setup; }
  std::shared_ptr<EditIonChamberView> newEditIonChamberView() override { return editor; }
  std::shared_ptr<DeleteIonChamberView> newDeleteIonChamberView() override { return deletion; }
};

/// Every fake service, and a plug-in context over them and the given device library.
struct TestPlatform {
  DefaultLanguage language;
  RecordingTraceSink trace;
  FakeRegistry registry;
  FakeWindows windows;
  FakeDatePicker datePicker;
  FakeSound sound;
  FakeMessageBoxes boxes;
  TestPump pump;
  ScriptedDialogs dialogs;
  ManualClock clock;
  FixedLocale locale;
  RecordingNoticeBoxes notices;

  PlatformServices services() {
    return PlatformServices{language, trace, registry, windows, datePicker,          sound, boxes, pump,
                            dialogs,  clock, locale,   notices, systemSharedMemory()};
  }
};

}  // namespace rx9400::testing
