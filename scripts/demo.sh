#!/usr/bin/env bash
# The main job on a fresh Debian 12 machine: builds the plug-in's device layer and the detector
# simulator, then scans the simulator's detectors through the plug-in's wrapper and lists them.
# Point it at a scenario of your own with TAMSA_SIM_SCENARIO=path/to/scenario.json.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

ensure_packages
build_preset native --target rx9400-probe TamsaMBDll >/dev/null
echo "Detectors of the simulator${TAMSA_SIM_SCENARIO:+ (scenario $TAMSA_SIM_SCENARIO)}:"
echo
build/native/bin/rx9400-probe --library "$PWD/build/native/bin/libTamsaMBDll.so"
