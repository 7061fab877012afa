#!/usr/bin/env bash
# Record and replay under Wine: the demo's whole session is recorded with the recorder as the plug-in's
# TamsaMBDll.dll and the simulator behind it as TamsaMBDll.real.dll, then the demo runs again against
# the simulator replaying that session file (TAMSA_SIM_REPLAY). Its printed table and waveform values,
# and the waveform files it writes, must be the same both times; the demo's dialogs are picked from
# another process both times. Needs the build of the bitness given (32 or 64, 64 when none).
set -uo pipefail
cd "$(dirname "$0")/../../.."
source tests/e2e/lib.sh

work=build/e2e-replay/win$bits
rm -rf "$work" && mkdir -p "$work/record" "$work/replay" "$work/record-waves" "$work/replay-waves"
session="$work/session.jsonl"

# FOLDER: the plug-in registered from FOLDER, where it finds its device library first.
register_from() {
  cp "$bin/TamsaRX9400VTI.dll" "$1/"
  run_tool 60 regsvr32 /s "$(windows_path "$1/TamsaRX9400VTI.dll")"
}
# The table and the waveform values, without the lines naming where the files went.
shown() { grep -v -e 'written to' -e '^automate: ' "$1"; }

cp "$bin/recorder/TamsaMBDll.dll" "$work/record/TamsaMBDll.dll"
cp "$bin/TamsaMBDll.dll" "$work/record/TamsaMBDll.real.dll"
register_from "$work/record"
TAMSA_RECORDER_FILE="$(windows_path "$session")" \
  run_demo_connected "$bits" "$work" --waveforms "$(windows_path "$work/record-waves")" >"$work/record.txt"
check "the demo measures through the recorder, its dialogs driven from another process" \
  grep -q 'Waveforms of detector' "$work/record.txt"
check "the session holds the demo's calls and both sections" bash -c \
  "head -1 '$session' | grep -q '\"version\":1' && grep -q '\"f\":\"MBGetMeasuredData\"' '$session' &&
   grep -q '\"f\":\"MBGetWaveformAvailabilityStatus\".*\"s\":\"' '$session' &&
   grep -q '\"f\":\"MBGetmAsWaveFormDataPoints\"' '$session'"

cp "$bin/TamsaMBDll.dll" "$work/replay/TamsaMBDll.dll"
register_from "$work/replay"
# A scenario without detectors beside the replay: only the recording can make the demo measure.
TAMSA_SIM_SCENARIO="$(windows_path sim/scenarios/no-detectors.json)" \
  TAMSA_SIM_LOG="$(windows_path "$work/replay-calls.log")" TAMSA_SIM_REPLAY="$(windows_path "$session")" \
  run_demo_connected "$bits" "$work" --waveforms "$(windows_path "$work/replay-waves")" >"$work/replay.txt"
check "the replayed demo prints the recorded table and waveform values" \
  diff <(shown "$work/record.txt") <(shown "$work/replay.txt")
check "the replayed waveform files are the recorded ones" diff -r "$work/record-waves" "$work/replay-waves"
check "every replayed call had its recorded answer" bash -c "! grep '^! replay' '$work/replay-calls.log'"

run_tool 60 regsvr32 /s /u "$(windows_path "$work/replay/TamsaRX9400VTI.dll")"
finish "Record and replay under Wine"
