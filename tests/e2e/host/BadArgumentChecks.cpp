// IDispatch argument handling: every member of both dual interfaces, read from the type information,
// called through IDispatch::Invoke with each argument in turn replaced by a value of a type that does
// not convert (Null, an object without IDispatch, a word for a number), left out (DISP_E_PARAMNOTFOUND),
// an empty and a 64 KiB text, a null reference; with one argument too many and null DISPPARAMS. A
// call answers S_OK or one of the dispatch layer's refusals, never an exception of the member; a wrong
// type and a missing required argument are refused. What values each member takes is tested natively.
// Whatever window a member opens is closed from an automation thread.
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <cstdio>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "HostChecks.h"

namespace rx9400::e2e {
namespace {

struct Parameter {
  VARTYPE type;  ///< what the member takes (VT_ARRAY | VT_BSTR for an array of Strings)
  bool byReference, optional;
};
struct Member {
  std::string name;
  DISPID id;
  WORD flags;
  std::vector<Parameter> parameters;  ///< without the result
};

/// The members of the dual interface `object` answers for, from its type information.
std::vector<Member> membersOf(IDispatch* object) {
  ComPtr<ITypeInfo> dispatch, info;
  HREFTYPE reference = 0;
  expectHr(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, dispatch.put()), S_OK, "GetTypeInfo");
  expectHr(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK, "the dual's interface");
  expectHr(dispatch->GetRefTypeInfo(reference, info.put()), S_OK, "GetRefTypeInfo");
  TYPEATTR* attributes = nullptr;
  expectHr(info->GetTypeAttr(&attributes), S_OK, "GetTypeAttr");
  const WORD count = attributes->cFuncs;
  info->ReleaseTypeAttr(attributes);
  std::vector<Member> members;
  for (UINT i = 0; i < count; ++i) {
    FUNCDESC* function = nullptr;
    expectHr(info->GetFuncDesc(i, &function), S_OK, "GetFuncDesc");
    BSTR name = nullptr;
    info->GetDocumentation(function->memid, &name, nullptr, nullptr, nullptr);
    Member member{narrow(taken(name)),
                  function->memid,
                  static_cast<WORD>(function->invkind == INVOKE_PROPERTYPUT   ? DISPATCH_PROPERTYPUT
                                    : function->invkind == INVOKE_PROPERTYGET ? DISPATCH_PROPERTYGET
                                                                              : DISPATCH_METHOD),
                  {}};
    for (SHORT p = 0; p < function->cParams; ++p) {
      const ELEMDESC& element = function->lprgelemdescParam[p];
      const bool byReference = element.tdesc.vt == VT_PTR;
      VARTYPE type = element.tdesc.vt;
      if (byReference) {
        const TYPEDESC& to = *element.tdesc.lptdesc;
        type = to.vt == VT_SAFEARRAY ? static_cast<VARTYPE>(VT_ARRAY | to.lptdesc->vt) : to.vt;
      }
      if ((element.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) == 0)
        member.parameters.push_back(
            {type, byReference, (element.paramdesc.wParamFlags & PARAMFLAG_FOPT) != 0});
    }
    info->ReleaseFuncDesc(function);
    members.push_back(std::move(member));
  }
  return members;
}

/// A Variant of that type, its value zero (a null reference for a by-reference type).
VARIANT variantOf(VARTYPE type) {
  VARIANT variant{};
  V_VT(&variant) = type;
  return variant;
}
VARIANT text(const std::wstring& value) {
  VARIANT variant = variantOf(VT_BSTR);
  V_BSTR(&variant) = SysAllocStringLen(value.data(), static_cast<UINT>(value.size()));
  return variant;
}

/// The arguments of one call, first to last: values the parameters take as the executive passes them
/// (a variable by reference for a by-reference parameter), which a case then changes.
struct Arguments {
  std::vector<VARIANT> values;
  std::deque<VARIANT> variables;
  explicit Arguments(const Member& member) {
    for (const Parameter& parameter : member.parameters) {
      VARIANT value = variantOf(VT_I4);
      V_I4(&value) = 1;
      if ((parameter.type & VT_ARRAY) != 0) {
        value = variantOf(VT_ARRAY | VT_BSTR);
        V_ARRAY(&value) = SafeArrayCreateVector(VT_BSTR, 0, 4);
      } else if (parameter.type == VT_BSTR) {
        value = text(L"1");
      } else {
        VariantChangeType(&value, &value, 0, parameter.type);
      }
      if (parameter.byReference) {
        VARIANT& variable = variables.emplace_back(value);
        value = variantOf(VT_BYREF | parameter.type);
        V_BYREF(&value) = (parameter.type & VT_ARRAY) != 0 ? static_cast<void*>(&V_ARRAY(&variable))
                                                           : static_cast<void*>(&V_I4(&variable));
      }
      values.push_back(value);
    }
  }
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;
  ~Arguments() {
    for (VARIANT& value : values)
      if ((V_VT(&value) & VT_BYREF) == 0) VariantClear(&value);
    for (VARIANT& variable : variables) VariantClear(&variable);
  }
  void replace(std::size_t index, VARIANT value) {
    if ((V_VT(&values[index]) & VT_BYREF) == 0) VariantClear(&values[index]);
    values[index] = value;
  }
};

enum class Outcome { Refused, Taken, Either };
// A property read with an argument is DISP_E_NOTACOLLECTION.
const HRESULT kRefusals[] = {DISP_E_TYPEMISMATCH,
                             DISP_E_PARAMNOTFOUND,
                             DISP_E_BADPARAMCOUNT,
                             DISP_E_OVERFLOW,
                             DISP_E_BADVARTYPE,
                             E_INVALIDARG,
                             E_POINTER,
                             DISP_E_MEMBERNOTFOUND,
                             DISP_E_NONAMEDARGS,
                             DISP_E_UNKNOWNINTERFACE,
                             DISP_E_NOTACOLLECTION};

/// One call of `member` through Invoke after `change`; a failure is added to `failures`.
void invoke(IDispatch* object, const Member& member, const std::string& what, Outcome outcome,
            std::vector<std::string>& failures, const std::function<void(Arguments&)>& change,
            bool noParameters = false) {
  Arguments arguments(member);
  change(arguments);
  std::vector<VARIANT> reversed(arguments.values.rbegin(), arguments.values.rend());
  DISPID put = DISPID_PROPERTYPUT;
  const bool isPut = member.flags == DISPATCH_PROPERTYPUT;
  DISPPARAMS parameters{reversed.empty() ? nullptr : reversed.data(), isPut ? &put : nullptr,
                        static_cast<UINT>(reversed.size()), isPut ? 1u : 0u};
  VARIANT result;
  VariantInit(&result);
  EXCEPINFO exception{};
  UINT argumentError = 0;
  const HRESULT hr = object->Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, member.flags,
                                    noParameters ? nullptr : &parameters, isPut ? nullptr : &result,
                                    &exception, &argumentError);
  VariantClear(&result);
  for (BSTR field : {exception.bstrSource, exception.bstrDescription, exception.bstrHelpFile})
    SysFreeString(field);
  const bool refused = std::find(std::begin(kRefusals), std::end(kRefusals), hr) != std::end(kRefusals);
  if ((hr != S_OK && !refused) || (outcome == Outcome::Refused && !refused) ||
      (outcome == Outcome::Taken && hr != S_OK))
    failures.push_back(member.name + " " + what + ": " + hresultText(hr));
}

