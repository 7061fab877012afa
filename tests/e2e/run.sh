#!/usr/bin/env bash
# End-to-end checks of the Windows build: the exports of both simulator DLLs, and the x86_64 build
# run under Wine (only 64-bit Wine is available here). Ends with a "N passed, M failed" line.
set -uo pipefail
cd "$(dirname "$0")/../.."
source scripts/common.sh

passed=0
failed=0
check() {
  local name=$1; shift
  if "$@"; then
    echo "PASS $name"; passed=$((passed + 1))
  else
    echo "FAIL $name"; failed=$((failed + 1))
  fi
}

# The names every build of the device library must export, undecorated, read from the one list.
expected_exports() {
  sed -n 's/^MB_FUNCTION([^,]*, *\([A-Za-z0-9_]*\),.*/\1/p' src/device/MBFunctionList.h | sort
}

exports_of() {
  local objdump=$1 dll=$2
  "$objdump" -p "$dll" | awk '/\[Ordinal\/Name Pointer\] Table/{table=1; next} table && NF==0{exit} table{print $NF}' \
    | grep '^MB' | sort
}

dll_exports_undecorated() {
  local objdump=$1 dll=$2
  [ -f "$dll" ] || { echo "  $dll is missing"; return 1; }
  local diff_out
  diff_out=$(diff <(expected_exports) <(exports_of "$objdump" "$dll")) || { echo "$diff_out" | head -20; return 1; }
}

check "i686 TamsaMBDll.dll exports every function undecorated" \
  dll_exports_undecorated i686-w64-mingw32-objdump build/mingw32/bin/TamsaMBDll.dll
check "x86_64 TamsaMBDll.dll exports every function" \
  dll_exports_undecorated x86_64-w64-mingw32-objdump build/mingw64/bin/TamsaMBDll.dll

use_wine_prefix
probe="build/mingw64/bin/rx9400-probe.exe"
wine_probe_finds_every_export() {
  # The probe is started from another folder: the library must be found beside the probe itself.
  (cd build && timeout 120 wine "../$probe" --check-exports)
}
wine_probe_lists_the_default_detectors() {
  local output
  output=$(cd build && timeout 120 wine "../$probe" 2>&1) || { echo "$output"; return 1; }
  echo "$output" | sed 's/^/  /'
  echo "$output" | grep -q 'AIO+MAS' && echo "$output" | grep -q 'DOSE'
}
check "the Windows loader finds the library beside the plug-in and resolves every export" wine_probe_finds_every_export
check "the Windows build scans and lists the simulator's detectors" wine_probe_lists_the_default_detectors
wineserver -k 2>/dev/null || true

echo "e2e: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
