#!/usr/bin/env bash
# End-to-end checks of the Windows build: the exports of both simulator DLLs, and the x86_64 build
# run under Wine (only 64-bit Wine is available here) the way the executive runs it: registered with
# regsvr32, driven by VBScript clients and by a C++ test host, its windows driven by the automation
# tool, unregistered again, machine-wide and per user. Ends with a "N passed, M failed" line.
#
# Everything runs on a virtual display of its own (xvfb-run) and under time limits; pictures and
# logs land in build/e2e-artifacts/plugin/ and session/. README.md in this folder describes each check.
set -uo pipefail
cd "$(dirname "$0")/../.."

# One display for every Wine process of the run: a Wine session started without a display cannot
# open windows later, so the whole script runs under xvfb-run.
if [ -z "${RX9400_E2E_ON_XVFB:-}" ]; then
  command -v xvfb-run >/dev/null || { echo "xvfb-run is missing: apt-get install xvfb xauth" >&2; exit 1; }
  exec env RX9400_E2E_ON_XVFB=1 xvfb-run -a bash "$0" "$@"
fi
source scripts/common.sh

passed=0
failed=0
check() {
  local name=$1; shift
  if "$@"; then
    echo "PASS $name"; passed=$((passed + 1))
  else
    echo "FAIL $name"; failed=$((failed + 1))
  fi
}

# The names every build of the device library must export, undecorated, read from the one list.
expected_exports() {
  sed -n 's/^MB_FUNCTION([^,]*, *\([A-Za-z0-9_]*\),.*/\1/p' src/device/MBFunctionList.h | sort
}

exports_of() {
  local objdump=$1 dll=$2
  "$objdump" -p "$dll" | awk '/\[Ordinal\/Name Pointer\] Table/{table=1; next} table && NF==0{exit} table{print $NF}' \
    | grep '^MB' | sort
}

dll_exports_undecorated() {
  local objdump=$1 dll=$2
  [ -f "$dll" ] || { echo "  $dll is missing"; return 1; }
  local diff_out
  diff_out=$(diff <(expected_exports) <(exports_of "$objdump" "$dll")) || { echo "$diff_out" | head -20; return 1; }
}

check "i686 TamsaMBDll.dll exports every function undecorated" \
  dll_exports_undecorated i686-w64-mingw32-objdump build/mingw32/bin/TamsaMBDll.dll
check "x86_64 TamsaMBDll.dll exports every function" \
  dll_exports_undecorated x86_64-w64-mingw32-objdump build/mingw64/bin/TamsaMBDll.dll

# A Wine session left over from a run without a display would serve this one: let it end first.
export WINEPREFIX="$PWD/build/wineprefix"
timeout 30 wineserver -w 2>/dev/null || true
use_wine_prefix
# A test language component left registered would change the texts of every later run.
language_registered=0
cleanup() {
  if [ "$language_registered" -eq 1 ]; then
    run_wine 30 regsvr32 /s /u "$(windows_path "$test_language")" 2>/dev/null
  fi
  wineserver -k 2>/dev/null || true
}
trap cleanup EXIT

probe="build/mingw64/bin/rx9400-probe.exe"
wine_probe_finds_every_export() {
  # The probe is started from another folder: the library must be found beside the probe itself.
  (cd build && timeout 120 wine "../$probe" --check-exports)
}
wine_probe_lists_the_default_detectors() {
  local output
  output=$(cd build && timeout 120 wine "../$probe" 2>&1) || { echo "$output"; return 1; }
  echo "$output" | sed 's/^/  /'
  echo "$output" | grep -q 'AIO+MAS' && echo "$output" | grep -q 'DOSE'
}
check "the Windows loader finds the library beside the plug-in and resolves every export" wine_probe_finds_every_export
check "the Windows build scans and lists the simulator's detectors" wine_probe_lists_the_default_detectors

# --- The plug-in under Wine ------------------------------------------------------------------------

bin=build/mingw64/bin
artifacts=build/e2e-artifacts/plugin  # this script's own part of the artifacts folder
bare=build/e2e-bare                    # the plug-in alone, without the device library beside it
rm -rf "$artifacts" "$bare"
mkdir -p "$artifacts" "$bare"

# The Windows path of a file (Wine's drive Z: is the Unix root).
windows_path() {
  printf 'Z:%s' "$(realpath -m "$1" | tr / '\\')"
}
plugin=$(windows_path "$bin/TamsaRX9400VTI.dll")
bare_plugin=$(windows_path "$bare/TamsaRX9400VTI.dll")
artifacts_folder=$(windows_path "$artifacts")
members_vbs=$(windows_path tests/e2e/vbs/members.vbs)
classes='HKLM\Software\Classes'
user_classes='HKCU\Software\Classes'

