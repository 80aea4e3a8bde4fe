"""Numbers the references to a block in reading order (rows from the top,
each row from the left) by writing 1, 2, 3... into their attribute. The block
and the tag are TOVIK_BLOCK and TOVIK_TAG (NUMBER when not set).

    TOVIK_BLOCK=ROOM TOVIK_TAG=NUMBER tovik run examples/renumber_in_reading_order.py plans/ -o out/
"""
import os

import tovik


def run(doc, args):
    block = os.environ.get("TOVIK_BLOCK", "").upper()
    tag = os.environ.get("TOVIK_TAG", "NUMBER")
    space = tovik.Dispatch("Tovik_AutoCad_Pro.AcadSpace")
    refs = tovik.Dispatch("Tovik_AutoCad_Pro.DynamicSS")
    refs.Document = doc
    refs.Add(tuple(e for e in doc.ModelSpace
                   if e.ObjectName == "AcDbBlockReference" and (not block or e.EffectiveName.upper() == block)))
    refs.Animation.Sort2D()  # reading order
    for number, ref in enumerate(refs, start=1):
        space.AttRef_Get(ref, tag, str(number))
