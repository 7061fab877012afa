#!/usr/bin/env bash
# Builds the plug-in's Windows Installer packages on Linux, for a lab administrator to deploy:
#   build/package/TamsaRX9400VTI-<version>-x64.msi and TamsaRX9400VTI-<version>-x86.msi
# It installs what is missing (as root), builds the mingw64 and mingw32 presets and, natively,
# rx9400-registry-wxs, which writes the plug-in's COM registration as the packages' own Registry rows
# (from the list DllRegisterServer writes), then runs wixl on packaging/TamsaRX9400VTI.wxs.
# The version is the project's (CMakeLists.txt). --version X.Y.Z stamps the packages with another one
# (their files keep the build's): a second package to upgrade with, as the install checks do.
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

mkdir -p "$output"
for arch in x64 x86; do
  case $arch in
    x64) preset=mingw64 bits=64 ;;
    x86) preset=mingw32 bits=32 ;;
  esac
  work=build/package/$arch
  mkdir -p "$work"
  build/native/bin/rx9400-registry-wxs "$bits" >"$work/Registration.wxs"
  package=$output/TamsaRX9400VTI-$version-$arch.msi
  wixl -a "$arch" -D Arch="$arch" -D Version="$version" -D BinDir="build/$preset/bin" -D SourceDir=. \
    -o "$package" packaging/TamsaRX9400VTI.wxs "$work/Registration.wxs"
  echo "$package"
done
