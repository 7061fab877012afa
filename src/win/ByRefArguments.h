// Arguments of late-bound calls, adapted to typed by-reference parameters.
//
// Script clients pass their variables as references to Variants (VT_BYREF | VT_VARIANT), and their
// arrays as arrays of Variants. The type library's standard dispatch refuses both for a parameter
// declared as, say, a Long by reference or an array of Strings by reference. ByRefArguments puts a
// value of the declared type in place of each such argument for the call, and afterwards writes what
// the member left there back into the client's variable, so the client sees it as a by-reference
// parameter.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <memory>
#include <vector>

namespace rx9400::win {

class ByRefArguments {
 public:
  /// Prepares `parameters` for the member `id` invoked as `flags`, described by `typeInfo`. Leaves
  /// the parameters as they are when no argument needs adapting.
  ByRefArguments(ITypeInfo* typeInfo, DISPID id, WORD flags, DISPPARAMS* parameters);
  /// Restores the caller's parameters.
  ~ByRefArguments();
  ByRefArguments(const ByRefArguments&) = delete;
  ByRefArguments& operator=(const ByRefArguments&) = delete;

  /// The parameters to pass on: the adapted copy, or the caller's own.
  DISPPARAMS* parameters() { return adapted_ ? &adaptedParameters_ : original_; }
  /// Writes the values the member left into the client's variables (after a successful call).
  void writeBack();

 private:
  struct Substitute;

  DISPPARAMS* original_;
  bool adapted_ = false;
  DISPPARAMS adaptedParameters_{};
  std::vector<VARIANT> arguments_;
  std::vector<std::unique_ptr<Substitute>> substitutes_;
};

}  // namespace rx9400::win
