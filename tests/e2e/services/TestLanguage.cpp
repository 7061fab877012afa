// rx9400-testlanguage.dll: a stand-in for the executive's language component that translates into a
// visible pseudo-language. A lookup answers "[[" + the default text + "]]" (the text after the first
// "::", every "%%1" replaced by the first parameter, blanks kept); the dialog translation walks the
// controls collection through IDispatch by name and does the same to every caption holding "::".
// The literal key "00000" makes the lookup fail (E_FAIL), so that callers' error paths can be seen.
#include <windows.h>

#include <oleauto.h>
#include <olectl.h>

#include <new>
#include <string>

#include "win/LanguageComponent.h"
#include "win/SingleInterface.h"

namespace {

using rx9400::win::ILanguageComponent;
using rx9400::win::kLanguageComponentClsid;
using rx9400::win::kLanguageComponentIid;

HMODULE gModule = nullptr;

const wchar_t* const kFailingKey = L"00000::";

/// "[[" + the default text of a literal + "]]"; a text without "::" is taken whole.
std::wstring pseudoText(const std::wstring& literal, const std::wstring& parameter) {
  const std::size_t separator = literal.find(L"::");
  std::wstring text = separator == std::wstring::npos ? literal : literal.substr(separator + 2);
  const std::wstring placeholder = L"%%1";
  for (std::size_t at = text.find(placeholder); at != std::wstring::npos;
       at = text.find(placeholder, at + parameter.size())) {
    text.replace(at, placeholder.size(), parameter);
  }
  return L"[[" + text + L"]]";
}

std::wstring textOf(BSTR text) {
  return text == nullptr ? std::wstring() : std::wstring(text, SysStringLen(text));
}

/// The first element of a one-dimensional array of Variants as text; empty when there is none.
std::wstring firstParameter(SAFEARRAY* parameters) {
  if (parameters == nullptr || SafeArrayGetDim(parameters) != 1) return {};
  LONG lower = 0, upper = -1;
  SafeArrayGetLBound(parameters, 1, &lower);
  SafeArrayGetUBound(parameters, 1, &upper);
  if (upper < lower) return {};
  VARIANT value, text;
  VariantInit(&value);
  VariantInit(&text);
  std::wstring result;
  if (FAILED(SafeArrayGetElement(parameters, &lower, &value))) return {};
  if (SUCCEEDED(VariantChangeType(&text, &value, 0, VT_BSTR))) result = textOf(V_BSTR(&text));
  VariantClear(&text);
  VariantClear(&value);
  return result;
}

/// A late-bound call by name, as a script would make it: a property get (`put` null) with an optional
/// argument, or a property put of the text `put`.
HRESULT invoke(IDispatch* object, const wchar_t* name, VARIANT* argument, VARIANT& result,
               const std::wstring* put = nullptr) {
  LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
  DISPID id = DISPID_UNKNOWN;
  HRESULT hr = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  if (FAILED(hr)) return hr;
  VariantInit(&result);
  DISPID named = DISPID_PROPERTYPUT;
  if (put != nullptr) {
    V_VT(&result) = VT_BSTR;
    V_BSTR(&result) = SysAllocStringLen(put->data(), static_cast<UINT>(put->size()));
  }
  DISPPARAMS parameters{put != nullptr ? &result : argument, put != nullptr ? &named : nullptr,
                        put != nullptr || argument != nullptr ? 1u : 0u, put != nullptr ? 1u : 0u};
  hr = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT,
                      put != nullptr ? DISPATCH_PROPERTYPUT : DISPATCH_PROPERTYGET | DISPATCH_METHOD,
                      &parameters, put != nullptr ? nullptr : &result, nullptr, nullptr);
  if (put != nullptr) VariantClear(&result);
  return hr;
}

/// Translates one control's caption when it holds a literal.
HRESULT translateControl(IDispatch* control) {
  VARIANT caption;
  HRESULT hr = invoke(control, L"Caption", nullptr, caption);
  if (FAILED(hr)) return hr;
  const std::wstring text = V_VT(&caption) == VT_BSTR ? textOf(V_BSTR(&caption)) : std::wstring();
  VariantClear(&caption);
  if (text.find(L"::") == std::wstring::npos) return S_OK;
  const std::wstring translated = pseudoText(text, {});
  return invoke(control, L"Caption", nullptr, caption, &translated);
}

