// Typed by-reference parameters for script clients' Variant references.
#include "win/ByRefArguments.h"

#include <string>

#include "win/ComSupport.h"

namespace rx9400::win {

/// One adapted argument: the typed value the member works on, and where the client wants it back.
struct ByRefArguments::Substitute {
  Substitute() { VariantInit(&value); }
  ~Substitute() { VariantClear(&value); }
  Substitute(const Substitute&) = delete;
  Substitute& operator=(const Substitute&) = delete;

  VARIANT value;                      ///< of the declared type
  VARIANT* clientVariable = nullptr;  ///< the client's Variant, when the client passed a reference
};

namespace {

INVOKEKIND invokeKindOf(WORD flags) {
  if ((flags & DISPATCH_PROPERTYPUTREF) != 0) return INVOKE_PROPERTYPUTREF;
  if ((flags & DISPATCH_PROPERTYPUT) != 0) return INVOKE_PROPERTYPUT;
  if ((flags & DISPATCH_METHOD) != 0) return INVOKE_FUNC;
  return INVOKE_PROPERTYGET;
}

/// The description of member `id` as invoked with `flags`; the caller releases it.
FUNCDESC* findFunction(ITypeInfo* typeInfo, DISPID id, WORD flags) {
  TYPEATTR* attributes = nullptr;
  if (FAILED(typeInfo->GetTypeAttr(&attributes))) return nullptr;
  const WORD count = attributes->cFuncs;
  typeInfo->ReleaseTypeAttr(attributes);
  const INVOKEKIND wanted = invokeKindOf(flags);
  FUNCDESC* fallback = nullptr;
  for (UINT i = 0; i < count; ++i) {
    FUNCDESC* function = nullptr;
    if (FAILED(typeInfo->GetFuncDesc(i, &function))) continue;
    if (function->memid == id && function->invkind == wanted) {
      if (fallback != nullptr) typeInfo->ReleaseFuncDesc(fallback);
      return function;
    }
    // Script clients call property gets with DISPATCH_METHOD too.
    if (function->memid == id && wanted == INVOKE_FUNC && function->invkind == INVOKE_PROPERTYGET &&
        fallback == nullptr) {
      fallback = function;
      continue;
    }
    typeInfo->ReleaseFuncDesc(function);
  }
  return fallback;
}

/// The type a by-reference parameter points to (VT_ARRAY | element type for arrays), or VT_EMPTY
/// for a parameter that needs no adapting (by value, or a Variant by reference).
VARTYPE pointedType(const TYPEDESC& type) {
  if (type.vt != VT_PTR || type.lptdesc == nullptr) return VT_EMPTY;
  const TYPEDESC& pointee = *type.lptdesc;
  if (pointee.vt == VT_VARIANT) return VT_EMPTY;
  if (pointee.vt == VT_SAFEARRAY) {
    if (pointee.lptdesc == nullptr) return VT_EMPTY;
    return static_cast<VARTYPE>(VT_ARRAY | pointee.lptdesc->vt);
  }
  return pointee.vt;
}

/// A new one-dimensional array of Strings with the bounds and the texts of `source`.
SAFEARRAY* stringArrayLike(SAFEARRAY* source) {
  LONG lower = 0;
  LONG upper = -1;
  if (source == nullptr || SafeArrayGetDim(source) != 1 || FAILED(SafeArrayGetLBound(source, 1, &lower)) ||
      FAILED(SafeArrayGetUBound(source, 1, &upper))) {
    return nullptr;
  }
  SAFEARRAYBOUND bound{static_cast<ULONG>(upper - lower + 1), lower};
  SAFEARRAY* copy = SafeArrayCreate(VT_BSTR, 1, &bound);
  if (copy != nullptr) writeStrings(copy, readStrings(source));
  return copy;
}

}  // namespace

ByRefArguments::ByRefArguments(ITypeInfo* typeInfo, DISPID id, WORD flags, DISPPARAMS* parameters)
    : original_(parameters) {
  if (typeInfo == nullptr || parameters == nullptr || parameters->cArgs == 0) return;
  FUNCDESC* function = findFunction(typeInfo, id, flags);
  if (function == nullptr) return;
  arguments_.assign(parameters->rgvarg, parameters->rgvarg + parameters->cArgs);
  const UINT count = parameters->cArgs;
  const bool put = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  for (UINT k = 0; k < count; ++k) {
    // Arguments come last to first; a property's new value is the first one and its last parameter.
    const UINT parameter = put && k == 0 ? static_cast<UINT>(function->cParams - 1) : count - 1 - k;
    if (parameter >= static_cast<UINT>(function->cParams)) continue;
    const VARTYPE type = pointedType(function->lprgelemdescParam[parameter].tdesc);
    VARIANT& argument = arguments_[k];
    if (type == VT_EMPTY || V_VT(&argument) == (VT_BYREF | type)) continue;

    auto substitute = std::make_unique<Substitute>();
    VARIANT* source = &argument;
    if (V_VT(&argument) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(&argument) != nullptr) {
      substitute->clientVariable = V_VARIANTREF(&argument);
      source = substitute->clientVariable;
    }
    if ((type & VT_ARRAY) != 0) {
      if ((type & VT_TYPEMASK) != VT_BSTR || (V_VT(source) & VT_ARRAY) == 0) continue;
      SAFEARRAY* array = (V_VT(source) & VT_BYREF) != 0 ? *V_ARRAYREF(source) : V_ARRAY(source);
      V_ARRAY(&substitute->value) = stringArrayLike(array);
      if (V_ARRAY(&substitute->value) == nullptr) continue;
      V_VT(&substitute->value) = type;
      V_VT(&argument) = VT_BYREF | type;
      V_ARRAYREF(&argument) = &V_ARRAY(&substitute->value);
    } else {
      if (FAILED(VariantChangeType(&substitute->value, source, 0, type))) continue;
      V_VT(&argument) = VT_BYREF | type;
      V_BYREF(&argument) = &V_I4(&substitute->value);  // the value's storage, whatever its type
    }
    substitutes_.push_back(std::move(substitute));
    adapted_ = true;
  }
  typeInfo->ReleaseFuncDesc(function);
  if (adapted_) {
    adaptedParameters_ = *parameters;
    adaptedParameters_.rgvarg = arguments_.data();
  }
}

ByRefArguments::~ByRefArguments() = default;

void ByRefArguments::writeBack() {
  for (const auto& substitute : substitutes_) {
    VARIANT* client = substitute->clientVariable;
    if (client == nullptr) continue;
    if ((V_VT(&substitute->value) & VT_ARRAY) != 0) {
      SAFEARRAY* clientArray = (V_VT(client) & VT_BYREF) != 0 ? *V_ARRAYREF(client) : V_ARRAY(client);
      writeStrings(clientArray, readStrings(V_ARRAY(&substitute->value)));
    } else {
      VariantCopy(client, &substitute->value);
    }
  }
}

}  // namespace rx9400::win
