#!/usr/bin/env bash
# The automation reference under Wine: every class, interface, member and argument of both type
# libraries has its help, and docs/automation-reference.md is what the built libraries give
# (RX9400_UPDATE_DOCS=1 writes it anew). Ends with "reference: N passed, M failed".
set -uo pipefail
cd "$(dirname "$0")/../../.."
source tests/e2e/lib.sh
reference=docs/automation-reference.md
generated=build/e2e-artifacts/reference/automation-reference.md
rm -f "$generated"
mkdir -p "$(dirname "$generated")"
passed=0
failed=0
outcome() {
  if [ "$1" -eq 0 ]; then echo "PASS $2"; passed=$((passed + 1)); else echo "FAIL $2"; failed=$((failed + 1)); fi
}

output=$(run_wine 120 "$bin/rx9400-typelib-reference.exe" --output "$(windows_path "$generated")" \
  "$(windows_path "$bin/TamsaRX9400VTI.dll")" "$(windows_path "$bin/MsgForm.exe")" 2>&1)
status=$?
printf '%s\n' "$output" | tr -d '\r' | sed '/^$/d; s/^/  /'
outcome "$status" "every class, interface, member and argument of both type libraries has its help"

if [ -s "$generated" ] && [ -n "${RX9400_UPDATE_DOCS:-}" ]; then cp "$generated" "$reference"; fi
[ -s "$generated" ] && diff -u "$reference" "$generated" >"$generated.diff"
status=$?
[ "$status" -ne 0 ] && head -40 "$generated.diff" 2>/dev/null | sed 's/^/  /' &&
  echo "  $reference differs from the build's: RX9400_UPDATE_DOCS=1 bash tests/e2e/reference/run.sh writes it anew"
outcome "$status" "$reference is the one the built type libraries give"

wineserver -k 2>/dev/null || true
echo "reference: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
