// The base of the plug-in's COM classes: reference counting, QueryInterface, IDispatch through the
// type library, ISupportErrorInfo and IProvideClassInfo2.
//
// `Interface` is the class's default dual interface. A class that raises events names their
// dispinterface in `eventsIid` and answers IConnectionPointContainer itself through
// queryExtraInterface(). Its members run their bodies through trapped()/trappedResult() below, which
// hold the object for the call.
#pragma once

#include <windows.h>

#include <ocidl.h>
#include <oleauto.h>

#include <utility>

#include "win/ByRefArguments.h"
#include "win/ComSupport.h"

namespace rx9400::win {

template <typename Interface>
class DispatchObject : public Interface, public ISupportErrorInfo, public IProvideClassInfo2 {
 public:
  DispatchObject(REFIID interfaceIid, REFCLSID classId, const IID* eventsIid)
      : interfaceIid_(interfaceIid), classId_(classId), eventsIid_(eventsIid) {
    objectCreated();
  }
  virtual ~DispatchObject() {
    if (typeInfo_ != nullptr) typeInfo_->Release();
    objectDestroyed();
  }
  DispatchObject(const DispatchObject&) = delete;
  DispatchObject& operator=(const DispatchObject&) = delete;

  // IUnknown
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch) || IsEqualIID(iid, interfaceIid_)) {
      *out = static_cast<Interface*>(this);
    } else if (IsEqualIID(iid, IID_ISupportErrorInfo)) {
      *out = static_cast<ISupportErrorInfo*>(this);
    } else if (IsEqualIID(iid, IID_IProvideClassInfo) || IsEqualIID(iid, IID_IProvideClassInfo2)) {
      *out = static_cast<IProvideClassInfo2*>(this);
    } else {
      *out = queryExtraInterface(iid);
    }
    if (*out == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
  STDMETHODIMP_(ULONG) Release() override {
    const LONG remaining = InterlockedDecrement(&references_);
    if (remaining == 0) delete this;
    return static_cast<ULONG>(remaining);
  }

  // IDispatch
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** typeInfo) override {
    if (typeInfo == nullptr) return E_POINTER;
    *typeInfo = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    const HRESULT hr = loadTypeInfo();
    if (FAILED(hr)) return hr;
    typeInfo_->AddRef();
    *typeInfo = typeInfo_;
    return S_OK;
  }
  STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    const HRESULT hr = loadTypeInfo();
    if (FAILED(hr)) return hr;
    return DispGetIDsOfNames(typeInfo_, names, count, ids);
  }
  STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT* argumentError) override {
    if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    if (!wellFormed(parameters)) return E_INVALIDARG;
    const HRESULT hr = loadTypeInfo();
    if (FAILED(hr)) return hr;
    ByRefArguments arguments(typeInfo_, id, flags, parameters);
    const HRESULT invoked = DispInvoke(static_cast<Interface*>(this), typeInfo_, id, flags,
                                       arguments.parameters(), result, exception, argumentError);
    if (SUCCEEDED(invoked)) arguments.writeBack();
    return invoked;
  }

  // ISupportErrorInfo
  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override {
    return IsEqualIID(iid, interfaceIid_) ? S_OK : S_FALSE;
  }

  // IProvideClassInfo2
  STDMETHODIMP GetClassInfo(ITypeInfo** typeInfo) override { return typeInfoOf(classId_, typeInfo); }
  STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override {
    if (guid == nullptr) return E_POINTER;
    *guid = GUID_NULL;
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID || eventsIid_ == nullptr) return E_INVALIDARG;
    *guid = *eventsIid_;
    return S_OK;
  }

 protected:
  /// Interfaces beyond the standard ones (not AddRef'ed here); nullptr for none.
  virtual void* queryExtraInterface(REFIID) { return nullptr; }

  // A member's body inside its error trap (ComSupport.h), with the object held until the call returns:
  // a handler the member lets run (an event sink's, a modal window's, the mAs download's message pump)
  // may release the executive's last reference.
  template <typename Body>
  HRESULT trapped(const char* member, Body&& body) noexcept {
    AddRef();
    const HRESULT hr = win::trapped(member, std::forward<Body>(body));
    Release();  // may destroy the object: nothing of it is used after this
    return hr;
  }
  template <typename Result, typename Body>
  HRESULT trappedResult(const char* member, Result* result, Result defaultValue, Body&& body) noexcept {
    if (result == nullptr) return E_POINTER;
    *result = defaultValue;
    return trapped(member, std::forward<Body>(body));
  }

 private:
  /// Arguments counted are there, and named ones are among them.
  static bool wellFormed(const DISPPARAMS* parameters) {
    return parameters != nullptr && (parameters->cArgs == 0 || parameters->rgvarg != nullptr) &&
           parameters->cNamedArgs <= parameters->cArgs &&
           (parameters->cNamedArgs == 0 || parameters->rgdispidNamedArgs != nullptr);
  }

  HRESULT loadTypeInfo() {
    if (typeInfo_ != nullptr) return S_OK;
    return typeInfoOf(interfaceIid_, &typeInfo_);
  }

  LONG references_ = 1;
  const IID& interfaceIid_;
  const CLSID& classId_;
  const IID* eventsIid_;
  ITypeInfo* typeInfo_ = nullptr;
};

}  // namespace rx9400::win