/// Every case of one member.
void probe(IDispatch* object, const Member& member, std::vector<std::string>& failures) {
  const auto none = [](Arguments&) {};
  // Windows refuses an argument too many (DISP_E_BADPARAMCOUNT); Wine's DispInvoke drops it and calls.
  invoke(object, member, "with one argument too many", Outcome::Either, failures,
         [](Arguments& arguments) { arguments.values.push_back(variantOf(VT_EMPTY)); });
  invoke(object, member, "with null DISPPARAMS", Outcome::Refused, failures, none, true);
  for (std::size_t p = 0; p < member.parameters.size(); ++p) {
    const Parameter& parameter = member.parameters[p];
    const auto with = [&](const std::string& what, Outcome outcome, const std::function<VARIANT()>& make) {
      invoke(object, member, "argument " + std::to_string(p + 1) + " " + what, outcome, failures,
             [&](Arguments& arguments) { arguments.replace(p, make()); });
    };
    const bool isText = parameter.type == VT_BSTR;
    with("Null", Outcome::Refused, [] { return variantOf(VT_NULL); });
    with("an object without IDispatch", Outcome::Refused, [] {
      VARIANT value = variantOf(VT_UNKNOWN);
      IStream* stream = nullptr;
      CreateStreamOnHGlobal(nullptr, TRUE, &stream);
      V_UNKNOWN(&value) = stream;
      return value;
    });
    if (!isText) with("a word", Outcome::Refused, [] { return text(L"no number"); });
    with("missing", parameter.optional ? Outcome::Taken : Outcome::Refused, [] {
      VARIANT missing = variantOf(VT_ERROR);
      V_ERROR(&missing) = DISP_E_PARAMNOTFOUND;
      return missing;
    });
    with("\"\"", isText ? Outcome::Taken : Outcome::Refused, [] { return text(L""); });
    with("64 KiB of text", isText ? Outcome::Taken : Outcome::Refused,
         [] { return text(std::wstring(65536, L'7')); });
    if (parameter.byReference)
      with("a null reference", Outcome::Either, [&] { return variantOf(VT_BYREF | parameter.type); });
  }
}

