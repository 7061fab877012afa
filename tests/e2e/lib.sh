# What run.sh and services/run.sh share (sourced from the repository's root): a display and a Wine
# prefix of their own, Wine programs under time limits, and PASS/FAIL lines counted into a summary.

# Every Wine process of a run shares one virtual display: a Wine session started without a display
# cannot open windows later, and checks find other programs' windows by enumeration.
if [ -z "${RX9400_E2E_ON_XVFB:-}" ]; then
  command -v xvfb-run >/dev/null || { echo "xvfb-run is missing: apt-get install xvfb xauth" >&2; exit 1; }
  exec env RX9400_E2E_ON_XVFB=1 xvfb-run -a -s "-screen 0 1280x800x24" bash "$0" "$@"
fi
source scripts/common.sh
export WINEPREFIX="$PWD/build/wineprefix"
# A Wine session left over from a run on another display would serve this one: let it end first.
timeout 30 wineserver -w 2>/dev/null || true
use_wine_prefix
trap 'wineserver -k 2>/dev/null || true' EXIT
bin=build/mingw64/bin
passed=0
failed=0

run_wine() {
  local limit=$1; shift
  timeout --kill-after=5 "$limit" wine "$@"
}
# The Windows path of a file (Wine's drive Z: is the Unix root).
windows_path() {
  printf 'Z:%s' "$(realpath -m "$1" | tr / '\\')"
}
# Wine draws window frames itself (no window manager on the virtual display): pictures show captions.
run_wine 30 reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1

# One check: NAME COMMAND...; the command's output is shown indented.
check() {
  local name=$1; shift
  local output status
  output=$("$@" 2>&1)
  status=$?
  printf '%s\n' "$output" | tr -d '\r' | sed '/^$/d; s/^/  /'
  if [ "$status" -eq 0 ]; then
    echo "PASS $name"; passed=$((passed + 1))
  else
    echo "FAIL $name"; failed=$((failed + 1))
  fi
}

# A program that prints its own PASS/FAIL lines: each is counted (SUFFIX, when given, is added to its
# name); a failing exit without a FAIL line (a crash, a time-out) counts as the failure NAME.
check_lines() {
  local name=$1; shift
  local output status before=$failed line
  output=$("$@" 2>&1)
  status=$?
  while IFS= read -r line; do
    case $line in
      "PASS "* | "FAIL "*) echo "$line"; [ "${line:0:4}" = PASS ] && passed=$((passed + 1)) || failed=$((failed + 1)) ;;
      ?*) echo "  $line" ;;
    esac
  done < <(printf '%s\n' "$output" | tr -d '\r')
  if [ "$status" -ne 0 ] && [ "$failed" -eq "$before" ]; then
    echo "FAIL $name (exit status $status)"; failed=$((failed + 1))
  fi
}

# BMP pictures to PNG, then the summary line; the exit status says whether everything passed.
finish() {
  local picture
  while IFS= read -r picture; do
    convert "$picture" "${picture%.bmp}.png" 2>/dev/null && rm -f "$picture"
  done < <(find build/e2e-artifacts -name '*.bmp' 2>/dev/null)
  wineserver -k 2>/dev/null || true
  echo "$1: $passed passed, $failed failed"
  [ "$failed" -eq 0 ]
}
