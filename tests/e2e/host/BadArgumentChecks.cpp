// Arguments no executive should pass, generated for every member from the type library: values of
// types that do not convert, arguments missing or one too many, empty and 64 KiB texts, NaN and the
// infinities, the ends of the Long range (out-of-range slot indexes among them), by-reference
// arguments without a variable, malformed DISPPARAMS, and through the dual interface's vtable a null
// pointer in place of each by-reference parameter. A call may be refused only with the dispatch
// layer's own HRESULTs, or it answers S_OK with a result of its declared type; a value the parameter's
// type holds must be taken. Whatever window a member opens is closed from an automation thread.
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <climits>
#include <cmath>
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
  bool byReference;
  bool optional;
};

/// A member as its interface describes it: the dispatch parameters (without the result) and the
/// vtable slot.
struct Member {
  std::string name;
  DISPID id;
  WORD flags;
  std::vector<Parameter> parameters;
  VARTYPE result;  ///< VT_EMPTY: none
  short vtableOffset;
  std::vector<VARTYPE> vtableTypes;  ///< every parameter's type as the vtable takes it, the result last
};

VARTYPE pointee(const TYPEDESC& type) {
  const TYPEDESC& to = *type.lptdesc;
  return to.vt == VT_SAFEARRAY ? static_cast<VARTYPE>(VT_ARRAY | to.lptdesc->vt) : to.vt;
}

/// The members of the dual interface `object` answers for, from its type information.
std::vector<Member> membersOf(IDispatch* object) {
  ComPtr<ITypeInfo> dispatch, info;
  expectHr(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, dispatch.put()), S_OK, "GetTypeInfo");
  HREFTYPE reference = 0;
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
                  {},
                  VT_EMPTY,
                  function->oVft,
                  {}};
    for (SHORT p = 0; p < function->cParams; ++p) {
      const ELEMDESC& element = function->lprgelemdescParam[p];
      const USHORT flags = element.paramdesc.wParamFlags;
      member.vtableTypes.push_back(element.tdesc.vt);
      if ((flags & PARAMFLAG_FRETVAL) != 0) {
        member.result = pointee(element.tdesc);
      } else {
        const bool byReference = element.tdesc.vt == VT_PTR;
        member.parameters.push_back({byReference ? pointee(element.tdesc) : element.tdesc.vt, byReference,
                                     (flags & PARAMFLAG_FOPT) != 0});
      }
    }
    info->ReleaseFuncDesc(function);
    members.push_back(std::move(member));
  }
  return members;
}

/// The arguments of one call, first to last, and the variables by-reference ones point to.
struct Arguments {
  std::vector<VARIANT> values;
  std::deque<VARIANT> variables;
  Arguments() = default;
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;
  ~Arguments() {
    for (VARIANT& value : values) {
      if ((V_VT(&value) & VT_BYREF) == 0) VariantClear(&value);
    }
    for (VARIANT& variable : variables) VariantClear(&variable);
  }
  VARIANT& variable() {
    variables.emplace_back();
    VariantInit(&variables.back());
    return variables.back();
  }
};

VARIANT number(VARTYPE type, double value) {
  VARIANT variant;
  VariantInit(&variant);
  V_VT(&variant) = type;
  if (type == VT_R8) V_R8(&variant) = value;
  if (type == VT_R4) V_R4(&variant) = static_cast<float>(value);
  if (type == VT_I4) V_I4(&variant) = static_cast<LONG>(value);
  return variant;
}
VARIANT text(const std::wstring& value) {
  VARIANT variant;
  V_VT(&variant) = VT_BSTR;
  V_BSTR(&variant) = SysAllocStringLen(value.data(), static_cast<UINT>(value.size()));
  return variant;
}
VARIANT ofType(VARTYPE type) {
  VARIANT variant;
  VariantInit(&variant);
  V_VT(&variant) = type;
  return variant;
}

