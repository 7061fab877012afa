// rx9400-servicechecks: the plug-in's shared services (catalogue through the language component,
// the executive's registry setting, the trace channel, the date picker, number texts) run against
// the real Win32 platform. Prints "PASS name" or "FAIL name: why" per check; the exit code is
// non-zero when one failed.
//
//   rx9400-servicechecks [--artifacts=FOLDER] [--record=FILE] [--list] CHECK...
#include <windows.h>

#include <objbase.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

#include "../CrashReport.h"
#include "ServiceChecks.h"

namespace rx9400::services {

void fail(const std::string& why) {
  throw CheckFailure{why};
}

std::string printable(std::string_view text) {
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte >= 0x7F) {
      char escaped[8];
      std::snprintf(escaped, sizeof(escaped), "\\x%02X", byte);
      shown += escaped;
    } else {
      shown += c;
    }
  }
  return shown;
}

void expectText(const std::string& actual, const std::string& expected, const std::string& what) {
  if (actual != expected)
    fail(what + ": got \"" + printable(actual) + "\", expected \"" + printable(expected) + "\"");
}

std::string utf8(std::wstring_view text) {
  if (text.empty()) return {};
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0,
                                       nullptr, nullptr);
  std::string result(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), result.data(), size, nullptr,
                      nullptr);
  return result;
}

std::wstring wide(std::string_view utf8Text) {
  if (utf8Text.empty()) return {};
  const int length =
      MultiByteToWideChar(CP_UTF8, 0, utf8Text.data(), static_cast<int>(utf8Text.size()), nullptr, 0);
  std::wstring result(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8Text.data(), static_cast<int>(utf8Text.size()), result.data(), length);
  return result;
}

std::string hresultText(HRESULT value) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(value));
  return text;
}

}  // namespace rx9400::services

namespace {

using rx9400::services::Check;
using rx9400::services::CheckFailure;
using rx9400::services::Options;

using rx9400::e2e::gCurrentCheck;
using rx9400::e2e::reportCrash;

std::vector<Check> allChecks() {
  std::vector<Check> checks = rx9400::services::languageChecks();
  for (const Check& check : rx9400::services::platformChecks()) checks.push_back(check);
  for (const Check& check : rx9400::services::numberChecks()) checks.push_back(check);
  return checks;
}

bool runCheck(const Check& check, const Options& options) {
  gCurrentCheck = check.name;
  std::string why;
  try {
    check.run(options);
  } catch (const CheckFailure& failure) {
    why = failure.why;
  } catch (const std::exception& error) {
    why = std::string("exception: ") + error.what();
  }
  if (why.empty()) {
    std::printf("PASS %s\n", check.name);
  } else {
    std::printf("FAIL %s: %s\n", check.name, why.c_str());
  }
  std::fflush(stdout);
  return why.empty();
}

}  // namespace

int main(int argc, char** argv) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  SetUnhandledExceptionFilter(reportCrash);

  Options options;
  std::vector<Check> selected;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word.rfind("--artifacts=", 0) == 0) {
      options.artifacts = rx9400::services::wide(word.substr(std::strlen("--artifacts=")));
    } else if (word.rfind("--record=", 0) == 0) {
      options.record = rx9400::services::wide(word.substr(std::strlen("--record=")));
    } else if (word == "--list") {
      for (const Check& check : allChecks()) std::printf("%-24s %s\n", check.name, check.proves);
      return 0;
    } else {
      bool known = false;
      for (const Check& check : allChecks()) {
        if (word == check.name) {
          selected.push_back(check);
          known = true;
        }
      }
      if (!known) {
        std::printf("FAIL %s: no such check (--list shows them)\n", word.c_str());
        return 2;
      }
    }
  }
  if (selected.empty()) {
    std::printf("usage: rx9400-servicechecks [--artifacts=FOLDER] [--record=FILE] [--list] CHECK...\n");
    return 2;
  }

  const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  if (FAILED(initialized)) {
    std::printf("FAIL start-up: CoInitializeEx gave %s\n",
                rx9400::services::hresultText(initialized).c_str());
    return 1;
  }
  int failed = 0;
  for (const Check& check : selected) {
    if (!runCheck(check, options)) ++failed;
  }
  // The language component stays referenced for the life of the process, as in the plug-in, so COM
  // is not uninitialised before the process ends.
  std::fflush(stdout);
  return failed == 0 ? 0 : 1;
}
