// The objects a script sees in rx9400-scripthost (HostObjects.h).
#include "HostObjects.h"

#include <ocidl.h>
#include <oleauto.h>

#include <cwchar>
#include <string>

#include "Text.h"

namespace rx9400::scripthost {
namespace {

/// A value as text (a reference followed), Booleans as True/False; empty when it has none.
std::wstring textOf(VARIANT* value) {
  VARIANT copy;
  VariantInit(&copy);
  std::wstring text;
  if (SUCCEEDED(VariantChangeType(&copy, value, VARIANT_ALPHABOOL, VT_BSTR)))
    text.assign(V_BSTR(&copy), SysStringLen(V_BSTR(&copy)));
  VariantClear(&copy);
  return text;
}

HRESULT numberOf(VARIANT* value, LONG* number) {
  VARIANT copy;
  VariantInit(&copy);
  const HRESULT hr = VariantChangeType(&copy, value, 0, VT_I4);
  if (SUCCEEDED(hr)) *number = V_I4(&copy);
  return hr;
}

void setText(VARIANT* result, const std::wstring& text) {
  if (result == nullptr) return;
  V_VT(result) = VT_BSTR;
  V_BSTR(result) = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

void setObject(VARIANT* result, IDispatch* object) {
  if (result == nullptr) return;
  object->AddRef();
  V_VT(result) = VT_DISPATCH;
  V_DISPATCH(result) = object;
}

std::wstring hex(HRESULT code) {
  wchar_t text[16];
  swprintf(text, 16, L"0x%08lX", static_cast<unsigned long>(code));
  return text;
}

/// The interface of OBJECT's default event source and its type information: from the class's own
/// type information when the object tells its class, otherwise from its first connection point.
HRESULT findEventSource(IDispatch* object, IID* source, ComPtr<ITypeInfo>* events) {
  ComPtr<IProvideClassInfo> provider;
  ComPtr<ITypeInfo> classInfo;
  if (SUCCEEDED(object->QueryInterface(IID_IProvideClassInfo, provider.putVoid())) &&
      SUCCEEDED(provider->GetClassInfo(classInfo.put()))) {
    TYPEATTR* attributes = nullptr;
    UINT count = 0;
    if (SUCCEEDED(classInfo->GetTypeAttr(&attributes))) {
      count = attributes->cImplTypes;
      classInfo->ReleaseTypeAttr(attributes);
    }
    for (UINT i = 0; i < count; ++i) {
      INT flags = 0;
      HREFTYPE reference = 0;
      if (FAILED(classInfo->GetImplTypeFlags(i, &flags)) ||
          (flags & (IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE)) !=
              (IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE) ||
          FAILED(classInfo->GetRefTypeOfImplType(i, &reference)) ||
          FAILED(classInfo->GetRefTypeInfo(reference, events->put())) ||
          FAILED((*events)->GetTypeAttr(&attributes)))
        continue;
      *source = attributes->guid;
      (*events)->ReleaseTypeAttr(attributes);
      return S_OK;
    }
  }
  ComPtr<IConnectionPointContainer> container;
  ComPtr<IEnumConnectionPoints> points;
  ComPtr<IConnectionPoint> point;
  HRESULT hr = object->QueryInterface(IID_IConnectionPointContainer, container.putVoid());
  if (SUCCEEDED(hr)) hr = container->EnumConnectionPoints(points.put());
  if (SUCCEEDED(hr)) hr = points->Next(1, point.put(), nullptr) == S_OK ? S_OK : CONNECT_E_NOCONNECTION;
  if (SUCCEEDED(hr)) hr = point->GetConnectionInterface(source);
  ComPtr<ITypeInfo> objectInfo;
  ComPtr<ITypeLib> library;
  UINT index = 0;
  if (SUCCEEDED(hr)) hr = object->GetTypeInfo(0, LOCALE_USER_DEFAULT, objectInfo.put());
  if (SUCCEEDED(hr)) hr = objectInfo->GetContainingTypeLib(library.put(), &index);
  if (SUCCEEDED(hr)) hr = library->GetTypeInfoOfGuid(*source, events->put());
  return hr;
}

}  // namespace

HRESULT hostError(EXCEPINFO* exception, const std::wstring& description, HRESULT code) {
  if (exception != nullptr) {
    *exception = EXCEPINFO{};
    exception->bstrSource = SysAllocString(L"rx9400-scripthost");
    exception->bstrDescription = SysAllocString(description.c_str());
    exception->scode = code;
  }
  return DISP_E_EXCEPTION;
}

void writeLine(HANDLE output, const std::wstring& line) {
  const std::wstring text = line + L"\r\n";
  DWORD mode = 0;
  DWORD written = 0;
  if (GetConsoleMode(output, &mode)) {
    WriteConsoleW(output, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    return;
  }
  const std::string bytes = tools::narrow(text);
  WriteFile(output, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

// --- NamedDispatch ----------------------------------------------------------------------------------

STDMETHODIMP NamedDispatch::QueryInterface(REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch)) return E_NOINTERFACE;
  *out = static_cast<IDispatch*>(this);
  AddRef();
  return S_OK;
}

STDMETHODIMP_(ULONG) NamedDispatch::Release() {
  const LONG remaining = InterlockedDecrement(&references_);
  if (remaining == 0) delete this;
  return static_cast<ULONG>(remaining);
}

STDMETHODIMP NamedDispatch::GetTypeInfoCount(UINT* count) {
  if (count == nullptr) return E_POINTER;
  *count = 0;
  return S_OK;
}

STDMETHODIMP NamedDispatch::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
  if (info != nullptr) *info = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP NamedDispatch::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  if (names == nullptr || ids == nullptr || count == 0) return E_POINTER;
  HRESULT hr = S_OK;
  for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
  for (std::size_t i = 0; i < names_.size(); ++i) {
    if (CompareStringOrdinal(names[0], -1, names_[i].c_str(), -1, TRUE) == CSTR_EQUAL)
      ids[0] = static_cast<DISPID>(i + 1);
  }
  if (ids[0] == DISPID_UNKNOWN || count > 1) hr = DISP_E_UNKNOWNNAME;
  return hr;
}

STDMETHODIMP NamedDispatch::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                                   EXCEPINFO* exception, UINT*) {
  if (id != DISPID_VALUE && (id < 1 || static_cast<std::size_t>(id) > names_.size()))
    return DISP_E_MEMBERNOTFOUND;
  if (parameters != nullptr && parameters->cNamedArgs != 0) return DISP_E_NONAMEDARGS;
  std::vector<VARIANT*> arguments;
  // DISPPARAMS hold the arguments last to first.
  for (UINT i = parameters != nullptr ? parameters->cArgs : 0; i > 0; --i)
    arguments.push_back(&parameters->rgvarg[i - 1]);
  if (result != nullptr) VariantInit(result);
  return call(static_cast<int>(id) - 1, arguments, result, exception);
}

// --- ScriptArguments --------------------------------------------------------------------------------

ScriptArguments::ScriptArguments(std::vector<std::wstring> arguments)
    : NamedDispatch({L"Item", L"Count", L"Length"}), arguments_(std::move(arguments)) {}

HRESULT ScriptArguments::call(int index, const std::vector<VARIANT*>& arguments, VARIANT* result,
                              EXCEPINFO* exception) {
  if (index == 1 || index == 2) {
    if (result != nullptr) {
      V_VT(result) = VT_I4;
      V_I4(result) = static_cast<LONG>(arguments_.size());
    }
    return S_OK;
  }
  LONG position = -1;
  if (arguments.size() != 1 || FAILED(numberOf(arguments[0], &position))) return DISP_E_BADPARAMCOUNT;
  if (position < 0 || static_cast<std::size_t>(position) >= arguments_.size())
    return hostError(exception, L"there is no argument " + std::to_wstring(position), DISP_E_BADINDEX);
  setText(result, arguments_[static_cast<std::size_t>(position)]);
  return S_OK;
}

// --- EventSink ----------------------------------------------------------------------------------------

EventSink::EventSink(Host& host, std::wstring prefix, IID source, ComPtr<ITypeInfo> events)
    : host_(host), prefix_(std::move(prefix)), source_(source), events_(std::move(events)) {}

STDMETHODIMP EventSink::QueryInterface(REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch) && !IsEqualIID(iid, source_))
    return E_NOINTERFACE;
  *out = static_cast<IDispatch*>(this);
  AddRef();
  return S_OK;
}