/// A value the parameter takes as the executive passes it: a variable by reference for a by-reference
/// parameter.
VARIANT valid(const Parameter& parameter, Arguments& arguments) {
  VARIANT value;
  VariantInit(&value);
  if ((parameter.type & VT_ARRAY) != 0) {
    V_VT(&value) = VT_ARRAY | VT_BSTR;
    V_ARRAY(&value) = SafeArrayCreateVector(VT_BSTR, 0, 4);
  } else if (parameter.type == VT_BSTR) {
    value = text(L"1");
  } else {
    V_VT(&value) = VT_I4;
    V_I4(&value) = 1;
    VariantChangeType(&value, &value, 0, parameter.type);
  }
  if (!parameter.byReference) return value;
  VARIANT& variable = arguments.variable();
  variable = value;
  VARIANT reference;
  V_VT(&reference) = VT_BYREF | parameter.type;
  V_BYREF(&reference) = (parameter.type & VT_ARRAY) != 0 ? static_cast<void*>(&V_ARRAY(&variable))
                                                         : static_cast<void*>(&V_I4(&variable));
  return reference;
}

/// What a case must give: a refusal, S_OK (the value is one the parameter's type holds), or either.
enum class Outcome { Refused, Taken, Either };
// clang-format off
const HRESULT kRefusals[] = {DISP_E_TYPEMISMATCH, DISP_E_PARAMNOTFOUND, DISP_E_BADPARAMCOUNT, DISP_E_OVERFLOW,
                             DISP_E_BADVARTYPE, E_INVALIDARG, E_POINTER, DISP_E_MEMBERNOTFOUND, DISP_E_NONAMEDARGS,
                             DISP_E_UNKNOWNINTERFACE, DISP_E_NOTACOLLECTION};

enum Kind { kWrongType, kMissing, kExtra, kText, kNonFinite, kLongEnds, kSlotIndex, kNullReference, kMalformed,
            kVtableNull, kKinds };
const char* const kKindNames[kKinds] = {"wrong type", "missing", "one too many", "empty/64 KiB text",
                                        "NaN/infinity", "Long range ends", "slot index", "null reference",
                                        "malformed DISPPARAMS", "null pointer through the vtable"};
// clang-format on

/// How a call goes out: its DISPPARAMS, interface and flags, which a malformed case changes.
struct Sending {
  DISPPARAMS* parameters;
  const IID* iid;
  WORD flags;
  DISPID id;
};

const IID kForeignIid = {0x6d1f0a3e, 0x1b7c, 0x4f5e, {0x9a, 0x11, 0x52, 0x3c, 0x7e, 0x90, 0x2d, 0x41}};

class Prober {
 public:
  /// The object whose members the next calls go to.
  void use(IDispatch* object) { object_ = object; }

  /// Calls `member` through IDispatch with valid arguments after `change`, sent as `send` leaves them.
  void invoke(
      Kind kind, const Member& member, const std::string& what, Outcome outcome,
      const std::function<void(Arguments&)>& change,
      const std::function<void(Sending&)>& send = [](Sending&) {}, bool emptyText = false) {
    Arguments arguments;
    for (const Parameter& parameter : member.parameters)
      arguments.values.push_back(valid(parameter, arguments));
    change(arguments);
    std::vector<VARIANT> reversed(arguments.values.rbegin(), arguments.values.rend());
    DISPID put = DISPID_PROPERTYPUT;
    const bool isPut = member.flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters{reversed.empty() ? nullptr : reversed.data(), isPut ? &put : nullptr,
                          static_cast<UINT>(reversed.size()), isPut ? 1u : 0u};
    Sending sending{&parameters, &IID_NULL, member.flags, member.id};
    send(sending);
    VARIANT result;
    VariantInit(&result);
    EXCEPINFO exception{};
    UINT argumentError = 0;
    const HRESULT hr =
        object_->Invoke(sending.id, *sending.iid, LOCALE_USER_DEFAULT, sending.flags, sending.parameters,
                        isPut ? nullptr : &result, &exception, &argumentError);
    judge(kind, member, what, outcome, hr);
    if (hr == S_OK && !isPut && member.result != VT_EMPTY && member.result != VT_VARIANT &&
        V_VT(&result) != member.result)
      fail(member, what, hr, "a result of VARTYPE " + std::to_string(V_VT(&result)));
    if (hr == S_OK && emptyText && (V_VT(&result) != VT_BSTR || SysStringLen(V_BSTR(&result)) != 0))
      fail(member, what, hr, "a text");
    VariantClear(&result);
    for (BSTR text : {exception.bstrSource, exception.bstrDescription, exception.bstrHelpFile})
      SysFreeString(text);
  }

