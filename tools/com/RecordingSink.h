// A sink for the instrument's events as the executive's handlers see them: it keeps every call it
// receives (the DISPID, each argument's type and text, in parameter order), reads by-reference Strings
// through their reference, and can put a text of its own there (replaceText) so that a test sees the
// plug-in take the executive's change back.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <functional>
#include <string>
#include <vector>

#include "ComPtr.h"

namespace rx9400::tools {

class RecordingSink final : public IDispatch {
 public:
  struct Argument {
    VARTYPE type;  ///< as received, VT_BYREF included
    std::wstring text;
  };
  struct Event {
    DISPID id;
    std::vector<Argument> arguments;  ///< first parameter first
  };

  /// A new sink holding one reference, which the caller releases.
  RecordingSink() = default;
  RecordingSink(const RecordingSink&) = delete;
  RecordingSink& operator=(const RecordingSink&) = delete;

  const std::vector<Event>& events() const { return events_; }
  /// When event `id` arrives, writes `text` into its by-reference String parameter `parameter`
  /// (0-based) after recording the value received.
  void replaceText(DISPID id, unsigned parameter, std::wstring text) {
    replacements_.push_back({id, parameter, std::move(text)});
  }
  /// Called with every event as it is recorded.
  std::function<void(const Event&)> onEvent;
  ULONG references() const { return static_cast<ULONG>(references_); }

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
  STDMETHODIMP_(ULONG) Release() override;
  // Events come by DISPID only.
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO*, UINT*) override;

 private:
  ~RecordingSink() = default;
  struct Replacement {
    DISPID id;
    unsigned parameter;
    std::wstring text;
  };
  LONG references_ = 1;
  std::vector<Event> events_;
  std::vector<Replacement> replacements_;
};

/// The name of the instrument's event `id` (1..10), or "event N".
std::string eventName(DISPID id);

/// A sink advised on an object's events (__CRX9400VTI) for as long as this lives; `result` gets the
/// first failure's HRESULT.
class Advised {
 public:
  Advised(IUnknown* source, IDispatch* sink);
  ~Advised() {
    if (point_) point_->Unadvise(cookie_);
  }
  Advised(const Advised&) = delete;
  Advised& operator=(const Advised&) = delete;
  HRESULT result = S_OK;

 private:
  ComPtr<IConnectionPoint> point_;
  DWORD cookie_ = 0;
};

}  // namespace rx9400::tools
