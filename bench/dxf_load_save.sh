#!/bin/sh
# Loads and saves generated drawings with tovik and with ezdxf, in the same
# run on the same files, and prints what a user waits for: whole-process
# wall clock and peak memory, the median of paired runs, and the ratios.
#   bench/dxf_load_save.sh [TOVIK] [ENTITIES...]     (default 10000 100000)
# RUNS=n sets the number of paired runs (default 5); KEEP_DIR=dir keeps the
# generated drawings there and reuses them.
set -eu
TOVIK=${1:-build/default/cli/tovik}
[ $# -gt 0 ] && shift
SIZES=${*:-10000 100000}
DIR=${KEEP_DIR:-$(mktemp -d)}
mkdir -p "$DIR"
/usr/bin/python3 - "$TOVIK" "$DIR" "${RUNS:-5}" $SIZES <<'PY'
import os, statistics, subprocess, sys, tempfile

tovik, folder, runs = sys.argv[1], sys.argv[2], int(sys.argv[3])
sizes = [int(n) for n in sys.argv[4:]]

GENERATE = r'''
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
'''

def measure(command):
    """Runs `command`; returns (wall seconds, peak resident MB)."""
    with tempfile.NamedTemporaryFile("r") as out:
        subprocess.run(["/usr/bin/time", "-o", out.name, "-f", "%e %M"] + command,
                       stdout=subprocess.DEVNULL, check=True)
        wall, peak_kb = out.read().split()[-2:]
    return float(wall), int(peak_kb) / 1024

print(f"{'entities':>9} {'file MB':>8} {'job':<10} {'tovik s':>8} {'MB':>6} {'x file':>6}"
      f" {'ezdxf s':>8} {'MB':>6} {'ratio':>6}")
for n in sizes:
    path = os.path.join(folder, f"mixed-{n}.dxf")
    if not os.path.exists(path):
        subprocess.run(["/usr/bin/python3", "-c", GENERATE, path, str(n)], check=True)
    size_mb = os.path.getsize(path) / 1e6
    ours_out, theirs_out = path + ".tovik.dxf", path + ".ezdxf.dxf"
    jobs = {
        "load": ([tovik, "info", path],
                 ["/usr/bin/python3", "-c", "import sys,ezdxf; ezdxf.readfile(sys.argv[1])", path]),
        "load+save": ([tovik, "convert", path, ours_out],
                      ["/usr/bin/python3", "-c",
                       "import sys,ezdxf; ezdxf.readfile(sys.argv[1]).saveas(sys.argv[2])",
                       path, theirs_out]),
    }
    medians = {}
    for job, (ours, theirs) in jobs.items():
        pairs = [(measure(ours), measure(theirs)) for _ in range(runs)]
        ow = statistics.median(p[0][0] for p in pairs)
        om = statistics.median(p[0][1] for p in pairs)
        tw = statistics.median(p[1][0] for p in pairs)
        tm = statistics.median(p[1][1] for p in pairs)
        ratio = statistics.median(p[1][0] / max(p[0][0], 0.005) for p in pairs)
        medians[job] = (ow, tw)
        print(f"{n:>9} {size_mb:>8.1f} {job:<10} {ow:>8.2f} {om:>6.0f} {om / size_mb:>6.1f}"
              f" {tw:>8.2f} {tm:>6.0f} {ratio:>5.1f}x")
    # Saving alone, as the difference of the medians.
    os_, ts_ = (medians["load+save"][0] - medians["load"][0],
                medians["load+save"][1] - medians["load"][1])
    print(f"{n:>9} {size_mb:>8.1f} {'save':<10} {os_:>8.2f} {'':>6} {'':>6} {ts_:>8.2f} {'':>6}"
          f" {ts_ / max(os_, 0.005):>5.1f}x")
    for f in (ours_out, theirs_out):
        if os.path.exists(f):
            os.remove(f)
PY
[ -n "${KEEP_DIR:-}" ] || rm -rf "$DIR"