run_wine() {
  local limit=$1; shift
  timeout --kill-after=5 "$limit" wine "$@"
}

# Prints a program's output indented; fails with the program.
indented() {
  local output status
  output=$("$@" 2>&1)
  status=$?
  printf '%s\n' "$output" | tr -d '\r' | sed '/^$/d; s/^/  /'
  return $status
}

# Runs a program that prints its own PASS/FAIL lines and counts each one; a failing exit without a
# FAIL line (a crash, a time-out) counts as the failure `name`.
check_lines() {
  local name=$1; shift
  local output status before=$failed
  output=$("$@" 2>&1)
  status=$?
  while IFS= read -r line; do
    case $line in
      "PASS "*) echo "$line"; passed=$((passed + 1)) ;;
      "FAIL "*) echo "$line"; failed=$((failed + 1)) ;;
      ?*) echo "  $line" ;;
    esac
  done < <(printf '%s\n' "$output" | tr -d '\r')
  if [ "$status" -ne 0 ] && [ "$failed" -eq "$before" ]; then
    echo "FAIL $name (exit status $status)"
    failed=$((failed + 1))
  fi
}

# "KIND NAME GUID" for the type library, each interface and each class, read from the IDL.
idl_entries() {
  awk '/uuid\(/ { gsub(/.*uuid\(|\).*/, ""); guid = toupper($0); next }
       guid != "" && /^ *(library|interface|dispinterface|coclass) / && !/;/ { print $1, $2, guid; guid = "" }' \
    src/win/TamsaRX9400VTI.idl
}
library_id=$(idl_entries | awk '$1 == "library" { print $3 }')
idl_names_everything() {
  local found
  found=$(idl_entries | awk '{ print $1 }' | sort | uniq -c | awk '{ printf "%s %s,", $2, $1 }')
  [ "$found" = "coclass 3,dispinterface 1,interface 3,library 1," ] || { echo "  the IDL lists $found"; return 1; }
}
check "the IDL names the type library, 4 interfaces and 3 classes (the keys looked for)" idl_names_everything

# The data of a registry value ("" for the default value); fails when the key or value is missing.
registry_value() {
  local key=$1 value=$2 output
  if [ -z "$value" ]; then
    output=$(run_wine 30 reg query "$key" /ve 2>/dev/null) || return 1
  else
    output=$(run_wine 30 reg query "$key" /v "$value" 2>/dev/null) || return 1
  fi
  printf '%s\n' "$output" | tr -d '\r' | awk -F '    ' '$3 ~ /^REG_/ { print $4; exit }'
}

# Compares a registry value with what it should be; prints the difference.
expect_value() {
  local key=$1 value=$2 wanted=$3 actual
  actual=$(registry_value "$key" "$value") || { echo "  missing: $key ${value:-(default)}"; return 1; }
  [ "$actual" = "$wanted" ] || { echo "  $key ${value:-(default)} is \"$actual\", expected \"$wanted\""; return 1; }
}

# The class and ProgID entries of every class under `root`, pointing to `dll`.
classes_registered() {
  local root=$1 dll=$2 ok=0 kind name guid
  while read -r kind name guid; do
    [ "$kind" = coclass ] || continue
    expect_value "$root\\CLSID\\{$guid}\\InprocServer32" "" "$dll" || ok=1
    expect_value "$root\\CLSID\\{$guid}\\InprocServer32" ThreadingModel Apartment || ok=1
    expect_value "$root\\CLSID\\{$guid}\\ProgID" "" "TamsaRX9400VTI.$name" || ok=1
    expect_value "$root\\CLSID\\{$guid}\\TypeLib" "" "{$library_id}" || ok=1
    expect_value "$root\\TamsaRX9400VTI.$name\\CLSID" "" "{$guid}" || ok=1
  done < <(idl_entries)
  return $ok
}

# The type library and the interface entries its registration writes, under `root`.
type_library_registered() {
  local root=$1 dll=$2 ok=0 kind name guid
  expect_value "$root\\TypeLib\\{$library_id}\\1.0\\0\\win64" "" "$dll" || ok=1
  while read -r kind name guid; do
    case $kind in
      interface | dispinterface) expect_value "$root\\Interface\\{$guid}\\TypeLib" "" "{$library_id}" || ok=1 ;;
    esac
  done < <(idl_entries)
  return $ok
}

