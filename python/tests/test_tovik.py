"""The tovik module as a COM client script uses it: values both ways, by-name
members, outputs after the result, collections, errors, and a drawing added
to, edited, saved and reopened."""
import os

import pytest
import tovik


@pytest.fixture
def app():
    tovik.ResetLibrary()
    yield tovik.Application()
    tovik.ResetLibrary()


def test_properties_methods_and_outputs(app):
    doc = app.ActiveDocument
    ms = doc.ModelSpace
    line = ms.AddLine((0, 0, 0), (10, 0, 0))  # a plain tuple is a point
    assert line.ObjectName == "AcDbLine"
    line.Layer = "0"
    assert line.Length == 10.0
    low, high = line.GetBoundingBox()  # outputs come back, the call had none
    assert low == (0.0, 0.0, 0.0) and high == (10.0, 0.0, 0.0)
    line.SetXData((1001, 1000, 1070), ("APP", "note", tovik.VARIANT(2, 7)))
    types, values = line.GetXData("APP")
    assert types == (1001, 1000, 1070) and values == ("APP", "note", 7)
    assert ms.Count == 1 and ms(0) == line and ms.Item(0) == line and ms[0] == line
    assert [e.Handle for e in ms] == [line.Handle]
    assert "GetBoundingBox" in dir(line)


@pytest.mark.parametrize("value", [0, -1, 2**31 - 1, 2**40, 1.5, "text", True, None, (1, (2.5, "x"))])
def test_values_round_trip_through_a_dictionary(value):
    d = tovik.Dispatch("Tovik_AutoCad_Pro.DynamicSS").Dictionary
    d.Add("k", value)
    assert d.Item("k") == value


def test_errors_carry_number_text_and_hresult(app):
    ms = app.ActiveDocument.ModelSpace
    with pytest.raises(AttributeError):
        ms.NoSuchMember
    with pytest.raises(tovik.AutomationError) as raised:
        tovik.Dispatch("Tovik_AutoCad_Pro.SSDimensions")
    assert raised.value.number == 429 and raised.value.hresult == 0x800A01AD
    s = tovik.Dispatch("Tovik_AutoCad_Pro.DynamicSS")
    with pytest.raises(tovik.AutomationError) as raised:
        s.Item("nothere")
    assert raised.value.number == 2411
    assert raised.value.description == "Invalid index for Dictionary collection."


def test_a_library_class_works_on_the_drawing(app):
    ms = app.ActiveDocument.ModelSpace
    a = ms.AddCircle((0, 0, 0), 1.0)
    b = ms.AddCircle((5, 0, 0), 1.0)
    s = tovik.Dispatch("Tovik_AutoCad_Pro.DynamicSS")
    s.Add((ms,))
    assert s.Count == 2
    assert s.Dimensions.Width == 7.0
    s.Animation.Move((0, 0, 0), (1, 1, 0))
    assert b.Center == (6.0, 1.0, 0.0)
    space = tovik.Dispatch("Tovik_AutoCad_Pro.AcadSpace")
    assert space.ObjectID(a) == a.ObjectID
    # An omitted drawing (Missing) means the current one and is not written back.
    assert space.ObjectIDToObject(a.ObjectID, tovik.Missing) == (a, None)
    found, drawing = space.ObjectIDToObject(a.ObjectID, tovik.Nothing)
    assert found == a and drawing == app.ActiveDocument


def test_a_drawing_is_added_edited_saved_and_reopened(app, tmp_path):
    doc = app.Documents.Add()
    doc.ModelSpace.AddLightWeightPolyline((0, 0, 4, 0, 4, 3))
    doc.Layers.Add("WALLS").Color = 3
    path = str(tmp_path / "saved.dxf")
    doc.SaveAs(path)
    again = app.Documents.Open(path)
    assert again.Layers.Item("WALLS").Color == 3
    assert again.ModelSpace(0).Coordinates == (0.0, 0.0, 4.0, 0.0, 4.0, 3.0)
    assert os.path.getsize(path) > 0


def test_constants_and_events(app):
    assert tovik.constants.acSelectionSetAll == 5 and tovik.constants.acModelSpace == 1

    class Handler:
        def __init__(self):
            self.seen = []

        def OnThisDrawingActivate(self, *args):
            self.seen.append("activate")

    handler = tovik.WithEvents(app, Handler)
    app.Documents.Add()
    assert handler.seen == ["activate"]


def test_stubs_and_help_come_from_the_member_tables(capsys):
    import ast
    stubs = tovik._stubs()
    tree = ast.parse(stubs)  # a valid stub file
    classes = {node.name: node for node in tree.body if isinstance(node, ast.ClassDef)}
    members = lambda c: {getattr(n, "name", None) or getattr(getattr(n, "target", None), "id", None)
                         for n in classes[c].body}
    assert {"Add", "Count", "Sort2D"} & members("DynamicSS") == {"Add", "Count"}
    assert {"StartPoint", "GetBoundingBox"} <= members("IAcadLine")
    assert 'def Dispatch(prog_id: Literal["Tovik_AutoCad_Pro.DynamicSS"]) -> DynamicSS' in stubs
    tovik.help(tovik.Dispatch("Tovik_AutoCad_Pro.DynamicSS").Dimensions)
    assert "GetBoundingBox(0..8 arguments)  outputs: 1 2 4 5 6" in capsys.readouterr().out
