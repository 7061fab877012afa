// The MsgForm server (tools/msgform) as only Windows shows it: registered and removed by its own
// switches, a form created by ProgID in another process whose buttons, pressed by automation, arrive
// as events, and the plug-in's sleep notice on a MsgForm form and on its built-in box, the same
// texts and the same handler either way, and after the server died.
#include <windows.h>

#include <ocidl.h>
#include <oleauto.h>

#include <cstdio>
#include <string>
#include <vector>

#include "HostChecks.h"
#include "RecordingSink.h"
#include "win/MsgForm_h.h"

namespace rx9400::e2e {
namespace {

constexpr wchar_t kServerFile[] = L"MsgForm.exe";
constexpr wchar_t kProgId[] = L"MsgForm.MessageForm";

std::wstring serverPath() {
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring folder(path);
  return folder.substr(0, folder.find_last_of(L'\\') + 1) + kServerFile;
}

/// Runs MsgForm.exe with one switch; fails unless it ends with exit code 0.
void runServer(const wchar_t* option) {
  std::wstring commandLine = L"\"" + serverPath() + L"\" " + option;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  expect(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process) != 0,
         "MsgForm.exe cannot be started");
  DWORD code = 1;
  WaitForSingleObject(process.hProcess, 30000);
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  expect(code == 0, "MsgForm.exe " + narrow(option) + " ended with " + std::to_string(code));
}

/// MsgForm registered (or not) for as long as this lives; unregistered afterwards either way.
struct Registration {
  explicit Registration(bool registered) { runServer(registered ? L"/RegServer" : L"/UnregServer"); }
  ~Registration() {
    try {
      runServer(L"/UnregServer");
    } catch (const CheckFailure&) {
    }
  }
};

/// A key's default value under HKEY_CLASSES_ROOT; "(none)" when the key is missing.
std::wstring classesValue(const std::wstring& key) {
  wchar_t data[512] = {};
  DWORD size = sizeof data;
  const LONG found =
      RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, data, &size);
  return found == ERROR_SUCCESS ? data : L"(none)";
}

/// The visible top-level window of `process` with that caption, waited for while messages are pumped.
HWND formOf(DWORD process, const wchar_t* caption) {
  WindowFilter filter;
  filter.processId = process;
  filter.caption = caption;
  HWND form = nullptr;
  pumpUntil(kStepMs, [&] {
    const std::vector<HWND> found = findWindows(filter);
    form = found.empty() ? nullptr : found.front();
    return form != nullptr;
  });
  expect(form != nullptr, "no window " + quoted(caption) + " in process " + std::to_string(process));
  return form;
}

/// The heading, the message and the texts of the buttons shown, in that order.
void expectTexts(HWND form, const std::vector<std::wstring>& expected) {
  std::vector<std::wstring> shown = staticTexts(form);
  for (const std::wstring& button : buttonTexts(form)) shown.push_back(button);
  std::vector<std::string> texts;
  for (const std::wstring& text : shown) texts.push_back(quoted(text));
  expect(shown == expected, "the form shows " + joined(texts));
}

/// Presses a button while pumping, until `arrived` (the click came back to this process).
template <typename Arrived>
void pressAndWait(HWND form, const wchar_t* button, Arrived arrived, const std::string& what) {
  expect(clickButton(form, button), "the button " + quoted(button) + " cannot be pressed");
  expect(pumpUntil(kStepMs, arrived), what + " did not happen after " + quoted(button));
}

