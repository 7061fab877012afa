// rx9400-scripthost: runs a VBScript procedure against the plug-in outside the executive, with the
// objects' events delivered to the script's subs, as the executive and the Windows script host do.
//
//   rx9400-scripthost [--timeout=SECONDS] [--library-folder=FOLDER] SCRIPT.vbs [ARGUMENT...]
//
// The script sees WScript: Echo, Sleep (messages keep flowing), Quit, Arguments, ScriptName,
// ScriptFullName, CreateObject(progid[, prefix]) and ConnectObject(object, prefix), which call the
// script's sub prefix + event name on each event of the object. --library-folder is searched for the
// device library when none lies beside the plug-in (an installation's Simulator folder).
// Exit code: 0, or WScript.Quit's; 1 a script error (reported with its line); 2 the host could not
// run the script; 3 the time limit (default 300 s) was reached.
#include <windows.h>

#include <activscp.h>
#include <oleauto.h>

#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

#include "HostObjects.h"
#include "Text.h"

namespace {

using namespace rx9400::scripthost;

constexpr int scriptFailed = 1;
constexpr int hostFailed = 2;
constexpr int timeLimitReached = 3;

void report(const std::wstring& line) {
  writeLine(GetStdHandle(STD_ERROR_HANDLE), line);
}

/// The system's text for an error code, without its line end; empty when it has none.
std::wstring systemMessage(HRESULT code) {
  wchar_t* text = nullptr;
  FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                 nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  std::wstring message = text != nullptr ? text : L"";
  LocalFree(text);
  while (!message.empty() && (message.back() == L'\n' || message.back() == L'\r')) message.pop_back();
  return message;
}

/// The script's text: UTF-16 with its mark, UTF-8 with or without one, the ANSI code page otherwise.
bool readScript(const std::wstring& path, std::wstring* text) {
  HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  std::string bytes;
  char block[65536];
  DWORD read = 0;
  while (ReadFile(file, block, sizeof(block), &read, nullptr) && read > 0) bytes.append(block, read);
  CloseHandle(file);
  if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
      static_cast<unsigned char>(bytes[1]) == 0xFE) {
    text->assign(reinterpret_cast<const wchar_t*>(bytes.data() + 2), (bytes.size() - 2) / 2);
  } else if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) {
    *text = rx9400::tools::widen(bytes.substr(3), CP_UTF8);
  } else {
    const bool utf8 = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(),
                                          static_cast<int>(bytes.size()), nullptr, 0) > 0;
    *text = rx9400::tools::widen(bytes, utf8 ? CP_UTF8 : CP_ACP);
  }
  return true;
}

/// The engine's site: lends it WScript, reports script errors with their place.
class Site : public IActiveScriptSite, public IActiveScriptSiteWindow, public Host {
 public:
  Site(std::wstring path, std::vector<std::wstring> arguments) : path_(path) {
    *wscript_.put() = new WScriptObject(*this, std::move(path), std::move(arguments));
  }
  virtual ~Site() = default;
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;

  void attach(IActiveScript* engine) { engine_ = engine; }
  bool errorReported() const { return errorReported_; }
  void end() {
    wscript_->disconnectAll();
    engine_ = nullptr;
  }

  // Host
  IDispatch* scriptDispatch() override {
    IDispatch* script = nullptr;
    if (engine_ != nullptr) engine_->GetScriptDispatch(nullptr, &script);
    return script;
  }
  void quit(int code) override {
    std::fflush(stdout);
    ExitProcess(static_cast<UINT>(code));
  }

