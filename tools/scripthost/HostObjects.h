// The objects a script sees in rx9400-scripthost: WScript (output, pauses, arguments, objects whose
// events call the script's subs) and the event sinks behind it.
#pragma once

#include <windows.h>

#include <oaidl.h>
#include <ocidl.h>
#include <olectl.h>

#include <map>
#include <string>
#include <vector>

#include "ComPtr.h"

namespace rx9400::scripthost {

using rx9400::tools::ComPtr;

/// What the objects need from the host.
class Host {
 public:
  /// The script's own dispatch (its global subs), with a reference; null before the script runs.
  virtual IDispatch* scriptDispatch() = 0;
  /// Ends the run with this exit code at once (WScript.Quit).
  virtual void quit(int code) = 0;

 protected:
  ~Host() = default;
};

/// An IDispatch whose members are the names of a list, DISPID = 1 + position (0 is the default
/// member); a subclass answers call().
class NamedDispatch : public IDispatch {
 public:
  explicit NamedDispatch(std::vector<std::wstring> names) : names_(std::move(names)) {}
  virtual ~NamedDispatch() = default;
  NamedDispatch(const NamedDispatch&) = delete;
  NamedDispatch& operator=(const NamedDispatch&) = delete;

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
  STDMETHODIMP_(ULONG) Release() override;
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override;
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT* argumentError) override;

 protected:
  /// Member `index` of the list (DISPID_VALUE: index -1) with its arguments in order.
  virtual HRESULT call(int index, const std::vector<VARIANT*>& arguments, VARIANT* result,
                       EXCEPINFO* exception) = 0;

 private:
  std::vector<std::wstring> names_;
  LONG references_ = 1;
};

/// Sets EXCEPINFO to a host error with this description; returns DISP_E_EXCEPTION.
HRESULT hostError(EXCEPINFO* exception, const std::wstring& description, HRESULT code);

/// WScript.Arguments: Count, Length, Item(i) (also the default member).
class ScriptArguments : public NamedDispatch {
 public:
  explicit ScriptArguments(std::vector<std::wstring> arguments);

 protected:
  HRESULT call(int index, const std::vector<VARIANT*>& arguments, VARIANT* result,
               EXCEPINFO* exception) override;

 private:
  std::vector<std::wstring> arguments_;
};

/// One object's events delivered to the script's subs named prefix + event name.
class EventSink : public IDispatch {
 public:
  EventSink(Host& host, std::wstring prefix, IID source, ComPtr<ITypeInfo> events);
  virtual ~EventSink() = default;
  EventSink(const EventSink&) = delete;
  EventSink& operator=(const EventSink&) = delete;

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
  STDMETHODIMP_(ULONG) Release() override;
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override;
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT* argumentError) override;

 private:
  Host& host_;
  std::wstring prefix_;
  IID source_;
  ComPtr<ITypeInfo> events_;
  std::map<DISPID, std::wstring> names_;
  LONG references_ = 1;
};

/// WScript: Echo, Sleep, Quit, CreateObject(progid[, prefix]), ConnectObject(object, prefix),
/// DisconnectObject(object), Arguments, ScriptName, ScriptFullName.
class WScriptObject : public NamedDispatch {
 public:
  WScriptObject(Host& host, std::wstring scriptPath, std::vector<std::wstring> arguments);
  ~WScriptObject() override;
  /// Stops every object's events (the end of the run).
  void disconnectAll();

 protected:
  HRESULT call(int index, const std::vector<VARIANT*>& arguments, VARIANT* result,
               EXCEPINFO* exception) override;

 private:
  struct Connection {
    ComPtr<IUnknown> object;  // the identity, for DisconnectObject
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
  };
  HRESULT connect(IDispatch* object, const std::wstring& prefix, EXCEPINFO* exception);
  void disconnect(IUnknown* identity);

  Host& host_;
  std::wstring scriptPath_;
  ComPtr<ScriptArguments> arguments_;
  std::vector<Connection> connections_;
};

/// Writes a line to standard output (the console's wide characters, or UTF-8 into a pipe or file).
void writeLine(HANDLE output, const std::wstring& line);

}  // namespace rx9400::scripthost
