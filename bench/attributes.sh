#!/bin/sh
# Reads and rewrites one attribute text on every block reference of a
# generated drawing, opened and saved as DXF: tovik through the dispatch
# interface (bench_attributes_job) against ezdxf doing the same on the same
# file. Whole process, wall clock and peak memory, median of paired runs.
#   bench/attributes.sh [BUILD_DIR] [REFERENCES] [RUNS] [KEEP_DIR]
set -eu
BUILD=${1:-build/default}
N=${2:-100000}
RUNS=${3:-3}
DIR=${4:-$(mktemp -d)}
KEEP=${4:-}
mkdir -p "$DIR"
[ -s "$DIR/refs$N.dxf" ] || /usr/bin/python3 - "$DIR/refs$N.dxf" "$N" <<'PY'
import sys, ezdxf
path, n = sys.argv[1], int(sys.argv[2])
doc = ezdxf.new("R2018")
blk = doc.blocks.new("TAG")
blk.add_circle((0, 0), 1)
blk.add_attdef("ID", (0, -2), dxfattribs={"height": 0.5})
msp = doc.modelspace()
for i in range(n):
    msp.add_blockref("TAG", ((i % 300) * 4, (i // 300) * 4)).add_auto_attribs({"ID": str(i)})
doc.saveas(path)
PY
cat > "$DIR/ezdxf_job.py" <<'PY'
import sys, ezdxf
doc = ezdxf.readfile(sys.argv[1])
n = 0
for ref in doc.modelspace().query("INSERT"):
    att = ref.get_attrib("ID")
    if att is not None:
        att.dxf.text = att.dxf.text + "-1"
        n += 1
doc.saveas(sys.argv[2])
print("changed", n, "references")
PY
echo "drawing: $N references, $(stat -c %s "$DIR/refs$N.dxf") bytes"
measure() { /usr/bin/time -f "%e %M" "$@" 2>&1 >/dev/null | tail -1; }
: > "$DIR/runs"
i=0
while [ "$i" -lt "$RUNS" ]; do
  echo "$(measure "$BUILD/bench/bench_attributes_job" "$DIR/refs$N.dxf" "$DIR/ours.dxf") \
$(measure /usr/bin/python3 "$DIR/ezdxf_job.py" "$DIR/refs$N.dxf" "$DIR/ezdxf.dxf")" >> "$DIR/runs"
  i=$((i + 1))
done
/usr/bin/python3 - "$DIR/runs" <<'PY'
import statistics, sys
rows = [list(map(float, l.split())) for l in open(sys.argv[1]) if l.strip()]
med = lambda k: statistics.median(r[k] for r in rows)
print(f"tovik  {med(0):7.2f} s wall  peak {med(1) / 1024:6.0f} MB")
print(f"ezdxf  {med(2):7.2f} s wall  peak {med(3) / 1024:6.0f} MB")
print(f"ratio (median of paired runs): {statistics.median(r[2] / r[0] for r in rows):.1f}x faster, "
      f"{med(3) / med(1):.1f}x less memory")
PY
[ -n "$KEEP" ] || rm -rf "$DIR"
