' A database of books, from VBScript: cscript automation.vbs
Option Explicit
Dim engine, books, record
Set engine = CreateObject("Tavolin.CVLDBEngine")
engine.LogOn "ann", "secret"
engine.CreateNewDB "library", ""
Set books = engine.CreateNewPrimaryTable("Books", "Number", "Title", "Author")
engine.CreateNewLinkedTable "Books", "Author", "Name"
engine.AddRecord "Books", 1, "B1", "The Sea Road", "Ann Lee"
engine.AddRecord "Books", 2, "B2", "A Quiet Year", "Ann Lee"
WScript.Echo "Books: " & books.Count & ", authors: " & engine.GetRecordSet("AuthorBooks").Count
For Each record In books.CVLRecordSet
    WScript.Echo record.Key & "  " & record.prop(1)
Next

On Error Resume Next
engine.AddRecord "Books", 3, "B1", "Once more"
WScript.Echo "Refused: " & Err.Description
On Error GoTo 0

engine.TransactionBegin
engine.DeleteRecord "Books", "B1"
engine.DeleteRecord "Books", "B2"
WScript.Echo "Authors after the deletions: " & engine.GetRecordSet("AuthorBooks").Count
engine.TansactionAbort
WScript.Echo "Books after the roll-back: " & engine.GetRecordSet("Books").Count
