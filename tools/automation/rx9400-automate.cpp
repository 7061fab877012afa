// rx9400-automate: drives the windows of another process from the command line, step by step, the
// way a person at the test bench would, for end-to-end runs where the client is a script.
//
//   rx9400-automate [--timeout=SECONDS] [--artifacts=FOLDER] TARGET STEP...
//
// TARGET is --run=COMMAND (start it, drive it, wait for it, exit with its exit code), --process=NAME
// (the first process with that executable name) or --pid=N. Each step waits up to the time-out:
//   window CAPTION     the process's top-level window with this exact caption becomes the current one
//   messagebox         the process's next message box becomes the current window
//   expect-text TEXT   one of the current window's static texts is TEXT
//   print              prints the current window's caption, texts, buttons and list-view items
//   tick N / untick N  ticks or clears the check box of item N of the current window's list view
//   click TEXT         presses the current window's button TEXT ('&' marks ignored)
//   screenshot FILE    saves the current window as the BMP FOLDER\FILE
//   gone               waits until the current window has closed
//   dismiss-all        until the process ends: prints, pictures and closes every window it shows
//                      (Cancel, OK, Close, No or the first button; WM_CLOSE without buttons)
#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <cstdio>
#include <cwchar>
#include <map>
#include <string>
#include <vector>

#include "Automation.h"

