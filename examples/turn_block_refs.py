"""Turns every reference to a block a quarter turn about its insertion point
and moves it 10 units along x. The block is named by TOVIK_BLOCK (every
block reference when it is not set).

    TOVIK_BLOCK=DOOR tovik run examples/turn_block_refs.py plans/ -o out/
"""
import math
import os


def run(doc, args):
    wanted = os.environ.get("TOVIK_BLOCK", "").upper()
    for entity in doc.ModelSpace:
        if entity.ObjectName != "AcDbBlockReference":
            continue
        if wanted and entity.EffectiveName.upper() != wanted:
            continue
        base = entity.InsertionPoint
        entity.Rotate(base, math.pi / 2)
        entity.Move(base, (base[0] + 10, base[1], base[2]))