  /// Calls `member` through the dual interface's vtable with a null pointer for vtable parameter `at`
  /// (a pointer) and valid pointers and values for the others.
  void vtableNull(const Member& member, std::size_t at) {
    const std::size_t count = member.vtableTypes.size();
    std::vector<VARIANT> values(count), variables(count);
    std::vector<VARIANTARG*> pointers;
    std::vector<VARTYPE> types;
    for (std::size_t p = 0; p < count; ++p) {
      VARIANT& value = values[p];
      VariantInit(&value);
      VariantInit(&variables[p]);
      const VARTYPE type = member.vtableTypes[p];
      // A pointer travels as a plain pointer-sized value, to a Variant's storage (room for any type).
      types.push_back(type == VT_PTR ? static_cast<VARTYPE>(VT_BYREF | VT_UI1) : type);
      V_VT(&value) = types.back();
      if (type == VT_PTR) V_BYREF(&value) = p == at ? nullptr : &V_I4(&variables[p]);
      if (type == VT_BSTR) V_BSTR(&value) = SysAllocString(L"1");
      if (type == VT_R4) V_R4(&value) = 1;
      if (type == VT_I4 || type == VT_I2 || type == VT_UI1 || type == VT_BOOL) V_I4(&value) = 1;
      pointers.push_back(&value);
    }
    VARIANT answer;
    VariantInit(&answer);
    HRESULT hr = DispCallFunc(object_, member.vtableOffset, CC_STDCALL, VT_ERROR, static_cast<UINT>(count),
                              types.data(), pointers.data(), &answer);
    if (SUCCEEDED(hr)) hr = V_ERROR(&answer);
    for (std::size_t p = 0; p < count; ++p) {
      if (member.vtableTypes[p] == VT_BSTR) SysFreeString(V_BSTR(&values[p]));
    }
    // What the member wrote through the other pointers is not freed: its type is not known here.
    const bool result = at + 1 == count && member.result != VT_EMPTY;
    // A null result pointer is the caller's error; a null in/out parameter leaves the default result.
    judge(kVtableNull, member, "vtable parameter " + std::to_string(at + 1) + " null",
          result ? Outcome::Refused : Outcome::Taken, hr);
    if (result && hr != E_POINTER) fail(member, "null result pointer", hr, "not E_POINTER");
  }

  void report() const {
    std::string line = "bad arguments:";
    std::size_t total = 0;
    for (int kind = 0; kind < kKinds; ++kind) {
      line += std::string(kind == 0 ? " " : ", ") + kKindNames[kind] + " " + std::to_string(cases_[kind]);
      total += cases_[kind];
    }
    std::printf("%s; %zu calls\n", line.c_str(), total);
  }
  const std::vector<std::string>& failures() const { return failures_; }

 private:
  void judge(Kind kind, const Member& member, const std::string& what, Outcome outcome, HRESULT hr) {
    ++cases_[kind];
    bool refused = false;
    for (const HRESULT refusal : kRefusals) refused = refused || hr == refusal;
    if ((hr != S_OK && !refused) || (outcome == Outcome::Refused && !refused) ||
        (outcome == Outcome::Taken && hr != S_OK))
      fail(member, what, hr);
  }
  void fail(const Member& member, const std::string& what, HRESULT hr, const std::string& more = "") {
    failures_.push_back(member.name + " " + what + ": " + hresultText(hr) +
                        (more.empty() ? "" : ", " + more));
  }

  IDispatch* object_ = nullptr;
  std::size_t cases_[kKinds] = {};
  std::vector<std::string> failures_;
};

/// Puts `value` in place of argument `index` (a by-reference argument's variable stays to be freed).
void replace(Arguments& arguments, std::size_t index, VARIANT value) {
  VARIANT& old = arguments.values[index];
  if ((V_VT(&old) & VT_BYREF) == 0) VariantClear(&old);
  old = value;
}

/// A value that converts to nothing a member takes: an object without IDispatch.
VARIANT unknownObject() {
  VARIANT value;
  V_VT(&value) = VT_UNKNOWN;
  IStream* stream = nullptr;
  CreateStreamOnHGlobal(nullptr, TRUE, &stream);
  V_UNKNOWN(&value) = stream;
  return value;
}
VARIANT variantArray() {
  VARIANT value;
  V_VT(&value) = VT_ARRAY | VT_VARIANT;
  V_ARRAY(&value) = SafeArrayCreateVector(VT_VARIANT, 0, 2);
  return value;
}

