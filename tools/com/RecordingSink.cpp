// The recording event sink (RecordingSink.h).
#include "RecordingSink.h"

#include <oleauto.h>

#include "win/TamsaRX9400VTI_h.h"

namespace rx9400::tools {
namespace {

/// The text of a value, through its reference if it is one; "?" when it has none.
std::wstring textOf(const VARIANT& value) {
  VARIANT copy;
  VariantInit(&copy);
  std::wstring text = L"?";
  if (SUCCEEDED(VariantChangeType(&copy, const_cast<VARIANT*>(&value), VARIANT_ALPHABOOL, VT_BSTR))) {
    text.assign(V_BSTR(&copy), SysStringLen(V_BSTR(&copy)));
  }
  VariantClear(&copy);
  return text;
}

}  // namespace

STDMETHODIMP RecordingSink::QueryInterface(REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch) &&
      !IsEqualIID(iid, DIID___CRX9400VTI)) {
    return E_NOINTERFACE;
  }
  *out = static_cast<IDispatch*>(this);
  AddRef();
  return S_OK;
}

STDMETHODIMP_(ULONG) RecordingSink::Release() {
  const LONG remaining = InterlockedDecrement(&references_);
  if (remaining == 0) delete this;
  return static_cast<ULONG>(remaining);
}

STDMETHODIMP RecordingSink::GetTypeInfoCount(UINT* count) {
  if (count == nullptr) return E_POINTER;
  *count = 0;
  return S_OK;
}

STDMETHODIMP RecordingSink::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO*, UINT*) {
  if ((flags & DISPATCH_METHOD) == 0) return DISP_E_MEMBERNOTFOUND;
  if (parameters == nullptr || parameters->cNamedArgs != 0) return DISP_E_NONAMEDARGS;
  if (result != nullptr) VariantInit(result);
  Event event{id, {}};
  for (UINT parameter = 0; parameter < parameters->cArgs; ++parameter) {
    // DISPPARAMS hold the arguments last to first.
    VARIANT& argument = parameters->rgvarg[parameters->cArgs - 1 - parameter];
    event.arguments.push_back({V_VT(&argument), textOf(argument)});
    for (const Replacement& replacement : replacements_) {
      if (replacement.id != id || replacement.parameter != parameter ||
          V_VT(&argument) != (VT_BYREF | VT_BSTR) || V_BSTRREF(&argument) == nullptr) {
        continue;
      }
      SysFreeString(*V_BSTRREF(&argument));
      *V_BSTRREF(&argument) =
          SysAllocStringLen(replacement.text.data(), static_cast<UINT>(replacement.text.size()));
    }
  }
  events_.push_back(std::move(event));
  if (onEvent) onEvent(events_.back());
  return S_OK;
}

std::string eventName(DISPID id) {
  static const char* const names[] = {"IncrementWaveCount", "ZeroingmAs",
                                      "AddWakeUpButton",    "EnableStopButton",
                                      "DataReady",          "CheckExposureWaveform",
                                      "DisplayErrorMsg",    "DisplaySensorResetMsg",
                                      "TestSWDataReady",    "TestmAsDataReady"};
  return id >= 1 && id <= 10 ? names[id - 1] : "event " + std::to_string(id);
}

Advised::Advised(IUnknown* source, IDispatch* sink) {
  ComPtr<IConnectionPointContainer> container;
  result = source->QueryInterface(IID_IConnectionPointContainer, container.putVoid());
  if (SUCCEEDED(result)) result = container->FindConnectionPoint(DIID___CRX9400VTI, point_.put());
  if (SUCCEEDED(result)) result = point_->Advise(sink, &cookie_);
  if (FAILED(result)) point_.reset();
}

}  // namespace rx9400::tools
