# Helpers shared by the project's scripts and the Windows checks (sourced from the repository's root,
# not run). What they give:
#
#   ensure_packages              installs the Debian packages that are missing (as root), or names them
#   build_preset PRESET [ARGS]   configures and builds one CMake preset
#   ensure_wine32                installs 32-bit Wine (as root) where it is missing; fails, saying why,
#                                where it cannot be installed
#   wine32_available             true when 32-bit Wine can run programs
#   wine_for_bits BITS           the Wine loader of that bitness (32 or 64): /usr/lib/wine/wine64 for
#                                64-bit programs and tools, the 32-bit loader for 32-bit ones
#   wine_tool BITS TOOL ARGS...  runs Wine's own TOOL (regsvr32, cscript, reg, msiexec) of that bitness
#   wine_tool_path BITS TOOL     what to hand wine_for_bits for that TOOL (for commands built elsewhere)
#   build_dir_for_bits BITS      build/mingw64 or build/mingw32: where that bitness's Windows build lies
#   use_wine_prefix              the private prefix build/wineprefix, made (again) where needed
#   on_virtual_display ARGS...   starts the calling script again on a virtual display of its own
#   windows_path FILE            the Windows path of a file (Wine's drive Z: is the Unix root)
#   registry_snapshot FILE       the prefix's registry as "[KEY]" and "[KEY] VALUE" lines, lower case
#   run_demo_connected BITS ARTIFACTS [DEMO ARGS]   the demo, its dialogs picked from another process
#
# A bitness is given as 32 or 64 wherever a helper takes one.

# The Debian packages the build, the tests, the demo and the installer packages need.
RX9400_PACKAGES=(cmake g++ make googletest libgtest-dev libgmock-dev libbenchmark-dev nlohmann-json3-dev
  g++-mingw-w64-x86-64 g++-mingw-w64-i686 mingw-w64-tools binutils-mingw-w64-x86-64 binutils-mingw-w64-i686
  wine wine64 libwine-dev xvfb xauth imagemagick gnuplot-nox msitools wixl osslsigncode openssl)

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

# --- 32-bit Wine -------------------------------------------------------------------------------------
wine32_available() {
  [ -x /usr/lib/wine/wine ] && /usr/lib/wine/wine --version >/dev/null 2>&1
}
wine_for_bits() {
  case $1 in
    64) echo /usr/lib/wine/wine64 ;;
    32) echo /usr/lib/wine/wine ;;
    *) echo "no bitness $1" >&2; return 1 ;;
  esac
}
wine_tool() {
  local bits=$1 tool=$2; shift 2
  "$(wine_for_bits "$bits")" "$(wine_tool_path "$bits" "$tool")" "$@"
}
# The program to hand that bitness's loader for Wine's TOOL: the 32-bit one from the WOW64 folder.
wine_tool_path() {
  if [ "$1" = 32 ]; then printf 'C:\\windows\\syswow64\\%s.exe' "$2"; else printf '%s' "$2"; fi
}
build_dir_for_bits() {
  case $1 in
    64) echo build/mingw64 ;;
    32) echo build/mingw32 ;;
    *) echo "no bitness $1" >&2; return 1 ;;
  esac
}

# The normal route, tried so that it cannot leave the i386 architecture added to dpkg (a foreign
# architecture whose indexes fail to download makes every later apt-get update fail; here the mirror's
# i386 security index is missing): first in a private apt state, where the i386 indexes must download
# and the install must resolve; only then is the architecture added, and taken away again if the
# install still fails.
wine32_from_multiarch() {
  local work status
  work=$(mktemp -d /tmp/rx9400-multiarch.XXXXXX)
  mkdir -p "$work/lists/partial" "$work/cache/archives/partial"
  local options=(-o "Dir::State::Lists=$work/lists" -o "Dir::Cache=$work/cache" -o "APT::Architectures::=amd64"
    -o "APT::Architectures::=i386")
  apt-get "${options[@]}" update -qq >/dev/null 2>&1 && apt-get "${options[@]}" -s install wine32:i386 >/dev/null 2>&1
  status=$?
  rm -rf "$work"
  [ "$status" -eq 0 ] || return 1
  (
    trap 'dpkg-query -W "wine32:i386" >/dev/null 2>&1 ||
      { dpkg --remove-architecture i386; apt-get update -qq >/dev/null 2>&1; }' EXIT INT TERM
    dpkg --add-architecture i386 && apt-get update -qq >/dev/null 2>&1 &&
      DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends wine32:i386 >/dev/null 2>&1
  )
}