void checkBadArguments(const Options& options) {
  Detector detector = prepareDetector(options, L"waveform-edges.json", 123456789, true);
  auto query =
      queryInterface<IDispatch>(detector.session.query.get(), IID_IDispatch, "the query's IDispatch");
  auto instrument =
      queryInterface<IDispatch>(detector.instrument.get(), IID_IDispatch, "the instrument's IDispatch");
  std::vector<std::string> failures;
  std::size_t members = 0;
  std::string why;
  // The instrument first, while its detector is connected and measured: the query's calls end that.
  for (IDispatch* object : {instrument.get(), query.get()}) {
    std::vector<Member> list = membersOf(object);
    members += list.size();
    // CheckDetectorPowerStatus shuts the detector down for some values: it goes last.
    std::stable_partition(list.begin(), list.end(),
                          [](const Member& member) { return member.name != "CheckDetectorPowerStatus"; });
    driveModal([] {},
               [&] {
                 attempt(why, "probing", [&] {
                   for (const Member& member : list) probe(object, member, failures);
                 });
                 return S_OK;
               },
               "probing", true);
  }
  for (std::size_t i = 0; i < failures.size() && i < 25; ++i) std::printf("  %s\n", failures[i].c_str());
  BSTR value = SysAllocString(L"12.5");
  double number = 0;
  const HRESULT hr = detector.instrument->Val_OS(value, &number);
  SysFreeString(value);
  expect(hr == S_OK && number == 12.5, "Val_OS(\"12.5\") does not answer 12.5 after the bad calls");
  expect(members == 61, std::to_string(members) + " members were found in the type information, not 61");
  expect(why.empty(), why);
  expect(failures.empty(),
         std::to_string(failures.size()) + " calls answered otherwise (the first listed above)");
  expectHr(detector.session.query->CloseApp(), S_OK, "CloseApp");
}

}  // namespace

std::vector<Check> badArgumentChecks() {
  return {{"bad-arguments",
           "every member, from the type library, refuses bad arguments with dispatch HRESULTs only",
           checkBadArguments}};
}

}  // namespace rx9400::e2e
