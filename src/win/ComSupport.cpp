// The module's counts, its type library and the text conversions.
#include "win/ComSupport.h"

#include <atomic>

namespace rx9400::win {
namespace {

HMODULE gModule = nullptr;
std::atomic<long> gObjects{0};
std::atomic<long> gLocks{0};
ITypeLib* gTypeLibrary = nullptr;

}  // namespace

HMODULE moduleHandle() {
  return gModule;
}
void setModuleHandle(HMODULE module) {
  gModule = module;
}

void objectCreated() {
  ++gObjects;
}
void objectDestroyed() {
  --gObjects;
}
void lockServer(bool lock) {
  lock ? ++gLocks : --gLocks;
}
bool canUnload() {
  return gObjects == 0 && gLocks == 0;
}

ITypeLib* typeLibrary() {
  if (gTypeLibrary == nullptr) {
    wchar_t path[MAX_PATH * 2] = {};
    const DWORD length = GetModuleFileNameW(gModule, path, MAX_PATH * 2);
    if (length == 0 || length >= MAX_PATH * 2) return nullptr;
    ITypeLib* library = nullptr;
    if (SUCCEEDED(LoadTypeLibEx(path, REGKIND_NONE, &library))) gTypeLibrary = library;
  }
  return gTypeLibrary;
}

HRESULT typeInfoOf(REFGUID guid, ITypeInfo** typeInfo) {
  if (typeInfo == nullptr) return E_POINTER;
  *typeInfo = nullptr;
  ITypeLib* library = typeLibrary();
  if (library == nullptr) return TYPE_E_CANTLOADLIBRARY;
  return library->GetTypeInfoOfGuid(guid, typeInfo);
}

void releaseTypeLibrary() {
  if (gTypeLibrary != nullptr) {
    gTypeLibrary->Release();
    gTypeLibrary = nullptr;
  }
}

BSTR toBstr(const std::string& text) {
  if (text.empty()) return SysAllocStringLen(L"", 0);
  const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
  BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (result != nullptr) {
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), result, length);
  }
  return result;
}

std::string fromBstr(BSTR text) {
  const UINT length = text != nullptr ? SysStringLen(text) : 0;
  if (length == 0) return {};
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), result.data(), size, nullptr, nullptr);
  return result;
}

namespace {
FailureReporter gReporter = nullptr;
}  // namespace

void setFailureReporter(FailureReporter reporter) {
  gReporter = reporter;
}

void reportTrappedFailure(const char* member, const char* what) noexcept {
  try {
    if (gReporter != nullptr) gReporter(member, what);
  } catch (...) {
  }
}

}  // namespace rx9400::win

namespace rx9400::win {
namespace {

bool oneDimensional(SAFEARRAY* array, VARTYPE& type, LONG& lower, LONG& upper) {
  if (array == nullptr || SafeArrayGetDim(array) != 1) return false;
  if (FAILED(SafeArrayGetVartype(array, &type)) || (type != VT_BSTR && type != VT_VARIANT)) return false;
  return SUCCEEDED(SafeArrayGetLBound(array, 1, &lower)) && SUCCEEDED(SafeArrayGetUBound(array, 1, &upper));
}

}  // namespace

std::vector<std::string> readStrings(SAFEARRAY* array) {
  std::vector<std::string> texts;
  VARTYPE type = VT_EMPTY;
  LONG lower = 0;
  LONG upper = -1;
  if (!oneDimensional(array, type, lower, upper)) return texts;
  for (LONG i = lower; i <= upper; ++i) {
    if (type == VT_BSTR) {
      BSTR element = nullptr;
      if (SUCCEEDED(SafeArrayGetElement(array, &i, &element))) {
        texts.push_back(fromBstr(element));
        SysFreeString(element);
        continue;
      }
    } else {
      VARIANT element;
      VariantInit(&element);
      if (SUCCEEDED(SafeArrayGetElement(array, &i, &element)) &&
          SUCCEEDED(VariantChangeType(&element, &element, 0, VT_BSTR))) {
        texts.push_back(fromBstr(V_BSTR(&element)));
        VariantClear(&element);
        continue;
      }
      VariantClear(&element);
    }
    texts.emplace_back();
  }
  return texts;
}

void writeStrings(SAFEARRAY* array, const std::vector<std::string>& texts) {
  VARTYPE type = VT_EMPTY;
  LONG lower = 0;
  LONG upper = -1;
  if (!oneDimensional(array, type, lower, upper)) return;
  for (LONG i = lower; i <= upper && static_cast<std::size_t>(i - lower) < texts.size(); ++i) {
    BSTR text = toBstr(texts[static_cast<std::size_t>(i - lower)]);
    if (type == VT_BSTR) {
      SafeArrayPutElement(array, &i, text);
    } else {
      VARIANT element;
      VariantInit(&element);
      V_VT(&element) = VT_BSTR;
      V_BSTR(&element) = text;
      SafeArrayPutElement(array, &i, &element);
    }
    SysFreeString(text);
  }
}

}  // namespace rx9400::win
