#!/usr/bin/env bash
# End-to-end checks of one Windows build under Wine, the way the executive runs it: the device library's
# exports, the plug-in registered with regsvr32 (machine-wide and per user), driven by a VBScript client
# and by the C++ test host, its windows driven by automation, unregistered again.
#
#   bash tests/e2e/run.sh [32|64]      (the i686 build under 32-bit Wine, or the x86_64 build; 64 when none)
#
# README.md in this folder says what each check proves; pictures land in build/e2e-artifacts/winBITS/.
# Ends with "e2e (BITS-bit): N passed, M failed".
set -uo pipefail
cd "$(dirname "$0")/../.."
source tests/e2e/lib.sh

# The names the device library must export, undecorated, against what the build of BITS has. Both
# builds are looked at by the 64-bit run, which every machine can make.
exports_undecorated() {
  local objdump
  objdump=$([ "$1" = 32 ] && echo i686 || echo x86_64)-w64-mingw32-objdump
  diff <(sed -n 's/^MB_FUNCTION([^,]*, *\([A-Za-z0-9_]*\),.*/\1/p' src/device/MBFunctionList.h | sort) \
    <("$objdump" -p "$(build_dir_for_bits "$1")/bin/TamsaMBDll.dll" | awk '/\[Ordinal\/Name Pointer\] Table/ { t = 1; next }
      t && NF == 0 { exit } t { print $NF }' | grep '^MB' | sort) | head -20
  [ "${PIPESTATUS[0]}" -eq 0 ]
}
for build in $([ "$bits" = 64 ] && echo 32) "$bits"; do
  check "the $build-bit TamsaMBDll.dll exports every function undecorated" exports_undecorated "$build"
done

artifacts=$artifacts_root/plugin
rm -rf "$artifacts_root" && mkdir -p "$artifacts"
plugin=$(windows_path "$bin/TamsaRX9400VTI.dll")
trap 'run_wine 30 "$bin/MsgForm.exe" /UnregServer >/dev/null 2>&1; wineserver -k 2>/dev/null || true' EXIT

# --- Registration -----------------------------------------------------------------------------------
# "KIND NAME GUID" for the type library, each interface and each class, read from the IDL.
idl_entries() {
  awk '/uuid\(/ { gsub(/.*uuid\(|\).*/, ""); guid = toupper($0); next }
       guid != "" && /^ *(library|interface|dispinterface) / && !/;/ { print $1, $2, guid; guid = "" }
       guid != "" && /^ *coclass / { print $1, $2, guid; guid = "" }' src/win/TamsaRX9400VTI.idl
}
library_id=$(idl_entries | awk '$1 == "library" { print $3 }')
# Where each bitness's classes live: a 32-bit registration goes to the WOW64 view of the classes.
machine='HKEY_LOCAL_MACHINE\Software\Classes' user='HKEY_CURRENT_USER\Software\Classes'
[ "$bits" = 32 ] && view='\Wow6432Node' || view=''
registry=$artifacts_root/registry.txt
# Every value a registration writes under ROOT for the plug-in at DLL, as "[KEY] NAME=DATA" lines.
expected_values() {
  local root=$1 dll=$2 kind name guid
  echo "[$root\\TypeLib\\{$library_id}\\1.0\\0\\win$bits] @=\"$dll\""
  while read -r kind name guid; do
    case $kind in
      coclass)
        echo "[$root$view\\CLSID\\{$guid}\\InprocServer32] @=\"$dll\""
        echo "[$root$view\\CLSID\\{$guid}\\InprocServer32] \"ThreadingModel\"=\"Apartment\""
        echo "[$root$view\\CLSID\\{$guid}\\ProgID] @=\"TamsaRX9400VTI.$name\""
        echo "[$root$view\\CLSID\\{$guid}\\TypeLib] @=\"{$library_id}\""
        echo "[$root\\TamsaRX9400VTI.$name\\CLSID] @=\"{$guid}\"" ;;
      interface | dispinterface) echo "[$root$view\\Interface\\{$guid}\\TypeLib] @=\"{$library_id}\"" ;;
    esac
  done < <(idl_entries)
}
# Fails with the values missing under ROOT (those matching PATTERN, lower case).
registered() {
  local root=$1 pattern=${2:-.} count
  count=$(idl_entries | awk '{ print $1 }' | sort | uniq -c | awk '{ printf "%s %s,", $2, $1 }')
  [ "$count" = "coclass 3,dispinterface 1,interface 3,library 1," ] || { echo "the IDL lists $count"; return 1; }
  expected_values "$root" "$plugin" | tr '[:upper:]' '[:lower:]' | grep -e "$pattern" |
    grep -vxF -f "$registry" | sed 's/^/missing: /' | grep . && return 1
  return 0
}
# Fails with every key of the plug-in's KINDS ("clsid|interface|typelib"; ProgIDs go with clsid) still
# found under the roots given.
nothing_registered() {
  local kinds=$1 guids; shift
  guids=$(idl_entries | awk '{ print $3 }' | tr '[:upper:]' '[:lower:]' | paste -sd '|')
  for root in "$@"; do
    root=$(tr '[:upper:]' '[:lower:]' <<<"${root//\\/\\\\}")
    grep -E "^\[$root(\\\\wow6432node)?\\\\((($kinds)\\\\\{($guids)\})|tamsarx9400vti\.)" "$registry" |
      sed 's/^/still there: /' | grep . && return 1
  done
  return 0
}
check "regsvr32 registers the plug-in" run_tool 60 regsvr32 /s "$plugin"
registry_snapshot "$registry"
check "registration writes the class, ProgID, TypeLib and Interface keys (HKLM)" registered "$machine"

