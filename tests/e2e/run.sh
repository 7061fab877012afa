#!/usr/bin/env bash
# End-to-end checks of the Windows build: the exports of both device-library builds, and the x86_64
# build under Wine the way the executive runs it: registered with regsvr32 (machine-wide and per user),
# driven by a VBScript client and by the C++ test host, its windows driven by automation, unregistered
# again. README.md in this folder describes each check; pictures and logs land in build/e2e-artifacts/.
# Ends with "e2e: N passed, M failed".
set -uo pipefail
cd "$(dirname "$0")/../.."

# The names every build of the device library must export, undecorated, against what each build has.
exports_undecorated() {
  local objdump=$1 dll=$2
  diff <(sed -n 's/^MB_FUNCTION([^,]*, *\([A-Za-z0-9_]*\),.*/\1/p' src/device/MBFunctionList.h | sort) \
    <("$objdump" -p "$dll" | awk '/\[Ordinal\/Name Pointer\] Table/ { t = 1; next } t && NF == 0 { exit } t { print $NF }' |
      grep '^MB' | sort) | head -20
  [ "${PIPESTATUS[0]}" -eq 0 ]
}
source tests/e2e/lib.sh
check "i686 TamsaMBDll.dll exports every function undecorated" \
  exports_undecorated i686-w64-mingw32-objdump build/mingw32/bin/TamsaMBDll.dll
check "x86_64 TamsaMBDll.dll exports every function undecorated" \
  exports_undecorated x86_64-w64-mingw32-objdump "$bin/TamsaMBDll.dll"

artifacts=build/e2e-artifacts/plugin   # VBScript runs and the demo
session=build/e2e-artifacts/session    # the test host's pictures
bare=build/e2e-bare                    # the plug-in alone, without the device library beside it
rm -rf "$artifacts" "$session" "$bare"
mkdir -p "$artifacts" "$session/pseudo-language" "$session/dpi144" "$bare"
plugin=$(windows_path "$bin/TamsaRX9400VTI.dll")
language=$(windows_path "$bin/rx9400-testlanguage.dll")
trap 'run_wine 30 regsvr32 /s /u "$language" 2>/dev/null
  run_wine 30 reg delete "HKCU\\Control Panel\\Desktop" /v LogPixels /f >/dev/null 2>&1
  wineserver -k 2>/dev/null || true' EXIT

