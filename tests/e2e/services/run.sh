#!/usr/bin/env bash
# The plug-in's shared services under Wine (x86_64 build, which must have been built): the catalogue
# through a registered language component and after it was unregistered, the executive's registry
# setting, the trace channel to the real viewer, the hidden date picker and the number texts against
# oleaut32. Ends with "services: N passed, M failed" and a non-zero exit status when a check failed.
set -uo pipefail
cd "$(dirname "$0")/../../.."
source tests/e2e/lib.sh

component=$(windows_path "$bin/rx9400-testlanguage.dll")
artifacts=build/e2e-artifacts/services
rm -rf "$artifacts" && mkdir -p "$artifacts"
service_checks() {
  check_lines "rx9400-servicechecks $*" run_wine 120 "$bin/rx9400-servicechecks.exe" \
    "--artifacts=$(windows_path "$artifacts")" "$@"
}

check "regsvr32 registers the test language component" run_wine 30 regsvr32 /s "$component"
service_checks language-registered
check "regsvr32 /u unregisters the test language component" run_wine 30 regsvr32 /s /u "$component"
service_checks language-unregistered registry trace-lines datepicker numbers format-picture
finish services
