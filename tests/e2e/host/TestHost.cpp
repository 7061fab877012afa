// rx9400-testhost: a stand-in for the test-automation executive. It creates the plug-in's classes by
// ProgID in a single-threaded apartment and runs the checks named on its command line, one
// "PASS name" or "FAIL name: why" line each; the exit code is non-zero when one failed.
//
//   rx9400-testhost [--artifacts=FOLDER] [--scenarios=FOLDER] [--limit=SECONDS] [--pseudo-language]
//                   [--list] CHECK|com|all ...
#include <windows.h>

#include <objbase.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

#include "../CrashReport.h"
#include "Automation.h"
#include "Checks.h"

namespace rx9400::e2e {

void fail(const std::string& why) {
  throw CheckFailure{why};
}

std::string hresultText(HRESULT value) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(value));
  return text;
}

void expectHr(HRESULT actual, HRESULT expected, const std::string& call) {
  if (actual != expected) fail(call + " gave " + hresultText(actual) + ", expected " + hresultText(expected));
}

std::string guidText(REFGUID guid) {
  wchar_t text[40] = {};
  StringFromGUID2(guid, text, 40);
  return narrow(text);
}

std::string narrowText(const std::wstring& text) {
  return narrow(text);
}

BitmapSummary summarizeBitmap(const std::wstring& path) {
  BitmapSummary summary;
  FILE* in = _wfopen(path.c_str(), L"rb");
  if (in == nullptr) return summary;
  BITMAPFILEHEADER file{};
  BITMAPINFOHEADER info{};
  if (std::fread(&file, sizeof(file), 1, in) == 1 && std::fread(&info, sizeof(info), 1, in) == 1 &&
      file.bfType == 0x4D42 && info.biBitCount == 24 && info.biWidth > 0 && info.biHeight > 0) {
    const std::size_t stride =
        (static_cast<std::size_t>(info.biWidth) * 3 + 3) & ~static_cast<std::size_t>(3);
    std::vector<unsigned char> row(stride);
    std::vector<DWORD> seen;
    std::fseek(in, static_cast<long>(file.bfOffBits), SEEK_SET);
    for (LONG y = 0; y < info.biHeight && std::fread(row.data(), 1, stride, in) == stride; ++y) {
      for (LONG x = 0; x < info.biWidth && seen.size() < 64; ++x) {
        const unsigned char* pixel = row.data() + x * 3;
        const DWORD colour = pixel[0] | (pixel[1] << 8) | (pixel[2] << 16);
        bool known = false;
        for (DWORD c : seen) known = known || c == colour;
        if (!known) seen.push_back(colour);
      }
    }
    summary = {info.biWidth, info.biHeight, seen.size()};
  }
  std::fclose(in);
  return summary;
}

void expectPicture(const std::wstring& path, const RECT& frame) {
  const BitmapSummary picture = summarizeBitmap(path);
  expect(picture.width == frame.right - frame.left && picture.height == frame.bottom - frame.top,
         "the picture " + narrow(path) + " is " + std::to_string(picture.width) + "x" +
             std::to_string(picture.height));
  expect(picture.colours > 1, "the picture " + narrow(path) + " shows a single colour");
}

}  // namespace rx9400::e2e