# --- Registration ---------------------------------------------------------------------------------
# "KIND NAME GUID" for the type library, each interface and each class, read from the IDL.
idl_entries() {
  awk '/uuid\(/ { gsub(/.*uuid\(|\).*/, ""); guid = toupper($0); next }
       guid != "" && /^ *(library|interface|dispinterface|coclass) / && !/;/ { print $1, $2, guid; guid = "" }' \
    src/win/TamsaRX9400VTI.idl
}
library_id=$(idl_entries | awk '$1 == "library" { print $3 }')
classes='HKEY_LOCAL_MACHINE\Software\Classes'
user_classes='HKEY_CURRENT_USER\Software\Classes'
# The registry as .reg text (lower case, whole key names) in $registry, read from the prefix's files,
# which Wine writes when its session ends.
registry=build/e2e-artifacts/registry.txt
snapshot() {
  wineserver -k 2>/dev/null
  timeout 30 wineserver -w 2>/dev/null
  local root file
  for root in hkey_local_machine:system hkey_current_user:user; do
    awk -v root="${root%:*}" '/^\[/ { key = substr($0, 2, index($0, "]") - 2); gsub(/\\\\/, "\\", key)
      print "[" root "\\" key "]"; next } /^[@"]/' "$WINEPREFIX/${root#*:}.reg"
  done | tr '[:upper:]' '[:lower:]' >"$registry"
}
# Every value a registration writes under ROOT for the plug-in at DLL, as "[KEY] NAME=DATA" lines.
expected_values() {
  local root=$1 dll=$2 kind name guid
  echo "[$root\\TypeLib\\{$library_id}\\1.0\\0\\win64] @=\"$dll\""
  while read -r kind name guid; do
    case $kind in
      coclass)
        echo "[$root\\CLSID\\{$guid}\\InprocServer32] @=\"$dll\""
        echo "[$root\\CLSID\\{$guid}\\InprocServer32] \"ThreadingModel\"=\"Apartment\""
        echo "[$root\\CLSID\\{$guid}\\ProgID] @=\"TamsaRX9400VTI.$name\""
        echo "[$root\\CLSID\\{$guid}\\TypeLib] @=\"{$library_id}\""
        echo "[$root\\TamsaRX9400VTI.$name\\CLSID] @=\"{$guid}\"" ;;
      interface | dispinterface) echo "[$root\\Interface\\{$guid}\\TypeLib] @=\"{$library_id}\"" ;;
    esac
  done < <(idl_entries)
}
# Fails with the values missing under ROOT for the plug-in at DLL, of those matching PATTERN (lower case).
registered() {
  local root=$1 dll=$2 pattern=${3:-.} found count
  count=$(idl_entries | awk '{ print $1 }' | sort | uniq -c | awk '{ printf "%s %s,", $2, $1 }')
  [ "$count" = "coclass 3,dispinterface 1,interface 3,library 1," ] || { echo "the IDL lists $count"; return 1; }
  found=$(awk '/^\[/ { key = $0; next } { print key, $0 }' "$registry")
  expected_values "$root" "${dll//\\/\\\\}" | tr '[:upper:]' '[:lower:]' | grep -e "$pattern" |
    grep -vxF -f <(printf '%s\n' "$found") | sed 's/^/missing: /' | grep . && return 1
  return 0
}
# Fails with every key of a registration still found under the roots given.
nothing_registered() {
  local pattern=$1 found kind name guid; shift
  found=$(grep '^\[' "$registry")
  for root in "$@"; do
    while read -r kind name guid; do
      case $kind in
        coclass) echo "$root\\CLSID\\{$guid}"; echo "$root\\TamsaRX9400VTI.$name" ;;
        library) echo "$root\\TypeLib\\{$guid}" ;;
        *) echo "$root\\Interface\\{$guid}" ;;
      esac
    done < <(idl_entries)
  done | tr '[:upper:]' '[:lower:]' | grep -e "$pattern" | while read -r key; do
    grep -qxF "[$key]" <<<"$found" && echo "still there: $key"
  done | grep . && return 1
  return 0
}

check "regsvr32 registers the plug-in" run_wine 60 regsvr32 /s "$plugin"
snapshot
check "registration writes the class, ProgID, TypeLib and Interface keys (HKLM\\Software\\Classes)" \
  registered "$classes" "$plugin"

# --- The plug-in in use ----------------------------------------------------------------------------
# VBScript as the executive's scripts call the plug-in; rx9400-automate closes (and pictures) whatever
# window the plug-in opens. The programs start from FOLDER, so that only the plug-in's folder is searched.
members() {
  local folder=$1 log=$artifacts/$2/calls.log automate script out
  mkdir -p "$artifacts/$2"
  automate=$(realpath "$bin/rx9400-automate.exe") script=$(windows_path tests/e2e/vbs/members.vbs)
  out=$(windows_path "$artifacts/$2")
  (cd "$folder" && TAMSA_SIM_LOG="$out\\calls.log" run_wine 150 "$automate" --timeout=120 "--artifacts=$out" \
    "--run=cscript.exe //nologo $script scan" dismiss-all) || return 1
  # The simulator logs every call it receives: the log shows whether the device library was used.
  if [ "$2" = simulator ]; then
    grep -q '^MBRegisterApplication(1)' "$log" || { echo "no MBRegisterApplication(1)"; return 1; }
  elif [ -e "$log" ]; then
    echo "TamsaMBDll.dll was found: this run needs a plug-in registered from a folder without it"; return 1
  fi
}
check "VBScript calls all 6 + 55 members by name without a COM error (simulator)" members build simulator
# The script-side forms of bad arguments (empty and 64 KiB texts, wrong types, missing and extra
# arguments, overflows): only the dispatch layer's errors, the instrument working afterwards.
badargs() {
  local out
  mkdir -p "$artifacts/badargs"
  out=$(windows_path "$artifacts/badargs")
  run_wine 150 "$bin/rx9400-automate.exe" --timeout=120 "--artifacts=$out" \
    "--run=cscript.exe //nologo $(windows_path tests/e2e/vbs/badargs.vbs)" dismiss-all 2>&1 | tr -d '\r' |
    grep -E '^badargs:|FAIL|exit code'
  [ "${PIPESTATUS[0]}" -eq 0 ]
}
check "VBScript's bad arguments fail only with the dispatch layer's errors (badargs.vbs)" badargs
host() {
  local scenario=$1; shift
  TAMSA_SIM_SCENARIO="${scenario:+$(windows_path "$scenario")}" check_lines "rx9400-testhost $*" \
    run_wine 120 "$bin/rx9400-testhost.exe" "--scenarios=$(windows_path tests/e2e/scenarios)" --limit=60 "$@"
}
host "" "--artifacts=$(windows_path "$session")" classes connection-points event-typeinfo dispatch-names unload
# The MsgForm server: the host registers and removes it itself; this removal is for a host that ended early.
host "" "--artifacts=$(windows_path "$session")" msgform-registration msgform-events msgform-sleep
run_wine 30 "$bin/MsgForm.exe" /UnregServer

