#!/usr/bin/env bash
# The installer packages (scripts/package.sh) as a lab administrator deploys them: signed, with their
# checksums. The x64 package runs under 64-bit Wine: installed silently, its registration compared with
# what regsvr32 writes, every member called from the installed folder, the samples run there against the
# optional simulator, upgraded by a newer package and removed again, leaving no file and no registry key
# behind. The x86 package is installed, used and removed under 32-bit Wine where that exists.
# README.md in this folder describes each check. Ends with "install: N passed, M failed".
set -uo pipefail
cd "$(dirname "$0")/../../.."
source tests/e2e/lib.sh

artifacts=build/e2e-artifacts/install
packages=build/e2e-install
rm -rf "$artifacts" "$packages"
mkdir -p "$artifacts" "$packages"
folder_name='TamsaRX9400VTI'
installed="$WINEPREFIX/drive_c/Program Files/$folder_name"
installed_windows="C:\\Program Files\\$folder_name"
product='TamsaRX9400VTI (x64)'

# --- The packages -----------------------------------------------------------------------------------
# The packages of this version are signed with a throwaway code-signing certificate (self-signed, so it
# verifies only against itself); the newer one is built without a certificate, as a lab without one would.
version=$(sed -n 's/^project(TamsaRX9400VTI VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
IFS=. read -r major minor patch <<<"$version"
newer="$major.$minor.$((patch + 1))"
certificate=$packages/signing
make_certificate() {
  command -v osslsigncode >/dev/null || { echo "osslsigncode is missing: apt-get install osslsigncode"; return 1; }
  mkdir -p "$certificate" &&
    openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=TamsaRX9400VTI throwaway signing" \
      -addext extendedKeyUsage=codeSigning -addext keyUsage=digitalSignature \
      -keyout "$certificate/key.pem" -out "$certificate/certificate.pem" 2>/dev/null &&
    openssl pkcs12 -export -inkey "$certificate/key.pem" -in "$certificate/certificate.pem" \
      -out "$certificate/signing.pfx" -passout pass:throwaway
}
package_all() {
  local unsigned
  make_certificate &&
    RX9400_SIGN_PFX=$certificate/signing.pfx RX9400_SIGN_PASSWORD=throwaway \
      bash scripts/package.sh --output "$packages" >/dev/null &&
    unsigned=$(env -u RX9400_SIGN_PFX bash scripts/package.sh --version "$newer" --output "$packages" 2>&1 >/dev/null) ||
    return 1
  grep -q 'not signed' <<<"$unsigned" || { echo "without a certificate package.sh did not say so: $unsigned"; return 1; }
}
check "scripts/package.sh builds both packages of $version, signed, and an unsigned x64 package of $newer to upgrade with" \
  package_all
x64=$packages/TamsaRX9400VTI-$version-x64.msi
x86=$packages/TamsaRX9400VTI-$version-x86.msi
upgrade=$packages/TamsaRX9400VTI-$newer-x64.msi

# A table of a package without its three header lines.
table() { msiinfo export "$1" "$2" | tr -d '\r' | tail -n +4; }
# "FOLDER/FILE" for every file of a package.
package_files() (
  export LC_ALL=C
  join -t $'\t' -1 2 -2 1 <(table "$1" File | awk -F'\t' '{ print $1 "\t" $2 "\t" $3 }' | sort -t $'\t' -k2,2) \
    <(table "$1" Component | awk -F'\t' '{ print $1 "\t" $3 }' | sort) |
    awk -F'\t' '{ print $4 "/" $3 }' | sort
)
# Every file a package installs, as a path in the install folder.
expected_files() {
  printf '%s\n' MsgForm.exe README.txt Recorder/TamsaMBDll.dll Samples/README.md Samples/configure-dosimeter.vbs \
    Samples/download-waveforms.vbs Samples/measure-exposure.vbs Samples/supervise-power.vbs Simulator/TamsaMBDll.dll \
    TamsaRX9400VTI.dll rx9400-demo.exe rx9400-probe.exe rx9400-scripthost.exe rx9400-traceviewer.exe
}
in_folders() {
  sed 's,^INSTALLFOLDER/,,; s,^SIMULATORFOLDER/,Simulator/,; s,^RECORDERFOLDER/,Recorder/,; s,^SAMPLESFOLDER/,Samples/,' |
    LC_ALL=C sort
}
files_of() { diff <(expected_files) <(package_files "$1" | in_folders); }
check "the x64 package holds the plug-in, MsgForm.exe, the tools, the script host, README.txt, the samples in Samples, the recorder in Recorder, the simulator in Simulator" \
  files_of "$x64"
check "the x86 package holds the same files" files_of "$x86"

# The files of each package, extracted, for the signature checks and to compare the installed ones with.
extracted=$packages/extracted
extract() { rm -rf "$extracted/$2" && mkdir -p "$extracted/$2" && msiextract -C "$extracted/$2" "$1" >/dev/null; }
# Fails unless FILE carries a valid Authenticode signature by the throwaway certificate.
signed() {
  local output
  output=$(osslsigncode verify -CAfile "$certificate/certificate.pem" -in "$1" 2>&1) ||
    { echo "$1: no valid signature by the throwaway certificate"; printf '%s\n' "$output" | grep -iE 'error|fail' | head -3; return 1; }
}
all_signed() {
  local package=$1 folder=$2 binaries binary
  extract "$package" "$folder" || { echo "msiextract failed"; return 1; }
  signed "$package" || return 1
  binaries=$(find "$extracted/$folder" -type f \( -iname '*.dll' -o -iname '*.exe' \) | sort)
  [ "$(grep -c . <<<"$binaries")" -eq 8 ] || { echo "binaries found:"; printf '%s\n' "$binaries"; return 1; }
  while read -r binary; do signed "$binary" || return 1; done <<<"$binaries"
}
check "the x64 package and its 8 binaries carry valid signatures by the certificate" all_signed "$x64" x64
check "the x86 package and its 8 binaries carry valid signatures by the certificate" all_signed "$x86" x86
unsigned_package() {
  ! osslsigncode verify -CAfile "$certificate/certificate.pem" -in "$upgrade" >/dev/null 2>&1 ||
    { echo "the package built without a certificate is signed"; return 1; }
}
check "the package built without a certificate is unsigned" unsigned_package
checksums() {
  (cd "$packages" && sha256sum --quiet -c SHA256SUMS) || return 1
  diff <(cd "$packages" && ls -1 -- *.msi) <(awk '{ print $2 }' "$packages/SHA256SUMS" | tr -d '*')
}
check "SHA256SUMS beside the packages lists every package with its checksum" checksums

# The Registry rows of a package as "[KEY] NAME=DATA" lines of the registry (a per-machine install writes
# HKCR rows under HKLM\Software\Classes), the paths of the plug-in and of MsgForm.exe as <plugin>, <msgform>.
package_values() {
  table "$1" Registry | awk -F'\t' '$2 == 0 {
      name = $4 == "" ? "@" : "\"" $4 "\""; value = $5
      sub(/\[#TamsaRX9400VTI\.dll\]/, "<plugin>", value); sub(/\[#MsgForm\.exe\]/, "<msgform>", value)
      print "[hkey_local_machine\\software\\classes\\" $3 "] " name "=\"" value "\"" }
    $2 != 0 { print "row outside HKCR: " $0 }' | tr '[:upper:]' '[:lower:]' | sort
}
rows_for_32_bit_view() {
  local rows
  rows=$(package_values "$x64" | sed 's/\\0\\win64]/\\0\\win32]/')
  diff <(printf '%s\n' "$rows") <(package_values "$x86") && grep -q 'win32]' <<<"$rows"
}
check "the x86 package's Registry rows are the x64 package's for the 32-bit view (win32)" rows_for_32_bit_view

# A newer package replaces an older one of its architecture only, keeping the features chosen (Wine's
# msiexec does not migrate them: the upgrade below checks the replacement alone).
upgrade_code() { table "$1" Property | awk -F'\t' '$1 == "UpgradeCode" { print $2 }'; }
upgrades() {
  [ "$(upgrade_code "$x64")" = "$(upgrade_code "$upgrade")" ] || { echo "the x64 packages differ in UpgradeCode"; return 1; }
  [ "$(upgrade_code "$x64")" != "$(upgrade_code "$x86")" ] || { echo "x64 and x86 share an UpgradeCode"; return 1; }
  table "$upgrade" Upgrade | awk -F'\t' -v code="$(upgrade_code "$upgrade")" \
    '$1 == code && $3 == "'"$newer"'" && $5 % 2 == 1 { found = 1 } END { exit !found }' ||
    { echo "no upgrade of older versions migrating features"; return 1; }
}
check "each architecture has an UpgradeCode of its own; a newer package replaces older ones, keeping the features" upgrades

# --- Registration: the package's rows against regsvr32 and MsgForm.exe /RegServer -----------------------
guids=$(cat src/win/TamsaRX9400VTI.idl tools/msgform/MsgForm.idl | grep -o 'uuid([0-9A-Fa-f-]*)' |
  sed 's/uuid(\(.*\))/\1/' | tr '[:upper:]' '[:lower:]' | paste -sd '|')
# The values of the keys of the plug-in and of MsgForm (classes, ProgIDs, type libraries, interfaces) in
# a snapshot, with the paths of both files in FOLDER written <plugin> and <msgform>.
registered_values() {
  grep -E "^\[hkey_local_machine\\\\software\\\\classes\\\\((clsid|interface|typelib)\\\\\{($guids)\}|tamsarx9400vti\.|msgform\.messageform)[^]]*\] " "$1" |
    FOLDER=$(tr '[:upper:]' '[:lower:]' <<<"$2") awk '
      function swap(path, token,  i) { i = index($0, path); if (i) $0 = substr($0, 1, i - 1) token substr($0, i + length(path)) }
      { swap(ENVIRON["FOLDER"] "\\tamsarx9400vti.dll", "<plugin>"); swap(ENVIRON["FOLDER"] "\\msgform.exe", "<msgform>"); print }' |
    sed 's/\\"/"/g'
}
rows_are_registration() {
  local written difference
  written=$(registered_values "$1" "$2")
  [ -n "$written" ] || { echo "nothing registered"; return 1; }
  difference=$(diff <(printf '%s\n' "$written") <(package_values "$x64"))
  [ -z "$difference" ] || { sed -n 's/^</written:/p; s/^>/row:/p' <<<"$difference"; return 1; }
}
register_built() {
  run_wine 60 regsvr32 /s "$(windows_path "$bin/TamsaRX9400VTI.dll")" && run_wine 60 "$bin/MsgForm.exe" /RegServer
}
check "regsvr32 registers the built plug-in, MsgForm.exe /RegServer the built MsgForm" register_built
registry_snapshot "$artifacts/registry-regsvr32.txt"
check "the x64 package's Registry rows are exactly the values regsvr32 and MsgForm.exe /RegServer write" \
  rows_are_registration "$artifacts/registry-regsvr32.txt" "$(windows_path "$bin")"
unregister_built() {
  run_wine 60 regsvr32 /s /u "$(windows_path "$bin/TamsaRX9400VTI.dll")" && run_wine 60 "$bin/MsgForm.exe" /UnregServer
}
check "regsvr32 /u and MsgForm.exe /UnregServer remove them again" unregister_built

# --- Install, use, upgrade, remove -----------------------------------------------------------------------
# Products of an earlier run that ended early are removed first: each package has a product code of its own.
remove_leftovers() {
  local code
  registry_snapshot "$artifacts/registry-start.txt"
  grep -F "\"displayname\"=\"${product,,}\"" "$artifacts/registry-start.txt" |
    sed -n 's/.*\\uninstall\\\({[^}]*}\)\].*/\1/p' | while read -r code; do
    echo "removing $code, left by an earlier run"
    run_wine 120 msiexec /x "${code^^}" /qn
  done
}
remove_leftovers
# The script host registers its own type library when it first runs: in a new prefix that happens here,
# before the registry is compared, not during the installs.
: >"$artifacts/empty.vbs"
run_wine 30 cscript.exe //nologo "$(windows_path "$artifacts/empty.vbs")"
run_wine 30 "$bin/rx9400-automate.exe" --timeout=20 "--run=cscript.exe //nologo $(windows_path "$artifacts/empty.vbs")" >/dev/null
files_in_prefix() {
  find "$WINEPREFIX/drive_c" -printf '%P\n' |
    grep -viE '^(windows/installer|(windows/temp|users/[^/]*/(temp|appdata/local/temp))(/.*)?)$' | sort
}
registry_snapshot "$artifacts/registry-before.txt"
files_in_prefix >"$artifacts/files-before.txt"
trap 'remove_leftovers >/dev/null 2>&1; wineserver -k 2>/dev/null || true' EXIT

msiexec_logged() {
  local log=$1; shift
  run_wine 180 msiexec "$@" /qn /l*v "$(windows_path "$artifacts/$log")"
}
check "msiexec /i installs the x64 package silently" msiexec_logged install.log /i "$(windows_path "$x64")"
installed_files() {
  diff <(expected_files | grep -v '^Simulator/') <(cd "$installed" && find . -type f -printf '%P\n' | LC_ALL=C sort)
}
check "the installed folder holds the plug-in, MsgForm.exe, the tools, the samples, the recorder and README.txt; no simulator by default" \
  installed_files
# The installed binaries are the package's, signed.
installed_signed() {
  local root binary
  root=$(dirname "$(find "$extracted/x64" -name TamsaRX9400VTI.dll | head -1)")
  while read -r binary; do
    cmp -s "$installed/$binary" "$root/$binary" || { echo "$binary differs from the package's"; return 1; }
    signed "$installed/$binary" || return 1
  done < <(cd "$installed" && find . -type f \( -iname '*.dll' -o -iname '*.exe' \) -printf '%P\n')
}
check "the installed binaries carry the signature" installed_signed
registry_snapshot "$artifacts/registry-installed.txt"
check "the install writes exactly the package's Registry rows" \
  rows_are_registration "$artifacts/registry-installed.txt" "$installed_windows"

check "msiexec /i ADDLOCAL=Simulator adds the simulator feature" \
  msiexec_logged simulator.log /i "$(windows_path "$x64")" ADDLOCAL=Simulator
simulator_apart() {
  [ -f "$installed/Simulator/TamsaMBDll.dll" ] || { echo "no Simulator\\TamsaMBDll.dll"; return 1; }
  [ ! -e "$installed/TamsaMBDll.dll" ] || { echo "a TamsaMBDll.dll beside the plug-in"; return 1; }
}
check "the simulator is installed in Simulator, nothing beside the plug-in" simulator_apart
registry_snapshot "$artifacts/registry-simulator.txt"

# VBScript as the executive's scripts call the plug-in, started in the installed folder; rx9400-automate
# closes whatever window the plug-in opens. The simulator in Simulator is never loaded by the plug-in alone.
members_installed() {
  local out automate script
  out=$(windows_path "$artifacts/members") automate=$(realpath "$bin/rx9400-automate.exe")
  script=$(windows_path tests/e2e/vbs/members.vbs)
  mkdir -p "$artifacts/members"
  (cd "$installed" && TAMSA_SIM_LOG="$out\\calls.log" run_wine 150 "$automate" --timeout=120 "--artifacts=$out" \
    "--run=cscript.exe //nologo $script scan" dismiss-all) || return 1
  [ ! -e "$artifacts/members/calls.log" ] || { echo "the simulator in Simulator was loaded"; return 1; }
}
check "VBScript calls all members from the installed folder without a COM error (the simulator apart is not used)" \
  members_installed

# The samples from the installed folder, in the installed script host against the installed simulator.
check_lines "the samples from the installed folder" bash tests/e2e/samples/run.sh 64 --installed "$installed"

check "msiexec /i installs the unsigned $newer package over $version" msiexec_logged upgrade.log /i "$(windows_path "$upgrade")"
registry_snapshot "$artifacts/registry-upgraded.txt"
one_product() {
  local entries
  entries=$(grep -F "\"displayname\"=\"${product,,}\"" "$artifacts/registry-upgraded.txt" | grep -F '\uninstall\{' |
    sed 's/\] .*/]/')
  [ "$(grep -c . <<<"$entries")" -eq 1 ] || { echo "product entries:"; printf '%s\n' "$entries"; return 1; }
  grep -qxF "$entries \"displayversion\"=\"$newer\"" "$artifacts/registry-upgraded.txt" ||
    { echo "the entry is not version $newer"; return 1; }
}
check "one product entry remains, of version $newer" one_product
check "after the upgrade the registration is the package's" \
  rows_are_registration "$artifacts/registry-upgraded.txt" "$installed_windows"

check "msiexec /x removes the product silently" msiexec_logged remove.log /x "$(windows_path "$upgrade")"
no_files_left() {
  local left
  [ ! -e "$installed" ] || { echo "$installed is still there"; return 1; }
  left=$(files_in_prefix | comm -13 "$artifacts/files-before.txt" -)
  [ -z "$left" ] || { sed 's/^/left: /' <<<"$left"; return 1; }
}
check "no file of the installs is left in the prefix" no_files_left
# What the installs added to the registry and is still there. The Windows Installer's own folders
# (Products, Features, UpgradeCodes, Components) stay as empty keys, as on any machine that ran it.
no_registry_left() {
  local left
  registry_snapshot "$artifacts/registry-after.txt"
  cat "$artifacts"/registry-{installed,simulator,upgraded}.txt | sort -u |
    comm -23 - "$artifacts/registry-before.txt" >"$artifacts/registry-added.txt"
  echo "$(wc -l <"$artifacts/registry-added.txt") keys and values added by the installs"
  left=$(comm -12 "$artifacts/registry-added.txt" "$artifacts/registry-after.txt" |
    grep -vE '\\installer(\\userdata\\s-1-5-18)?\\(products|features|upgradecodes|components)\]$')
  [ -z "$left" ] || { sed 's/^/left: /' <<<"$left"; return 1; }
}
check "no registry key or value of the installs is left (HKLM and HKCU)" no_registry_left

# The x86 package as a 32-bit executive's machine has it: installed with its simulator by the 32-bit
# msiexec, the samples run from its folder in the 32-bit script host, removed again.
if wine32_available; then
  installed32="$WINEPREFIX/drive_c/Program Files (x86)/$folder_name"
  msiexec32() {
    local log=$1; shift
    timeout --kill-after=5 180 "$(wine_for_bits 32)" "$(wine_tool_path 32 msiexec)" "$@" /qn /l*v "$(windows_path "$artifacts/$log")"
  }
  check "the 32-bit msiexec installs the x86 package with its simulator" msiexec32 install-x86.log /i "$(windows_path "$x86")" ADDLOCAL=ALL
  check_lines "the samples from the x86 package's folder (32-bit)" bash tests/e2e/samples/run.sh 32 --installed "$installed32"
  removed32() { msiexec32 remove-x86.log /x "$(windows_path "$x86")" && [ ! -e "$installed32" ]; }
  check "the 32-bit msiexec removes the x86 package and its folder" removed32
else
  echo "32-bit Wine is missing: the x86 package is checked by its files, signatures and Registry rows only"
fi

finish install
