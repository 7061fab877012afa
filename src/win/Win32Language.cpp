// The executive's language component, created on first use and kept for the process.
#include "win/Win32Language.h"

#include <windows.h>

#include <stdexcept>
#include <string>

#include "win/CaptionCollection.h"
#include "win/ComSupport.h"
#include "win/LanguageComponent.h"

namespace rx9400::win {
namespace {

/// A BSTR freed at the end of its scope.
class OwnedBstr {
 public:
  explicit OwnedBstr(BSTR text) : text_(text) {}
  ~OwnedBstr() { SysFreeString(text_); }
  OwnedBstr(const OwnedBstr&) = delete;
  OwnedBstr& operator=(const OwnedBstr&) = delete;
  BSTR* address() { return &text_; }
  BSTR get() const { return text_; }

 private:
  BSTR text_;
};

void check(HRESULT hr, const char* what) {
  if (FAILED(hr)) throw std::runtime_error(std::string(what) + " failed (" + std::to_string(hr) + ")");
}

/// The placeholder values as a fresh array of Variants holding texts.
SAFEARRAY* parameterArray(const std::vector<std::string>& parameters) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(parameters.size()));
  if (array == nullptr) throw std::bad_alloc();
  for (LONG i = 0; i < static_cast<LONG>(parameters.size()); ++i) {
    VARIANT value;
    VariantInit(&value);
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = toBstr(parameters[static_cast<std::size_t>(i)]);
    SafeArrayPutElement(array, &i, &value);
    VariantClear(&value);
  }
  return array;
}

}  // namespace

ExecutiveLanguage::~ExecutiveLanguage() {
  // The process is ending when the module's services go: the component's apartment may be gone
  // already, so the reference is deliberately not released here.
}

ILanguageComponent* ExecutiveLanguage::component() {
  if (!created_) {
    created_ = true;
    void* created = nullptr;
    if (SUCCEEDED(CoCreateInstance(kLanguageComponentClsid, nullptr, CLSCTX_ALL, kLanguageComponentIid,
                                   &created))) {
      component_ = static_cast<ILanguageComponent*>(created);
    }
  }
  return component_;
}

std::string ExecutiveLanguage::lookup(std::string_view section, std::string_view literal,
                                      const std::vector<std::string>& parameters) {
  ILanguageComponent* language = component();
  if (language == nullptr) return fallback_.lookup(section, literal, parameters);
  OwnedBstr sectionText(toBstr(std::string(section)));
  OwnedBstr literalText(toBstr(std::string(literal)));
  OwnedBstr result(nullptr);
  SAFEARRAY* values = parameterArray(parameters);
  const HRESULT hr =
      language->LookUp(sectionText.address(), literalText.address(), &values, result.address());
  if (values != nullptr) SafeArrayDestroy(values);
  check(hr, "the language component's lookup");
  return fromBstr(result.get());
}

void ExecutiveLanguage::translateCaptions(std::string_view section, std::vector<std::string>& captions) {
  ILanguageComponent* language = component();
  if (language == nullptr) return fallback_.translateCaptions(section, captions);
  OwnedBstr sectionText(toBstr(std::string(section)));
  IDispatch* controls = newCaptionCollection(captions);
  if (controls == nullptr) throw std::bad_alloc();
  const HRESULT hr = language->TranslateControls(sectionText.address(), &controls);
  if (controls != nullptr) controls->Release();
  check(hr, "the language component's translation of a dialog");
}

}  // namespace rx9400::win
