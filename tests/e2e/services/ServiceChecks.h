// The checks of rx9400-servicechecks: the plug-in's shared services over the real Win32 platform.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Harness.h"

namespace rx9400::e2e {

std::vector<Check> languageChecks();
std::vector<Check> platformChecks();
std::vector<Check> numberChecks();

/// A text with its control and non-ASCII bytes shown as \xNN, for FAIL lines.
std::string printable(std::string_view text);
/// Fails with "`what`: got "...", expected "..."" unless both texts are equal.
inline void expectText(const std::string& actual, const std::string& expected, const std::string& what) {
  if (actual != expected)
    fail(what + ": got \"" + printable(actual) + "\", expected \"" + printable(expected) + "\"");
}

}  // namespace rx9400::e2e