namespace {

using namespace rx9400::tools;

struct Failure {
  std::string why;
};

struct Session {
  DWORD processId = 0;
  HANDLE started = nullptr;  // the process started by --run
  DWORD timeoutMs = 30000;
  std::wstring artifacts = L".";
  HWND current = nullptr;
  int pictures = 0;
};

void say(const std::string& text) {
  std::printf("automate: %s\n", text.c_str());
  std::fflush(stdout);
}

HWND currentWindow(const Session& session) {
  if (session.current == nullptr || !IsWindow(session.current)) throw Failure{"there is no current window"};
  return session.current;
}

void describeWindow(HWND window) {
  say("window \"" + narrow(windowText(window)) + "\" (" + narrow(windowClass(window)) + ")");
  for (const std::wstring& text : staticTexts(window)) {
    if (!text.empty()) say("  text \"" + narrow(text) + "\"");
  }
  for (const std::wstring& text : buttonTexts(window)) say("  button \"" + narrow(text) + "\"");
  if (HWND list = findControl(window, WC_LISTVIEWW, nullptr)) {
    const int count = listViewItemCount(list);
    for (int i = 0; i < count; ++i) {
      say("  item " + std::to_string(i) + (listViewItemChecked(list, i) ? " [x] " : " [ ] ") +
          narrow(listViewItemText(list, i)));
    }
  }
}

void savePicture(Session& session, HWND window, const std::wstring& file) {
  const std::wstring path = session.artifacts + L"\\" + file;
  std::wstring error;
  if (!saveWindowBitmap(window, path, &error))
    throw Failure{"no picture " + narrow(path) + ": " + narrow(error)};
  say("picture " + narrow(path));
}

/// Closes a window as a person would who wants it gone: Cancel, OK, Close or No, else its first
/// button, else the close box.
void dismiss(HWND window) {
  const std::vector<std::wstring> buttons = buttonTexts(window);
  for (const wchar_t* preferred : {L"Cancel", L"OK", L"Close", L"No"}) {
    for (const std::wstring& button : buttons) {
      if (_wcsicmp(button.c_str(), preferred) == 0 && clickButton(window, button.c_str())) {
        say("  pressed " + narrow(button));
        return;
      }
    }
  }
  if (!buttons.empty() && clickButton(window, buttons.front().c_str())) {
    say("  pressed " + narrow(buttons.front()));
    return;
  }
  PostMessageW(window, WM_CLOSE, 0, 0);
  say("  closed");
}

void dismissAll(Session& session) {
  std::map<HWND, ULONGLONG> handled;
  const ULONGLONG end = GetTickCount64() + session.timeoutMs;
  WindowFilter filter;
  filter.processId = session.processId;
  while (processRunning(session.processId)) {
    if (GetTickCount64() >= end) throw Failure{"the process was still running at the time-out"};
    for (HWND window : findWindows(filter)) {
      // A window that does not go within two seconds is tried again.
      const auto seen = handled.find(window);
      if (seen != handled.end() && GetTickCount64() - seen->second < 2000) continue;
      describeWindow(window);
      try {
        savePicture(session, window, L"dismissed-" + std::to_wstring(++session.pictures) + L".bmp");
      } catch (const Failure& failure) {
        say("  " + failure.why);  // the window may have closed by itself meanwhile
      }
      dismiss(window);
      handled[window] = GetTickCount64();
    }
    Sleep(100);
  }
  say("dismissed " + std::to_string(handled.size()) + " window(s)");
}

int listItem(const std::wstring& text) {
  wchar_t* end = nullptr;
  const long value = std::wcstol(text.c_str(), &end, 10);
  if (end == text.c_str() || *end != L'\0' || value < 0) throw Failure{"not an item number: " + narrow(text)};
  return static_cast<int>(value);
}

/// Runs one step; `argument` is the step's argument, if it takes one.
void runStep(Session& session, const std::wstring& step, const std::wstring& argument) {
  const std::string word = narrow(step);
  if (step == L"window") {
    WindowFilter filter;
    filter.processId = session.processId;
    filter.caption = argument;
    session.current = waitForWindow(filter, session.timeoutMs);
    if (session.current == nullptr) throw Failure{"no window \"" + narrow(argument) + "\""};
    say("found window \"" + narrow(argument) + "\"");
  } else if (step == L"messagebox") {
    session.current = waitForMessageBox(session.processId, session.timeoutMs);
    if (session.current == nullptr) throw Failure{"no message box"};
    say("found message box \"" + narrow(windowText(session.current)) +
        "\": " + narrow(messageBoxText(session.current)));
  } else if (step == L"expect-text") {
    HWND window = currentWindow(session);
    for (const std::wstring& text : staticTexts(window)) {
      if (text == argument) {
        say("text \"" + narrow(argument) + "\" shown");
        return;
      }
    }
    throw Failure{"the window does not show \"" + narrow(argument) + "\""};
  } else if (step == L"print") {
    describeWindow(currentWindow(session));
  } else if (step == L"tick" || step == L"untick") {
    HWND list = findControl(currentWindow(session), WC_LISTVIEWW, nullptr);
    if (list == nullptr) throw Failure{"the window has no list view"};
    const int item = listItem(argument);
    if (!setListViewItemChecked(list, item, step == L"tick"))
      throw Failure{"item " + narrow(argument) + " unchanged"};
    say(word + " item " + narrow(argument) + " \"" + narrow(listViewItemText(list, item)) + "\"");
  } else if (step == L"click") {
    if (!clickButton(currentWindow(session), argument.c_str()))
      throw Failure{"no enabled button " + narrow(argument)};
    say("pressed " + narrow(argument));
  } else if (step == L"screenshot") {
    savePicture(session, currentWindow(session), argument);
  } else if (step == L"gone") {
    if (!waitUntilGone(currentWindow(session), session.timeoutMs)) throw Failure{"the window stayed open"};
    say("window closed");
  } else if (step == L"dismiss-all") {
    dismissAll(session);
  } else {
    throw Failure{"unknown step " + word};
  }
}

bool takesArgument(const std::wstring& step) {
  for (const wchar_t* name : {L"window", L"expect-text", L"tick", L"untick", L"click", L"screenshot"}) {
    if (step == name) return true;
  }
  return false;
}

HANDLE startProcess(const std::wstring& commandLine, DWORD& processId) {
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION process{};
  std::wstring mutableLine = commandLine;
  if (!CreateProcessW(nullptr, mutableLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                      &process)) {
    throw Failure{"cannot start " + narrow(commandLine) + " (error " + std::to_string(GetLastError()) + ")"};
  }
  CloseHandle(process.hThread);
  processId = process.dwProcessId;
  return process.hProcess;
}

bool startsWith(const std::wstring& text, const wchar_t* prefix, std::wstring& rest) {
  const std::size_t length = std::wcslen(prefix);
  if (text.compare(0, length, prefix) != 0) return false;
  rest = text.substr(length);
  return true;
}

int run(const std::vector<std::wstring>& arguments) {
  Session session;
  std::wstring value;
  std::wstring command;
  std::wstring processName;
  std::size_t next = 0;
  for (; next < arguments.size() && arguments[next].rfind(L"--", 0) == 0; ++next) {
    const std::wstring& option = arguments[next];
    if (startsWith(option, L"--timeout=", value)) {
      session.timeoutMs = static_cast<DWORD>(std::wcstoul(value.c_str(), nullptr, 10)) * 1000;
    } else if (startsWith(option, L"--artifacts=", value)) {
      session.artifacts = value;
    } else if (startsWith(option, L"--run=", value)) {
      command = value;
    } else if (startsWith(option, L"--process=", value)) {
      processName = value;
    } else if (startsWith(option, L"--pid=", value)) {
      session.processId = static_cast<DWORD>(std::wcstoul(value.c_str(), nullptr, 10));
    } else {
      throw Failure{"unknown option " + narrow(option)};
    }
  }
  if (!command.empty()) {
    session.started = startProcess(command, session.processId);
    say("started " + narrow(command));
  } else if (!processName.empty()) {
    session.processId = waitForProcess(processName, session.timeoutMs);
    if (session.processId == 0) throw Failure{"no process " + narrow(processName)};
  }
  if (session.processId == 0) throw Failure{"no target: give --run, --process or --pid"};

  try {
    while (next < arguments.size()) {
      const std::wstring step = arguments[next++];
      std::wstring argument;
      if (takesArgument(step)) {
        if (next >= arguments.size()) throw Failure{narrow(step) + " needs an argument"};
        argument = arguments[next++];
      }
      runStep(session, step, argument);
    }
  } catch (const Failure&) {
    // A process this tool started must not be left behind a dialog nobody will close.
    if (session.started != nullptr) TerminateProcess(session.started, 1);
    throw;
  }

  if (session.started == nullptr) return 0;
  if (WaitForSingleObject(session.started, session.timeoutMs) != WAIT_OBJECT_0) {
    TerminateProcess(session.started, 1);
    throw Failure{"the started process did not end within the time-out"};
  }
  DWORD exitCode = 1;
  GetExitCodeProcess(session.started, &exitCode);
  CloseHandle(session.started);
  say("the process ended with exit code " + std::to_string(exitCode));
  return static_cast<int>(exitCode);
}

}  // namespace

int main() {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  int count = 0;
  LPWSTR* words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::wstring> arguments;
  for (int i = 1; i < count; ++i) arguments.emplace_back(words[i]);
  LocalFree(words);
  if (arguments.empty()) {
    std::printf(
        "usage: rx9400-automate [--timeout=SECONDS] [--artifacts=FOLDER] "
        "--run=COMMAND|--process=NAME|--pid=N STEP...\n");
    return 2;
  }
  try {
    return run(arguments);
  } catch (const Failure& failure) {
    say("FAIL " + failure.why);
    return 1;
  }
}
