#!/usr/bin/python3
"""Writes base.dxf (a small R2000 drawing made with ezdxf) and one damaged
copy of it per kind of fault a careful reader must repair, each named after
its fault. Run once; the files are kept with the tests, which check
that each is repaired (tests/dxf_damaged/damaged_check.py).

    /usr/bin/python3 scripts/make_damaged_dxf.py tests/dxf_damaged
"""
import os
import sys

import ezdxf

folder = sys.argv[1]
doc = ezdxf.new("R2000")
doc.layers.add("WALLS", color=3)
block = doc.blocks.new("TAG")
block.add_circle((0, 0), 1)
block.add_attdef("ID", (0, -2))
msp = doc.modelspace()
for i in range(6):
    msp.add_line((i, 0), (i + 0.5, 1.25), dxfattribs={"layer": "WALLS"})
msp.add_polyline2d([(0, 0), (1, 1), (2, 0)])
msp.add_blockref("TAG", (5, 5)).add_attrib("ID", "A-1", (5, 3))
msp.add_text("note", dxfattribs={"insert": (1, 2), "height": 0.5})
doc.saveas(os.path.join(folder, "base.dxf"))
base = open(os.path.join(folder, "base.dxf"), newline="").read()
lines = base.split("\n")


def pairs(text):
    ls = text.split("\n")
    return [(ls[i], ls[i + 1]) for i in range(0, len(ls) - 1, 2)]


def join(ps):
    return "\n".join(c + "\n" + v for c, v in ps) + "\n"


def record_start(ps, type_name, nth=0):
    seen = 0
    for k, (c, v) in enumerate(ps):
        if c.strip() == "0" and v.strip() == type_name:
            if seen == nth:
                return k
            seen += 1
    raise ValueError(type_name)


def handle_of(ps, k):
    for c, v in ps[k + 1:]:
        if c.strip() == "0":
            break
        if c.strip() == "5":
            return v
    raise ValueError("no handle")


def set_handle(ps, k, handle):
    for j in range(k + 1, len(ps)):
        if ps[j][0].strip() == "5":
            ps[j] = (ps[j][0], handle)
            return


damaged = {}
ps = pairs(base)

# Two entities sharing a handle: the second LINE takes the first one's.
p = list(ps)
set_handle(p, record_start(p, "LINE", 1), handle_of(p, record_start(p, "LINE", 0)))
damaged["duplicate-handle"] = join(p)

# The LAYER table's TABLE record is missing (its entries stand alone).
p = list(ps)
k = record_start(p, "TABLE", 0)
while not (p[k][0].strip() == "2" and p[k][1].strip() == "LAYER"):
    k = record_start(p, "TABLE", sum(1 for c, v in p[:k + 1] if c.strip() == "0" and v.strip() == "TABLE"))
    k += 1
k -= 1
end = k + 1
while p[end][0].strip() != "0":
    end += 1
damaged["table-header-missing"] = join(p[:k] + p[end:])

# A stray ENDSEC between two sections.
p = list(ps)
k = record_start(p, "SECTION", 2)
damaged["stray-endsec"] = join(p[:k] + [("  0", "ENDSEC")] + p[k:])

# Numbers written with a decimal comma (every coordinate with a fraction).
p = [(c, v.replace(".", ",")) if c.strip() in ("10", "20", "11", "21") and "." in v else (c, v)
     for c, v in ps]
damaged["decimal-comma"] = join(p)

# A value of the wrong type: a colour number given as text.
p = list(ps)
k = record_start(p, "LINE", 2)
p.insert(k + 2, (" 62", "red"))
damaged["wrong-value-type"] = join(p)

# The file cut short inside the ENTITIES section, in the middle of a tag.
p = list(ps)
k = record_start(p, "TEXT", 0)
damaged["truncated"] = join(p[:k + 3]) + " 10\n"

# The ENDBLK of a block and the SEQEND of a polyline are missing.
p = list(ps)
k = record_start(p, "SEQEND", 0)
end = k + 1
while p[end][0].strip() != "0":
    end += 1
damaged["seqend-missing"] = join(p[:k] + p[end:])

# A block without a name: its table entry, definition and reference lost it.
damaged["nameless-block"] = base.replace("\n  2\nTAG\n", "\n  2\n\n").replace("\n  3\nTAG\n", "\n  3\n\n")

# A second definition of block TAG (with handles of its own).
p = list(ps)
k = record_start(p, "BLOCK", 2)
end = record_start(p, "ENDBLK", 2)
while p[end + 1][0].strip() != "0":
    end += 1
copy = []
fresh = iter(range(0x900, 0x1000))
for c, v in p[k:end + 1]:
    copy.append((c, "%X" % next(fresh)) if c.strip() == "5" else (c, v))
damaged["duplicate-block-name"] = join(p[:end + 1] + copy + p[end + 1:])

for name, text in damaged.items():
    with open(os.path.join(folder, name + ".dxf"), "w", newline="") as f:
        f.write(text)
