#!/usr/bin/env bash
# Record and replay under Wine: the demo's whole session is recorded with the recorder as the plug-in's
# TamsaMBDll.dll and the simulator behind it as TamsaMBDll.real.dll, then the demo runs again against
# the simulator replaying that session file (TAMSA_SIM_REPLAY). Its printed table and waveform values,
# and the waveform files it writes, must be the same both times. Needs a mingw64 build (TamsaRX9400VTI,
# TamsaMBDll, TamsaMBDllRecorder, rx9400-demo, rx9400-automate).
set -uo pipefail
cd "$(dirname "$0")/../../.."
source tests/e2e/lib.sh

work=build/e2e-replay
rm -rf "$work" && mkdir -p "$work/record" "$work/replay" "$work/record-waves" "$work/replay-waves"
session="$work/session.jsonl"

# FOLDER: the plug-in registered from FOLDER, where it finds its device library first.
register_from() {
  cp "$bin/TamsaRX9400VTI.dll" "$1/"
  run_wine 60 regsvr32 /s "$(windows_path "$1/TamsaRX9400VTI.dll")"
}
# WAVES OUTPUT: the demo with both detectors for the exposure, then the all-in-one one alone for its
# waveforms, the dialogs picked as scripts/demo.sh picks them; the demo's lines go to OUTPUT.
run_demo() {
  run_wine 300 "$bin/rx9400-automate.exe" --timeout=60 \
    --run="$(windows_path "$bin/rx9400-demo.exe") --waveforms $(windows_path "$1")" \
    window "Establish Connection" tick 0 tick 1 click Connect gone messagebox click OK \
    window "Establish Connection" tick 1 click Connect gone messagebox click OK 2>&1 |
    tr -d '\r' | grep -v '^rx9400-automate: ' >"$2"
}
# The table and the waveform values, without the lines naming where the files went.
shown() { grep -v -e 'written to' -e '^automate: ' "$1"; }

cp "$bin/recorder/TamsaMBDll.dll" "$work/record/TamsaMBDll.dll"
cp "$bin/TamsaMBDll.dll" "$work/record/TamsaMBDll.real.dll"
register_from "$work/record"
TAMSA_RECORDER_FILE="$(windows_path "$session")" run_demo "$work/record-waves" "$work/record.txt"
check "the demo measures through the recorder" grep -q 'Waveforms of detector' "$work/record.txt"
check "the session holds the demo's calls and both sections" bash -c \
  "head -1 '$session' | grep -q '\"version\":1' && grep -q '\"f\":\"MBGetMeasuredData\"' '$session' &&
   grep -q '\"f\":\"MBGetWaveformAvailabilityStatus\".*\"s\":\"' '$session' &&
   grep -q '\"f\":\"MBGetmAsWaveFormDataPoints\"' '$session'"

cp "$bin/TamsaMBDll.dll" "$work/replay/TamsaMBDll.dll"
register_from "$work/replay"
# A scenario without detectors beside the replay: only the recording can make the demo measure.
TAMSA_SIM_SCENARIO="$(windows_path sim/scenarios/no-detectors.json)" \
  TAMSA_SIM_LOG="$(windows_path "$work/replay-calls.log")" TAMSA_SIM_REPLAY="$(windows_path "$session")" \
  run_demo "$work/replay-waves" "$work/replay.txt"
check "the replayed demo prints the recorded table and waveform values" \
  diff <(shown "$work/record.txt") <(shown "$work/replay.txt")
check "the replayed waveform files are the recorded ones" diff -r "$work/record-waves" "$work/replay-waves"
check "every replayed call had its recorded answer" bash -c "! grep '^! replay' '$work/replay-calls.log'"

run_wine 60 regsvr32 /s /u "$(windows_path "$work/replay/TamsaRX9400VTI.dll")"
finish "Record and replay under Wine"
