// The catalogue data and the language component's default behaviour.
#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <string>

#include "core/Catalogue.h"

namespace rx9400 {
namespace {

TEST(Catalogue, EveryLiteralIsAFiveDigitKeyTwoColonsAndAText) {
  std::set<std::string_view> seen;
  for (const std::string_view literal : catalogue::kAll) {
    ASSERT_GE(literal.size(), 8u) << literal;
    for (std::size_t i = 0; i < 5; ++i)
      EXPECT_TRUE(std::isdigit(static_cast<unsigned char>(literal[i]))) << literal;
    EXPECT_EQ(literal.substr(5, 2), "::") << literal;
    EXPECT_TRUE(seen.insert(literal).second) << "listed twice: " << literal;
  }
}

TEST(Catalogue, TheDefaultTextIsWhatFollowsTheFirstTwoColonsWithItsBlanks) {
  DefaultLanguage language;
  Catalogue catalogue(language);
  EXPECT_EQ(catalogue.text(catalogue::kNoDetectorFound), "No Detector Found");
  EXPECT_EQ(catalogue.text(catalogue::kDisplayNameDose) + catalogue.text(catalogue::kDisplayNameMas),
            "Kalmet mAs ");
  EXPECT_EQ(catalogue.text(catalogue::kConnectionLostWithTheDetector),
            "Connection lost with the detector : ");
  EXPECT_EQ(catalogue.text(catalogue::kIsNotAValidSerialNumber), " is not a valid serial number.");
  EXPECT_EQ(catalogue.text(catalogue::kDetectorDoesNotSupport, catalogue.text(catalogue::kKalmetWord)),
            "The selected detector does not support Kalmet.");
  EXPECT_EQ(catalogue.text(catalogue::kDetectorDoesNotSupport), "The selected detector does not support .");
  EXPECT_EQ(defaultCatalogueText("12345::a::b", {}), "a::b");
  EXPECT_EQ(defaultCatalogueText("plain caption", {}), "plain caption");
  // Translating captions leaves plain captions alone.
  std::vector<std::string> captions{"22418::Retry", "OK", "", "22409::Suggestions :"};
  catalogue.translateCaptions(captions);
  EXPECT_EQ(captions, (std::vector<std::string>{"Retry", "OK", "", "Suggestions :"}));
}

}  // namespace
}  // namespace rx9400
