#!/bin/sh
# An add-in task from Python: open a drawing, set three extended-data values
# on every line, save. The tovik module (late-bound, as a COM client script
# would do it) against ezdxf doing the same on the same file. Whole process,
# wall clock and peak memory, median of paired runs.
#   bench/python_xdata.sh [BUILD_DIR] [LINES] [RUNS]
set -eu
BUILD=${1:-build/default}
N=${2:-50000}
RUNS=${3:-3}
DIR=$(mktemp -d)
/usr/bin/python3 - "$DIR/lines.dxf" "$N" <<'PY'
import sys, ezdxf
path, n = sys.argv[1], int(sys.argv[2])
doc = ezdxf.new("R2018")
msp = doc.modelspace()
for i in range(n):
    msp.add_line(((i % 300) * 2, (i // 300) * 2), ((i % 300) * 2 + 1, (i // 300) * 2 + 1))
doc.saveas(path)
PY
cat > "$DIR/tovik_job.py" <<'PY'
import sys, tovik
app = tovik.Application()
doc = app.Documents.Open(sys.argv[1])
doc.RegisteredApplications.Add("BENCH")
codes = (1001, 1000, 1070, 1040)
for e in doc.ModelSpace:
    if e.ObjectName == "AcDbLine":
        e.SetXData(codes, ("BENCH", "mark", tovik.VARIANT(2, 7), 2.5))
doc.SaveAs(sys.argv[2])
PY
cat > "$DIR/ezdxf_job.py" <<'PY'
import sys, ezdxf
doc = ezdxf.readfile(sys.argv[1])
doc.appids.new("BENCH")
for e in doc.modelspace().query("LINE"):
    e.set_xdata("BENCH", [(1000, "mark"), (1070, 7), (1040, 2.5)])
doc.saveas(sys.argv[2])
PY
echo "drawing: $N lines, $(stat -c %s "$DIR/lines.dxf") bytes"
measure() { /usr/bin/time -f "%e %M" "$@" 2>&1 >/dev/null | tail -1; }
: > "$DIR/runs"
i=0
while [ "$i" -lt "$RUNS" ]; do
  echo "$(PYTHONPATH="$BUILD/python" measure /usr/bin/python3 "$DIR/tovik_job.py" "$DIR/lines.dxf" "$DIR/ours.dxf") \
$(measure /usr/bin/python3 "$DIR/ezdxf_job.py" "$DIR/lines.dxf" "$DIR/ezdxf.dxf")" >> "$DIR/runs"
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
rm -rf "$DIR"
