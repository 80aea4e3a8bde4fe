' The automation servers as a host add-in uses them, late-bound from a
' script: cscript suite.vbs DRAWING.dxf OUTPUT-FOLDER
' Ends with "N passed, N failed" (the runner requires that line: Wine's
' script host exits 0 even when the script stops on an error).
Option Explicit

Dim passed, failed
passed = 0
failed = 0

Sub Check(name, ok)
  If ok Then
    passed = passed + 1
  Else
    failed = failed + 1
    WScript.Echo "FAIL: " & name
  End If
End Sub

' The error a call raised, as "number|description|source"; "" for none.
Function ErrorText()
  ErrorText = ""
  If Err.Number <> 0 Then ErrorText = Err.Number & "|" & Err.Description & "|" & Err.Source
  Err.Clear
End Function

' A script object the library calls back late-bound (through IDispatchEx,
' as a VBScript class instance needs).
Class ScriptEntity
  Public Handle
End Class

Dim drawing, outdir
drawing = WScript.Arguments(0)
outdir = WScript.Arguments(1)

' ---------------------------------------------------------------- the link
Dim app, zx, link, doc, ms
Set app = CreateObject("TovikHost.Application")
Set zx = CreateObject("TovikHost.ZActiveX")
Set link = CreateObject("Tovik_AutoCad_Pro.ZActiveXCOM")
link.InitZActiveX zx
Set doc = app.Documents.Open(drawing)
Check "a DXF drawing opens through the host", doc.ModelSpace.Count > 0
Check "the running host is one object", app Is CreateObject("TovikHost.Application")
Set ms = doc.ModelSpace

' ------------------------------------------------------- creating classes
Dim name, o, e
For Each name In Array("AcadSpace", "DynamicSS", "AutoCAD_Enum", "AcadDocSpace", "Xdata", "ZActiveXCOM")
  Set o = CreateObject("Tovik_AutoCad_Pro." & name)
  Check "creates " & name, TypeName(o) = name
Next
For Each name In Array("SSDimensions", "SSAnimation", "AcadTransaction", "DwgPicture")
  On Error Resume Next
  Set o = CreateObject("Tovik_AutoCad_Pro." & name)
  e = Err.Number
  Err.Clear
  On Error GoTo 0
  Check name & " is not creatable", e = 429
Next

Dim sp, ds, ss, xd
Set sp = CreateObject("Tovik_AutoCad_Pro.AcadSpace")
Set ds = CreateObject("Tovik_AutoCad_Pro.AcadDocSpace")
Set xd = CreateObject("Tovik_AutoCad_Pro.Xdata")
Set ss = CreateObject("Tovik_AutoCad_Pro.DynamicSS")
Check "a new set works on the active drawing", ss.Document Is doc
Check "its companions come from the set", TypeName(ss.Dimensions) = "SSDimensions" And TypeName(ss.Animation) = "SSAnimation"
Check "the same companion each time", ss.Dimensions Is ss.Dimensions
Check "a transaction from the document space", TypeName(ds.GetAcadTransaction()) = "AcadTransaction"

' ------------------------------------------------ values both ways
Dim flat, pts
flat = Array(1, 2, 3, 4)
sp.ArrDbls2ArrPoints flat, pts, True
Check "an array of points comes back through a by-reference argument", IsArray(pts)
If IsArray(pts) Then
  Check "two points, bounds from 0", LBound(pts) = 0 And UBound(pts) = 1
  Check "nested point arrays", pts(1)(0) = 3 And pts(1)(1) = 4 And pts(1)(2) = 0
End If
Dim line1, line2
Set line1 = ms.AddLine(Array(0.0, 0.0, 0.0), Array(10.0, 0.0, 0.0))
Set line2 = ms.AddLine(Array(0.0, 5.0, 0.0), Array(10.0, 5.0, 0.0))
Check "host objects keep their names", TypeName(line1) = "IAcadLine"
Check "host object identity survives the library", sp.ObjectIDToObject(sp.ObjectID(line1)) Is line1

