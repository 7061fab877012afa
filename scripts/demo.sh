#!/usr/bin/env bash
# The main job on a fresh Debian 12 machine: a test procedure run through the plug-in against the
# detector simulator, the way the executive runs it. It installs what is missing, builds the Windows
# plug-in, registers it in a private Wine prefix, and runs rx9400-demo: register, scan and connect
# (the dialogs are shown on a virtual display and picked by an automation tool), push the settings,
# arm, poll until the exposure is measured, and print the measured values. Then the all-in-one
# detector is connected again alone and its waveforms downloaded: their first values are printed, and
# each whole waveform is written to build/demo/ and plotted there as a PNG (aio-waveform.png, kV over
# ms; mas-waveform.png, mA over ms), beside pictures of the dialogs.
#
# Point it at a scenario of your own with TAMSA_SIM_SCENARIO=path/to/scenario.json (sim/README.md).
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

if [ -z "${RX9400_ON_XVFB:-}" ]; then
  ensure_packages
  echo "Building the Windows plug-in and the detector simulator..."
  build_preset mingw64 >/dev/null
fi
# A Wine session opens its windows on the display it started with: the whole run gets its own.
on_virtual_display "$@"

use_wine_prefix
bin=$(build_dir_for_bits 64)/bin
pictures=build/demo
rm -rf "$pictures" && mkdir -p "$pictures"
if [ -n "${TAMSA_SIM_SCENARIO:-}" ]; then
  export TAMSA_SIM_SCENARIO="$(windows_path "$TAMSA_SIM_SCENARIO")"
  echo "Scenario: $TAMSA_SIM_SCENARIO"
fi
wine_tool 64 regsvr32 /s "$(windows_path "$bin/TamsaRX9400VTI.dll")"

# The scan is over in a second: its picture is taken on the side, when the dialog is caught.
(timeout 60 "$(wine_for_bits 64)" "$bin/rx9400-automate.exe" "--artifacts=$(windows_path "$pictures")" \
  --timeout=30 --process=rx9400-demo.exe window "Scanning..." screenshot scan-dialog.bmp >/dev/null 2>&1 || true) &
status=0
run_demo_connected 64 "$pictures" --waveforms "$(windows_path "$pictures")" || status=$?
wait
# DATA PNG LABEL: the waveform over time, titled by the data file's first line.
plot() {
  [ -s "$1" ] || return 0
  gnuplot -e "set terminal pngcairo size 1000,520 font ',11'; set output '$2';
    set title '$(sed -n '1s/^# //p' "$1" | tr -d "'\r")'; set xlabel 'time (ms)'; set ylabel '$3';
    set grid; set key off; plot '$1' using 1:2 with lines linewidth 2 linecolor rgb '#1f5fa8'"
}
plot "$pictures/aio-waveform.dat" "$pictures/aio-waveform.png" "tube voltage (kV)"
plot "$pictures/mas-waveform.dat" "$pictures/mas-waveform.png" "tube current (mA)"
for picture in "$pictures"/*.bmp; do
  [ -f "$picture" ] && convert "$picture" "${picture%.bmp}.png" && rm -f "$picture"
done
wineserver -k 2>/dev/null || true
echo
echo "Waveform plots: $(ls "$pictures"/*-waveform.png 2>/dev/null | tr '\n' ' ')"
echo "Pictures of the dialogs: $(ls "$pictures"/*.png 2>/dev/null | grep -v -- '-waveform\.png' | tr '\n' ' ')"
exit "$status"
