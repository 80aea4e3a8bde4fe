"""tovik run: an add-in script on many drawings, each in its own process.

    tovik run SCRIPT.py [DRAWING|FOLDER ...] [-o OUTDIR] [--jobs N]
                        [--log LOG] [--resume LOG]

The script defines `run(doc, args)`: `doc` is the opened drawing, `args` has
`drawing` (the input path), `outdir` (or None) and `output` (the path the
drawing is saved to after `run` returns, when -o is given). Each drawing
runs in a fresh worker process, so a damaged drawing or a crashing script
stops only that drawing. The log has one JSON line per drawing (file,
result "ok" or "failed", error number and text, seconds); --resume LOG skips
the drawings it shows done. The exit status is 1 when any drawing failed.
"""
import argparse
import concurrent.futures
import json
import os
import subprocess
import sys
import time


def drawings_in(paths):
    found = []
    for path in paths:
        if os.path.isdir(path):
            for root, _, files in os.walk(path):
                found += [os.path.join(root, f) for f in sorted(files) if f.lower().endswith(".dxf")]
        else:
            found.append(path)
    return found


def work(script, drawing, outdir):
    """Runs in the worker process: one drawing, one JSON line on stdout."""
    import importlib.util
    import tovik
    started = time.monotonic()
    record = {"file": drawing, "result": "ok", "number": 0, "error": ""}
    try:
        spec = importlib.util.spec_from_file_location("tovik_script", script)
        module = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(module)
        app = tovik.Application()
        doc = app.Documents.Open(os.path.abspath(drawing))
        output = os.path.join(outdir, os.path.basename(drawing)) if outdir else None
        module.run(doc, argparse.Namespace(drawing=drawing, outdir=outdir, output=output))
        if output:
            doc.SaveAs(os.path.abspath(output))
    except tovik.AutomationError as e:
        record.update(result="failed", number=e.number, error=e.description)
    except Exception as e:  # the script's own failure
        record.update(result="failed", number=0, error="%s: %s" % (type(e).__name__, e))
    record["seconds"] = round(time.monotonic() - started, 3)
    print(json.dumps(record), flush=True)


def run_one(script, drawing, outdir):
    started = time.monotonic()
    command = [sys.executable, "-m", "tovik_run", "--worker", script, drawing]
    if outdir:
        command += ["-o", outdir]
    done = subprocess.run(command, capture_output=True, text=True)
    lines = [l for l in done.stdout.splitlines() if l.startswith("{")]
    if done.returncode == 0 and lines:
        return json.loads(lines[-1])
    # The worker died (a crash in the script or the library).
    return {"file": drawing, "result": "failed", "number": -done.returncode if done.returncode < 0 else done.returncode,
            "error": "worker ended with status %d %s" % (done.returncode, done.stderr.strip()[-200:]),
            "seconds": round(time.monotonic() - started, 3)}


def done_in(log):
    done = set()
    if log and os.path.exists(log):
        with open(log) as f:
            for line in f:
                try:
                    record = json.loads(line)
                except ValueError:
                    continue
                if record.get("result") == "ok":
                    done.add(record["file"])
    return done


def main(argv=None):
    parser = argparse.ArgumentParser(prog="tovik run", description=__doc__.split("\n")[0])
    parser.add_argument("script")
    parser.add_argument("inputs", nargs="*")
    parser.add_argument("-o", "--outdir")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1)
    parser.add_argument("--log")
    parser.add_argument("--resume")
    parser.add_argument("--worker", action="store_true", help=argparse.SUPPRESS)
    args = parser.parse_args(argv)
    if args.worker:
        work(args.script, args.inputs[0], args.outdir)
        return 0
    if args.outdir:
        os.makedirs(args.outdir, exist_ok=True)
    log_path = args.log or args.resume or os.path.join(args.outdir or ".", "tovik-run.log")
    skip = done_in(args.resume)
    every = drawings_in(args.inputs)
    todo = [d for d in every if d not in skip]
    terminal = sys.stderr.isatty()
    failed = finished = 0
    with open(log_path, "a") as log, concurrent.futures.ThreadPoolExecutor(max(1, args.jobs)) as pool:
        futures = [pool.submit(run_one, args.script, d, args.outdir) for d in todo]
        for future in concurrent.futures.as_completed(futures):
            record = future.result()
            log.write(json.dumps(record) + "\n")
            log.flush()
            finished += 1
            failed += record["result"] != "ok"
            if terminal:
                width = 30
                filled = width * finished // max(1, len(todo))
                sys.stderr.write("\r[%s%s] %d/%d, %d failed" % ("#" * filled, "." * (width - filled), finished, len(todo), failed))
            else:
                sys.stderr.write("%s %s %s\n" % (record["result"], record["file"], record["error"]))
    if terminal:
        sys.stderr.write("\n")
    print("%d drawings: %d done, %d failed, %d skipped (log: %s)" % (
        len(every), finished - failed, failed, len(every) - len(todo), log_path))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