' Outputs written back: every by-reference output of GetAcadScreenWCS.
Dim centre, corner, h, w, wh, ww, twist, dir
sp.GetAcadScreenWCS doc, centre, corner, h, w, wh, ww, twist, dir
Check "by-reference outputs are written back", IsArray(centre) And IsArray(dir) And h > 0 And w > 0
' The middle argument omitted: AttRef_Get(block, tag, , flag).
Dim blk, bref, found, text
Set blk = doc.Blocks.Add(Array(0.0, 0.0, 0.0), "SUITE_TAGGED")
blk.AddAttribute 2.5, 0, "Mark?", Array(0.0, 0.0, 0.0), "MARK", "A1"
Set bref = ms.InsertBlock(Array(20.0, 0.0, 0.0), "SUITE_TAGGED", 1.0, 1.0, 1.0, 0.0)
found = Empty
text = sp.AttRef_Get(bref, "MARK", , found)
Check "an omitted argument in the middle reads as Missing", text = "A1"
text = sp.AttRef_Get(bref, "mark", "B2", found)
Check "a written attribute and its flag", text = "B2" And found = True And sp.AttRef_Get(bref, "MARK") = "B2"
' Trailing optionals omitted altogether.
Check "trailing optionals omitted", TypeName(sp.CurSpace()) = "IAcadModelSpace"

' A nested table stored in extended data and read back.
Dim table, back, kind
table = Array("Span", Array(1, 2.5, "x"), Array(Array("deep")))
xd.SetAppXData line1, "Station", table, 1002
back = Empty
kind = 1002
xd.GetAppXdata line1, "Station", back, kind
Check "a nested table comes back", IsArray(back)
If IsArray(back) Then
  Check "its inner arrays", UBound(back) = 2 And back(1)(1) = 2.5 And back(1)(2) = "x" And back(2)(0)(0) = "deep"
End If

' --------------------------------------------------------- For Each
Dim count, item
ss.Add Array(line1, line2)
count = 0
For Each item In ss
  count = count + 1
Next
Check "For Each over a library collection", count = 2 And ss.Count = 2
count = 0
For Each item In doc.Layers
  count = count + 1
Next
Check "For Each over a host collection", count = doc.Layers.Count
Check "the default member", ss(1) Is line2
Dim scripted, set2
Set scripted = New ScriptEntity
scripted.Handle = "5C1A"
Set set2 = CreateObject("Tovik_AutoCad_Pro.DynamicSS")
set2.Add Array(scripted)
Check "the library reads a script object's property", set2.Count = 1
Check "and gives the same object back", set2(0) Is scripted

' ------------------------------------------------------------ errors
Dim caught
On Error Resume Next
xd.SetAppXData line1, "NoSuchVariable", 1, 1000
caught = ErrorText()
On Error GoTo 0
Check "the library's error 2411 with its text and source", caught = "2411|SetXdata fails. Variable names NoSuchVariable not found|Tovik COM"
On Error Resume Next
sp.NoSuchMember
caught = ErrorText()
On Error GoTo 0
Check "an unknown member raises 438", Left(caught, 4) = "438|"
On Error Resume Next
sp.ArrDbls2ArrPoints 5, pts
caught = ErrorText()
On Error GoTo 0
Check "a runtime error passes with its number", Left(caught, 3) = "13|"

' ------------------------------------------------------- DXF round trip
Dim copy, again, before
copy = outdir & "\suite-copy.dxf"
before = ms.Count
doc.SaveAs copy
Set again = app.Documents.Open(copy)
Check "the copy reopens with every entity", again.ModelSpace.Count = before
again.Close False

' Events: the host quits and raises Terminate on its host-event object; the
' library hears it through the connection point and lets the host go, so a
' set made afterwards has no drawing even though one is open again.
app.Quit
app.Documents.Add
Set ss = CreateObject("Tovik_AutoCad_Pro.DynamicSS")
Check "the library heard the host terminate", ss.Document Is Nothing

WScript.Echo passed & " passed, " & failed & " failed"
If failed > 0 Then WScript.Quit 1