/// Every case of one member.
void probe(Prober& prober, const Member& member) {
  const std::size_t count = member.parameters.size();
  const auto none = [](Arguments&) {};
  // Windows refuses an argument too many (DISP_E_BADPARAMCOUNT); Wine's DispInvoke drops it and calls.
  prober.invoke(kExtra, member, "with one argument too many", Outcome::Either,
                [](Arguments& arguments) { arguments.values.push_back(number(VT_I4, 1)); });
  if (count > 0) {
    prober.invoke(kMissing, member, "without its last argument",
                  member.parameters.back().optional ? Outcome::Taken : Outcome::Refused,
                  [](Arguments& arguments) {
                    VariantClear(&arguments.values.back());
                    arguments.values.pop_back();
                  });
  }
  // Malformed calls: each must be refused before anything reaches the member.
  const std::pair<const char*, std::function<void(Sending&)>> malformed[] = {
      {"null DISPPARAMS", [](Sending& sending) { sending.parameters = nullptr; }},
      {"arguments counted, none given",
       [](Sending& sending) {
         sending.parameters->rgvarg = nullptr;
         sending.parameters->cArgs += 1;
       }},
      {"more named arguments than arguments",
       [](Sending& sending) { sending.parameters->cNamedArgs = sending.parameters->cArgs + 1; }},
      {"another interface", [](Sending& sending) { sending.iid = &kForeignIid; }},
      {"no invocation flags", [](Sending& sending) { sending.flags = 0; }},
      {"an unknown DISPID", [](Sending& sending) { sending.id = 999; }},
  };
  for (const auto& [what, send] : malformed)
    prober.invoke(kMalformed, member, what, Outcome::Refused, none, send);
  for (std::size_t p = 0; p < count; ++p) {
    const Parameter& parameter = member.parameters[p];
    const std::string at = "argument " + std::to_string(p + 1) + " ";
    const auto with = [&](Kind kind, const std::string& what, Outcome outcome,
                          const std::function<VARIANT()>& make, bool emptyText = false) {
      prober.invoke(
          kind, member, at + what, outcome, [&](Arguments& arguments) { replace(arguments, p, make()); },
          [](Sending&) {}, emptyText);
    };
    const bool isArray = (parameter.type & VT_ARRAY) != 0, isText = parameter.type == VT_BSTR;
    const bool isWide = parameter.type == VT_I4 || parameter.type == VT_R4;  // holds every Long
    with(kWrongType, "Null", Outcome::Refused, [] { return ofType(VT_NULL); });
    with(kWrongType, "an object without IDispatch", Outcome::Refused, unknownObject);
    with(kWrongType, "an array of Variants", isArray ? Outcome::Either : Outcome::Refused, variantArray);
    if (!isText) with(kWrongType, "a word", Outcome::Refused, [] { return text(L"no number"); });
    if (isArray) with(kWrongType, "a Long", Outcome::Refused, [] { return number(VT_I4, 1); });
    with(kMissing, "missing", parameter.optional ? Outcome::Taken : Outcome::Refused, [] {
      VARIANT missing = ofType(VT_ERROR);
      V_ERROR(&missing) = DISP_E_PARAMNOTFOUND;
      return missing;
    });
    with(kMissing, "Empty", Outcome::Either, [] { return ofType(VT_EMPTY); });
    const Outcome textOutcome = isText ? Outcome::Taken : Outcome::Refused;
    with(kText, "\"\"", textOutcome, [] { return text(L""); });
    with(kText, "64 KiB of text", textOutcome, [] { return text(std::wstring(65536, L'7')); });
    for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
      const std::string name = std::isnan(value) ? "NaN" : value > 0 ? "+infinity" : "-infinity";
      with(kNonFinite, name + " as a Double", Outcome::Either, [&] { return number(VT_R8, value); });
      with(kNonFinite, name + " as a Single", parameter.type == VT_R4 ? Outcome::Taken : Outcome::Either,
           [&] { return number(VT_R4, value); });
    }
    for (const double value : {double(INT_MIN), double(INT_MAX), -1.0, 0.0}) {
      with(kLongEnds, std::to_string(static_cast<long>(value)),
           isArray            ? Outcome::Refused
           : isWide || isText ? Outcome::Taken
                              : Outcome::Either,
           [&] { return number(VT_I4, value); });
    }
    if (member.name == "pDetectorName") {
      for (const double index : {-1.0, 1000.0, double(INT_MIN), double(INT_MAX)})
        with(
            kSlotIndex, "slot " + std::to_string(static_cast<long>(index)), Outcome::Taken,
            [&] { return number(VT_I4, index); }, true);
    }
    if (parameter.byReference) {
      with(kNullReference, "a null reference", Outcome::Either, [&] {
        VARIANT reference = ofType(VT_BYREF | parameter.type);
        V_BYREF(&reference) = nullptr;
        return reference;
      });
      with(kNullReference, "a null Variant reference", Outcome::Either, [] {
        VARIANT reference = ofType(VT_BYREF | VT_VARIANT);
        V_BYREF(&reference) = nullptr;
        return reference;
      });
    }
  }
  for (std::size_t p = 0; p < member.vtableTypes.size(); ++p) {
    if (member.vtableTypes[p] == VT_PTR) prober.vtableNull(member, p);
  }
}

