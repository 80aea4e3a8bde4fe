' cscript com_call.vbs library|host N: N late-bound calls, either into the
' library (AcadSpace.ObjectID, which calls the host's ObjectID) or to the
' host's ObjectID directly. Both set up the same objects.
Dim app, zx, link, sp, line1, i, id, n
n = CLng(WScript.Arguments(1))
Set app = CreateObject("TovikHost.Application")
Set zx = CreateObject("TovikHost.ZActiveX")
Set link = CreateObject("Tovik_AutoCad_Pro.ZActiveXCOM")
link.InitZActiveX zx
Set sp = CreateObject("Tovik_AutoCad_Pro.AcadSpace")
Set line1 = app.ActiveDocument.ModelSpace.AddLine(Array(0.0, 0.0, 0.0), Array(1.0, 0.0, 0.0))
If WScript.Arguments(0) = "library" Then
  For i = 1 To n
    id = sp.ObjectID(line1)
  Next
Else
  For i = 1 To n
    id = line1.ObjectID
  Next
End If
WScript.Echo WScript.Arguments(0) & " " & n & " " & id
