"""tovik run over a batch: damaged drawings and a crashing script stop only
their own drawing; the log lets a second run skip what was done."""
import json
import os
import subprocess
import sys

import tovik

TOVIK = os.path.join(os.getcwd(), "cli", "tovik")
SOURCE = os.environ.get("TOVIK_SOURCE_DIR", "")

SCRIPT = '''
import os
def run(doc, args):
    if os.path.basename(args.drawing) == "crash-7.dxf":
        os.abort()
    doc.Layers.Add("ADDED")
    doc.ModelSpace.AddLine((0, 0, 0), (1, 1, 0)).Layer = "ADDED"
'''


def make_batch(folder, n):
    app = tovik.Application()
    doc = app.ActiveDocument
    doc.ModelSpace.AddCircle((0, 0, 0), 1.0)
    good = os.path.join(folder, "seed.dxf")
    doc.SaveAs(good)
    text = open(good).read()
    os.remove(good)
    for i in range(n):
        name = "crash-7.dxf" if i == 7 else "drawing-%03d.dxf" % i
        with open(os.path.join(folder, name), "w") as f:
            # Three files that hold no drawing at all.
            f.write("not a drawing\n" if i in (3, 50, 150) else text)


def test_a_batch_finishes_past_damage_and_crashes_and_resumes(tmp_path):
    batch, out = tmp_path / "batch", tmp_path / "out"
    batch.mkdir()
    make_batch(str(batch), 200)
    script = tmp_path / "script.py"
    script.write_text(SCRIPT)
    log = str(tmp_path / "run.log")
    first = subprocess.run([TOVIK, "run", str(script), str(batch), "-o", str(out), "--jobs", "2", "--log", log],
                           capture_output=True, text=True)
    assert first.returncode == 1, first.stderr
    records = [json.loads(line) for line in open(log)]
    failed = sorted(os.path.basename(r["file"]) for r in records if r["result"] != "ok")
    assert failed == ["crash-7.dxf", "drawing-003.dxf", "drawing-050.dxf", "drawing-150.dxf"]
    assert len(records) == 200
    assert len(os.listdir(out)) == 196
    assert "196 done, 4 failed" in first.stdout
    again = subprocess.run([TOVIK, "run", str(script), str(batch), "-o", str(out), "--resume", log],
                           capture_output=True, text=True)
    assert "0 done, 4 failed, 196 skipped" in again.stdout


def test_the_example_counts_by_layer(tmp_path):
    app = tovik.Application()
    doc = app.ActiveDocument
    doc.ModelSpace.AddLine((0, 0, 0), (1, 0, 0)).Layer = "0"
    doc.SaveAs(str(tmp_path / "one.dxf"))
    done = subprocess.run([TOVIK, "run", os.path.join(SOURCE, "examples", "count_by_layer.py"),
                           str(tmp_path / "one.dxf"), "--jobs", "1", "--log", str(tmp_path / "log")],
                          capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    assert open(tmp_path / "COUNT-one.csv").read().splitlines() == ["layer,block,count", "0,,1"]


def test_the_examples_export_xdata_and_turn_references(tmp_path):
    app = tovik.Application()
    doc = app.ActiveDocument
    doc.RegisteredApplications.Add("APP")
    line = doc.ModelSpace.AddLine((0, 0, 0), (1, 0, 0))
    line.SetXData((1001, 1000), ("APP", "note"))
    block = doc.Blocks.Add((0, 0, 0), "DOOR")
    block.AddLine((0, 0, 0), (1, 0, 0))
    doc.ModelSpace.InsertBlock((5, 5, 0), "DOOR", 1.0, 1.0, 1.0, 0.0)
    doc.SaveAs(str(tmp_path / "two.dxf"))
    out = tmp_path / "out"
    for example in ("xdata_to_csv.py", "turn_block_refs.py"):
        done = subprocess.run([TOVIK, "run", os.path.join(SOURCE, "examples", example), str(tmp_path / "two.dxf"),
                               "-o", str(out), "--jobs", "1", "--log", str(tmp_path / "log")],
                              capture_output=True, text=True)
        assert done.returncode == 0, done.stderr
    rows = open(out / "XDATA-two.csv").read().splitlines()
    assert rows[1:] == [line.Handle + ",AcDbLine,1001,APP", line.Handle + ",AcDbLine,1000,note"]
    turned = app.Documents.Open(str(out / "two.dxf"))
    ref = [e for e in turned.ModelSpace if e.ObjectName == "AcDbBlockReference"][0]
    assert ref.InsertionPoint == (15.0, 5.0, 0.0)
    assert abs(ref.Rotation - 1.5707963267948966) < 1e-12


def test_slices_on_separate_workers_merge_into_one_log(tmp_path):
    """A batch past one machine, simulated: the drawings cut into slices, each
    slice a tovik run of its own (as on separate nodes), the logs merged, and
    a resume over the merged log left with nothing to do."""
    batch = tmp_path / "batch"
    batch.mkdir()
    make_batch(str(batch), 30)
    script = tmp_path / "script.py"
    script.write_text("def run(doc, args):\n    doc.ModelSpace.Count\n")
    drawings = sorted(str(p) for p in batch.iterdir() if p.name != "crash-7.dxf")
    slices = [drawings[i::3] for i in range(3)]
    workers = [subprocess.Popen([TOVIK, "run", str(script), *part, "--jobs", "1",
                                 "--log", str(tmp_path / ("slice%d.log" % k))],
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
               for k, part in enumerate(slices)]
    assert sorted(w.wait() for w in workers) == [0, 0, 1]  # one slice holds the damaged drawing
    merged = tmp_path / "merged.log"
    merged.write_text("".join((tmp_path / ("slice%d.log" % k)).read_text() for k in range(3)))
    assert len(merged.read_text().splitlines()) == 29
    again = subprocess.run([TOVIK, "run", str(script), *drawings, "--resume", str(merged)],
                           capture_output=True, text=True)
    assert "0 done, 1 failed, 28 skipped" in again.stdout


def test_references_are_numbered_in_reading_order(tmp_path):
    app = tovik.Application()
    doc = app.ActiveDocument
    block = doc.Blocks.Add((0, 0, 0), "ROOM")
    block.AddCircle((0, 0, 0), 1.0)
    block.AddAttribute(0.5, 0, "Number?", (0, -1, 0), "NUMBER", "0")
    # Two rows, created out of order.
    for x, y in ((20, 0), (0, 10), (10, 0), (20, 10), (0, 0)):
        doc.ModelSpace.InsertBlock((x, y, 0), "ROOM", 1.0, 1.0, 1.0, 0.0)
    doc.SaveAs(str(tmp_path / "rooms.dxf"))
    done = subprocess.run([TOVIK, "run", os.path.join(SOURCE, "examples", "renumber_in_reading_order.py"),
                           str(tmp_path / "rooms.dxf"), "-o", str(tmp_path / "out"), "--jobs", "1"],
                          capture_output=True, text=True, env=dict(os.environ, TOVIK_BLOCK="ROOM"))
    assert done.returncode == 0, done.stderr
    numbered = app.Documents.Open(str(tmp_path / "out" / "rooms.dxf"))
    by_place = {tuple(e.InsertionPoint[:2]): e.GetAttributes()[0].TextString
                for e in numbered.ModelSpace if e.ObjectName == "AcDbBlockReference"}
    assert by_place == {(0.0, 10.0): "1", (20.0, 10.0): "2", (0.0, 0.0): "3", (10.0, 0.0): "4", (20.0, 0.0): "5"}
