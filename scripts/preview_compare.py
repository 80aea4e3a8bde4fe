#!/usr/bin/python3
"""Pixel overlap of two renderings of one drawing.

usage: preview_compare.py OURS.png REFERENCE.png

Each picture is reduced to its ink (pixels away from the corner pixel's
background colour), cropped to the ink's bounding box and scaled to a
common 400-pixel box with the aspect ratio kept. Ink of one picture counts
as matched when the other has ink within 3 pixels. Prints
  coverage  the share of the reference's ink our picture matches,
  precision the share of our ink the reference matches,
  f1        their harmonic mean.
"""
import sys

from PIL import Image, ImageChops, ImageFilter

SIZE = 400


def ink(path):
    img = Image.open(path).convert("RGB")
    bg = img.getpixel((0, 0))
    diff = ImageChops.difference(img, Image.new("RGB", img.size, bg)).convert("L")
    mask = diff.point(lambda v: 255 if v > 40 else 0)
    box = mask.getbbox()
    if box is None:
        return None
    mask = mask.crop(box)
    w, h = mask.size
    k = SIZE / max(w, h)
    mask = mask.resize((max(1, round(w * k)), max(1, round(h * k))), Image.BILINEAR)
    canvas = Image.new("L", (SIZE, SIZE), 0)
    canvas.paste(mask, (0, 0))
    return canvas.point(lambda v: 255 if v > 60 else 0)


def count(mask):
    return mask.histogram()[255]


def matched(a, b):
    near_b = b.filter(ImageFilter.MaxFilter(7))
    return count(ImageChops.multiply(a, near_b)) / max(1, count(a))


def main():
    ours, ref = ink(sys.argv[1]), ink(sys.argv[2])
    if ours is None or ref is None:
        print("coverage 0.000 precision 0.000 f1 0.000 (an empty picture)")
        return
    coverage, precision = matched(ref, ours), matched(ours, ref)
    f1 = 2 * coverage * precision / max(1e-9, coverage + precision)
    print(f"coverage {coverage:.3f} precision {precision:.3f} f1 {f1:.3f}")


if __name__ == "__main__":
    main()