# --- Late binding: VBScript as the executive's scripts call the plug-in -------------------------------
# rx9400-automate closes (and pictures) whatever window the plug-in opens; the script host started by a
# program of this bitness is of this bitness.
members() {
  local out
  out=$(windows_path "$artifacts")
  TAMSA_SIM_LOG="$out\\calls.log" run_wine 150 "$bin/rx9400-automate.exe" --timeout=120 "--artifacts=$out" \
    "--run=cscript.exe //nologo $(windows_path tests/e2e/vbs/members.vbs) scan" dismiss-all || return 1
  grep -q '^MBRegisterApplication(1)' "$artifacts/calls.log" || { echo "the simulator was not called"; return 1; }
}
check "VBScript calls the members by name with a script's argument kinds, without a COM error" members

# --- The test host: the COM contract, events, windows, sections, the MsgForm server, a long run ------
host() {
  local scenario=$1; shift
  TAMSA_SIM_SCENARIO="${scenario:+$(windows_path "$scenario")}" check_lines "rx9400-testhost $*" \
    run_wine 180 "$bin/rx9400-testhost.exe" "--scenarios=$(windows_path tests/e2e/scenarios)" \
    "--artifacts=$(windows_path "$artifacts")" --limit=120 "$@"
}
host "" classes msgform-sleep msgform-gone
host tests/e2e/scenarios/session.json scan-connect
host "" connect-refusal
# The downloads set the user's decimal separator and put it back; a host that ended early would leave
# it set, so it is put back here too.
LC_ALL=C.UTF-8 host "" exposures waveforms
run_tool 30 reg add 'HKCU\Control Panel\International' /v sDecimal /d . /f >/dev/null 2>&1
host "" shift
host "" bad-arguments

check "regsvr32 /u unregisters the plug-in" run_tool 60 regsvr32 /s /u "$plugin"
registry_snapshot "$registry"
check "unregistration removes every CLSID, ProgID, TypeLib and Interface key" nothing_registered "clsid|interface|typelib" "$machine"

# --- Per user (DllInstall through regsvr32 /n /i:user) ------------------------------------------------
# Wine registers a type library "for the user" machine-wide, keeps a 32-bit registration for the user
# out of the WOW64 view, and its COM does not read HKCU\Software\Classes: only the class keys are
# looked for under HKCU (in either view), and the removal looks at both roots.
check "regsvr32 /n /i:user registers the plug-in for the current user" run_tool 60 regsvr32 /s /n /i:user "$plugin"
registry_snapshot "$registry"
user_classes_only() {
  local classes='\\clsid\\\|classes\\tamsarx9400vti\.'
  { registered "$user" "$classes" >/dev/null || view='' registered "$user" "$classes"; } && nothing_registered clsid "$machine"
}
check "per-user registration writes the class and ProgID keys under HKCU only" user_classes_only
check "regsvr32 /u /n /i:user unregisters it" run_tool 60 regsvr32 /s /u /n /i:user "$plugin"
registry_snapshot "$registry"
check "per-user unregistration removes every key (HKCU and HKLM)" nothing_registered "clsid|interface|typelib" "$user" "$machine"

# --- The all-in-one text against the platform's conversion, byte for byte (timings reported) ----------
check "the all-in-one text of 10^6 samples is the platform's" run_wine 300 "$bin/rx9400-aiotext-bench.exe"

finish e2e