/// Closes every window of this process that shows while `call` runs (boxes, dialogs and notices of the
/// members' refusals), from an automation thread; answers how many.
std::size_t dismissingWindows(const std::function<void()>& call) {
  HANDLE returned = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::size_t dismissed = 0;
  AutomationThread automation([&] {
    WindowFilter filter;
    filter.processId = GetCurrentProcessId();
    while (WaitForSingleObject(returned, 20) == WAIT_TIMEOUT) {
      for (HWND window : findWindows(filter)) {
        dismiss(window);
        waitUntilGone(window, 2000);
        ++dismissed;
      }
    }
  });
  call();
  SetEvent(returned);
  automation.join();
  CloseHandle(returned);
  return dismissed;
}

void checkBadArguments(const Options& options) {
  Detector detector = prepareDetector(options, "bad-arguments", L"waveform-edges.json", 123456789, true);
  expectHr(detector.instrument->InitTimer(), S_OK, "InitTimer");
  auto query =
      queryInterface<IDispatch>(detector.session.query.get(), IID_IDispatch, "the query's IDispatch");
  auto instrument =
      queryInterface<IDispatch>(detector.instrument.get(), IID_IDispatch, "the instrument's IDispatch");
  Prober prober;
  std::string why;
  std::size_t members = 0, dismissed = 0;
  // The instrument first, while its detector is connected and measured: the query's calls end that.
  for (IDispatch* object : {instrument.get(), query.get()}) {
    std::vector<Member> list = membersOf(object);
    members += list.size();
    // CheckDetectorPowerStatus shuts the detector down for some values: it goes last.
    std::stable_partition(list.begin(), list.end(),
                          [](const Member& member) { return member.name != "CheckDetectorPowerStatus"; });
    prober.use(object);
    dismissed += dismissingWindows([&] {
      attempt(why, "probing", [&] {
        for (const Member& member : list) probe(prober, member);
      });
    });
  }
  prober.report();
  std::printf("bad arguments: %zu members probed, %zu windows of theirs closed\n", members, dismissed);
  for (const std::string& failure : prober.failures()) std::printf("  %s\n", failure.c_str());
  // Still in working order afterwards.
  BSTR value = SysAllocString(L"12.5");
  double number = 0;
  const HRESULT hr = detector.instrument->Val_OS(value, &number);
  SysFreeString(value);
  expectHr(hr, S_OK, "Val_OS after the bad calls");
  expect(number == 12.5, "Val_OS(\"12.5\") answers " + std::to_string(number) + " after the bad calls");
  expect(members == 61, std::to_string(members) + " members were found in the type information, not 61");
  expect(why.empty(), why);
  expect(prober.failures().empty(),
         std::to_string(prober.failures().size()) + " calls answered otherwise (listed above)");
  expectHr(detector.session.query->CloseApp(), S_OK, "CloseApp");
}

}  // namespace

std::vector<Check> badArgumentChecks() {
  return {
      {"bad-arguments",
       "every member, generated from the type library, refuses bad arguments with dispatch HRESULTs only",
       checkBadArguments},
  };
}

}  // namespace rx9400::e2e