# Every top key that a registration writes under `root`.
registration_keys() {
  local root=$1 kind name guid
  while read -r kind name guid; do
    case $kind in
      coclass) echo "$root\\CLSID\\{$guid}"; echo "$root\\TamsaRX9400VTI.$name" ;;
      library) echo "$root\\TypeLib\\{$guid}" ;;
      *) echo "$root\\Interface\\{$guid}" ;;
    esac
  done < <(idl_entries)
}

# No key of the registration is left under any of the roots given.
nothing_registered() {
  local ok=0 root key
  for root in "$@"; do
    while read -r key; do
      if run_wine 30 reg query "$key" >/dev/null 2>&1; then echo "  still there: $key"; ok=1; fi
    done < <(registration_keys "$root")
  done
  return $ok
}

no_classes_under() {
  local root=$1 ok=0 kind name guid
  while read -r kind name guid; do
    [ "$kind" = coclass ] || continue
    for key in "$root\\CLSID\\{$guid}" "$root\\TamsaRX9400VTI.$name"; do
      if run_wine 30 reg query "$key" >/dev/null 2>&1; then echo "  unexpected: $key"; ok=1; fi
    done
  done < <(idl_entries)
  return $ok
}

# Wine draws window frames itself (no window manager on the virtual display): pictures show captions.
run_wine 30 reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1

# Machine-wide registration, with the simulator beside the plug-in.
check "regsvr32 registers the plug-in" run_wine 60 regsvr32 /s "$plugin"
check "registration writes each class's CLSID and ProgID keys (HKLM\\Software\\Classes)" \
  classes_registered "$classes" "$plugin"
check "registration writes the type library and its interface keys" type_library_registered "$classes" "$plugin"

# VBScript, as the executive's scripts call the plug-in. rx9400-automate starts cscript and closes
# whatever window the plug-in opens (ScanAndConnectToDetector), keeping a picture of each.
members_with_simulator() {
  mkdir -p "$artifacts/members-simulator"
  TAMSA_SIM_LOG="$artifacts_folder\\members-simulator\\calls.log" indented run_wine 150 "$bin/rx9400-automate.exe" \
    --timeout=120 "--artifacts=$artifacts_folder\\members-simulator" "--run=cscript.exe //nologo $members_vbs scan" \
    dismiss-all || return 1
  grep -q '^MBRegisterApplication(1)' "$artifacts/members-simulator/calls.log" ||
    { echo "  the simulator's call log has no MBRegisterApplication(1)"; return 1; }
}
check "VBScript calls all 6 + 55 members by name without a COM error (simulator)" members_with_simulator

# The C++ host: COM contract, events and unloading.
check_lines "rx9400-testhost com" \
  run_wine 180 "$bin/rx9400-testhost.exe" "--artifacts=$artifacts_folder" --limit=60 com

# The main job's procedure, its dialogs picked by rx9400-automate from another process: the demo
# connects both default detectors and prints the values of all three kinds of detector.
demo_measures_every_kind() {
  local output
  output=$(run_wine 120 "$bin/rx9400-automate.exe" --timeout=60 "--artifacts=$artifacts_folder" \
    "--run=$(windows_path "$bin/rx9400-demo.exe")" window "Establish Connection" tick 0 tick 1 \
    screenshot demo-connect.bmp click Connect gone 2>&1 | tr -d '\r')
  printf '%s\n' "$output" | sed 's/^/  /'
  printf '%s\n' "$output" | grep -q 'kVp average *80.3' &&
    printf '%s\n' "$output" | grep -q 'Dose per mAs *0.0617' &&
    printf '%s\n' "$output" | grep -q 'Bias voltage *300.0' &&
    printf '%s\n' "$output" | grep -q 'the process ended with exit code 0'
}
check "the demo measures an exposure of every kind of detector, its dialogs driven from another process" \
  demo_measures_every_kind

# --- The session: scan and connect dialogs driven as a person at the bench would -------------------
# Each check runs in a host process of its own under the scenario it needs (empty: the simulator's
# built-in default); pictures land in build/e2e-artifacts/session/.
session_artifacts=build/e2e-artifacts/session
rm -rf "$session_artifacts"
mkdir -p "$session_artifacts/pseudo-language"
session_check() {
  local scenario=$1 folder=$2 name=$3; shift 3
  TAMSA_SIM_SCENARIO="${scenario:+$(windows_path "$scenario")}" check_lines "$name" \
    run_wine 60 "$bin/rx9400-testhost.exe" "--artifacts=$(windows_path "$folder")" --limit=40 "$@" "$name"
}
session_checks() {
  local folder=$1; shift
  session_check tests/e2e/scenarios/session.json "$folder" scan-connect "$@"
  session_check "" "$folder" connect-refusals "$@"
  session_check sim/scenarios/no-detectors.json "$folder" no-detector "$@"
}
session_checks "$session_artifacts"
session_check tests/e2e/scenarios/slow-scan.json "$session_artifacts" scan-stop

