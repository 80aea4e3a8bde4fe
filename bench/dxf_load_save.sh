#!/bin/sh
# Times loading and saving a large generated drawing with tovik and with
# ezdxf, and prints the ratios and peak memory.
#   bench/dxf_load_save.sh [TOVIK] [ENTITIES] [KEEP_DIR]
# With KEEP_DIR the drawing is generated there once and reused, and kept.
set -eu
TOVIK=${1:-build/default/cli/tovik}
N=${2:-1000000}
DIR=${3:-$(mktemp -d)}
# Remembered now: the measurements below reuse the positional parameters.
KEEP=${3:-}
mkdir -p "$DIR"
[ -s "$DIR/big.dxf" ] || /usr/bin/python3 - "$DIR/big.dxf" "$N" <<'PY'
import sys, ezdxf
path, n = sys.argv[1], int(sys.argv[2])
doc = ezdxf.new("R2018")
doc.appids.new("BENCH")
blk = doc.blocks.new("TAG")
blk.add_circle((0, 0), 1)
blk.add_attdef("ID", (0, 0))
msp = doc.modelspace()
for i in range(n):
    k = i % 4
    if k == 0:
        msp.add_line((i, 0), (i, 1)).set_xdata("BENCH", [(1000, "x"), (1070, i % 30000)])
    elif k == 1:
        msp.add_circle((i, 2), 0.5)
    elif k == 2:
        msp.add_lwpolyline([(i, 3), (i + 1, 4), (i + 2, 3)])
    else:
        msp.add_blockref("TAG", (i, 5)).add_attrib("ID", str(i), (i, 5))
doc.saveas(path)
PY
SIZE=$(stat -c %s "$DIR/big.dxf")
echo "drawing: $N entities, $SIZE bytes"
# Runs a command and prints "CPU_SECONDS PEAK_KB": processor time (user +
# system), so that other work on the machine does not skew the ratios.
measure() { /usr/bin/time -f "%U %S %M" "$@" 2>&1 >/dev/null | tail -1 | awk '{ printf "%.2f %s\n", $1 + $2, $3 }'; }
set -- $(measure "$TOVIK" info "$DIR/big.dxf"); TL=$1; TLM=$2
set -- $(measure "$TOVIK" convert "$DIR/big.dxf" "$DIR/out.dxf"); TLS=$1; TLSM=$2
set -- $(measure /usr/bin/python3 -c 'import sys,ezdxf; ezdxf.readfile(sys.argv[1])' "$DIR/big.dxf"); EL=$1; ELM=$2
set -- $(measure /usr/bin/python3 -c 'import sys,ezdxf; ezdxf.readfile(sys.argv[1]).saveas(sys.argv[2])' "$DIR/big.dxf" "$DIR/ez.dxf"); ELS=$1
/usr/bin/python3 - "$SIZE" "$TL" "$TLM" "$TLS" "$TLSM" "$EL" "$ELM" "$ELS" <<'PY'
import sys
size, tl, tlm, tls, tlsm, el, elm, els = (float(v) for v in sys.argv[1:])
mb = size / 1e6
# Saving alone: the difference of the two runs (noise can make it tiny).
ts, es = max(tls - tl, 0.01), max(els - el, 0.01)
print(f"tovik load       {tl:7.2f} s CPU  {mb / tl:7.1f} MB/s  peak {tlm / 1024:7.0f} MB = {tlm * 1024 / size:4.1f} x file")
print(f"tovik load+save  {tls:7.2f} s CPU  peak {tlsm / 1024:7.0f} MB = {tlsm * 1024 / size:4.1f} x file")
print(f"ezdxf load       {el:7.2f} s CPU  {mb / el:7.1f} MB/s  peak {elm / 1024:7.0f} MB = {elm * 1024 / size:4.1f} x file")
print(f"ezdxf load+save  {els:7.2f} s CPU")
print(f"ratios: load {el / tl:.1f}x faster (aim 100x), save {es / ts:.1f}x faster (aim 50x), "
      f"load+save {els / tls:.1f}x; peak memory {tlsm * 1024 / size:.1f}x file (aim under 2x)")
PY
[ -n "$KEEP" ] || rm -rf "$DIR"