  // IUnknown: the site lives on the stack of main, for the whole run.
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IActiveScriptSite))
      *out = static_cast<IActiveScriptSite*>(this);
    else if (IsEqualIID(iid, IID_IActiveScriptSiteWindow))
      *out = static_cast<IActiveScriptSiteWindow*>(this);
    else
      return E_NOINTERFACE;
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }

  // IActiveScriptSite
  STDMETHODIMP GetLCID(LCID*) override { return E_NOTIMPL; }
  STDMETHODIMP GetItemInfo(LPCOLESTR name, DWORD mask, IUnknown** item, ITypeInfo** info) override {
    if (item != nullptr) *item = nullptr;
    if (info != nullptr) *info = nullptr;
    if (name == nullptr || std::wcscmp(name, L"WScript") != 0) return TYPE_E_ELEMENTNOTFOUND;
    if ((mask & SCRIPTINFO_IUNKNOWN) == 0) return TYPE_E_ELEMENTNOTFOUND;
    if (item == nullptr) return E_POINTER;
    *item = static_cast<IDispatch*>(wscript_.get());
    (*item)->AddRef();
    return S_OK;
  }
  STDMETHODIMP GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
  STDMETHODIMP OnStateChange(SCRIPTSTATE) override { return S_OK; }
  STDMETHODIMP OnEnterScript() override { return S_OK; }
  STDMETHODIMP OnLeaveScript() override { return S_OK; }
  STDMETHODIMP OnScriptError(IActiveScriptError* error) override {
    errorReported_ = true;
    EXCEPINFO exception{};
    error->GetExceptionInfo(&exception);
    if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
    DWORD context = 0;
    ULONG line = 0;
    LONG column = 0;
    std::wstring place = path_;
    if (SUCCEEDED(error->GetSourcePosition(&context, &line, &column)))
      place += L"(" + std::to_wstring(line + 1) + L", " + std::to_wstring(column + 1) + L")";
    const HRESULT scode = exception.scode != 0 ? exception.scode : exception.wCode;
    wchar_t code[16];
    swprintf(code, 16, L"0x%08lX", static_cast<unsigned long>(scode));
    std::wstring description = exception.bstrDescription != nullptr ? exception.bstrDescription : L"";
    if (description.empty()) description = systemMessage(scode);
    std::wstring lineText =
        place + L": " +
        (exception.bstrSource != nullptr && *exception.bstrSource != 0 ? exception.bstrSource
                                                                       : L"script error") +
        L": " + description + L" (" + code + L")";
    BSTR source = nullptr;
    if (SUCCEEDED(error->GetSourceLineText(&source)) && source != nullptr) {
      lineText += std::wstring(L"\r\n    ") + source;
      SysFreeString(source);
    }
    report(lineText);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    return S_OK;
  }

  // IActiveScriptSiteWindow: the script's own boxes (MsgBox) have no owner window.
  STDMETHODIMP GetWindow(HWND* window) override {
    if (window == nullptr) return E_POINTER;
    *window = nullptr;
    return S_OK;
  }
  STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }

 private:
  std::wstring path_;
  ComPtr<WScriptObject> wscript_;
  IActiveScript* engine_ = nullptr;
  bool errorReported_ = false;
};

int runScript(const std::wstring& path, std::vector<std::wstring> arguments) {
  std::wstring text;
  if (!readScript(path, &text)) {
    report(L"rx9400-scripthost: cannot read " + path);
    return hostFailed;
  }
  CLSID engineClass{};
  ComPtr<IActiveScript> engine;
  ComPtr<IActiveScriptParse> parser;
  HRESULT hr = CLSIDFromProgID(L"VBScript", &engineClass);
  if (SUCCEEDED(hr))
    hr = CoCreateInstance(engineClass, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript, engine.putVoid());
  if (SUCCEEDED(hr)) hr = engine->QueryInterface(__uuidof(IActiveScriptParse), parser.putVoid());
  if (FAILED(hr)) {
    report(L"rx9400-scripthost: the VBScript engine is not available");
    return hostFailed;
  }
  Site site(path, std::move(arguments));
  site.attach(engine.get());
  hr = engine->SetScriptSite(&site);
  if (SUCCEEDED(hr)) hr = parser->InitNew();
  if (SUCCEEDED(hr)) hr = engine->AddNamedItem(L"WScript", SCRIPTITEM_ISVISIBLE);
  if (SUCCEEDED(hr)) hr = engine->SetScriptState(SCRIPTSTATE_STARTED);
  if (FAILED(hr)) {
    report(L"rx9400-scripthost: the VBScript engine cannot be started");
    return hostFailed;
  }
  // With the engine started, the script's own statements run within this call.
  EXCEPINFO exception{};
  hr = parser->ParseScriptText(text.c_str(), nullptr, nullptr, nullptr, 0, 0, SCRIPTTEXT_ISVISIBLE, nullptr,
                               &exception);
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrHelpFile);
  if (FAILED(hr) && !site.errorReported()) {
    wchar_t code[16];
    swprintf(code, 16, L"0x%08lX", static_cast<unsigned long>(hr));
    report(path + L": the script failed (" + code + L")");
  }
  site.end();
  engine->Close();
  return FAILED(hr) || site.errorReported() ? scriptFailed : 0;
}