# The demo, its dialogs picked by rx9400-automate from another process, prints every kind's values, then
# connects the all-in-one detector alone and prints the beginning of both its waveforms.
demo() {
  local output
  output=$(run_wine 120 "$bin/rx9400-automate.exe" --timeout=60 "--artifacts=$(windows_path "$artifacts")" \
    "--run=$(windows_path "$bin/rx9400-demo.exe")" window "Establish Connection" tick 0 tick 1 \
    screenshot demo-connect.bmp click Connect gone messagebox print click OK \
    window "Establish Connection" tick 1 click Connect gone messagebox click OK 2>&1 | tr -d '\r')
  printf '%s\n' "$output"
  for wanted in 'Target/Filter: Rh/Rh Invalid' 'kVp average *80.3' 'Dose per mAs *0.0617' 'Bias voltage *300.0' \
    'kV .*: 3000 values over 100 ms: 0.5 1 1.5 ' 'mA .*: 400 values over 100 ms: 9.52363014221191 ' 'ended with exit code 0'; do
    grep -q "$wanted" <<<"$output" || { echo "missing: $wanted"; return 1; }
  done
}
check "the demo measures an exposure of every kind of detector and downloads its waveforms, its dialogs driven from another process" demo

# The session dialogs, each in a host process of its own under its scenario (empty: the built-in
# default), then again under the test language component, whose texts read "[[text]]".
sessions() {
  host tests/e2e/scenarios/session.json "$@" scan-connect
  host "" "$@" connect-refusals
  host sim/scenarios/no-detectors.json "$@" no-detector
}
sessions "--artifacts=$(windows_path "$session")"
# The ion chamber dialogs (they load their scenario themselves), then again at 144 DPI for their
# pictures (session/dpi144/); the setting is put back here, and at the end for a run that stopped early.
host "" "--artifacts=$(windows_path "$session")" ion-chambers
run_wine 30 reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d 144 /f >/dev/null 2>&1
host "" "--artifacts=$(windows_path "$session/dpi144")" ion-chambers
run_wine 30 reg delete 'HKCU\Control Panel\Desktop' /v LogPixels /f >/dev/null 2>&1
host tests/e2e/scenarios/slow-scan.json "--artifacts=$(windows_path "$session")" scan-stop
# A VBScript test step configures the dosimeter as a procedure does: it reads the chambers, keeps the
# dosimeter's settings (the question is answered with Cancel from another process) and prints the
# chamber and cal factor for its report.
dosimeter_step() {
  local output
  output=$(TAMSA_SIM_SCENARIO="$(windows_path tests/e2e/scenarios/dosimeter-chambers.json)" run_wine 120 \
    "$bin/rx9400-automate.exe" --timeout=60 "--artifacts=$(windows_path "$session")" \
    "--run=cscript.exe //nologo $(windows_path tests/e2e/vbs/dosimeter.vbs)" window "Establish Connection" \
    tick 0 click Connect gone messagebox print screenshot dosimeter-compare.bmp click Cancel 2>&1 | tr -d '\r')
  printf '%s\n' "$output"
  for wanted in 'chambers read: 2' 'chamber 1: IC-B 180cc' 'settings differed: True; dose unit kept: 1' \
    'configured: IC-A 6cc / RQR9' 'report: ion chamber IC-A 6cc, cal factor RQR9, cal constant 2.5E-05 Gy/nC' \
    'ended with exit code 0'; do
    grep -q "$wanted" <<<"$output" || { echo "missing: $wanted"; return 1; }
  done
}
check "a VBScript test step reads the dosimeter's chambers, keeps its settings and reports the chosen chamber and cal factor" \
  dosimeter_step