STDMETHODIMP_(ULONG) EventSink::Release() {
  const LONG remaining = InterlockedDecrement(&references_);
  if (remaining == 0) delete this;
  return static_cast<ULONG>(remaining);
}

STDMETHODIMP EventSink::GetTypeInfoCount(UINT* count) {
  if (count == nullptr) return E_POINTER;
  *count = 0;
  return S_OK;
}

STDMETHODIMP EventSink::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
  if (info != nullptr) *info = nullptr;
  return E_NOTIMPL;
}

// An event calls the script's sub PREFIX + event name with the event's arguments as they came (by
// reference where the source passes them so); an event without a sub is let pass. A failing sub is
// the script's error, reported by the engine: the source always hears S_OK.
STDMETHODIMP EventSink::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                               EXCEPINFO*, UINT*) {
  if (result != nullptr) VariantInit(result);
  auto known = names_.find(id);
  if (known == names_.end()) {
    BSTR name = nullptr;
    UINT count = 0;
    std::wstring text;
    if (SUCCEEDED(events_->GetNames(id, &name, 1, &count)) && count == 1) text = prefix_ + name;
    SysFreeString(name);
    known = names_.emplace(id, text).first;
  }
  if (known->second.empty()) return S_OK;
  ComPtr<IDispatch> script;
  *script.put() = host_.scriptDispatch();
  if (!script) return S_OK;
  LPOLESTR name = const_cast<LPOLESTR>(known->second.c_str());
  DISPID sub = DISPID_UNKNOWN;
  if (FAILED(script->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &sub))) return S_OK;
  DISPPARAMS none{nullptr, nullptr, 0, 0};
  EXCEPINFO exception{};
  script->Invoke(sub, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                 parameters != nullptr ? parameters : &none, nullptr, &exception, nullptr);
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrHelpFile);
  return S_OK;
}

