#!/usr/bin/env bash
# End-to-end checks of the plug-in's shared services under Wine (x86_64 build): the catalogue through
# a registered language component and without one, a translated dialog, the executive's registry
# setting, the trace channel to the real viewer, the hidden date picker and the number texts against
# oleaut32. Builds nothing: the mingw64 preset must have been built. Ends with
# "services: N passed, M failed" and a non-zero exit code when a check failed.
set -uo pipefail
cd "$(dirname "$0")/../../.."

# Every Wine program of the run shares one X display (the trace viewer's window must be seen by the
# checks' window search): a display already there is used, else the whole run goes under xvfb-run.
if [ -z "${DISPLAY:-}" ]; then
  command -v xvfb-run >/dev/null || { echo "xvfb-run is missing: apt-get install xvfb xauth" >&2; exit 1; }
  exec timeout 170 xvfb-run -a -s "-screen 0 1024x768x24" bash "$0" "$@"
fi

source scripts/common.sh
use_wine_prefix
# A Wine session left on the prefix from another display cannot open windows here: let it end first.
timeout 30 wineserver -w 2>/dev/null || true
trap 'wineserver -k 2>/dev/null || true' EXIT
# Wine draws window frames itself (no window manager on the virtual display): pictures show captions.
timeout --kill-after=5 30 wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1

bin=build/mingw64/bin
checks="$bin/rx9400-servicechecks.exe"
component="$bin/rx9400-testlanguage.dll"
viewer="$bin/rx9400-traceviewer.exe"
artifacts=build/e2e-artifacts/services
mkdir -p "$artifacts"
artifacts_win="Z:$PWD/$artifacts"
record="$artifacts/trace.rec"
settings='HKLM\Software\Brume\tamsa\Executive\System'

passed=0
failed=0
pass() { echo "PASS $1"; passed=$((passed + 1)); }
fail() { echo "FAIL $1"; failed=$((failed + 1)); }

# Runs checks of the program, passing its PASS/FAIL lines through and counting them; a run that ends
# badly without a FAIL line (a hang, a crash before the filter) counts as one failure.
# Usage: run_checks LABEL [--record=FILE] CHECK... (LABEL, when not empty, is added to each line's name).
run_checks() {
  local label=$1; shift
  local output status
  output=$(timeout --kill-after=5 60 wine "$checks" --artifacts="$artifacts_win" "$@" 2>&1)
  status=$?
  local counted=0 line
  while IFS= read -r line; do
    case "$line" in
      "PASS "*) echo "$line${label:+ ($label)}"; passed=$((passed + 1)); counted=1 ;;
      "FAIL "*) echo "$line${label:+ ($label)}"; failed=$((failed + 1)); counted=1 ;;
      *) [ -n "$line" ] && echo "  $line" ;;
    esac
  done <<<"$output"
  if [ "$status" -ne 0 ] && ! grep -q '^FAIL ' <<<"$output"; then
    fail "$* ended with status $status and no FAIL line"
  fi
  [ "$counted" -eq 1 ] || [ "$status" -ne 0 ] || fail "$* printed no result"
}

for file in "$checks" "$component" "$viewer"; do
  [ -f "$file" ] || { echo "FAIL $file is missing: build the mingw64 preset first"; exit 1; }
done

# Language component: registered, used, then unregistered again.
if timeout --kill-after=5 30 wine regsvr32 /s "Z:$PWD/$component" >/dev/null 2>&1; then
  pass "regsvr32 registers the test language component"
  run_checks "" language-registered dialog
else
  fail "regsvr32 registers the test language component"
fi
if timeout --kill-after=5 30 wine regsvr32 /u /s "Z:$PWD/$component" >/dev/null 2>&1; then
  pass "regsvr32 /u unregisters the test language component"
else
  fail "regsvr32 /u unregisters the test language component"
fi
run_checks "" language-unregistered
if [ -f "$artifacts/dialog.bmp" ]; then
  convert "$artifacts/dialog.bmp" "$artifacts/dialog.png" && rm -f "$artifacts/dialog.bmp"
fi

# The executive's setting: values written by the platform's reg tool, then the topmost query.
reg_value() { timeout --kill-after=5 30 wine reg add "$settings" /v "Test guide settings" /f "$@" >/dev/null 2>&1; }
registry_case() {
  local label=$1 expected=$2; shift 2
  if [ "$1" = delete-value ]; then
    timeout --kill-after=5 30 wine reg add "$settings" /f >/dev/null 2>&1
    timeout --kill-after=5 30 wine reg delete "$settings" /v "Test guide settings" /f >/dev/null 2>&1
  elif [ "$1" = delete-key ]; then
    timeout --kill-after=5 30 wine reg delete "$settings" /f >/dev/null 2>&1
  else
    reg_value "$@" || { fail "registry: reg add $* for $label"; return; }
  fi
  run_checks "$label" "registry-$expected"
}
while read -r type data expected; do
  registry_case "$type $data" "$expected" /t "$type" /d "$data"
done <<'EOF'
REG_DWORD 0 false
REG_DWORD 1 false
REG_DWORD 3 false
REG_DWORD 4 true
REG_DWORD 5 false
REG_DWORD 8 false
REG_DWORD 9 true
REG_DWORD 100 true
REG_DWORD 0x7FFFFFFF true
REG_DWORD 0xFFFFFFFF false
REG_DWORD 0x80000000 false
REG_SZ 4 false
REG_SZ 9 false
REG_BINARY 04000000 false
EOF
registry_case "value deleted" false delete-value
registry_case "key deleted" false delete-key
run_checks "" registry-fresh

# Trace channel: the viewer records every message; the checks compare the bytes.
rm -f "$record"
viewer_log=$(mktemp)
wine "$viewer" --record "Z:$PWD/$record" >"$viewer_log" 2>&1 &
viewer_pid=$!
for _ in $(seq 1 100); do
  grep -q 'rx9400-traceviewer ready' "$viewer_log" && break
  sleep 0.2
done
if grep -q 'rx9400-traceviewer ready' "$viewer_log"; then
  run_checks "" --record="Z:$PWD/$record" trace-lines
else
  fail "trace-lines: the trace viewer did not start"
fi
kill "$viewer_pid" 2>/dev/null
wait "$viewer_pid" 2>/dev/null
rm -f "$viewer_log"
run_checks "" --record="Z:$PWD/$artifacts/trace-late.rec" trace-late-viewer

run_checks "" datepicker numbers format-picture

echo "services: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
