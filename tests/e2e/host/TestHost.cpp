// rx9400-testhost: a stand-in for the test-automation executive. It creates the plug-in's classes by
// ProgID in a single-threaded apartment and runs the checks named on its command line (--list shows
// them), one PASS or FAIL line each.
#include "HostChecks.h"

int main(int argc, char** argv) {
  using namespace rx9400::e2e;
  std::vector<Check> checks = comChecks();
  for (const auto& group : {sessionChecks(), exposureChecks(), waveformChecks(), msgFormChecks(),
                            reliabilityChecks(), badArgumentChecks()})
    checks.insert(checks.end(), group.begin(), group.end());
  return runChecks(argc, argv, checks);
}
