#!/usr/bin/python3
"""Has a second independent program open every copy `tovik convert` writes:
LibreCAD (its own DXF library, libdxfrw) prints each copy to PDF. Copies of
every drawing of the shared corpus and of every damaged drawing, as R2018
and as R12 (the version cutting and CAM programs read). A copy counts as
opened when LibreCAD prints it (on some drawings it then waits at a
message, so a run ends once its PDF stops growing). Fails when LibreCAD does
not print a copy of a drawing it prints as given, or of a damaged drawing. Exit 77 (skipped) when LibreCAD is not installed.

    second_reader_check.py SHARED_DIR DAMAGED_DIR OUT_DIR TOVIK
"""
import glob
import os
import shutil
import subprocess
import sys
import time


def main():
    if len(sys.argv) != 5:
        raise SystemExit(__doc__)
    shared, damaged, out, tovik = sys.argv[1:]
    librecad = shutil.which("librecad")
    if librecad is None:
        print("LibreCAD is not installed: skipped")
        return 77
    drawings = sorted(glob.glob(os.path.join(shared, "dxf", "**", "*.dxf"), recursive=True))
    damaged = os.path.abspath(damaged)
    drawings += sorted(glob.glob(os.path.join(damaged, "*.dxf")))
    os.makedirs(out, exist_ok=True)
    env = dict(os.environ, QT_QPA_PLATFORM="offscreen", XDG_RUNTIME_DIR=out)

    def prints(dxf):
        """True when LibreCAD writes a PDF of `dxf`. It may wait at a message
        after printing, so the run ends once the PDF has stopped growing
        (or after 120 s on a loaded machine)."""
        pdf = os.path.splitext(os.path.join(out, os.path.basename(dxf)))[0] + ".pdf"
        if os.path.exists(pdf):
            os.remove(pdf)
        run = subprocess.Popen([librecad, "dxf2pdf", "-a", "-t", out, dxf], env=env,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        deadline = time.monotonic() + 120
        last = -1
        while time.monotonic() < deadline:
            try:
                run.wait(timeout=1)
                break
            except subprocess.TimeoutExpired:
                size = os.path.getsize(pdf) if os.path.exists(pdf) else -1
                if size > 0 and size == last:
                    break
                last = size
        if run.poll() is None:
            run.kill()
            run.wait()
        return os.path.exists(pdf) and os.path.getsize(pdf) > 0

    failures = []
    opened = 0
    neither = 0
    for path in drawings:
        stem = os.path.splitext(os.path.basename(path))[0]
        for version in ("R2018", "R12"):
            copy = os.path.join(out, f"{stem}-{version}.dxf")
            done = subprocess.run([tovik, "convert", path, copy, "--version", version],
                                  capture_output=True, text=True)
            if done.returncode != 0:
                # Files with no drawing in them are refused; that is checked elsewhere.
                continue
            if prints(copy):
                opened += 1
                continue
            given = os.path.join(out, f"{stem}-given.dxf")
            shutil.copyfile(path, given)
            if prints(given) or os.path.dirname(path) == os.path.abspath(damaged):
                failures.append(f"{stem} as {version}: LibreCAD does not open the copy")
            else:
                neither += 1
                print(f"{stem} as {version}: LibreCAD opens neither the drawing nor its copy")
    for f in failures:
        print("FAIL", f)
    print(f"{opened} copies opened by LibreCAD, {neither} of drawings it cannot open either, "
          f"{len(failures)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
