// The zero-error dialog: the answer is Connect only when the user pressed Connect; the polling pass ends
// at the slot whose detector reports the zero error.
#include <gtest/gtest.h>

#include "fakes/InstrumentFakes.h"
#include "session/ZeroErrorDialog.h"

namespace rx9400 {
namespace {

using Answer = testing::ScriptedZeroErrorView::Answer;

TEST(ZeroErrorDialog, OnlyConnectAnswersTrueAndEveryShowingStartsFalse) {
  testing::TestPlatform platform;
  PluginContext context(MBdllFunctions::forLibraryAt("/nonexistent"), platform.services());
  auto& view = *platform.dialogs.zeroError;
  ZeroErrorDialog dialog(context, view);
  const struct {
    Answer answer;
    bool connect;
  } cases[] = {
      {Answer::Connect, true}, {Answer::Retry, false}, {Answer::Connect, true}, {Answer::Close, false}};
  for (const auto& c : cases) {
    view.answer = c.answer;
    EXPECT_EQ(dialog.ask("Detector Zero Error", "4711 RX 9400WD ", c.connect), c.connect);
  }
  EXPECT_EQ(platform.windows.count(5), 2) << "placed in the topmost band when the executive asks";
  EXPECT_EQ(view.title(), "Detector Zero Error") << "the caller's caption replaces the dialog's own";
  EXPECT_EQ(view.detectorLine, "4711 RX 9400WD ");
  EXPECT_EQ(view.shownCaptions(),
            (std::vector<std::string>{"Retry", "Connect", " Detector Zero Error.", "Suggestions :"}));
  EXPECT_EQ(platform.windows.count(2), 4) << "the pointer goes to the focused control on activation";
}

TEST(ZeroErrorDialog, AZeroErrorEndsThePassAtItsSlotAndThePassAnswersFalse) {
  for (const int faulty : {101, 102}) {
    const auto aio = [&](int id) {
      return R"({"identifier": )" + std::to_string(id) + R"(, "typeCode": 1)" +
             (id == faulty ? R"(, "faults": {"zeroError": true}})" : "}");
    };
    testing::InstrumentRig rig;
    rig.start(aio(101) + "," + aio(102), "RADIO", false);
    EXPECT_FALSE(rig.instrument->CheckDataStatus()) << faulty;
    EXPECT_EQ(rig.calls("MBGetDetectorStatus"), faulty == 101 ? 1 : 2) << "the slots after it wait";
    EXPECT_EQ(rig.platform.dialogs.zeroError->showings, 1);
  }
}

}  // namespace
}  // namespace rx9400
