// The catalogue through the executive's language component: with the test component registered
// (pseudo-language "[[...]]") and after it was unregistered (the default texts). The texts cross COM as
// BSTRs, the parameters as a SAFEARRAY of Variants, and the captions as a controls collection the
// component walks late-bound.
#include <windows.h>

#include <objbase.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "ServiceChecks.h"
#include "core/Catalogue.h"
#include "core/CatalogueLiterals.h"
#include "win/LanguageComponent.h"
#include "win/Win32Language.h"

namespace rx9400::e2e {
namespace {

namespace literal = rx9400::catalogue;

struct Lookup {
  std::string_view literal;
  const char* parameter;  ///< null: a text without placeholders
  const char* standard;   ///< the default text; the test component answers "[[" + it + "]]"
};

// Blanks at either end belong to the text; a parameter may be outside ASCII.
const Lookup kLookups[] = {
    {literal::kDisplayNameDose, nullptr, "Kalmet "},
    {literal::kDetectorZeroErrorCaption, nullptr, " Detector Zero Error."},
    {literal::kCalDueDateCaption, nullptr, "Cal Due Date: 12/12/2009"},
    {literal::kDetectorDoesNotSupport, "Kalmet", "The selected detector does not support Kalmet."},
    {literal::kDetectorDoesNotSupport, "\xC2\xB5Gy", "The selected detector does not support \xC2\xB5Gy."},
};

// Captions without "::" are not literals and stay as they are.
const std::vector<std::string> kCaptions = {"22407::Connect", "SN 12345", "", "22409::Suggestions : "};
const std::vector<std::string> kTranslated[] = {{"Connect", "SN 12345", "", "Suggestions : "},
                                                {"[[Connect]]", "SN 12345", "", "[[Suggestions : ]]"}};

void expectTexts(bool pseudo) {
  win::ExecutiveLanguage language;
  Catalogue catalogue(language);
  for (const Lookup& lookup : kLookups) {
    const std::string text = lookup.parameter == nullptr ? catalogue.text(lookup.literal)
                                                         : catalogue.text(lookup.literal, lookup.parameter);
    expectText(text, pseudo ? "[[" + std::string(lookup.standard) + "]]" : lookup.standard,
               "lookup of \"" + printable(lookup.literal) + "\"");
  }
  std::vector<std::string> captions = kCaptions;
  catalogue.translateCaptions(captions);
  expect(captions == kTranslated[pseudo ? 1 : 0], "the captions were translated to [" +
                                                      printable(captions[0]) + ", ..., " +
                                                      printable(captions[3]) + "]");
  // The test component fails the key 00000: the caller sees an error, and without it the default text.
  bool raised = false;
  try {
    expectText(catalogue.text("00000::Fails"), "Fails", "lookup without a component");
  } catch (const std::runtime_error&) {
    raised = true;
  }
  expect(raised == pseudo,
         pseudo ? "a lookup the component fails returned instead of raising" : "a lookup raised");
}

void languageUnregistered(const Options&) {
  void* object = nullptr;
  const HRESULT created = CoCreateInstance(win::kLanguageComponentClsid, nullptr, CLSCTX_ALL,
                                           win::kLanguageComponentIid, &object);
  if (object != nullptr) static_cast<IUnknown*>(object)->Release();
  expect(created == REGDB_E_CLASSNOTREG, "CoCreateInstance of the component gave " + hresultText(created));
  expectTexts(false);
}

}  // namespace

std::vector<Check> languageChecks() {
  return {
      {"language-registered", "lookups and caption translation go through the registered component",
       [](const Options&) { expectTexts(true); }},
      {"language-unregistered", "without the component (unregistered) the default texts are shown",
       languageUnregistered},
  };
}

}  // namespace rx9400::e2e
