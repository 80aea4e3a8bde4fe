#!/usr/bin/env python3
"""Checks that the test suite catches deliberate faults.

Each line of the fault list names a one-line fault: a text that stands once
in the sources and the faulty text that replaces it. For each fault the
script writes it into its file, builds, runs ctest, and puts the file back.
A fault the suite does not fail on is reported as missed.

    scripts/fault_check.py scripts/fault_list.tsv build/default [ID ...]

Exit status: 0 when the suite failed on every fault, 1 otherwise.
"""
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SEARCHED = ("src", "cli")


def read_faults(path):
    for line in Path(path).read_text().splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        fault_id, what, original, faulty = line.split("\t")
        yield fault_id, what, original, faulty


def file_holding(text):
    hits = []
    for folder in SEARCHED:
        for path in (ROOT / folder).rglob("*"):
            if path.suffix in (".cpp", ".h") and text in path.read_text():
                hits.append(path)
    counts = sum(p.read_text().count(text) for p in hits)
    if counts != 1:
        raise SystemExit(f"the text {text!r} stands {counts} times in the sources, not once")
    return hits[0]


def run(command, log):
    with open(log, "a") as out:
        return subprocess.run(command, cwd=ROOT, stdout=out, stderr=subprocess.STDOUT).returncode


def main():
    if len(sys.argv) < 3:
        raise SystemExit(__doc__)
    faults, build = sys.argv[1], sys.argv[2]
    wanted = set(sys.argv[3:])
    log = Path(build) / "fault_check.log"
    missed = []
    for fault_id, what, original, faulty in read_faults(faults):
        if wanted and fault_id not in wanted:
            continue
        path = file_holding(original)
        source = path.read_text()
        path.write_text(source.replace(original, faulty))
        try:
            if run(["cmake", "--build", build, "-j2"], log) != 0:
                verdict = "caught (does not build)"
            elif run(["ctest", "--test-dir", build, "-j2", "--stop-on-failure"], log) != 0:
                verdict = "caught"
            else:
                verdict = "MISSED"
                missed.append(fault_id)
        finally:
            path.write_text(source)
        print(f"{fault_id:24} {verdict:24} {path.relative_to(ROOT)}: {what}", flush=True)
    run(["cmake", "--build", build, "-j2"], log)
    print(f"{len(missed)} missed" + (": " + " ".join(missed) if missed else ""))
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
