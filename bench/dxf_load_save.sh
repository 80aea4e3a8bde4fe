#!/bin/sh
# Times loading and saving a large generated drawing with tovik and with
# ezdxf, and prints the ratios and peak memory.
#   bench/dxf_load_save.sh [TOVIK] [ENTITIES]
set -eu
TOVIK=${1:-build/cli/tovik}
N=${2:-1000000}
DIR=$(mktemp -d)
/usr/bin/python3 - "$DIR/big.dxf" "$N" <<'PY'
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
ls -l "$DIR/big.dxf"
t() { /usr/bin/time -f "%e s, peak %M kB" "$@" 2>&1 >/dev/null | tail -1; }
echo "tovik load+save: $(t "$TOVIK" convert "$DIR/big.dxf" "$DIR/out.dxf")"
echo "tovik load:      $(t "$TOVIK" info "$DIR/big.dxf")"
echo "ezdxf load:      $(t /usr/bin/python3 -c 'import sys,ezdxf; ezdxf.readfile(sys.argv[1])' "$DIR/big.dxf")"
echo "ezdxf load+save: $(t /usr/bin/python3 -c 'import sys,ezdxf; ezdxf.readfile(sys.argv[1]).saveas(sys.argv[2])' "$DIR/big.dxf" "$DIR/ez.dxf")"
rm -rf "$DIR"
