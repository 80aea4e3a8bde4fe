#!/bin/sh
# The cost of one late-bound call from a script into the library and back
# into the host, under Wine (64-bit server): whole-process wall clock of
# cscript making N calls, less that of the same process making none, per
# call; the peer is the same script calling the host's member directly, in
# the same run. Median of paired runs; peak memory of the N-call processes.
#   bench/com_call.sh [CALLS] [RUNS]
# Needs the prefix that scripts/windows-test.sh leaves (build/wine/win64,
# both servers registered).
set -eu
N=${1:-100000}
RUNS=${2:-5}
export WINEPREFIX=${WINEPREFIX:-$PWD/build/wine/win64}
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
WINE64=/usr/lib/wine/wine64
SCRIPT=$(winepath -w "$(dirname "$0")/com_call.vbs")
measure() { /usr/bin/time -f "%e %M" "$WINE64" cscript //nologo "$SCRIPT" "$1" "$2" 2>&1 >/dev/null | tail -1; }
# The script host keeps a server process warm between runs, as a host does.
"$WINE64" cscript //nologo "$SCRIPT" host 0 > /dev/null
runs=$(mktemp)
r=0
while [ $r -lt "$RUNS" ]; do
  base=$(measure host 0)
  lib=$(measure library "$N")
  host=$(measure host "$N")
  echo "$base $lib $host" >> "$runs"
  r=$((r + 1))
done
wineserver -k || true
awk -v n="$N" '
  { b[NR] = $1; l[NR] = ($3 - $1) / n * 1e6; h[NR] = ($5 - $1) / n * 1e6; lm[NR] = $4; hm[NR] = $6 }
  function median(a, k,   i, j, t, c) {
    c = 0; for (i in a) { c++; s[c] = a[i] }
    for (i = 1; i <= c; i++) for (j = i + 1; j <= c; j++) if (s[j] < s[i]) { t = s[i]; s[i] = s[j]; s[j] = t }
    return (c % 2) ? s[(c + 1) / 2] : (s[c / 2] + s[c / 2 + 1]) / 2
  }
  END {
    printf "calls per process: %d, paired runs: %d, process without calls: %.2f s\n", n, NR, median(b)
    printf "script -> library -> host: %.2f us per call (peak %d KB)\n", median(l), median(lm)
    printf "script -> host (peer):     %.2f us per call (peak %d KB)\n", median(h), median(hm)
    printf "ratio library/peer: %.2f\n", median(l) / median(h)
  }' "$runs"
rm -f "$runs"
