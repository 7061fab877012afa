// A dialog's controls as an automation collection for the language component: Count, Item(index) and
// For Each over items whose Caption (the default property) and Name can be read and set.
#include "win/CaptionCollection.h"

#include <new>
#include <string>
#include <vector>

#include "win/ComSupport.h"
#include "win/SingleInterface.h"

namespace rx9400::win {
namespace {

/// IDispatch by a fixed table of names, for objects without a type library.
class NamedDispatch : public SingleInterface<IDispatch> {
 public:
  struct Name {
    const wchar_t* name;
    DISPID id;
  };

  explicit NamedDispatch(std::vector<Name> names)
      : SingleInterface(IID_IDispatch), names_(std::move(names)) {}
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** typeInfo) override {
    if (typeInfo != nullptr) *typeInfo = nullptr;
    return E_NOTIMPL;
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    if (names == nullptr || ids == nullptr) return E_POINTER;
    HRESULT result = S_OK;
    for (UINT i = 0; i < count; ++i) {
      ids[i] = DISPID_UNKNOWN;
      if (i > 0) {
        result = DISP_E_UNKNOWNNAME;  // no named arguments
        continue;
      }
      for (const Name& name : names_) {
        if (_wcsicmp(names[i], name.name) == 0) ids[i] = name.id;
      }
      if (ids[i] == DISPID_UNKNOWN) result = DISP_E_UNKNOWNNAME;
    }
    return result;
  }

 protected:
  /// The first positional argument as a Long (an index).
  static bool indexArgument(DISPPARAMS* parameters, LONG& index) {
    if (parameters == nullptr || parameters->cArgs < 1) return false;
    VARIANT value;
    VariantInit(&value);
    if (FAILED(VariantChangeType(&value, &parameters->rgvarg[parameters->cArgs - 1], 0, VT_I4))) return false;
    index = V_I4(&value);
    return true;
  }

 private:
  std::vector<Name> names_;
};

constexpr DISPID kCaption = DISPID_VALUE;
constexpr DISPID kName = 1;
constexpr DISPID kCount = 1;

class CaptionControl final : public NamedDispatch {
 public:
  CaptionControl(std::wstring name, std::string& caption)
      : NamedDispatch({{L"Caption", kCaption}, {L"Name", kName}}),
        name_(std::move(name)),
        caption_(caption) {}

  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO*, UINT*) override {
    if (id == kCaption && (flags & DISPATCH_PROPERTYPUT) != 0) {
      if (parameters == nullptr || parameters->cArgs < 1) return DISP_E_BADPARAMCOUNT;
      VARIANT text;
      VariantInit(&text);
      if (FAILED(VariantChangeType(&text, &parameters->rgvarg[0], 0, VT_BSTR))) return DISP_E_TYPEMISMATCH;
      caption_ = fromBstr(V_BSTR(&text));
      VariantClear(&text);
      return S_OK;
    }
    if ((flags & (DISPATCH_PROPERTYGET | DISPATCH_METHOD)) == 0) return DISP_E_MEMBERNOTFOUND;
    if (id != kCaption && id != kName) return DISP_E_MEMBERNOTFOUND;
    if (result != nullptr) {
      VariantInit(result);
      V_VT(result) = VT_BSTR;
      V_BSTR(result) = id == kCaption ? toBstr(caption_) : SysAllocString(name_.c_str());
    }
    return S_OK;
  }

 private:
  std::wstring name_;
  std::string& caption_;
};

class ControlEnumerator final : public SingleInterface<IEnumVARIANT> {
 public:
  ControlEnumerator(std::vector<IDispatch*> items, ULONG position)
      : SingleInterface(IID_IEnumVARIANT), items_(std::move(items)), position_(position) {
    for (IDispatch* item : items_) item->AddRef();
  }
  ~ControlEnumerator() override {
    for (IDispatch* item : items_) item->Release();
  }

  STDMETHODIMP Next(ULONG wanted, VARIANT* values, ULONG* fetched) override {
    if (values == nullptr) return E_POINTER;
    ULONG count = 0;
    while (count < wanted && position_ < items_.size()) {
      VariantInit(&values[count]);
      V_VT(&values[count]) = VT_DISPATCH;
      V_DISPATCH(&values[count]) = items_[position_++];
      V_DISPATCH(&values[count])->AddRef();
      ++count;
    }
    if (fetched != nullptr) *fetched = count;
    return count == wanted ? S_OK : S_FALSE;
  }
  STDMETHODIMP Skip(ULONG count) override {
    position_ += count;
    if (position_ <= items_.size()) return S_OK;
    position_ = static_cast<ULONG>(items_.size());
    return S_FALSE;
  }
  STDMETHODIMP Reset() override {
    position_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(IEnumVARIANT** copy) override {
    if (copy == nullptr) return E_POINTER;
    *copy = new (std::nothrow) ControlEnumerator(items_, position_);
    return *copy != nullptr ? S_OK : E_OUTOFMEMORY;
  }

 private:
  std::vector<IDispatch*> items_;
  ULONG position_;
};

class ControlCollection final : public NamedDispatch {
 public:
  explicit ControlCollection(std::vector<std::string>& captions)
      : NamedDispatch({{L"Item", DISPID_VALUE}, {L"Count", kCount}, {L"_NewEnum", DISPID_NEWENUM}}) {
    for (std::size_t i = 0; i < captions.size(); ++i) {
      items_.push_back(new CaptionControl(L"Control" + std::to_wstring(i), captions[i]));
    }
  }
  ~ControlCollection() {
    for (IDispatch* item : items_) item->Release();
  }

  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO*, UINT*) override {
    if ((flags & (DISPATCH_PROPERTYGET | DISPATCH_METHOD)) == 0) return DISP_E_MEMBERNOTFOUND;
    if (result == nullptr) return S_OK;
    VariantInit(result);
    switch (id) {
      case kCount:
        V_VT(result) = VT_I4;
        V_I4(result) = static_cast<LONG>(items_.size());
        return S_OK;
      case DISPID_VALUE: {
        LONG index = -1;
        if (!indexArgument(parameters, index)) return DISP_E_BADPARAMCOUNT;
        if (index < 0 || static_cast<std::size_t>(index) >= items_.size()) return DISP_E_BADINDEX;
        V_VT(result) = VT_DISPATCH;
        V_DISPATCH(result) = items_[static_cast<std::size_t>(index)];
        V_DISPATCH(result)->AddRef();
        return S_OK;
      }
      case DISPID_NEWENUM: {
        auto* enumerator = new (std::nothrow) ControlEnumerator(items_, 0);
        if (enumerator == nullptr) return E_OUTOFMEMORY;
        V_VT(result) = VT_UNKNOWN;
        V_UNKNOWN(result) = enumerator;
        return S_OK;
      }
      default:
        return DISP_E_MEMBERNOTFOUND;
    }
  }

 private:
  std::vector<IDispatch*> items_;
};

}  // namespace

IDispatch* newCaptionCollection(std::vector<std::string>& captions) {
  try {
    return new ControlCollection(captions);
  } catch (...) {
    return nullptr;
  }
}

}  // namespace rx9400::win