# --- Exposures through the instrument class ------------------------------------------------------
# One host process measures an exposure of each detector kind; it loads each scenario itself
# (tests/e2e/scenarios/exposure-*.json) and connects its detector through the dialogs. The measured
# values are expected with a decimal point: the host runs under the C locale whatever the caller's.
LC_ALL=C.UTF-8 check_lines "rx9400-testhost exposures target-filters" \
  run_wine 90 "$bin/rx9400-testhost.exe" "--artifacts=$(windows_path "$session_artifacts")" \
  "--scenarios=$(windows_path tests/e2e/scenarios)" --limit=60 exposures target-filters

# The same dialogs and message boxes under the test language component, which shows every catalogue
# text as "[[text]]": every caption and text must come through the catalogue.
test_language="$bin/rx9400-testlanguage.dll"
if [ -f "$test_language" ]; then
  if run_wine 30 regsvr32 /s "$(windows_path "$test_language")"; then
    language_registered=1
    session_checks "$session_artifacts/pseudo-language" --pseudo-language
    check "regsvr32 /u unregisters the test language component" \
      run_wine 30 regsvr32 /s /u "$(windows_path "$test_language")"
    language_registered=0
  else
    check "regsvr32 registers the test language component" false
  fi
else
  echo "SKIP the session checks under the test language: $test_language is not built"
fi

check "regsvr32 /u unregisters the plug-in" run_wine 60 regsvr32 /s /u "$plugin"
check "unregistration removes every CLSID, ProgID, TypeLib and Interface key" nothing_registered "$classes"

# The plug-in registered from a folder without TamsaMBDll.dll: a missing device library is never a
# COM error. The programs start from that folder, so that no search finds the simulator.
cp "$bin/TamsaRX9400VTI.dll" "$bin/rx9400-testhost.exe" "$bare/"
members_without_device_library() {
  mkdir -p "$artifacts/members-without-device-library"
  (cd "$bare" && indented run_wine 150 "../../$bin/rx9400-automate.exe" --timeout=120 \
    "--artifacts=$artifacts_folder\\members-without-device-library" "--run=cscript.exe //nologo $members_vbs scan" \
    dismiss-all)
}
check "regsvr32 registers the plug-in from a folder without TamsaMBDll.dll" run_wine 60 regsvr32 /s "$bare_plugin"
check "VBScript calls all members without a COM error when TamsaMBDll.dll is missing" members_without_device_library
check_lines "no-device-library" bash -c "cd '$bare' && timeout --kill-after=5 60 wine rx9400-testhost.exe no-device-library"
check "regsvr32 /u unregisters the plug-in from that folder" run_wine 60 regsvr32 /s /u "$bare_plugin"

# Registration for the current user only (DllInstall through regsvr32 /n /i:user). Wine registers a
# type library "for the user" machine-wide, and its COM does not read HKCU\Software\Classes, so the
# type library is looked for in both places and the classes are not created from this registration.
type_library_registered_anywhere() {
  type_library_registered "$user_classes" "$plugin" >/dev/null || type_library_registered "$classes" "$plugin"
}
check "regsvr32 /n /i:user registers the plug-in for the current user" run_wine 60 regsvr32 /s /n /i:user "$plugin"
check "per-user registration writes the classes under HKCU\\Software\\Classes" \
  classes_registered "$user_classes" "$plugin"
check "per-user registration writes no class machine-wide" no_classes_under "$classes"
check "per-user registration registers the type library" type_library_registered_anywhere
check "regsvr32 /u /n /i:user unregisters the plug-in for the current user" \
  run_wine 60 regsvr32 /s /u /n /i:user "$plugin"
check "per-user unregistration removes every key (HKCU and HKLM)" nothing_registered "$user_classes" "$classes"

# Pictures for a person to look at.
for picture in "$artifacts"/*.bmp "$artifacts"/*/*.bmp "$session_artifacts"/*.bmp "$session_artifacts"/*/*.bmp; do
  [ -e "$picture" ] || continue
  convert "$picture" "${picture%.bmp}.png" 2>/dev/null && rm -f "$picture"
done
echo "Pictures and logs: $artifacts/ and $session_artifacts/"

wineserver -k 2>/dev/null || true
echo "e2e: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
