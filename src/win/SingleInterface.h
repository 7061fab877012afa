// Reference counting and QueryInterface for a small COM object that offers one interface.
#pragma once

#include <windows.h>

#include <oaidl.h>
#include <unknwn.h>

#include <type_traits>

namespace rx9400::win {

/// The object answers IUnknown and `iid` (and IDispatch when that is what it implements), and deletes
/// itself on its last Release. It starts with one reference, the creator's.
template <typename Interface>
class SingleInterface : public Interface {
 public:
  explicit SingleInterface(REFIID iid) : iid_(iid) {}
  virtual ~SingleInterface() = default;
  SingleInterface(const SingleInterface&) = delete;
  SingleInterface& operator=(const SingleInterface&) = delete;

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    const bool dispatch = std::is_base_of_v<IDispatch, Interface> && IsEqualIID(iid, IID_IDispatch);
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, iid_) && !dispatch) return E_NOINTERFACE;
    *out = static_cast<Interface*>(this);
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
  STDMETHODIMP_(ULONG) Release() override {
    const LONG remaining = InterlockedDecrement(&references_);
    if (remaining == 0) delete this;
    return static_cast<ULONG>(remaining);
  }

 private:
  LONG references_ = 1;
  const IID& iid_;
};

}  // namespace rx9400::win
