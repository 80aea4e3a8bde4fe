#!/usr/bin/env bash
# Builds the Windows automation servers (32- and 64-bit) with mingw-w64 and
# runs the script suite windows/tests/suite.vbs under Wine three ways: in a
# 32-bit prefix, as a 32-bit server in a 64-bit prefix, and as a 64-bit
# server (the last one also registers and unregisters per user first), and
# before each the bridge's own checks (windows/tests/bridge_check.cpp).
# Each run must end with "N passed, 0 failed".
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
bash scripts/install-windows-deps.sh

for preset in windows-x86 windows-x64; do
  echo "== build: $preset"
  cmake --preset "$preset" > /dev/null
  cmake --build --preset "$preset" -j 2
done

work=$root/build/wine
rm -rf "$work"
mkdir -p "$work"
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
win() { winepath -w "$1"; }

# run NAME ARCH LOADER CSCRIPT DLL-FOLDER REGISTRATION
run() {
  local name=$1 arch=$2 loader=$3 cscript=$4 dlls=$5 registration=$6
  export WINEPREFIX=$work/$name
  echo "== wine: $name"
  WINEARCH=$arch wine wineboot --init > /dev/null 2>&1
  wineserver -w
  if [ "$registration" = user ]; then
    # Per-user registration (no administrator rights): the classes and the
    # type library go under HKCU and come off again. Wine's COM reads only
    # the machine's classes, so the suite itself runs on the machine-wide
    # registration that follows.
    local key='HKCU\Software\Classes\Tovik_AutoCad_Pro.DynamicSS\CLSID'
    "$loader" regsvr32 /s /n /i:user "$(win "$dlls/TovikAutoCad.dll")"
    "$loader" reg query "$key" > /dev/null 2>&1 || { echo "per-user registration wrote nothing" >&2; return 1; }
    "$loader" regsvr32 /s /u /n /i:user "$(win "$dlls/TovikAutoCad.dll")"
    if "$loader" reg query "$key" > /dev/null 2>&1; then
      echo "per-user unregistration left the classes" >&2
      return 1
    fi
    echo "per-user registration: written and removed"
  fi
  for dll in TovikAutoCad TovikHost; do
    "$loader" regsvr32 /s "$(win "$dlls/$dll.dll")"
  done
  mkdir -p "$work/$name-out"
  cp data/colors.dxf "$work/$name-out/drawing.dxf"
  local log=$work/$name.log
  # The bridge's own checks, as VBA and C++ clients call it.
  "$loader" "$(win "$dlls/bridge_check.exe")" 2>&1 | tr -d '\r' | tee "$work/$name-bridge.log"
  grep -Eq '^[0-9]+ passed, 0 failed$' "$work/$name-bridge.log" || { echo "bridge checks failed: $name" >&2; return 1; }
  "$loader" "$cscript" //nologo "$(win "$root/windows/tests/suite.vbs")" \
    "$(win "$work/$name-out/drawing.dxf")" "$(win "$work/$name-out")" 2>&1 | tr -d '\r' | tee "$log"
  wineserver -k || true
  grep -Eq '^[0-9]+ passed, 0 failed$' "$log" || { echo "suite failed: $name" >&2; return 1; }
}

x86=$root/build/windows-x86/windows
x64=$root/build/windows-x64/windows
run win32 win32 wine cscript "$x86" machine
run wow64 win64 wine 'C:\windows\syswow64\cscript.exe' "$x86" machine
run win64 win64 /usr/lib/wine/wine64 cscript "$x64" user
