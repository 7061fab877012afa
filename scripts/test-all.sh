#!/usr/bin/env bash
# Runs every test of the project on a fresh Debian 12 machine: installs what is missing (as root),
# builds the four presets, runs the native tests (plain and with sanitizers), checks the Windows
# DLLs' exports and runs the Windows build under Wine (the plug-in end to end, the shared services,
# the demo's session recorded and replayed, then the installer packages; they share one Wine prefix
# and run one after the other).
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

ensure_packages
for preset in native native-asan mingw64 mingw32; do
  echo "== Building $preset"
  build_preset "$preset"
done

echo "== Native tests"
ctest --preset native -j "$(nproc)"
echo "== Native tests with AddressSanitizer and UndefinedBehaviorSanitizer"
ctest --preset native-asan -j "$(nproc)"

echo "== Windows end-to-end checks"
bash tests/e2e/run.sh
echo "== The automation reference and its help strings, under Wine" && bash tests/e2e/reference/run.sh
echo "== Windows checks of the shared services"
bash tests/e2e/services/run.sh
echo "== Record and replay under Wine"
bash tests/e2e/replay/run.sh
echo "== The samples in the script host under Wine"; bash tests/e2e/samples/run.sh
echo "== Windows installer packages under Wine"
bash tests/e2e/install/run.sh