void checkRegistration(const Options&) {
  const auto text = [](REFGUID guid) { return widen(guidText(guid)); };
  const std::wstring clsid = text(CLSID_MessageForm), library = text(LIBID_MsgForm);
  const std::wstring path = serverPath(), platform = sizeof(void*) == 8 ? L"win64" : L"win32";
  // The universal marshaler carries the dual interface, the dispatch marshaler the events.
  const std::wstring universal = L"{00020424-0000-0000-C000-000000000046}";
  const std::wstring dispatch = L"{00020420-0000-0000-C000-000000000046}";
  struct Entry {
    std::wstring key;
    std::wstring value;
  };
  const std::vector<Entry> entries = {
      {L"CLSID\\" + clsid + L"\\LocalServer32", L"\"" + path + L"\""},
      {L"CLSID\\" + clsid + L"\\ProgID", L"MsgForm.MessageForm.1"},
      {L"CLSID\\" + clsid + L"\\VersionIndependentProgID", kProgId},
      {L"CLSID\\" + clsid + L"\\TypeLib", library},
      {L"MsgForm.MessageForm\\CLSID", clsid},
      {L"MsgForm.MessageForm\\CurVer", L"MsgForm.MessageForm.1"},
      {L"MsgForm.MessageForm.1\\CLSID", clsid},
      {L"TypeLib\\" + library + L"\\1.0\\0\\" + platform, path},
      {L"Interface\\" + text(IID_IMessageForm) + L"\\ProxyStubClsid32", universal},
      {L"Interface\\" + text(DIID__IMessageFormEvents) + L"\\ProxyStubClsid32", dispatch},
  };
  {
    const Registration registered(true);
    for (const Entry& entry : entries) {
      const std::wstring found = classesValue(entry.key);
      expect(_wcsicmp(found.c_str(), entry.value.c_str()) == 0,
             "HKCR\\" + narrow(entry.key) + " is " + quoted(found) + ", not " + quoted(entry.value));
    }
  }
  for (const Entry& entry : entries) {
    expect(classesValue(entry.key) == L"(none)", "/UnregServer left HKCR\\" + narrow(entry.key));
  }
  CLSID found{};
  expect(FAILED(CLSIDFromProgID(kProgId, &found)), "the ProgID still names a class after /UnregServer");
}

void checkEvents(const Options& options) {
  const Registration registered(true);
  CLSID classId{};
  expectHr(CLSIDFromProgID(kProgId, &classId), S_OK, "CLSIDFromProgID(MsgForm.MessageForm)");
  ComPtr<IMessageForm> form;
  expectHr(CoCreateInstance(classId, nullptr, CLSCTX_LOCAL_SERVER, IID_IMessageForm, form.putVoid()), S_OK,
           "CoCreateInstance(MsgForm.MessageForm, CLSCTX_LOCAL_SERVER)");
  const DWORD server = waitForProcess(kServerFile, kStepMs);
  expect(server != 0 && server != GetCurrentProcessId(), "the form is not served by a MsgForm.exe process");

  ComPtr<RecordingSink> sink;
  *sink.put() = new RecordingSink();
  ComPtr<IConnectionPointContainer> container =
      queryInterface<IConnectionPointContainer>(form.get(), IID_IConnectionPointContainer, "container");
  ComPtr<IConnectionPoint> point;
  expectHr(container->FindConnectionPoint(DIID__IMessageFormEvents, point.put()), S_OK,
           "FindConnectionPoint");
  DWORD cookie = 0;
  expectHr(point->Advise(sink.get(), &cookie), S_OK, "Advise");

  const std::pair<HRESULT (STDMETHODCALLTYPE IMessageForm::*)(BSTR), const wchar_t*> texts[] = {
      {&IMessageForm::SetCaption, L"MsgForm check"},
      {&IMessageForm::SetHeading, L"A heading line"},
      {&IMessageForm::SetMessage, L"A message from another process."},
      {&IMessageForm::SetButton1Text, L"First"},
      {&IMessageForm::SetButton2Text, L"Second"}};
  for (const auto& [setter, text] : texts) {
    BSTR value = SysAllocString(text);
    const HRESULT hr = (form.get()->*setter)(value);
    SysFreeString(value);
    expectHr(hr, S_OK, "setting " + narrow(text));
  }
  expectHr(form->ShowForm(), S_OK, "ShowForm");
  HWND window = formOf(server, L"MsgForm check");
  expectTexts(window, {L"A heading line", L"A message from another process.", L"First", L"Second"});
  savePicture(window, options.artifacts, "msgform-form");

  const std::pair<const wchar_t*, DISPID> presses[] = {{L"First", 1}, {L"Second", 2}};
  for (const auto& [button, id] : presses) {
    const std::size_t before = sink->events().size();
    pressAndWait(
        window, button, [&] { return sink->events().size() > before; }, "an event");
    expect(sink->events().back().id == id, quoted(button) + " raised event " +
                                               std::to_string(sink->events().back().id) + ", not " +
                                               std::to_string(id));
  }
  BSTR empty = SysAllocString(L"");
  expectHr(form->SetButton2Text(empty), S_OK, "SetButton2Text(\"\")");
  SysFreeString(empty);
  expectTexts(window, {L"A heading line", L"A message from another process.", L"First"});

  expectHr(form->CloseForm(), S_OK, "CloseForm");
  expect(waitUntilGone(window, kStepMs), "the form stayed after CloseForm");
  expectHr(point->Unadvise(cookie), S_OK, "Unadvise");
  point.reset(), container.reset(), form.reset();
  expect(pollFor(kStepMs, [&] { return !processRunning(server); }),
         "MsgForm.exe still runs with no form left");
}

