#!/usr/bin/env bash
# The plug-in's shared services under Wine, against one Windows build (which must have been built):
#
#   bash tests/e2e/services/run.sh [32|64]
#
# Ends with "services (BITS-bit): N passed, M failed" and a non-zero exit status when a check failed.
set -uo pipefail
cd "$(dirname "$0")/../../.."
source tests/e2e/lib.sh

check_lines rx9400-servicechecks run_wine 120 "$bin/rx9400-servicechecks.exe" numbers
finish services
