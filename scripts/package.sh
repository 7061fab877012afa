#!/usr/bin/env bash
# Builds the plug-in's Windows Installer packages on Linux, for a lab administrator to deploy:
#   build/package/TamsaRX9400VTI-<version>-x64.msi and TamsaRX9400VTI-<version>-x86.msi
# It installs what is missing (as root), builds the mingw64 and mingw32 presets and, natively,
# rx9400-registry-wxs, which writes the plug-in's COM registration as the packages' own Registry rows
# (from the list DllRegisterServer writes), then runs wixl on packaging/TamsaRX9400VTI.wxs.
# The version is the project's (CMakeLists.txt). --version X.Y.Z stamps the packages with another one
# (their files keep the build's): a second package to upgrade with, as the install checks do.
#
# With a code-signing certificate, every Windows binary is signed before it goes into a package, and
# then each package (Authenticode, SHA-256, osslsigncode):
#   RX9400_SIGN_PFX        the certificate with its private key, a PKCS#12 file
#   RX9400_SIGN_PASSWORD   its password
#   RX9400_SIGN_TIMESTAMP  a timestamp server's URL (optional)
# Without RX9400_SIGN_PFX the packages are built unsigned, and the script says so. SHA256SUMS beside the
# packages lists the checksum of every package in the output folder.
#
#   bash scripts/package.sh [--version X.Y.Z] [--output FOLDER]
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

version=
output=build/package
while [ $# -gt 0 ]; do
  case $1 in
    --version) version=$2; shift 2 ;;
    --output) output=$2; shift 2 ;;
    *) echo "usage: scripts/package.sh [--version X.Y.Z] [--output FOLDER]" >&2; exit 2 ;;
  esac
done

ensure_packages
for preset in mingw64 mingw32; do
  build_preset "$preset" >/dev/null
done
build_preset native --target rx9400-registry-wxs >/dev/null

built_version() {
  sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "build/$1/CMakeCache.txt"
}
if [ -z "$version" ]; then
  version=$(built_version mingw64)
  [ "$version" = "$(built_version mingw32)" ] || { echo "the two Windows builds have different versions" >&2; exit 1; }
fi
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || { echo "not a version X.Y.Z: $version" >&2; exit 2; }

# Signs FILE in place, when a certificate is given.
sign() {
  [ -n "${RX9400_SIGN_PFX:-}" ] || return 0
  local options=(-pkcs12 "$RX9400_SIGN_PFX" -h sha256 -n TamsaRX9400VTI)
  [ -z "${RX9400_SIGN_TIMESTAMP:-}" ] || options+=(-t "$RX9400_SIGN_TIMESTAMP")
  rm -f "$1.signed"
  # The password goes through a pipe, never on a command line that other users could list.
  osslsigncode sign "${options[@]}" -readpass <(printf '%s' "${RX9400_SIGN_PASSWORD:-}") -in "$1" -out "$1.signed" \
    >/dev/null && mv -f "$1.signed" "$1" ||
    { echo "cannot sign $1" >&2; rm -f "$1.signed"; return 1; }
}
if [ -n "${RX9400_SIGN_PFX:-}" ]; then
  [ -r "$RX9400_SIGN_PFX" ] || { echo "RX9400_SIGN_PFX: cannot read $RX9400_SIGN_PFX" >&2; exit 1; }
  command -v osslsigncode >/dev/null || { echo "osslsigncode is missing: apt-get install osslsigncode" >&2; exit 1; }
else
  echo "No certificate (RX9400_SIGN_PFX): the binaries and packages are not signed" >&2
fi

# Every Windows binary the packages ship, as the package's folders hold them.
shipped=(TamsaRX9400VTI.dll MsgForm.exe rx9400-demo.exe rx9400-probe.exe rx9400-traceviewer.exe
  rx9400-scripthost.exe TamsaMBDll.dll recorder/TamsaMBDll.dll)
mkdir -p "$output"
for arch in x64 x86; do
  case $arch in
    x64) preset=mingw64 bits=64 ;;
    x86) preset=mingw32 bits=32 ;;
  esac
  work=build/package/$arch
  # The binaries are copied and signed there: the build's own files stay as the linker wrote them.
  rm -rf "$work/bin"
  mkdir -p "$work/bin/recorder"
  for file in "${shipped[@]}"; do
    cp "build/$preset/bin/$file" "$work/bin/$file"
    sign "$work/bin/$file"
  done
  build/native/bin/rx9400-registry-wxs "$bits" >"$work/Registration.wxs"
  package=$output/TamsaRX9400VTI-$version-$arch.msi
  wixl -a "$arch" -D Arch="$arch" -D Version="$version" -D BinDir="$work/bin" -D SourceDir=. \
    -o "$package" packaging/TamsaRX9400VTI.wxs "$work/Registration.wxs"
  sign "$package"
  echo "$package"
done
(cd "$output" && sha256sum -- *.msi >SHA256SUMS)
echo "$output/SHA256SUMS"
