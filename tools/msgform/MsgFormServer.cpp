// MsgForm.exe: the message form server (README.md). COM starts it with -Embedding when a client creates
// a MsgForm.MessageForm; one single-threaded apartment serves every form, whose window shows on this
// thread, and the process ends once the last form and lock are released. /RegServer and /UnregServer
// register the server for the machine and remove it again.
#include <windows.h>

#include <ocidl.h>
#include <olectl.h>
#include <shellapi.h>

#include <atomic>
#include <new>
#include <string>

#include "win/ComSupport.h"
#include "win/ConnectionPoint.h"
#include "win/DispatchObject.h"
#include "win/MsgFormWindow.h"
#include "win/MsgForm_h.h"
#include "win/RegistrationWriter.h"
#include "win/SingleInterface.h"

namespace rx9400::msgform {
namespace {

using win::trapped;

constexpr wchar_t kClassName[] = L"MsgFormWindow";

// --- The process's lifetime: forms and locks hold it -------------------------------------------------

DWORD gMainThread = 0;
std::atomic<long> gHolds{0};

void hold() {
  CoAddRefServerProcess();
  ++gHolds;
}

void letGo() {
  --gHolds;
  if (CoReleaseServerProcess() == 0) PostThreadMessageW(gMainThread, WM_QUIT, 0, 0);
}

// --- The form ------------------------------------------------------------------------------------------

std::wstring wide(BSTR text) {
  return text != nullptr ? std::wstring(text, SysStringLen(text)) : std::wstring();
}

class MessageForm final : public win::DispatchObject<IMessageForm>, public IConnectionPointContainer {
 public:
  MessageForm()
      : DispatchObject(IID_IMessageForm, CLSID_MessageForm, &DIID__IMessageFormEvents),
        connectionPoint_(*static_cast<IMessageForm*>(this), DIID__IMessageFormEvents),
        window_(
            kClassName, [this] { fire(1); }, [this] { fire(2); }) {
    hold();
  }
  ~MessageForm() override {
    window_.close();
    letGo();
  }

  // IUnknown, shared by every interface of the object.
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    return DispatchObject::QueryInterface(iid, out);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return DispatchObject::AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return DispatchObject::Release(); }

  // IConnectionPointContainer
  STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override {
    return connectionPoint_.enumerate(points);
  }
  STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override {
    return connectionPoint_.find(iid, point);
  }

  // IMessageForm
  STDMETHODIMP ShowForm() override {
    return trapped("ShowForm", [&] { window_.show(); });
  }
  STDMETHODIMP CloseForm() override {
    return trapped("CloseForm", [&] { window_.close(); });
  }
  STDMETHODIMP SetHeading(BSTR text) override {
    return set("SetHeading", win::MsgFormWindow::Text::Heading, text);
  }
  STDMETHODIMP SetMessage(BSTR text) override {
    return set("SetMessage", win::MsgFormWindow::Text::Message, text);
  }
  STDMETHODIMP SetButton1Text(BSTR text) override {
    return set("SetButton1Text", win::MsgFormWindow::Text::Button1, text);
  }
  STDMETHODIMP SetButton2Text(BSTR text) override {
    return set("SetButton2Text", win::MsgFormWindow::Text::Button2, text);
  }
  STDMETHODIMP SetCaption(BSTR text) override {
    return set("SetCaption", win::MsgFormWindow::Text::Caption, text);
  }

 protected:
  void* queryExtraInterface(REFIID iid) override {
    if (IsEqualIID(iid, IID_IConnectionPointContainer)) return static_cast<IConnectionPointContainer*>(this);
    return nullptr;
  }

 private:
  HRESULT set(const char* member, win::MsgFormWindow::Text which, BSTR text) {
    return trapped(member, [&] { window_.setText(which, wide(text)); });
  }

