"""Counts the entities of model space by layer and block, and writes the
counts to COUNT-<drawing>.csv beside the output drawing (or the input).

    tovik run examples/count_by_layer.py plans/ -o out/
"""
import collections
import csv
import os


def run(doc, args):
    counts = collections.Counter()
    for entity in doc.ModelSpace:
        block = entity.Name if entity.ObjectName == "AcDbBlockReference" else ""
        counts[(entity.Layer, block)] += 1
    folder = args.outdir or os.path.dirname(os.path.abspath(args.drawing))
    name = os.path.splitext(os.path.basename(args.drawing))[0]
    with open(os.path.join(folder, "COUNT-%s.csv" % name), "w", newline="") as f:
        writer = csv.writer(f)
        writer.writerow(["layer", "block", "count"])
        for (layer, block), n in sorted(counts.items()):
            writer.writerow([layer, block, n])
