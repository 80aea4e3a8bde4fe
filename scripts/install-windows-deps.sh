#!/usr/bin/env bash
# Installs what the Windows automation servers need to be built and tested
# under Wine, only what is missing: mingw-w64 for both architectures, widl
# (mingw-w64-tools), Wine 64-bit with its 32-bit half, and libwine-dev for
# the IDL files widl imports. Run as root on Debian 12 (bookworm).
set -euo pipefail

packages=(g++-mingw-w64-i686 g++-mingw-w64-x86-64 mingw-w64-tools wine wine64 libwine-dev)
missing=()
for p in "${packages[@]}" wine32:i386; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
if [ "$(id -u)" -ne 0 ]; then
  echo "missing packages: ${missing[*]} (run as root to install them)" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
dpkg --print-foreign-architectures | grep -qx i386 || dpkg --add-architecture i386
# The i386 index can be stale against the mirror ("File has unexpected
# size"): the update then reports an error although the amd64 index is fine.
apt-get update -qq || echo "apt-get update reported errors; going on with the indexes it has" >&2
apt-get install -y -qq --no-install-recommends "${packages[@]}"
# wine32:i386 must match wine's version exactly; pinning the point release
# lets apt resolve it when the i386 index lags behind.
pin=$(mktemp)
printf 'Package: *\nPin: release n=bookworm,l=Debian\nPin-Priority: 1001\n' > "$pin"
apt-get -o Dir::Etc::Preferences="$pin" install -y -qq --no-install-recommends --allow-downgrades wine32:i386
rm -f "$pin"
