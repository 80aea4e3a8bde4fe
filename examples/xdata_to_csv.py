"""Writes every entity's extended data (all applications) to
XDATA-<drawing>.csv: one row per value with the entity's handle, its kind,
the group code and the value.

    tovik run examples/xdata_to_csv.py plans/ -o out/
"""
import csv
import os


def run(doc, args):
    folder = args.outdir or os.path.dirname(os.path.abspath(args.drawing))
    name = os.path.splitext(os.path.basename(args.drawing))[0]
    with open(os.path.join(folder, "XDATA-%s.csv" % name), "w", newline="") as f:
        writer = csv.writer(f)
        writer.writerow(["handle", "kind", "code", "value"])
        for entity in doc.ModelSpace:
            codes, values = entity.GetXData("")
            for code, value in zip(codes or (), values or ()):
                writer.writerow([entity.Handle, entity.ObjectName, code, value])
