# What the runners under tests/e2e share (sourced from the repository's root; the runner's arguments
# follow): the bitness to check, given as the first argument (32 or 64, 64 when none), a virtual
# display and the private Wine prefix (scripts/common.sh), Wine programs of that bitness under time
# limits, and PASS/FAIL lines counted into a summary. Sets bits, bin (the build's programs) and
# artifacts_root (pictures and logs, one folder per bitness).
source scripts/common.sh
bits=${1:-64}
case $bits in
  32 | 64) ;;
  *) echo "usage: $0 [32|64]" >&2; exit 2 ;;
esac
on_virtual_display "$@"
if [ "$bits" = 32 ] && ! wine32_available; then
  echo "32-bit Wine is missing: the i686 build cannot run (scripts/common.sh: ensure_wine32)" >&2
  exit 1
fi
export WINEPREFIX="$PWD/build/wineprefix"
# A Wine session left over from a run on another display would serve this one: let it end first.
timeout 30 wineserver -w 2>/dev/null || true
use_wine_prefix
trap 'wineserver -k 2>/dev/null || true' EXIT
bin=$(build_dir_for_bits "$bits")/bin
artifacts_root=build/e2e-artifacts/win$bits
passed=0
failed=0

# LIMIT PROGRAM ARGS: a program of the build; LIMIT TOOL ARGS (run_tool): one of Wine's own tools.
run_wine() {
  local limit=$1; shift
  timeout --kill-after=5 "$limit" "$(wine_for_bits "$bits")" "$@"
}
run_tool() {
  run_wine "$1" "$(wine_tool_path "$bits" "$2")" "${@:3}"
}

# One check: NAME COMMAND...; the command's output is shown indented.
check() {
  local name=$1 output status; shift
  output=$("$@" 2>&1)
  status=$?
  printf '%s\n' "$output" | tr -d '\r' | sed '/^$/d; s/^/  /'
  if [ "$status" -eq 0 ]; then echo "PASS $name"; passed=$((passed + 1)); else echo "FAIL $name"; failed=$((failed + 1)); fi
}

# A program that prints its own PASS/FAIL lines: each is counted; a failing exit without a FAIL line (a
# crash, a time-out) counts as the failure NAME.
check_lines() {
  local name=$1 output status before=$failed line; shift
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
  done < <(find build/e2e-artifacts -name "*.bmp" 2>/dev/null)
  wineserver -k 2>/dev/null || true
  echo "$1 ($bits-bit): $passed passed, $failed failed"
  [ "$failed" -eq 0 ]
}