/// The plug-in's sleep notice, opened by CheckDetectorPowerStatus(0, 100000), answered with Wake Up.
struct SleepRow {
  const char* name;
  bool registered;
  bool serverDiesFirst;  ///< the server is ended while the first notice shows; a second one is answered
};

void checkSleepNotice(const Options& options) {
  const SleepRow rows[] = {
      {"built-in", false, false}, {"msgform", true, false}, {"msgform-died", true, true}};
  for (const SleepRow& row : rows) {
    const std::string prefix = std::string(row.name) + ": ";
    try {
      const Registration registration(row.registered);
      Session session = openSession(options, L"exposure-aio.json");
      connectAll(options, "msgform-sleep", session);
      auto instrument = createByProgId<_CRX9400VTI>(kInstrumentProgId, IID__CRX9400VTI);
      expectHr(instrument->InitTimer(), S_OK, "InitTimer");  // idle from now: asleep, not shut down
      // The notice, in MsgForm.exe when that serves it, else in this process (the built-in box).
      const auto sleep = [&](bool eitherBox) {
        VARIANT_BOOL result = VARIANT_FALSE;
        expectHr(instrument->CheckDetectorPowerStatus(0, 100000, &result), S_OK, "CheckDetectorPowerStatus");
        expect(result == VARIANT_TRUE, "CheckDetectorPowerStatus(0, 100000) is not True");
        const std::vector<DWORD> servers = processesNamed(kServerFile);
        expect(
            eitherBox || servers.empty() != row.registered,
            servers.empty() ? "no MsgForm.exe serves the notice" : "MsgForm.exe runs though not registered");
        if (eitherBox)
          std::printf("%sthe next notice is %s\n", prefix.c_str(),
                      servers.empty() ? "built in" : "MsgForm's");
        return formOf(servers.empty() ? GetCurrentProcessId() : servers.front(), L"Detector Sleep");
      };
      HWND notice = sleep(false);
      if (row.serverDiesFirst) {
        HANDLE server = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, waitForProcess(kServerFile, 0));
        expect(server != nullptr && TerminateProcess(server, 9) && WaitForSingleObject(server, kStepMs) == 0,
               "MsgForm.exe cannot be ended");
        CloseHandle(server);
        expectHr(instrument->CloseWindow(), S_OK, "CloseWindow after the server died");
        expectHr(instrument->DetectorWakeUp(), S_OK, "DetectorWakeUp");
        // Windows starts the server again; Wine keeps the dead one's class registration, so creation
        // fails (0x800706BA) and the box is the built-in one.
        notice = sleep(true);
      }
      expectTexts(notice, {L"Detector in Sleep Mode",
                           L"Press Wake Up to wakeup the detector or Cancel to remain in sleep mode.",
                           L"Wake Up", L"Cancel"});
      pumpUntil(500, [] { return false; });  // a built-in box paints from this thread's messages
      savePicture(notice, options.artifacts, "msgform-sleep-" + std::string(row.name));
      pressAndWait(
          notice, L"Wake Up",
          [&] {
            const std::vector<std::string> modes = calls(session.simulator, "MBSetPowerMode");
            return !modes.empty() && modes.back() == "501, 2" && !IsWindowVisible(notice);
          },
          "the detector's wake-up (MBSetPowerMode(501, 2)) and the notice's closing");
      expectHr(session.query->CloseApp(), S_OK, "CloseApp");
    } catch (const CheckFailure& failure) {
      fail(prefix + failure.why);
    }
  }
}

}  // namespace

std::vector<Check> msgFormChecks() {
  return {
      {"msgform-registration",
       "MsgForm.exe /RegServer writes the class, ProgIDs and type library; /UnregServer removes them",
       checkRegistration},
      {"msgform-events",
       "a form created by ProgID in MsgForm.exe shows its texts; its buttons arrive as events", checkEvents},
      {"msgform-sleep",
       "the sleep notice answers Wake Up on a MsgForm form, on the built-in box, after the server died",
       checkSleepNotice},
  };
}

}  // namespace rx9400::e2e
