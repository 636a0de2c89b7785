' Writes a database, or reads one that was written elsewhere: cscript twin.vbs write | read FILE
' tavolin_twin does the same and compares the bytes.
Option Explicit
Dim engine, table, i
Set engine = CreateObject("Tavolin.CVLDBEngine")
engine.LogOn "ann", "secret"
If WScript.Arguments(0) = "write" Then
    engine.CreateNewDB "twin", ""
    engine.CreateNewPrimaryTable "Customers", "ID", "Name"
    Set table = engine.CreateNewLinkedTable("Customers", 1, "Name")
    For i = 1 To 100
        engine.AddRecord "Customers", i, "k" & i, "n" & ChrW(200 + i) & (i Mod 7)
    Next
    engine.GetRecord("Customers", 3).Attach 1, "C:\a.png", 2
    engine.CVLDBUserSet(1).CVLUserNoteSet.Add #11/15/2026 1:05:00 AM#, 1, "first"
    engine.LogDBActivities True, , , , , , , , True
    engine.DeleteRecord "Customers", "k50"
    engine.SaveDB
Else
    engine.LoadDB WScript.Arguments(1)
    engine.DBLegalUser engine.LogedOnUser, 6
    If engine.GetRecordSet("Customers").Count <> 99 Then WScript.Quit 1
    If engine.GetRecord("Customers", "k99").prop(1) <> "n" & ChrW(299) & "1" Then WScript.Quit 2
    If engine.CVLDBUserSet("ann").CVLUserNoteSet(1).Note <> "first" Then WScript.Quit 3
End If