HANDLE scriptEnded = nullptr;

DWORD WINAPI watchdog(void* limit) {
  const DWORD milliseconds = static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(limit));
  if (WaitForSingleObject(scriptEnded, milliseconds) == WAIT_TIMEOUT) {
    std::fflush(stdout);
    report(L"rx9400-scripthost: the time limit of " + std::to_wstring(milliseconds / 1000) +
           L" s was reached");
    TerminateProcess(GetCurrentProcess(), timeLimitReached);
  }
  return 0;
}

LONG WINAPI crashed(EXCEPTION_POINTERS* exception) {
  wchar_t text[96];
  swprintf(text, 96, L"rx9400-scripthost: crashed (exception 0x%08lX)",
           static_cast<unsigned long>(exception->ExceptionRecord->ExceptionCode));
  report(text);
  TerminateProcess(GetCurrentProcess(), hostFailed);
  return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

int main() {
  SetUnhandledExceptionFilter(crashed);
  int count = 0;
  LPWSTR* words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::wstring> arguments(words, words + count);
  LocalFree(words);
  unsigned long seconds = 300;
  std::size_t next = 1;
  for (; next < arguments.size() && arguments[next].rfind(L"--", 0) == 0; ++next) {
    const std::wstring& option = arguments[next];
    if (option.rfind(L"--timeout=", 0) == 0) {
      seconds = std::wcstoul(option.c_str() + 10, nullptr, 10);
    } else if (option.rfind(L"--library-folder=", 0) == 0) {
      wchar_t folder[MAX_PATH * 2] = {};
      const DWORD length = GetFullPathNameW(option.c_str() + 17, MAX_PATH * 2, folder, nullptr);
      if (length == 0 || length >= MAX_PATH * 2 || !SetDllDirectoryW(folder)) {
        report(L"rx9400-scripthost: cannot search the folder " + option.substr(17));
        return hostFailed;
      }
    } else {
      break;
    }
  }
  if (next >= arguments.size() || seconds == 0) {
    report(
        L"usage: rx9400-scripthost [--timeout=SECONDS] [--library-folder=FOLDER] SCRIPT.vbs [ARGUMENT...]");
    return hostFailed;
  }
  wchar_t path[MAX_PATH * 2] = {};
  const DWORD length = GetFullPathNameW(arguments[next].c_str(), MAX_PATH * 2, path, nullptr);
  if (length == 0 || length >= MAX_PATH * 2) {
    report(L"rx9400-scripthost: cannot find " + arguments[next]);
    return hostFailed;
  }

  scriptEnded = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  HANDLE guard = CreateThread(nullptr, 0, watchdog,
                              reinterpret_cast<void*>(static_cast<ULONG_PTR>(seconds * 1000)), 0, nullptr);
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
    report(L"rx9400-scripthost: COM cannot be started");
    return hostFailed;
  }
  const int status = runScript(
      path, std::vector<std::wstring>(arguments.begin() + static_cast<long>(next) + 1, arguments.end()));
  CoUninitialize();
  std::fflush(stdout);
  SetEvent(scriptEnded);
  if (guard != nullptr) {
    WaitForSingleObject(guard, INFINITE);
    CloseHandle(guard);
  }
  return status;
}
