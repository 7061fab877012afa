// rx9400-servicechecks: the plug-in's shared services (the catalogue through the language component, the
// executive's registry setting, the trace channel, the date picker, number texts) against the real
// Win32 platform, one PASS or FAIL line per check named on the command line (--list shows them).
#include "ServiceChecks.h"

#include <cstdio>

namespace rx9400::e2e {

std::string printable(std::string_view text) {
  std::string shown;
  for (const char c : text) {
    char escaped[8];
    std::snprintf(escaped, sizeof(escaped), "\\x%02X", static_cast<unsigned char>(c));
    shown += c >= 0x20 && c < 0x7F ? std::string(1, c) : escaped;
  }
  return shown;
}

}  // namespace rx9400::e2e

int main(int argc, char** argv) {
  using namespace rx9400::e2e;
  std::vector<Check> checks = languageChecks();
  for (const auto& group : {platformChecks(), numberChecks()})
    checks.insert(checks.end(), group.begin(), group.end());
  return runChecks(argc, argv, checks);
}
