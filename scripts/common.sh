# Helpers shared by the project's scripts (sourced, not run).

# The Debian packages the build, the tests, the demo and the installer packages need.
RX9400_PACKAGES=(cmake g++ make googletest libgtest-dev libgmock-dev libbenchmark-dev nlohmann-json3-dev
  g++-mingw-w64-x86-64 g++-mingw-w64-i686 mingw-w64-tools binutils-mingw-w64-x86-64 binutils-mingw-w64-i686
  wine wine64 libwine-dev xvfb xauth imagemagick gnuplot-nox msitools wixl)

# Installs the packages that are missing (as root), or says which are missing and fails.
ensure_packages() {
  local missing=()
  for package in "${RX9400_PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  if [ "$(id -u)" -ne 0 ]; then
    echo "Missing packages: ${missing[*]}" >&2
    echo "Install them with: sudo apt-get install --no-install-recommends ${missing[*]}" >&2
    return 1
  fi
  echo "Installing ${missing[*]}"
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# Configures and builds one CMake preset.
build_preset() {
  local preset=$1; shift
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$(nproc)" "$@"
}

# A private Wine prefix under build/, created once and reused.
use_wine_prefix() {
  export WINEPREFIX="$PWD/build/wineprefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  if [ ! -f "$WINEPREFIX/system.reg" ]; then
    echo "Creating the Wine prefix $WINEPREFIX"
    wine wineboot -i >/dev/null 2>&1 || true
    wineserver -w
  fi
}