# One host process measures an exposure of each detector kind, its values written with a decimal point.
LC_ALL=C.UTF-8 host "" "--artifacts=$(windows_path "$session")" exposures target-filters
# The waveform downloads, each under a decimal point and a decimal comma: the check sets the user's
# decimal separator and puts it back; a host that ended early would leave it set, so it is put back here.
LC_ALL=C.UTF-8 host "" "--artifacts=$(windows_path "$session")" waveforms waveform-boxes waveform-handles
run_wine 30 reg add 'HKCU\Control Panel\International' /v sDecimal /d . /f >/dev/null 2>&1
# A shift of polling, supervision, settings and downloads, then the executive letting go in the middle
# of things and unloading the plug-in last; bad arguments in a process of their own (SendDetectorType
# gets every value).
host "" "--artifacts=$(windows_path "$session")" shift shutdown-notice shutdown-in-event shutdown-in-download \
  shutdown-unload
host "" "--artifacts=$(windows_path "$session")" bad-arguments
check "regsvr32 registers the test language component" run_wine 30 regsvr32 /s "$language"
sessions "--artifacts=$(windows_path "$session/pseudo-language")" --pseudo-language
check "regsvr32 /u unregisters the test language component" run_wine 30 regsvr32 /s /u "$language"

check "regsvr32 /u unregisters the plug-in" run_wine 60 regsvr32 /s /u "$plugin"
snapshot
check "unregistration removes every CLSID, ProgID, TypeLib and Interface key" nothing_registered . "$classes"

# --- Without the device library, and per user -------------------------------------------------------
cp "$bin/TamsaRX9400VTI.dll" "$bare/"
check "regsvr32 registers the plug-in from a folder without TamsaMBDll.dll" \
  run_wine 60 regsvr32 /s "$(windows_path "$bare/TamsaRX9400VTI.dll")"
check "VBScript calls all members without a COM error when TamsaMBDll.dll is missing" \
  members "$bare" without-device-library
check "regsvr32 /u unregisters the plug-in from that folder" \
  run_wine 60 regsvr32 /s /u "$(windows_path "$bare/TamsaRX9400VTI.dll")"

# DllInstall through regsvr32 /n /i:user. Wine registers a type library "for the user" machine-wide and
# its COM does not read HKCU\Software\Classes: the type library may be under either root (the removal
# check looks at both), and the classes are not created from this registration.
check "regsvr32 /n /i:user registers the plug-in for the current user" run_wine 60 regsvr32 /s /n /i:user "$plugin"
snapshot
class_keys='\\clsid\\\|classes\\tamsarx9400vti\.' type_library_keys='\\interface\\.*\\typelib]\|\\win64]'
type_library_anywhere() {
  registered "$user_classes" "$plugin" "$type_library_keys" >/dev/null ||
    registered "$classes" "$plugin" "$type_library_keys"
}
check "per-user registration writes the class and ProgID keys under HKCU\\Software\\Classes" \
  registered "$user_classes" "$plugin" "$class_keys"
check "per-user registration registers the type library (under HKCU or HKLM)" type_library_anywhere
check "per-user registration writes no class machine-wide" nothing_registered "$class_keys" "$classes"
check "regsvr32 /u /n /i:user unregisters the plug-in for the current user" \
  run_wine 60 regsvr32 /s /u /n /i:user "$plugin"
snapshot
check "per-user unregistration removes every key (HKCU and HKLM)" nothing_registered . "$user_classes" "$classes"

# --- The all-in-one text against the platform's conversion -------------------------------------------
# 10^6 samples through aioSamplesText and through VarBstrFromR8 value by value: the same bytes is the
# check; the time per sample both ways and their ratio are a report.
check "the all-in-one text of 10^6 samples is the platform's, byte for byte (timings reported)" \
  run_wine 120 "$bin/rx9400-aiotext-bench.exe"

finish e2e
