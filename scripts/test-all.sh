#!/usr/bin/env bash
# Runs every test of the project on a fresh Debian 12 machine: installs what is missing (as root),
# builds the four presets, runs the native tests (plain and with sanitizers), and runs the Windows
# builds under Wine: the x86_64 build under 64-bit Wine and, where 32-bit Wine is there or can be
# installed, the i686 build under 32-bit Wine (the plug-in end to end, the demo's session recorded and
# replayed), then the installer packages; they share one Wine prefix and run one
# after the other. Ends with the count of code and test lines.
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

bitnesses=(64)
if ensure_wine32; then
  bitnesses+=(32)
else
  echo "== 32-bit Wine cannot be installed here: the i686 build is not run, only the x86_64 build"
fi
for bits in "${bitnesses[@]}"; do
  echo "== Windows end-to-end checks ($bits-bit)"
  bash tests/e2e/run.sh "$bits"
  echo "== Record and replay under Wine ($bits-bit)"
  bash tests/e2e/replay/run.sh "$bits"
  echo "== The samples in the script host under Wine ($bits-bit)"
  bash tests/e2e/samples/run.sh "$bits"
done
echo "== The automation reference and its help strings, under Wine"
bash tests/e2e/reference/run.sh
echo "== Windows installer packages under Wine"
bash tests/e2e/install/run.sh

echo "== Lines"
count_lines