# Where the normal route is refused: the i386 packages of the installed wine64's version downloaded with
# a private apt state (no foreign architecture added to dpkg), unpacked, and their i386 libraries and
# the 32-bit loader copied in; the system's own 32-bit glibc and compiler runtime are used.
wine32_unpacked() {
  local version work mirror codename status
  version=$(dpkg-query -W -f='${Version}' wine64) || return 1
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends libc6-i386 lib32gcc-s1 \
    lib32stdc++6 libz-mingw-w64 >/dev/null || return 1
  work=$(mktemp -d /tmp/rx9400-wine32.XXXXXX)
  mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' | grep -v security | head -1)
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  mkdir -p "$work/lists/partial" "$work/archives/partial" "$work/parts" "$work/staging"
  : >"$work/status"
  {
    echo "deb [arch=i386 signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $mirror $codename main"
    echo "deb [arch=i386 signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $mirror $codename-updates main"
  } >"$work/sources.list"
  local options=(-o "Dir::State=$work" -o "Dir::State::Lists=$work/lists" -o "Dir::State::status=$work/status"
    -o "Dir::Cache=$work" -o "Dir::Cache::Archives=$work/archives" -o "Dir::Etc::sourcelist=$work/sources.list"
    -o "Dir::Etc::sourceparts=$work/parts" -o APT::Architecture=i386 -o APT::Architectures=i386
    -o APT::Install-Recommends=false)
  apt-get "${options[@]}" update -qq >/dev/null 2>&1 &&
    apt-get "${options[@]}" --download-only -y -qq install "wine32=$version" "libwine=$version" >/dev/null 2>&1
  status=$?
  if [ "$status" -eq 0 ]; then
    local deb name arch all=()
    for deb in "$work"/archives/*.deb; do
      name=$(dpkg-deb -f "$deb" Package) arch=$(dpkg-deb -f "$deb" Architecture)
      case $name in libc6 | libgcc-s1 | libstdc++6 | gcc-12-base) continue ;; esac
      if [ "$arch" = all ]; then
        dpkg-query -W -f='${Status}' "$name" 2>/dev/null | grep -q 'install ok installed' || all+=("$name")
      else
        dpkg-deb -x "$deb" "$work/staging"
      fi
    done
    [ ${#all[@]} -eq 0 ] || DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
      "${all[@]}" >/dev/null
    # The system has merged /usr: lib/i386-linux-gnu goes under usr. No file a dpkg package owns is
    # replaced.
    if [ -d "$work/staging/lib/i386-linux-gnu" ]; then
      mkdir -p "$work/staging/usr/lib/i386-linux-gnu"
      cp -a "$work/staging/lib/i386-linux-gnu/." "$work/staging/usr/lib/i386-linux-gnu/"
    fi
    (cd "$work/staging" && find usr/lib/i386-linux-gnu usr/lib/wine/wine usr/lib/wine/wineserver32 \
      ! -type d 2>/dev/null) | while IFS= read -r file; do
      cmp -s "$work/staging/$file" "/$file" && continue
      [ -e "/$file" ] && dpkg -S "/$file" >/dev/null 2>&1 && continue
      mkdir -p "/$(dirname "$file")" && cp -a "$work/staging/$file" "/$file"
    done
    # What libwine's installation does: zlib1.dll marked as a Wine builtin (user32 needs it).
    local zlib=/usr/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll
    {
      head -c 64 /usr/i686-w64-mingw32/lib/zlib1.dll
      printf 'Wine builtin DLL'
      head -c 16 /dev/zero
      tail -c +97 /usr/i686-w64-mingw32/lib/zlib1.dll
    } >"$zlib"
    echo /usr/lib/i386-linux-gnu >/etc/ld.so.conf.d/rx9400-i386.conf
    ldconfig
  fi
  rm -rf "$work"
  return "$status"
}

ensure_wine32() {
  wine32_available && return 0
  if [ "$(id -u)" -ne 0 ]; then
    echo "32-bit Wine is missing (as root: apt-get install wine32:i386, or scripts/common.sh's ensure_wine32)" >&2
    return 1
  fi
  echo "Installing 32-bit Wine"
  wine32_from_multiarch && wine32_available && return 0
  echo "apt-get install wine32:i386 was refused; unpacking the i386 packages of Wine instead"
  wine32_unpacked && wine32_available && return 0
  echo "32-bit Wine cannot be installed here" >&2
  return 1
}

# --- Wine prefix, display, paths ---------------------------------------------------------------------
# A private Wine prefix under build/, created once and reused. A prefix made before 32-bit Wine was there
# has no 32-bit system folder (registration in it fails): it is made again.
use_wine_prefix() {
  export WINEPREFIX="$PWD/build/wineprefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  if [ -f "$WINEPREFIX/system.reg" ] && wine32_available &&
    [ ! -f "$WINEPREFIX/drive_c/windows/syswow64/kernel32.dll" ]; then
    echo "Making the Wine prefix again: it was made without 32-bit Wine"
    wineserver -k 2>/dev/null || true
    rm -rf "$WINEPREFIX"
  fi
  if [ ! -f "$WINEPREFIX/system.reg" ]; then
    echo "Creating the Wine prefix $WINEPREFIX"
    env -u WINEPATH wine wineboot -i >/dev/null 2>&1 || true
    wineserver -w
  fi
  # Wine draws window frames itself (no window manager on the virtual display): pictures show captions.
  timeout 30 "$(wine_for_bits 64)" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 || true
}

# Every Wine process of a run shares one virtual display: a Wine session started without a display
# cannot open windows later, and checks find other programs' windows by enumeration. Call it with the
# script's arguments; it returns on the display.
on_virtual_display() {
  [ -n "${RX9400_ON_XVFB:-}" ] && return 0
  command -v xvfb-run >/dev/null || { echo "xvfb-run is missing: apt-get install xvfb xauth" >&2; exit 1; }
  exec env RX9400_ON_XVFB=1 xvfb-run -a -s "-screen 0 1280x800x24" bash "$0" "$@"
}

windows_path() {
  printf 'Z:%s' "$(realpath -m "$1" | tr / '\\')"
}

# Wine writes the registry to the prefix's files when its session ends: the session is ended first.
registry_snapshot() {
  wineserver -k 2>/dev/null
  timeout 30 wineserver -w 2>/dev/null
  local root
  for root in hkey_local_machine:system hkey_current_user:user; do
    awk -v root="${root%:*}" '/^\[/ { key = substr($0, 2, index($0, "]") - 2); print "[" root "\\" key "]"; next }
      /^[@"]/ { print "[" root "\\" key "] " $0 }' "$WINEPREFIX/${root#*:}.reg"
  done | sed 's/\\\\/\\/g' | tr '[:upper:]' '[:lower:]' | sort -u >"$1"
}

# The demo with both detectors for the exposure, then the all-in-one detector alone for its waveforms,
# the connect dialog ticked and the calibration reports answered by rx9400-automate from another
# process; pictures of the dialogs go to ARTIFACTS. The demo's lines and the reports' texts are printed.
# DEMO_EXE names another demo (the installed one) by its Windows path.
run_demo_connected() {
  local bits=$1 artifacts=$2 bin; shift 2
  bin=$(build_dir_for_bits "$bits")/bin
  timeout --kill-after=5 300 "$(wine_for_bits "$bits")" "$bin/rx9400-automate.exe" --timeout=60 \
    "--artifacts=$(windows_path "$artifacts")" "--run=\"${DEMO_EXE:-$(windows_path "$bin/rx9400-demo.exe")}\" $*" \
    window "Establish Connection" screenshot connect-dialog.bmp tick 0 tick 1 screenshot connect-ticked.bmp \
    click Connect gone messagebox screenshot calibration-report.bmp print click OK \
    window "Establish Connection" tick 1 click Connect gone messagebox click OK 2>&1 |
    tr -d '\r' | grep -v '^rx9400-automate: '
  return "${PIPESTATUS[0]}"
}

# The project's line count: non-blank lines that are not only a // comment, of tracked C and C++ sources
# outside any tests/ folder (code), against tracked sources and scripts inside tests/ (tests).
count_lines() {
  local code tests
  code=$(git ls-files -z | grep -zE '\.(cpp|cc|h|hpp|c|idl|rc|def)$' | grep -zvE '(^|/)tests/' |
    xargs -0 -r cat 2>/dev/null | grep -cvE '^[[:space:]]*(//.*)?$')
  tests=$(git ls-files -z | grep -zE '(^|/)tests/.*\.(cpp|cc|h|hpp|c|vbs|js|sh)$' |
    xargs -0 -r cat 2>/dev/null | grep -cvE '^[[:space:]]*(//.*)?$')
  echo "Lines: $code code, $tests tests ($((tests * 100 / code)) % of the code)"
}
