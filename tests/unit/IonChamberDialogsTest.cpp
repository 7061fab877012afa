// The ion chamber dialogs against the simulated dosimeter: the setup dialog's lists and limits, the
// editor's key filters, checks and additions, and the deletion dialog's ticks.
#include <gtest/gtest.h>

#include "fakes/InstrumentFakes.h"
#include "ionchamber/EditIonChamberDialog.h"

namespace rx9400 {
namespace {

using testing::InstrumentRig;
using testing::ScriptedEditorView;
using testing::ScriptedSetupView;
using Fields = std::vector<std::string>;

class IonChamberDialogs : public ::testing::Test {
 protected:
  /// A dosimeter (303) whose chambers "IC1"… each hold cal factors "CF1"… (constant 2.5E-3 Gy/C), read
  /// into the table from its chamber file; `others` are more detectors, `faults` the dosimeter's faults.
  void start(int chambers, int calFactors, const std::string& others = "", const std::string& faults = "{}") {
    std::string factors, list;
    for (int f = 1; f <= calFactors; ++f)
      factors += (f > 1 ? R"(,{"name": "CF)" : R"({"name": "CF)") + std::to_string(f) +
                 R"(", "unit": 3, "constant": 0.0025})";
    for (int c = 1; c <= chambers; ++c)
      list += (c > 1 ? R"(,{"name": "IC)" : R"({"name": "IC)") + std::to_string(c) + R"(", "calFactors": [)" +
              factors + "]}";
    rig.start(R"({"identifier": 303, "typeCode": 3, "dosimeter": {"chambers": [)" + list +
                  R"(]}, "faults": )" + faults + "}" + others,
              "RADIO", false);
    ASSERT_EQ(rig.instrument->GetIonChamberInfo(), chambers);
    rig.simulator->clearCalls();
    rig.platform.boxes.shown.clear();
  }
  IonChamberTable& table() { return rig.context->state.ionChambers; }
  ScriptedSetupView& setup() { return *rig.platform.dialogs.setup; }
  ScriptedEditorView& editor() { return *rig.platform.dialogs.editor; }
  testing::ScriptedDeleteView& deletion() { return *rig.platform.dialogs.deletion; }
  std::vector<std::string> boxTexts() const {
    std::vector<std::string> texts;
    for (const auto& box : rig.platform.boxes.shown) texts.push_back(box.text);
    return texts;
  }
  /// Opens the setup dialog through the instrument; the user does `user` in it.
  void openSetup(std::function<void(IonChamberSetupDialog&)> user) {
    setup().scripts.push_back(std::move(user));
    rig.instrument->DisplayIonChamber();
  }
  /// Opens the editor from the setup dialog by choosing `entry` (or pressing Edit when empty) and types
  /// the fields there; the setup dialog is then cancelled.
  void typeInEditor(const std::string& entry, bool calFactorList, const Fields& fields, int unit = 2) {
    editor().scripts.push_back(
        [&, fields, unit](EditIonChamberDialog& e) { editor().type(e, fields, unit); });
    openSetup([&, entry, calFactorList](IonChamberSetupDialog& s) {
      entry.empty() ? s.editClicked() : setup().choose(s, entry, calFactorList);
    });
  }

