// The executive's language component as the plug-in calls it: a COM class of the executive whose
// interface's first method turns a catalogue literal into the text to show and whose second method
// translates the captions of a dialog's controls.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace rx9400::win {

/// {D7CCA76D-B795-11D3-BF79-0050DA3393D8}
inline constexpr CLSID kLanguageComponentClsid = {
    0xD7CCA76D, 0xB795, 0x11D3, {0xBF, 0x79, 0x00, 0x50, 0xDA, 0x33, 0x93, 0xD8}};
/// {20261743-6F4F-4169-A6F0-29E167F1CB31}
inline constexpr IID kLanguageComponentIid = {
    0x20261743, 0x6F4F, 0x4169, {0xA6, 0xF0, 0x29, 0xE1, 0x67, 0xF1, 0xCB, 0x31}};

/// The component's interface; both methods take every argument by reference.
struct ILanguageComponent : public IDispatch {
  /// Section ("RX9400"), the whole literal, the placeholder values (a one-dimensional array of
  /// Variants, may be empty) and the text to show, which the component writes.
  virtual HRESULT STDMETHODCALLTYPE LookUp(BSTR* section, BSTR* literal, SAFEARRAY** parameters,
                                           BSTR* text) = 0;
  /// Section and the dialog's controls: a collection with Count and Item(index) (from 0) whose items
  /// have a Caption property; the component replaces each caption that holds a literal.
  virtual HRESULT STDMETHODCALLTYPE TranslateControls(BSTR* section, IDispatch** controls) = 0;
};

}  // namespace rx9400::win
