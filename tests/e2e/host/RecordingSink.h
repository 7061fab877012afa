// A sink for the instrument's events that keeps every call it receives, the way the executive's
// handlers would see them: the DISPID and each argument's type and text, in parameter order.
// By-reference Strings are read through their reference, and the sink can put a text of its own
// there (replaceText) to check that the plug-in takes the executive's change back.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <string>
#include <vector>

namespace rx9400::e2e {

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
  void clear() { events_.clear(); }
  /// When event `id` arrives, writes `text` into its by-reference String parameter `parameter`
  /// (0-based) after recording the value received.
  void replaceText(DISPID id, unsigned parameter, std::wstring text);
  /// The current reference count (for leak checks).
  ULONG references() const { return static_cast<ULONG>(references_); }

  // IUnknown: the sink answers IUnknown, IDispatch and the events dispinterface.
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override;
  STDMETHODIMP_(ULONG) Release() override;

  // IDispatch: events come by DISPID only.
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** typeInfo) override;
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override;
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

}  // namespace rx9400::e2e
