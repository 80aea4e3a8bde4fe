#!/bin/sh
# Times `tovik preview` of a large generated drawing against ezdxf's drawing
# add-on (matplotlib) rendering the same file to a PNG of the same size:
# whole process, wall clock and peak memory, median of paired runs.
#   bench/preview.sh [TOVIK] [ENTITIES] [RUNS] [KEEP_DIR]
set -eu
TOVIK=${1:-build/default/cli/tovik}
N=${2:-100000}
RUNS=${3:-3}
DIR=${4:-$(mktemp -d)}
KEEP=${4:-}
mkdir -p "$DIR"
[ -s "$DIR/preview$N.dxf" ] || /usr/bin/python3 - "$DIR/preview$N.dxf" "$N" <<'PY'
import math, sys, ezdxf
path, n = sys.argv[1], int(sys.argv[2])
doc = ezdxf.new("R2018")
doc.layers.add("RED", color=1)
blk = doc.blocks.new("TAG")
blk.add_circle((0, 0), 1)
blk.add_line((-1, 0), (1, 0))
blk.add_attdef("ID", (0, -2), dxfattribs={"height": 0.5})
msp = doc.modelspace()
side = int(math.sqrt(n)) + 1
for i in range(n):
    x, y = (i % side) * 4.0, (i // side) * 4.0
    k = i % 6
    if k == 0:
        msp.add_line((x, y), (x + 3, y + 3), dxfattribs={"layer": "RED"})
    elif k == 1:
        msp.add_circle((x + 1.5, y + 1.5), 1.4)
    elif k == 2:
        msp.add_lwpolyline([(x, y, 0, 0, 0.5), (x + 3, y), (x + 3, y + 3)], format="xyseb")
    elif k == 3:
        msp.add_arc((x + 1.5, y + 1.5), 1.2, 30, 240, dxfattribs={"color": 3})
    elif k == 4:
        msp.add_text("T%d" % i, dxfattribs={"height": 0.8}).set_placement((x, y + 1))
    else:
        msp.add_blockref("TAG", (x + 1.5, y + 2), dxfattribs={"rotation": i % 360}).add_auto_attribs({"ID": str(i)})
doc.saveas(path)
PY
echo "drawing: $N entities, $(stat -c %s "$DIR/preview$N.dxf") bytes"
cat > "$DIR/ezdxf_png.py" <<'PY'
import sys, ezdxf
import matplotlib
matplotlib.use("Agg")
import matplotlib.pyplot as plt
from ezdxf.addons.drawing import Frontend, RenderContext
from ezdxf.addons.drawing.matplotlib import MatplotlibBackend
doc = ezdxf.readfile(sys.argv[1])
fig = plt.figure(figsize=(12, 9), dpi=100)
ax = fig.add_axes([0, 0, 1, 1])
Frontend(RenderContext(doc), MatplotlibBackend(ax)).draw_layout(doc.modelspace())
fig.savefig(sys.argv[2], dpi=100)
PY
# Prints "WALL_SECONDS PEAK_KB" of one whole-process run.
measure() { /usr/bin/time -f "%e %M" "$@" 2>&1 >/dev/null | tail -1; }
: > "$DIR/runs"
i=0
while [ "$i" -lt "$RUNS" ]; do
  echo "$(measure "$TOVIK" preview "$DIR/preview$N.dxf" -o "$DIR/ours.png" --size 1200x900) \
$(measure /usr/bin/python3 "$DIR/ezdxf_png.py" "$DIR/preview$N.dxf" "$DIR/ezdxf.png")" >> "$DIR/runs"
  i=$((i + 1))
done
/usr/bin/python3 - "$DIR/runs" <<'PY'
import statistics, sys
rows = [list(map(float, l.split())) for l in open(sys.argv[1]) if l.strip()]
ours_t = statistics.median(r[0] for r in rows); ours_m = statistics.median(r[1] for r in rows)
peer_t = statistics.median(r[2] for r in rows); peer_m = statistics.median(r[3] for r in rows)
ratio = statistics.median(r[2] / r[0] for r in rows)
print(f"tovik preview  {ours_t:7.2f} s wall  peak {ours_m / 1024:6.0f} MB")
print(f"ezdxf drawing  {peer_t:7.2f} s wall  peak {peer_m / 1024:6.0f} MB")
print(f"ratio (median of paired runs): {ratio:.1f}x faster, {peer_m / ours_m:.1f}x less memory")
PY
[ -n "$KEEP" ] || rm -rf "$DIR"