  /// A button's event to every sink. A sink may close the form or release it meanwhile: the form stays
  /// until the event has been delivered, and its window is not used afterwards.
  void fire(DISPID id) {
    AddRef();
    DISPPARAMS none{};
    connectionPoint_.fire(id, none);
    Release();
  }

  win::ConnectionPoint connectionPoint_;
  win::MsgFormWindow window_;
};

/// The class object registered with COM for as long as the server runs (not reference counted).
class FormFactory final : public IClassFactory {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory) ? this : nullptr;
    return *out != nullptr ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    try {
      auto* form = new MessageForm();
      const HRESULT hr = form->QueryInterface(iid, out);
      form->Release();
      return hr;
    } catch (...) {
      return E_OUTOFMEMORY;
    }
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    lock ? hold() : letGo();
    return S_OK;
  }
};

/// Serves forms until the last one and the last lock are gone.
int serve() {
  gMainThread = GetCurrentThreadId();
  static FormFactory factory;
  DWORD cookie = 0;
  if (FAILED(CoRegisterClassObject(CLSID_MessageForm, &factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE,
                                   &cookie)))
    return 1;
  bool registered = true;
  MSG message;
  for (;;) {
    const BOOL got = GetMessageW(&message, nullptr, 0, 0);
    if (got == -1) break;
    if (got == 0) {
      // Nothing holds the server: no new form is taken, and one created just before is served out.
      if (registered) CoRevokeClassObject(cookie);
      registered = false;
      if (gHolds == 0) break;
      continue;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  if (registered) CoRevokeClassObject(cookie);
  win::unregisterMsgFormWindowClass(kClassName);
  return 0;
}

// --- Registration ----------------------------------------------------------------------------------------

std::wstring exePath() {
  wchar_t path[MAX_PATH * 2] = {};
  const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH * 2);
  return length == 0 || length >= MAX_PATH * 2 ? std::wstring() : std::wstring(path, length);
}

void unregisterServer() {
  win::deleteRegistration(HKEY_CLASSES_ROOT, registration::kMsgForm);
}

/// The class as a local server with both ProgIDs, and the type library embedded in this file, whose
/// registration lets the universal marshaler carry the interfaces between processes: the values of the
/// registration list (src/win/Registration.h), which the installer packages carry as their own rows.
bool registerServer() {
  const std::wstring path = exePath();
  const bool registered = !path.empty() &&
                          win::registrationMatches(registration::kMsgForm, win::typeLibrary()) &&
                          win::writeRegistration(HKEY_CLASSES_ROOT, registration::kMsgForm, path);
  if (!registered) unregisterServer();
  return registered;
}

enum class Action { Serve, Register, Unregister, Unknown };

/// -Embedding or /Embedding (COM starting the server), /RegServer, /UnregServer; case ignored.
Action actionOf(const wchar_t* argument) {
  if (argument[0] != L'-' && argument[0] != L'/') return Action::Unknown;
  const wchar_t* name = argument + 1;
  if (_wcsicmp(name, L"Embedding") == 0 || _wcsicmp(name, L"Automation") == 0) return Action::Serve;
  if (_wcsicmp(name, L"RegServer") == 0) return Action::Register;
  if (_wcsicmp(name, L"UnregServer") == 0) return Action::Unregister;
  return Action::Unknown;
}

}  // namespace
}  // namespace rx9400::msgform

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
  using namespace rx9400::msgform;
  int count = 0;
  wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  const Action action = arguments != nullptr && count == 2 ? actionOf(arguments[1]) : Action::Unknown;
  LocalFree(arguments);
  if (action == Action::Unknown) return 2;  // nothing to do: COM starts the server itself

  rx9400::win::setModuleHandle(instance);
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 1;
  int result = 0;
  switch (action) {
    case Action::Serve:
      result = serve();
      break;
    case Action::Register:
      result = registerServer() ? 0 : 1;
      break;
    default:
      unregisterServer();
      break;
  }
  rx9400::win::releaseTypeLibrary();
  CoUninitialize();
  return result;
}