// --- WScriptObject ------------------------------------------------------------------------------------

namespace {
enum Member {
  Echo,
  Sleep,
  Quit,
  CreateObject,
  ConnectObject,
  DisconnectObject,
  Arguments,
  ScriptName,
  ScriptFullName
};
}

WScriptObject::WScriptObject(Host& host, std::wstring scriptPath, std::vector<std::wstring> arguments)
    : NamedDispatch({L"Echo", L"Sleep", L"Quit", L"CreateObject", L"ConnectObject", L"DisconnectObject",
                     L"Arguments", L"ScriptName", L"ScriptFullName"}),
      host_(host),
      scriptPath_(std::move(scriptPath)) {
  *arguments_.put() = new ScriptArguments(std::move(arguments));
}

WScriptObject::~WScriptObject() {
  disconnectAll();
}

void WScriptObject::disconnectAll() {
  for (Connection& connection : connections_) connection.point->Unadvise(connection.cookie);
  connections_.clear();
}

HRESULT WScriptObject::connect(IDispatch* object, const std::wstring& prefix, EXCEPINFO* exception) {
  IID source{};
  ComPtr<ITypeInfo> events;
  HRESULT hr = findEventSource(object, &source, &events);
  if (FAILED(hr)) return hostError(exception, L"the object has no events to connect (" + hex(hr) + L")", hr);
  Connection connection;
  ComPtr<IConnectionPointContainer> container;
  hr = object->QueryInterface(IID_IConnectionPointContainer, container.putVoid());
  if (SUCCEEDED(hr)) hr = container->FindConnectionPoint(source, connection.point.put());
  if (SUCCEEDED(hr)) hr = object->QueryInterface(IID_IUnknown, connection.object.putVoid());
  ComPtr<EventSink> sink;
  *sink.put() = new EventSink(host_, prefix, source, std::move(events));
  if (SUCCEEDED(hr)) hr = connection.point->Advise(static_cast<IDispatch*>(sink.get()), &connection.cookie);
  if (FAILED(hr))
    return hostError(exception, L"the object's events cannot be connected (" + hex(hr) + L")", hr);
  connections_.push_back(std::move(connection));
  return S_OK;
}

