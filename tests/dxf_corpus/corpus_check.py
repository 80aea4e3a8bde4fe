#!/usr/bin/python3
"""Has a converter read every drawing of the shared corpus and write it back,
then has ezdxf (shared/tools/dxf-summary) compare original and copy.

The converter is a command that takes the source and the copy's path last:
`tovik convert` (the whole host) or `tovik_dxf_rewrite` (the tag layer
alone). Fails when a drawing cannot be read, when the copy has ezdxf audit
errors, or when the comparison lists a difference that the known
differences file does not explain. Exit 77 (skipped) when python3-ezdxf is
not installed.

    corpus_check.py SHARED_DIR OUT_DIR KNOWN_DIFFERENCES[:MORE...] CONVERTER [ARG...]
"""
import os
import re
import subprocess
import sys


def load_known(path):
    known = []
    with open(path, encoding="utf-8") as f:
        for line in f:
            line = line.rstrip("\n")
            if not line or line.startswith("#"):
                continue
            name, pattern = line.split("\t", 1)
            known.append((name, re.compile(pattern)))
    return known


def main():
    if len(sys.argv) < 5:
        raise SystemExit(__doc__)
    shared, out, known_path, converter = sys.argv[1], sys.argv[2], sys.argv[3], sys.argv[4:]
    try:
        import ezdxf  # noqa: F401
    except ImportError:
        print("python3-ezdxf is not installed: skipped")
        return 77
    summary = os.path.join(shared, "tools", "dxf-summary")
    corpus = os.path.join(shared, "dxf")
    known = [k for path in known_path.split(":") for k in load_known(path)]
    os.makedirs(out, exist_ok=True)
    files = sorted(
        os.path.relpath(os.path.join(d, f), corpus)
        for d, _, names in os.walk(corpus) for f in names if f.lower().endswith(".dxf"))
    failed = []
    for name in files:
        source = os.path.join(corpus, name)
        copy = os.path.join(out, name.replace("/", "__"))
        run = subprocess.run(converter + [source, copy], capture_output=True, text=True)
        if run.returncode != 0:
            failed.append(f"{name}: not read: {run.stderr.strip()}")
            continue
        check = subprocess.run([sys.executable, summary, "--check", copy],
                               capture_output=True, text=True)
        audit = re.search(r"audit errors=(\d+)", check.stdout)
        if not audit or int(audit.group(1)) != 0:
            failed.append(f"{name}: copy fails ezdxf's check: {check.stdout.strip()}")
        compare = subprocess.run(
            [sys.executable, summary, "--compare", "--ignore-version", source, copy],
            capture_output=True, text=True)
        if compare.returncode == 2:
            failed.append(f"{name}: comparison failed: {compare.stdout.strip()} {compare.stderr.strip()}")
            continue
        for line in compare.stdout.splitlines():
            if not line.startswith("["):
                continue
            if any(n == name and p.search(line) for n, p in known):
                continue
            failed.append(f"{name}: {line}")
        print(f"{'ok' if compare.returncode == 0 else 'explained'}  {name}")
    for line in failed:
        print("FAIL " + line)
    print(f"{len(files)} drawings, {len(failed)} unexplained differences or failures")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