namespace {

using rx9400::e2e::Check;
using rx9400::e2e::CheckFailure;
using rx9400::e2e::HostOptions;

using rx9400::e2e::gCurrentCheck;
using rx9400::e2e::reportCrash;

/// Ends the host with a FAIL line when a check runs past its limit (a dialog nobody closes).
class Watchdog {
 public:
  explicit Watchdog(DWORD limitMs) : limitMs_(limitMs), done_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    thread_ = CreateThread(nullptr, 0, &Watchdog::watch, this, 0, nullptr);
  }
  ~Watchdog() {
    SetEvent(done_);
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
    CloseHandle(done_);
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  static DWORD WINAPI watch(void* self) {
    auto* watchdog = static_cast<Watchdog*>(self);
    if (WaitForSingleObject(watchdog->done_, watchdog->limitMs_) == WAIT_TIMEOUT) {
      std::printf("FAIL %s: did not finish within %lu s\n", gCurrentCheck,
                  static_cast<unsigned long>(watchdog->limitMs_ / 1000));
      std::fflush(stdout);
      ExitProcess(4);
    }
    return 0;
  }

  DWORD limitMs_;
  HANDLE done_;
  HANDLE thread_ = nullptr;
};

bool runCheck(const Check& check, const HostOptions& options, DWORD limitMs) {
  // The name in the PASS/FAIL lines says under which language the plug-in ran.
  static std::string name;  // outlives the check: the crash filter may print it
  name = std::string(check.name) + (options.pseudoLanguage ? " (pseudo language)" : "");
  gCurrentCheck = name.c_str();
  Watchdog watchdog(limitMs);
  std::string why;
  try {
    check.run(options);
  } catch (const CheckFailure& failure) {
    why = failure.why;
  } catch (const std::exception& error) {
    why = std::string("exception: ") + error.what();
  }
  if (why.empty()) {
    std::printf("PASS %s\n", name.c_str());
  } else {
    std::printf("FAIL %s: %s\n", name.c_str(), why.c_str());
  }
  std::fflush(stdout);
  return why.empty();
}

std::vector<Check> allChecks() {
  std::vector<Check> checks = rx9400::e2e::comChecks();
  for (const Check& check : rx9400::e2e::bareFolderChecks()) checks.push_back(check);
  for (const Check& check : rx9400::e2e::sessionChecks()) checks.push_back(check);
  for (const Check& check : rx9400::e2e::exposureChecks()) checks.push_back(check);
  return checks;
}

/// The checks a word of the command line selects: one check by name, or a group.
std::vector<Check> select(const std::string& word) {
  if (word == "com") return rx9400::e2e::comChecks();
  if (word == "all") return allChecks();
  for (const Check& check : allChecks()) {
    if (word == check.name) return {check};
  }
  return {};
}

}  // namespace

int main(int argc, char** argv) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  SetUnhandledExceptionFilter(reportCrash);

  HostOptions options;
  DWORD limitMs = 60000;
  std::vector<Check> checks;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word.rfind("--artifacts=", 0) == 0) {
      options.artifacts = rx9400::e2e::widen(word.substr(std::strlen("--artifacts=")));
    } else if (word.rfind("--scenarios=", 0) == 0) {
      options.scenarios = rx9400::e2e::widen(word.substr(std::strlen("--scenarios=")));
    } else if (word.rfind("--limit=", 0) == 0) {
      limitMs = static_cast<DWORD>(std::atoi(word.c_str() + std::strlen("--limit="))) * 1000;
    } else if (word == "--pseudo-language") {
      options.pseudoLanguage = true;
    } else if (word == "--list") {
      for (const Check& check : allChecks()) std::printf("%-28s %s\n", check.name, check.proves);
      return 0;
    } else {
      std::vector<Check> selected = select(word);
      if (selected.empty()) {
        std::printf("FAIL %s: no such check (--list shows them)\n", word.c_str());
        return 2;
      }
      checks.insert(checks.end(), selected.begin(), selected.end());
    }
  }
  if (checks.empty()) {
    std::printf(
        "usage: rx9400-testhost [--artifacts=FOLDER] [--scenarios=FOLDER] [--limit=SECONDS] "
        "[--pseudo-language] [--list] CHECK|com|all...\n");
    return 2;
  }

  const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  if (FAILED(initialized)) {
    std::printf("FAIL start-up: CoInitializeEx gave %s\n", rx9400::e2e::hresultText(initialized).c_str());
    return 1;
  }
  int failed = 0;
  for (const Check& check : checks) {
    if (!runCheck(check, options, limitMs)) ++failed;
  }
  CoUninitialize();
  return failed == 0 ? 0 : 1;
}