class PseudoLanguage final : public rx9400::win::SingleInterface<ILanguageComponent> {
 public:
  PseudoLanguage() : SingleInterface(kLanguageComponentIid) {}

  // Nobody calls the component late-bound.
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** typeInfo) override {
    if (typeInfo != nullptr) *typeInfo = nullptr;
    return E_NOTIMPL;
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }

  STDMETHODIMP LookUp(BSTR* section, BSTR* literal, SAFEARRAY** parameters, BSTR* text) override {
    if (section == nullptr || literal == nullptr || parameters == nullptr || text == nullptr)
      return E_POINTER;
    const std::wstring wanted = textOf(*literal);
    if (wanted.rfind(kFailingKey, 0) == 0) return E_FAIL;
    const std::wstring result = pseudoText(wanted, firstParameter(*parameters));
    SysFreeString(*text);
    *text = SysAllocStringLen(result.data(), static_cast<UINT>(result.size()));
    return *text != nullptr ? S_OK : E_OUTOFMEMORY;
  }

  STDMETHODIMP TranslateControls(BSTR* section, IDispatch** controls) override {
    if (section == nullptr || controls == nullptr || *controls == nullptr) return E_POINTER;
    VARIANT count;
    HRESULT hr = invoke(*controls, L"Count", nullptr, count);
    if (FAILED(hr)) return hr;
    hr = VariantChangeType(&count, &count, 0, VT_I4);
    if (FAILED(hr)) return hr;
    for (LONG i = 0; i < V_I4(&count); ++i) {
      VARIANT index;
      VariantInit(&index);
      V_VT(&index) = VT_I4;
      V_I4(&index) = i;
      VARIANT item;
      hr = invoke(*controls, L"Item", &index, item);
      if (FAILED(hr)) return hr;
      if (V_VT(&item) != VT_DISPATCH || V_DISPATCH(&item) == nullptr) {
        VariantClear(&item);
        return DISP_E_TYPEMISMATCH;
      }
      hr = translateControl(V_DISPATCH(&item));
      VariantClear(&item);
      if (FAILED(hr)) return hr;
    }
    return S_OK;
  }
};

class Factory final : public rx9400::win::SingleInterface<IClassFactory> {
 public:
  Factory() : SingleInterface(IID_IClassFactory) {}
  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    auto* language = new (std::nothrow) PseudoLanguage();
    if (language == nullptr) return E_OUTOFMEMORY;
    const HRESULT hr = language->QueryInterface(iid, out);
    language->Release();
    return hr;
  }
  STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

std::wstring classKey() {
  wchar_t id[40] = {};
  StringFromGUID2(kLanguageComponentClsid, id, 40);
  return std::wstring(L"CLSID\\") + id;
}

LONG setText(HKEY key, const wchar_t* name, const std::wstring& value) {
  return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                        static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    gModule = instance;
    DisableThreadLibraryCalls(instance);
  }
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (!IsEqualCLSID(classId, kLanguageComponentClsid)) return CLASS_E_CLASSNOTAVAILABLE;
  auto* factory = new (std::nothrow) Factory();
  if (factory == nullptr) return E_OUTOFMEMORY;
  const HRESULT hr = factory->QueryInterface(iid, out);
  factory->Release();
  return hr;
}

// Loaded once, the component stays for the life of the process.
STDAPI DllCanUnloadNow() {
  return S_FALSE;
}

STDAPI DllRegisterServer() {
  wchar_t path[MAX_PATH] = {};
  const DWORD length = GetModuleFileNameW(gModule, path, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return SELFREG_E_CLASS;
  HKEY key = nullptr;
  if (RegCreateKeyExW(HKEY_CLASSES_ROOT, (classKey() + L"\\InprocServer32").c_str(), 0, nullptr, 0, KEY_WRITE,
                      nullptr, &key, nullptr) != ERROR_SUCCESS) {
    return SELFREG_E_CLASS;
  }
  const bool written = setText(key, nullptr, path) == ERROR_SUCCESS &&
                       setText(key, L"ThreadingModel", L"Apartment") == ERROR_SUCCESS;
  RegCloseKey(key);
  return written ? S_OK : SELFREG_E_CLASS;
}

STDAPI DllUnregisterServer() {
  const LONG result = RegDeleteTreeW(HKEY_CLASSES_ROOT, classKey().c_str());
  return result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND ? S_OK : SELFREG_E_CLASS;
}