void WScriptObject::disconnect(IUnknown* identity) {
  for (auto it = connections_.begin(); it != connections_.end();) {
    if (it->object.get() == identity) {
      it->point->Unadvise(it->cookie);
      it = connections_.erase(it);
    } else {
      ++it;
    }
  }
}

HRESULT WScriptObject::call(int index, const std::vector<VARIANT*>& arguments, VARIANT* result,
                            EXCEPINFO* exception) {
  const auto objectArgument = [&arguments]() -> IDispatch* {
    if (arguments.empty()) return nullptr;
    VARIANT* value = arguments[0];
    if (V_VT(value) == (VT_VARIANT | VT_BYREF)) value = V_VARIANTREF(value);
    if (V_VT(value) == VT_DISPATCH) return V_DISPATCH(value);
    if (V_VT(value) == (VT_DISPATCH | VT_BYREF)) return *V_DISPATCHREF(value);
    return nullptr;
  };
  switch (index) {
    case Echo: {
      std::wstring line;
      for (std::size_t i = 0; i < arguments.size(); ++i) line += (i > 0 ? L" " : L"") + textOf(arguments[i]);
      writeLine(GetStdHandle(STD_OUTPUT_HANDLE), line);
      return S_OK;
    }
    case Sleep: {
      LONG milliseconds = 0;
      if (arguments.size() != 1 || FAILED(numberOf(arguments[0], &milliseconds))) return DISP_E_BADPARAMCOUNT;
      // Messages keep flowing while the script waits: windows, and calls from other apartments.
      const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(milliseconds > 0 ? milliseconds : 0);
      for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64()) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
          TranslateMessage(&message);
          DispatchMessageW(&message);
        }
      }
      return S_OK;
    }
    case Quit: {
      LONG code = 0;
      if (!arguments.empty() && FAILED(numberOf(arguments[0], &code))) return DISP_E_TYPEMISMATCH;
      host_.quit(static_cast<int>(code));
      return S_OK;
    }
    case CreateObject: {
      if (arguments.empty() || arguments.size() > 2) return DISP_E_BADPARAMCOUNT;
      const std::wstring progId = textOf(arguments[0]);
      const std::wstring prefix = arguments.size() == 2 ? textOf(arguments[1]) : L"";
      CLSID classId{};
      HRESULT hr = CLSIDFromProgID(progId.c_str(), &classId);
      if (FAILED(hr)) hr = CLSIDFromString(progId.c_str(), &classId);
      ComPtr<IDispatch> object;
      if (SUCCEEDED(hr))
        hr = CoCreateInstance(classId, nullptr, CLSCTX_SERVER, IID_IDispatch, object.putVoid());
      if (FAILED(hr))
        return hostError(exception, L"cannot create the object " + progId + L" (" + hex(hr) + L")", hr);
      if (!prefix.empty()) {
        hr = connect(object.get(), prefix, exception);
        if (FAILED(hr)) return hr;
      }
      setObject(result, object.get());
      return S_OK;
    }
    case ConnectObject: {
      IDispatch* object = objectArgument();
      if (object == nullptr || arguments.size() != 2) return DISP_E_TYPEMISMATCH;
      return connect(object, textOf(arguments[1]), exception);
    }
    case DisconnectObject: {
      IDispatch* object = objectArgument();
      ComPtr<IUnknown> identity;
      if (object == nullptr || FAILED(object->QueryInterface(IID_IUnknown, identity.putVoid())))
        return DISP_E_TYPEMISMATCH;
      disconnect(identity.get());
      return S_OK;
    }
    case Arguments:
      // WScript.Arguments(i) arrives as one call with the index.
      if (!arguments.empty()) {
        DISPPARAMS parameters{arguments[0], nullptr, 1, 0};
        return arguments_->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_METHOD, &parameters, result, exception,
                                  nullptr);
      }
      setObject(result, arguments_.get());
      return S_OK;
    case ScriptName:
      setText(result, scriptPath_.substr(scriptPath_.find_last_of(L"\\/") + 1));
      return S_OK;
    case ScriptFullName:
      setText(result, scriptPath_);
      return S_OK;
    default:
      return DISP_E_MEMBERNOTFOUND;
  }
}

}  // namespace rx9400::scripthost
