#!/usr/bin/env bash
# Plants each fault of scripts/mutations.txt in turn, rebuilds the unit tests in build/mutation and
# tells whether the native tests catch it. A tool for developers, not part of the test command.
#
#   bash scripts/mutation-check.sh                     every fault
#   bash scripts/mutation-check.sh --file Polling      faults in files matching *Polling*
#   bash scripts/mutation-check.sh --id 'settings-*'   faults by id (glob; repeatable)
#   bash scripts/mutation-check.sh --check             only check that every text is still found once
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
export CMAKE_CXX_COMPILER_LAUNCHER="${CMAKE_CXX_COMPILER_LAUNCHER:-$(command -v ccache || true)}"
exec python3 "$here/mutation-check.py" "$@"
