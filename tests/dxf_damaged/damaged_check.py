#!/usr/bin/python3
"""Converts each damaged drawing of this folder with `tovik convert` and
checks that the fault was repaired and listed, that an independent reader
(ezdxf, through dxf-summary) opens the copy without an audit error or fix,
and that the copy differs from the undamaged base.dxf only as listed.

    damaged_check.py TOOLS_DIR OUT_DIR TOVIK
"""
import json
import os
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
# file -> (a repair tovik must list, differences from base.dxf allowed).
# Every copy is written in the latest version: $ACADVER always differs.
CASES = {
    "base.dxf": (None, {"header": 1}),
    "decimal-comma.dxf": ('decimal comma in "0,5": read as 0.5', {"header": 1}),
    # The second LINE gets a new handle; the independent reader sees it.
    "duplicate-handle.dxf": ("duplicate handle 35 (also used at line 1897): the record gets handle",
                             {"header": 1, "handle": 1}),
    "seqend-missing.dxf": ("VERTEX records of POLYLINE are not closed by SEQEND: closed",
                           {"header": 1}),
    "stray-endsec.dxf": ('expected SECTION, got "ENDSEC": dropped', {"header": 1}),
    "table-header-missing.dxf": ('expected TABLE, got "LAYER": a LAYER table is made',
                                 {"header": 1}),
    # Cut inside the TEXT: its values and the objects after it are lost.
    "truncated.dxf": ("section ENTITIES has no ENDSEC: closed",
                      {"header": 1, "geometry/attribs": 4, "objects": 1}),
    # The block gets an anonymous name; its reference follows.
    "nameless-block.dxf": ('a block without a name at line 1801: named "*U1"',
                           {"header": 1, "block": 2, "entity": 2, "geometry/attribs": 1}),
    # The second definition keeps its entities under a name of its own.
    "duplicate-block-name.dxf": ('a second block "TAG" at line 1889: named "TAG$1"',
                                 {"header": 1, "block": 1, "entity": 2}),
    "wrong-value-type.dxf": ('expected a 16-bit integer, got "red": the tag is dropped',
                             {"header": 1}),
}


def main():
    tools, out_dir, tovik = sys.argv[1:4]
    summary = os.path.join(tools, "dxf-summary")
    if not os.path.exists(summary):
        print("skipped: no dxf-summary at " + summary)
        return 77
    os.makedirs(out_dir, exist_ok=True)
    failures = []
    for name, (repair, allowed) in sorted(CASES.items()):
        copy = os.path.join(out_dir, name)
        run = subprocess.run([tovik, "convert", os.path.join(HERE, name), copy],
                             capture_output=True, text=True)
        if run.returncode != 0:
            failures.append(f"{name}: convert failed: {run.stderr.strip()}")
            continue
        if repair is not None and repair not in run.stderr:
            failures.append(f"{name}: repair not listed: {repair!r} in {run.stderr!r}")
        if repair is None and run.stderr.strip():
            failures.append(f"{name}: repairs listed for a sound drawing: {run.stderr.strip()}")
        check = subprocess.run(["/usr/bin/python3", summary, "--check", copy],
                               capture_output=True, text=True).stdout
        if not check.startswith("OK") or "audit errors=0 fixes=0" not in check:
            failures.append(f"{name}: the copy does not read clean: {check.strip()}")
        compare = subprocess.run(["/usr/bin/python3", summary, "--compare",
                                  os.path.join(HERE, "base.dxf"), copy],
                                 capture_output=True, text=True).stdout.strip().splitlines()
        last = compare[-1] if compare else ""
        found = json.loads(last[last.index("{"):]) if "{" in last else {}
        if found != allowed:
            failures.append(f"{name}: differences {found}, expected {allowed}:\n  " +
                            "\n  ".join(compare[:-1]))
    for f in failures:
        print(f)
    print(f"{len(CASES) - len(failures)} of {len(CASES)} damaged drawings repaired")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
