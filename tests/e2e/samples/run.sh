#!/usr/bin/env bash
# The samples (samples/*.vbs) as a test engineer runs them: each in rx9400-scripthost under Wine against
# the simulator, its dialogs answered from another process by rx9400-automate, a few lines of its output
# checked, so that a sample never goes stale. README.md in this folder tells what each check proves.
#
#   bash tests/e2e/samples/run.sh [64|32 [--installed FOLDER]]
#
# 64 (the default) or 32: the build of that bitness. --installed FOLDER: the installed script host,
# samples and simulator (FOLDER/Simulator), with the plug-in the package registered; otherwise the
# build's, registered here and unregistered at the end. Ends with "samples: N passed, M failed".
set -uo pipefail
cd "$(dirname "$0")/../../.."
source tests/e2e/lib.sh
installed=
[ "${2:-}" = --installed ] && installed=$3
build=$(build_dir_for_bits "$bits")

artifacts=build/e2e-artifacts/samples-$bits${installed:+-installed}
rm -rf "$artifacts"
mkdir -p "$artifacts"
automate=$build/bin/rx9400-automate.exe
plugin=$(windows_path "$build/bin/TamsaRX9400VTI.dll")
if [ -n "$installed" ]; then
  scripthost=$(windows_path "$installed/rx9400-scripthost.exe") samples=$(windows_path "$installed/Samples")
  scripthost_unix=$installed/rx9400-scripthost.exe
  library="\"--library-folder=$(windows_path "$installed/Simulator")\""
else
  scripthost=$(windows_path "$build/bin/rx9400-scripthost.exe") samples=$(windows_path samples) library=
  scripthost_unix=$build/bin/rx9400-scripthost.exe
  check "regsvr32 registers the $bits-bit plug-in" run_tool 60 regsvr32 /s "$plugin"
  trap 'run_tool 60 regsvr32 /s /u "$plugin"; wineserver -k 2>/dev/null || true' EXIT
fi

# Runs SAMPLE with ARGUMENTS under the simulator's SCENARIO (empty: the built-in one), STEPS answering its
# dialogs, and checks that its output holds every line matching a pattern of WANTED (one per line).
sample() {
  local scenario=$1 name=$2 arguments=$3 wanted=$4 output pattern; shift 4
  output=$(TAMSA_SIM_SCENARIO="${scenario:+$(windows_path "$scenario")}" run_wine 150 "$automate" --timeout=60 \
    "--artifacts=$(windows_path "$artifacts")" \
    "--run=\"$scripthost\" --timeout=120 $library \"$samples\\$name.vbs\" $arguments" "$@" 2>&1 | tr -d '\r')
  printf '%s\n' "$output" | tee "$artifacts/$name.txt" | grep -v '^automate: \(  \|picture\)'
  while IFS= read -r pattern; do
    grep -q -- "$pattern" <<<"$output" || { echo "missing: $pattern"; return 1; }
  done <<<"$wanted"$'\nended with exit code 0'
}
connect_both=(window "Establish Connection" tick 0 tick 1 click Connect gone messagebox click OK)
connect_aio=(window "Establish Connection" tick 1 click Connect gone messagebox click OK)

check "measure-exposure.vbs prints every value of the all-in-one detector, the dosimeter and the mAs meter" \
  sample "" measure-exposure "" "kVp average (kV) *80.3
HVL *3.5
Bias voltage (V) *300
Dose per mAs *0.0617
Exposure measured in" "${connect_both[@]}"
waveforms() {
  sample "" download-waveforms "\"$(windows_path "$artifacts")\"" "kV-waveform.csv: 1500 values over 100 ms
mA-waveform.csv: 400 values over 100 ms" "${connect_aio[@]}" || return 1
  [ "$(sed -n 3p "$artifacts/kV-waveform.csv" | tr -d '\r')" = "0.0667,1.5" ] || { echo "kV-waveform.csv begins otherwise"; return 1; }
}
check "download-waveforms.vbs saves the kV and mA waveforms of the exposure" waveforms
# An installation registers MsgForm.exe: the notice boxes are then its forms, in a process of its own,
# answered by a second rx9400-automate.
supervise() {
  local boxes=$artifacts/msgform.txt helper=
  : >"$boxes"
  # MsgForm.exe ends when its last box is released and starts again for the next one: every instance is
  # answered until the sample has ended.
  rm -f "$artifacts/sample-ended"
  if [ -n "$installed" ]; then
    while [ ! -e "$artifacts/sample-ended" ]; do
      run_wine 30 "$automate" --timeout=5 "--artifacts=$(windows_path "$artifacts")" --process=MsgForm.exe dismiss-all
    done >"$boxes" 2>&1 &
    helper=$!
  fi
  sample tests/e2e/samples/supervision.json supervise-power "" "Battery: 80 %
Battery: 15 %
The detector sleeps.
Wake Up button offered
The detector is awake again." window "Establish Connection" tick 0 click Connect gone dismiss-all
  local status=$?
  touch "$artifacts/sample-ended"
  [ -z "$helper" ] || wait "$helper"
  [ "$status" -eq 0 ] || return 1
  for box in "Low Battery" "Detector Sleep"; do
    grep -q "window \"$box\"" "$artifacts/supervise-power.txt" "$boxes" || { echo "no box \"$box\""; return 1; }
  done
}
check "supervise-power.vbs reports the battery, answers the low-battery notice and wakes the sleeping detector" supervise
check "configure-dosimeter.vbs lists the chambers, keeps the dosimeter's settings and reports the chamber in use" \
  sample "" configure-dosimeter "" "chamber 1: IC-B 180cc
Settings differed: True; dose unit now 1
Report: ion chamber IC-A 6cc, cal factor RQR5, cal constant 1.2345E+09 R/C" \
  window "Establish Connection" tick 0 click Connect gone messagebox click Cancel
# The script host's own ends: a script's exit code, a script error with its place, the time limit.
host_ends() {
  local script=$artifacts/ends.vbs body wanted_code pattern output code
  while IFS='|' read -r body wanted_code pattern; do
    printf '%b\n' "$body" >"$script"
    output=$(run_wine 30 "$scripthost_unix" --timeout=2 "$(windows_path "$script")" 2>&1 | tr -d '\r')
    code=${PIPESTATUS[0]}
    grep -q -- "$pattern" <<<"$output" && [ "$code" = "$wanted_code" ] ||
      { echo "$body: exit code $code, output: $output"; return 1; }
  done <<'EOF_ENDS'
WScript.Echo "a", WScript.Arguments.Count\nWScript.Quit 7|7|^a 0$
Dim x\nx = 1 / 0|1|ends.vbs(2, 
WScript.Sleep 5000|3|time limit of 2 s
EOF_ENDS
}
check "the script host ends with WScript.Quit's code, 1 after a script error (with its line), 3 at the time limit" host_ends
finish samples