  InstrumentRig rig;
};

TEST_F(IonChamberDialogs, TheListsTheButtonsAndTheReadOnlyLayout) {
  start(0, 0);
  openSetup(nullptr);
  EXPECT_EQ(setup().chambers, (Fields{"No Ion Chamber", "New"}));
  EXPECT_EQ(rig.platform.windows.calls.back(), (std::vector<int>{230, 110})) << "pointer on Continue";

  start(2, 2);
  table().readOnly = true;
  table().selectedChamber = 2;
  table().selectedCalFactor = 2;
  openSetup(nullptr);
  EXPECT_EQ(setup().chambers, (Fields{"No Ion Chamber", "IC1", "IC2"})) << "no New when read-only";
  EXPECT_EQ(setup().calFactors, (Fields{"CF1", "CF2"}));
  EXPECT_EQ(std::pair(setup().chamber, setup().calFactor), std::pair(2, 1));
  EXPECT_EQ(setup().calConstant, "2.5E-03 Gy/C") << "the unit text keeps its leading blank";
  EXPECT_FALSE(setup().buttons[SetupButton::Edit].visible || setup().buttons[SetupButton::Delete].visible);
  EXPECT_EQ(setup().buttons[SetupButton::Continue].left, 70) << "Continue takes Delete's place";
  EXPECT_EQ(setup().buttons[SetupButton::Cancel].left, 130) << "Cancel takes Continue's place";
}

TEST_F(IonChamberDialogs, EveryRefillChoosesTheSharedSelectionAndContinueSendsIt) {
  const struct {
    int chambers, calFactors;
    std::int16_t chamber, calFactor;  // the shared selection
    Fields steps;  // entries chosen ("CF ": cal factor list), "Edit", "Delete" (ticks the first chamber)
    Fields typed;  // what the editor is given before OK; empty: it is cancelled
    std::string chosen;
    int calFactorEntry;
    bool calConstantShown, editEnabled;
    std::string sent;
  } cases[] = {
      {0, 0, 0, 0, {}, {}, "No Ion Chamber", -1, false, false, "0, 0"},
      {2, 2, 0, 0, {}, {}, "No Ion Chamber", -1, false, true, "0, 0"},
      {2, 2, 1, 5, {}, {}, "IC1", -1, false, true, "1, 5"},  // no factor has that number
      {2, 2, 0, 0, {"IC2", "CF CF2"}, {}, "IC2", 1, true, true, "2, 2"},
      {2, 0, 1, 7, {"IC2"}, {}, "IC2", -1, false, true, "2, 7"},
      {0, 0, 0, 0, {"New"}, {"IC9", "CF1", "1", "1"}, "No Ion Chamber", -1, false, true, "0, 0"},
      {2, 2, 2, 2, {"IC1", "Edit"}, {"IC1", "CF1", "2.5", "-3"}, "IC2", 1, true, true, "2, 2"},
      {2, 2, 2, 2, {"IC1", "Delete"}, {}, "IC2", 1, true, true, "2, 2"},
      {2, 2, 2, 2, {"IC1", "New"}, {}, "New", 0, true, true, "2, 2"},  // a cancelled editor: no refill
      {2, 2, 2, 2, {"IC1", "CF New"}, {}, "IC1", 2, true, true, "1, 0"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.chambers) + (c.steps.empty() ? "" : " " + c.steps.back()));
    start(c.chambers, c.calFactors);
    table().selectedChamber = c.chamber;
    table().selectedCalFactor = c.calFactor;
    setup().buttons = testing::ScriptedSetupView().buttons;  // a new form each time
    if (!c.typed.empty())
      editor().scripts.push_back([&](EditIonChamberDialog& e) { editor().type(e, c.typed, 2); });
    rig.platform.boxes.answers = {kAnswerYes};
    deletion().scripts.push_back([](DeleteIonChamberDialog& d) {
      d.chamberTicked(0, true);
      d.deleteClicked();
    });
    openSetup([&](IonChamberSetupDialog& s) {
      for (const std::string& step : c.steps) {
        if (step == "Edit")
          s.editClicked();
        else if (step == "Delete")
          s.deleteClicked();
        else
          setup().choose(s, step.substr(step.rfind("CF ", 0) == 0 ? 3 : 0), step.rfind("CF ", 0) == 0);
      }
      EXPECT_EQ(setup().chamberEntryText(), c.chosen);
      EXPECT_EQ(setup().calFactor, c.calFactorEntry);
      EXPECT_EQ(setup().calConstant, c.calConstantShown ? "2.5E-03 Gy/C" : "");
      EXPECT_EQ(setup().buttons[SetupButton::Edit].enabled, c.editEnabled);
      s.continueClicked();
    });
    EXPECT_EQ(rig.callsOf("MBSetIonChamberCalFactor"),
              Fields{"MBSetIonChamberCalFactor(303, " + c.sent + ")"});
    EXPECT_EQ(table().selectedChamberName, c.chosen);
    deletion().scripts.clear();
  }
}

TEST_F(IonChamberDialogs, ChamberAndCalFactorLimitsCountListEntries) {
  const std::string chamber = "Ion Chamber", factor = "Calibration Factor";
  const struct {
    int chambers, calFactors;
    std::string full;  ///< what is at its limit; empty: the editor opens
  } cases[] = {{8, 1, ""}, {9, 1, chamber}, {1, 9, ""}, {1, 10, factor}};
  for (const auto& c : cases) {
    start(c.chambers, c.calFactors);
    const int showings = editor().showings;
    const bool calFactorList = c.chambers == 1;
    openSetup([&](IonChamberSetupDialog& s) {
      if (calFactorList) setup().choose(s, "IC1");
      setup().choose(s, "New", calFactorList);
    });
    EXPECT_EQ(editor().showings - showings, c.full.empty() ? 1 : 0) << c.chambers << "/" << c.calFactors;
    const std::string message =
        "Maximum 10 " + c.full + "s can be supported. Please delete any one " + c.full + " to add new one.";
    EXPECT_EQ(boxTexts(), c.full.empty() ? Fields{} : Fields{message});
    EXPECT_TRUE(setup().buttons[SetupButton::Continue].enabled);
  }
}

TEST_F(IonChamberDialogs, ContinueSendsTheChoiceToEveryDosimeterAndCancelChangesNothing) {
  start(
      2, 2,
      R"(,{"identifier": 101, "typeCode": 1}, {"identifier": 505, "typeCode": 5}, {"identifier": 202, "typeCode": 2})");
  openSetup([&](IonChamberSetupDialog& s) {
    setup().choose(s, "No Ion Chamber");
    s.continueClicked();
  });
  EXPECT_TRUE(table().noIonChamber);
  EXPECT_EQ(rig.callsOf("MBSetIonChamberCalFactor"),
            (Fields{"MBSetIonChamberCalFactor(303, 0, 0)", "MBSetIonChamberCalFactor(505, 0, 0)"}));
  EXPECT_EQ(table().selectedChamberName, "No Ion Chamber");

  rig.simulator->clearCalls();
  openSetup([&](IonChamberSetupDialog& s) {
    setup().choose(s, "IC1");
    s.cancelClicked();
  });
  EXPECT_EQ(rig.calls("MB"), 0);
  EXPECT_EQ(table().selectedChamber + table().selectedCalFactor, 0) << "Continue's choice stays";
}

TEST(EditorKeys, EachFieldTakesOnlyItsCharacters) {
  using F = EditorField;
  const struct {
    F field;
    std::string text;
    int selStart, selLength;
    char key;
    bool accepted;
  } cases[] = {
      {F::IonChamberName, "", 0, 0, 'a', true},     {F::IonChamberName, "", 0, 0, '7', true},
      {F::CalFactorName, "", 0, 0, ':', true},      {F::CalFactorName, "", 0, 0, '_', false},
      {F::IonChamberName, "", 0, 0, '\xE9', false}, {F::Mantissa, "", 0, 0, 'e', false},
      {F::Mantissa, "12", 0, 0, '-', true},         {F::Mantissa, "12", 1, 0, '-', false},
      {F::Mantissa, "-12", 0, 0, '+', false},       {F::Mantissa, "-12", 0, 1, '+', true},
      {F::Mantissa, "1.2", 3, 0, ',', false},       {F::Mantissa, "1.2", 0, 3, ',', true},
      {F::Mantissa, "1234567", 7, 0, '8', false},   {F::Mantissa, "1.23456", 7, 0, '7', true},
      {F::Mantissa, "1.234567", 8, 0, '8', false},  {F::Mantissa, "-1.23456", 8, 0, '7', true},
      {F::Mantissa, "1234567", 0, 7, '\b', true},   {F::Exponent, "12", 2, 0, '3', false},
      {F::Exponent, "-12", 3, 0, '3', false},       {F::Exponent, "12", 0, 0, '-', true},
      {F::Exponent, "1", 1, 0, '-', false},         {F::Exponent, "12", 1, 1, '4', true},
      {F::Exponent, "1", 1, 0, '.', false},         {F::CalFactorName, "", 0, 0, '.', true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(editorAcceptsKey(c.field, c.text, c.selStart, c.selLength, c.key), c.accepted)
        << static_cast<int>(c.field) << " \"" << c.text << "\" " << c.selStart << "+" << c.selLength << c.key;
  }
}

TEST_F(IonChamberDialogs, TheEditorChecksInOrderAndARefusalChangesNothing) {
  const struct {
    Fields fields;  // chamber name, cal factor name, mantissa, exponent
    std::string message;
  } cases[] = {
      {{"", "", "", ""}, "Please enter Ion Chamber name."},
      {{"New", "CF", "1", "1"}, "Ion Chamber name cannot be New. Please enter different name."},
      {{"A", "", "1", "1"}, "Please enter Cal Factor name."},
      {{"A", "New", "1", "1"}, "Cal Factor name cannot be New. Please enter different name."},
      {{"A", "B", "", "1"}, "Please enter Cal Constant mantisa part."},
      {{"A", "B", "0", "1"}, "Please enter value greater than 0."},
      {{"A", "B", "0.0", "1"}, "Please enter value greater than 0."},
      {{"A", "B", "x", "1"}, "Please enter value greater than 0."},
      {{"A", "B", "1", ""}, "Please enter Cal Constant exponent part."},
      {{"A", "B", "1", "-21"}, "Please enter exponent in between -20 to 20."},
      {{"A", "B", "1", "21"}, "Please enter exponent in between -20 to 20."},
      {{"IC1", "B", "1", "20"}, "Ion Chamber name already exists, please enter different name."},
      {{"A", "B", "1", "-20"}, "No dosimeter is connected. Please connect a Kalmet detector and try again."},
  };
  for (const auto& c : cases) {
    start(1, 1);
    if (c.message.rfind("No dosimeter", 0) == 0) rig.context->state.removeDetector(0);
    typeInEditor("New", false, c.fields);
    ASSERT_EQ(boxTexts(), Fields{c.message}) << c.fields[0] << "/" << c.fields[1];
    EXPECT_EQ(std::tuple(rig.platform.boxes.shown[0].style, rig.platform.boxes.shown[0].caption),
              std::tuple(kBoxCritical, std::string("New Ion Chamber")));
    EXPECT_EQ(std::pair(rig.calls("MBAdd"), int{table().count}), std::pair(0, 1)) << "nothing added";
  }
}

TEST_F(IonChamberDialogs, AdditionsStoreOnlyWhatTheDosimeterAccepted) {
  const std::string addChamber = R"(MBAddNewIonChamber(303, "new"))",
                    addFactor = R"(MBAddNewCalFactor(303, 2, "RQR 5"))";
  const struct {
    std::string faults;
    Fields boxes;
    int count;
    std::vector<std::string> calls;
  } cases[] = {
      {R"({"addChamberRefused": true})", {"Unable to add new Ion Chamber."}, 1, {addChamber}},
      {R"({"addCalFactorRefused": true})", {"Unable to add new Cal Factor."}, 1, {addChamber, addFactor}},
      {"{}", {"New Ion Chamber is added successfully."}, 2, {addChamber, addFactor}},  // last
  };
  for (const auto& c : cases) {
    start(1, 1, "", c.faults);
    typeInEditor("New", false, {"new", "RQR 5", "1.5", "9"});  // "new" is not the catalogue's "New"
    EXPECT_EQ(boxTexts(), c.boxes) << c.faults;
    EXPECT_EQ(table().count, c.count) << c.faults;
    EXPECT_EQ(rig.callsOf("MBAdd"), c.calls) << c.faults;
  }
  // The last chamber added: its first cal factor keeps the slot's constant, since the text joined with the
  // exponent's catalogue key ("1.525220::E9") is no number.
  const CalFactor& first = table().at(1).calFactors[0];
  EXPECT_EQ(std::tuple(nameOf(table().at(1)), nameOf(first), first.unitCode, first.calConstant, first.number),
            std::tuple(std::string("new"), std::string("RQR 5"), 3, 0.0F, std::int16_t{1}));
  EXPECT_EQ(rig.platform.boxes.shown[0].style, kBoxInformation);

  // A cal factor added to a chamber: a plain box; a name the chamber has is refused under the title.
  start(1, 1);
  typeInEditor("New", true, {"IC1", "CF1", "2", "3"});
  EXPECT_EQ(boxTexts(), Fields{"Cal Factor name already exists, please enter different name."});
  typeInEditor("New", true, {"New", "CF2", "2", "3"});
  EXPECT_EQ(boxTexts().back(), "New Cal Factor is added successfully.");
  EXPECT_EQ(rig.platform.boxes.shown.back().style, kBoxOk);
  EXPECT_EQ(table().at(0).calFactorCount, 2);
  EXPECT_EQ(editor().heading, "New CF");
  EXPECT_EQ(editor().fields[EditorField::IonChamberName], "New") << "the chamber name is not checked";
}

TEST_F(IonChamberDialogs, AnEditLooksTheExponentLetterUpAndTheChamberNameFieldIsSkippedForANewCalFactor) {
  start(2, 2);
  typeInEditor("", false, {"IC1 renamed", "CF1 new", "4.25", "-7"});
  EXPECT_EQ(editor().heading, "Edit IC");
  EXPECT_EQ(rig.callsOf("MBEdit"),
            (Fields{R"(MBEditIonChamber(303, 1, "IC1 renamed"))", R"(MBEditCalfactor(303, 1, "CF1 new"))"}));
  const CalFactor& edited = table().at(0).calFactors[0];
  EXPECT_FLOAT_EQ(edited.calConstant, 4.25e-7F);
  EXPECT_EQ(edited.unitCode, 3);
  EXPECT_EQ(boxTexts(), Fields{}) << "no message follows an edit";
  typeInEditor("", false, {"IC1 renamed", "CF1 new", "1", "1"});
  EXPECT_EQ(rig.calls("MBEdit"), 4) << "an edit keeping its own names is no clash";

  typeInEditor("", false, {"IC2", "CF2", "1", "1"});
  EXPECT_EQ(boxTexts(), Fields{"Ion Chamber name already exists, please enter different name."});
  typeInEditor("", false, {"IC1", "CF2", "1", "1"});
  EXPECT_EQ(rig.platform.boxes.shown.back().caption, "Edit CF");

  editor().scripts.push_back([&](EditIonChamberDialog& e) {
    editor().focused.reset();
    e.fieldFocused(EditorField::IonChamberName);
    EXPECT_EQ(editor().focused, EditorField::CalFactorName);
  });
  openSetup([&](IonChamberSetupDialog& s) { setup().choose(s, "New", true); });
}

TEST_F(IonChamberDialogs, TicksFollowChamberAndCalFactorsAndDeleteRemovesWhatIsTicked) {
  using Delete = DeleteIonChamberDialog;
  const auto openDeletion = [&](std::function<void(Delete&)> user) {
    deletion().scripts.push_back(std::move(user));
    openSetup([&](IonChamberSetupDialog& s) { s.deleteClicked(); });
  };
  start(3, 2);
  openDeletion([&](Delete& d) {
    d.deleteClicked();
    d.chamberTicked(0, true);
    EXPECT_EQ(deletion().calFactorTicks, (std::vector<bool>{true, true}));
    d.calFactorTicked(1, false);
    EXPECT_FALSE(deletion().chamberTicks[0]) << "unticking a factor unticks its chamber";
    d.calFactorTicked(1, true);
    EXPECT_TRUE(deletion().chamberTicks[0]) << "every factor ticked ticks the chamber";
    rig.platform.boxes.answers = {kAnswerNo};
    d.deleteClicked();
  });
  EXPECT_EQ(boxTexts(), (Fields{"Please select an Ion Chamber or Calibration Factor to delete.",
                                "Do you want to delete all selected Ion Chambers and its Cal Factors?"}));
  EXPECT_EQ(rig.platform.boxes.shown[0].caption, "Delete");
  EXPECT_EQ(rig.platform.boxes.shown[1].style, kBoxYesNo | kBoxQuestion);
  EXPECT_EQ(std::pair(rig.calls("MBDelete"), int{table().count}), std::pair(0, 3)) << "No changes nothing";
  EXPECT_EQ(rig.platform.windows.count(2), 2) << "pointer on Cancel when shown";

  rig.platform.boxes.answers = {kAnswerYes, kAnswerYes};
  openDeletion([&](Delete& d) {
    d.chamberTicked(0, true);
    d.calFactorTicked(1, false);  // the chamber stays, its first factor goes
    d.chamberTicked(1, true);
    d.chamberSelected(2);
    d.calFactorTicked(0, true);
    d.deleteClicked();
  });
  EXPECT_EQ(rig.callsOf("MBDelete"), (Fields{"MBDeleteCalfactor(303, 1, 1)", "MBDeleteIonChamber(303, 2)",
                                             "MBDeleteCalfactor(303, 3, 1)"}));
  ASSERT_EQ(table().count, 2);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(std::tuple(table().at(i).calFactorCount, nameOf(table().at(i).calFactors[0])),
              std::tuple(std::uint8_t{1}, std::string("CF2")));
  }
  EXPECT_EQ(setup().chambers, (Fields{"No Ion Chamber", "IC1", "IC3", "New"}));

  rig.simulator->clearCalls();
  openDeletion([&](Delete& d) {
    d.chamberTicked(0, true);
    d.chamberTicked(1, true);
    d.deleteClicked();
  });
  EXPECT_EQ(rig.callsOf("MBDelete"), Fields{"MBDeleteAllIonChambers(303)"}) << "all ticked: one call";
  EXPECT_EQ(table().count, 0);
  EXPECT_FALSE(setup().buttons[SetupButton::Edit].enabled);
}

}  // namespace
}  // namespace rx9400
