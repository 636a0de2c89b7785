' 100,000 records, added and read back by key. The host counts what is left afterwards.
Option Explicit
Dim engine, record, i, wrong
Set engine = Host.Engine
engine.LogOn "ann", "secret"
engine.CreateNewDB "many", ""
engine.CreateNewPrimaryTable "Numbers", "ID", "Text"
For i = 1 To 100000
    engine.AddRecord "Numbers", i, "k" & i, "text " & i
    If i = 1000 Then Host.Mark
Next
For i = 1 To 100000
    Set record = engine.GetRecord("Numbers", "k" & i)
    If record.prop(1) <> "text " & i Then wrong = wrong + 1
Next
Host.Wrong = wrong + 0
