' A whole life with the component, by late binding: cscript life.vbs FOLDER
Option Explicit
Dim failures, checks
Sub Check(what, got, wanted)
    checks = checks + 1
    If CStr(got) = CStr(wanted) Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": " & got & " instead of " & wanted
End Sub

' The error that is pending, as one text.
Function Raised()
    Raised = Hex(Err.Number) & " " & Err.Source & ": " & Err.Description
    Err.Clear
End Function

Function Joined(elements, member)
    Dim element, text
    For Each element In elements
        If member = "Key" Then text = text & element.Key & " " Else text = text & element.UserName & " "
    Next
    Joined = Trim(text)
End Function

Class Watcher
    Public Count
    Public Last
    Public Sub Update()
        Count = Count + 1
        If Count = 2 Then Err.Raise vbObjectError + 77, "Watcher", "Enough"
    End Sub
    Public Sub AddAffectedRecords(database, table, recordKey)
        Last = database & table & recordKey
    End Sub
End Class

Dim folder, engine, numbers, tables, customers, orders, record, records, found, names, index
folder = WScript.Arguments(0)
Set engine = CreateObject("Tavolin.CVLDBEngine")
Set numbers = CreateObject("Tavolin.CVLErrorNum.1")

' Creating, tables, links, records; arguments of any kind.
Check "LogOn", engine.LogOn("ann", "secret"), True
Set tables = engine.CreateNewDB("life", folder, , "Ann Example")
Check "path", engine.DBPath & engine.DBName, folder & "life.cdb"
Check "owner's full name", engine.CVLDBUserSet("ann").UserFullName, "Ann Example"
Set customers = engine.CreateNewPrimaryTable("Customers", "ID", "Name", "City")
Set orders = engine.CreateNewPrimaryTable("Orders", "Number", "Customer", , , , , , , , , 0)
names = "Orders"
index = "Customer"
Check "LinkTables", engine.LinkTables(names, index, customers), True
Set record = engine.AddRecord(names, 1, 1001, "c1")
Check "fill", engine.GetRecord("Customers", "C1").Key, "c1"
engine.AddRecord orders, "2", CDbl(1002), "c2"
index = 2
Check "by reference", engine.GetRecord(names, index).prop(CByte(1)), "c2"
record.prop(4) = 12.5
Check "number as text", record.prop(4), 12.5
Check "Is", (record Is engine.GetRecord(1 + 1, 1)), True
Check "Is Not", (record Is engine.GetRecord("Orders", 2)), False
Set records = engine.GetRecordSet(orders)
engine.AddRecord "Orders", 3, "0999", "c1", , , , , , , , , , 1
Check "Before", Joined(records, "Key"), "0999 1001 1002"
engine.UpDateRecord "Orders", record, 0, "1001", "c3", "Paris"
Check "UpDateRecord", record.prop(1) & record.prop(4), "c3"
Check "Find", engine.Find("PAR", False, orders).GetRecord(1).Key, "1001"
Check "Sort", records.Sort(1) & " " & Joined(records, "Key"), "True 0999 1002 1001"
engine.DeleteRecord "Orders", "1002"
Check "cascade", customers.CanAdd("c2"), True

' The table set's odd members, nothing, collections.
Check "LastTable", (tables.LastTable Is orders), True
Check "LastTable late", tables.LastTable.FieldName(1), "Customer"
Check "NextTable", (tables.NextTable(1) Is tables("orders")), True
Check "For Each", Joined(tables, "Key"), "Customers Orders"
For Each found In records
    If found.Key = "0999" Then records.Remove "0999"
Next
Check "removal in a walk", records.Count, 1
Check "AttachToRecord", orders.AttachToRecord(1, "C:\a.png", 2).CVLAttachmentSet(1).SpecificType, 2
Check "note", engine.LogedOnUser.CVLUserNoteSet.Count, 0
engine.CVLDBUserSet("ann").CVLUserNoteSet.Add #11/15/2026 1:05:00 AM#, 1, "first"
Check "note by its date", engine.CVLDBUserSet(1).CVLUserNoteSet("11/15/2026 1:05:00 AM"), "first"
engine.CreateNewUser "bob", "b", True, False, False, , , True
engine.CVLDBUserSet.Update "bob", , True
Check "what is left out stays", engine.CVLDBUserSet("bob").CanRead & engine.CVLDBUserSet("bob").CanReadWrite, "TrueTrue"
Check "users", Joined(engine.CVLDBUserSet, "UserName"), "ann bob"

' Errors, with number, source and text.
On Error Resume Next
engine.GetTable "None"
Check "number", Err.Number, numbers.GetTableNotFoundError
Check "GetTable", Raised, "8004EA69 CVLDBEngine:GetTable Method: Table None Not Found!"
engine.GetTable 1.5
Check "no Double names a table", Hex(Err.Number), "8004EA69"
Err.Clear
engine.CreateNewPrimaryTable "orders", "x"
Check "twice", Raised, "8004EAC3 CVLDBEngine:CreateNewPrimaryTable Method: The Table orders That Is Being Created Already Exists!"
engine.DBLegalUser engine.CVLDBUserSet("bob"), 1
Check "two lines", Raised, "8004ED1F CVLDBEngine:DBLegalUser Method: Log In To DataBase Denied!" & vbCrLf & "Cause: User Is Disabled!"
engine.DBLegalUser engine.LogedOnUser, 6
customers.FieldLabel(10) = "x"
Check "range", Raised, "8004EA70 CVLTable:FieldLabel Property Let: Field Is Out Of Range(0-9)"
customers.CVLRecordSet = Nothing
Check "nothing", Hex(Err.Number), "5B"
Err.Clear
engine.RemoveObserver "nobody"
Check "run-time error", Err.Number, 5
Err.Clear
engine.LogOnAsUser customers
Check "mismatch", Err.Number, 13
Err.Clear

' Observers written in script.
Dim watcher1, watcher2
Set watcher1 = New Watcher
Set watcher2 = New Watcher
engine.AddObserver watcher1, "ann"
engine.AddObserver watcher2, "bob"
engine.NotifyObservers
engine.NotifyObservers
Check "an observer's error", Hex(Err.Number), "8004004D"
Err.Clear
Check "told", watcher1.Count & watcher2.Count & engine.ObserversCount, "212"
engine.RemoveObserver "ann"
engine.RemoveObserver "bob"
On Error GoTo 0

' The transaction, saving, loading, exports, the log.
engine.TransactionBegin
engine.DeleteTable "Orders"
Check "in the transaction", engine.CVLTableSet.Count & engine.TransactionStarted, "0True"
engine.TansactionAbort
Check "rolled back", engine.GetRecordSet("Orders").Count, 1
engine.MakeItText folder, "orders."
engine.MakeItHTML folder, "site"
Check "text", InStr(engine.GetTable("Orders").MakeItText(), "Number: 1001") > 0, True
Dim state
state = engine.GetRecordSet("Customers").ObjectState
Set records = CreateObject("Tavolin.CVLRecordSet")
records.ObjectState = state
Check "ObjectState", records.Count, 2
Check "SaveDB", engine.SaveDB(, , , True), True
Check "log", InStr(engine.LogReport, "DATABASE SAVED! As " & folder & "life.cdb") > 0, True
Set found = engine.GetDB(folder & "life.cdb")
Check "GetDB", found.LoadDB(folder & "life.cdb").Count & found.DBOwner, "2ann"
Check "registry", (found.CVLDBOwnerSet.Count > 0), True
WScript.Echo checks & " checks, " & failures + 0 & " failed"
WScript.Quit failures + 0
