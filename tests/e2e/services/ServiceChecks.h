// The checks of rx9400-servicechecks: each has a name the command line selects and a body that stops
// at the first failed expectation (CheckFailure), whose reason goes into its FAIL line.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

namespace rx9400::services {

struct CheckFailure {
  std::string why;
};

struct Options {
  std::wstring artifacts = L".";  ///< folder for screenshots and reports a person may look at
  std::wstring record;            ///< the trace viewer's record file, for the checks that use one
};

struct Check {
  const char* name;
  const char* proves;  ///< one line, shown by --list
  void (*run)(const Options& options);
};

std::vector<Check> languageChecks();
std::vector<Check> platformChecks();
std::vector<Check> numberChecks();

[[noreturn]] void fail(const std::string& why);
inline void expect(bool condition, const std::string& what) {
  if (!condition) fail(what);
}
/// Fails with "`what`: got "...", expected "..."" unless both texts are equal.
void expectText(const std::string& actual, const std::string& expected, const std::string& what);

std::string utf8(std::wstring_view text);
std::wstring wide(std::string_view utf8Text);
std::string hresultText(HRESULT value);
/// A text with its control and non-ASCII bytes shown as \xNN, for FAIL lines.
std::string printable(std::string_view text);

}  // namespace rx9400::services
