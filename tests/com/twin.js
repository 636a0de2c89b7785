// Writes a database, or reads one that was written elsewhere: cscript twin.js write | read FILE
// tavolin_twin does the same and compares the bytes.
var engine = new ActiveXObject("Tavolin.CVLDBEngine");
function letter(number) { return String.fromCharCode(200 + number); }
function write() {
    engine.CreateNewDB("twin", "");
    engine.CreateNewPrimaryTable("Customers", "ID", "Name");
    engine.CreateNewLinkedTable("Customers", 1, "Name");
    for (var i = 1; i <= 100; ++i) {
        engine.AddRecord("Customers", i, "k" + i, "n" + letter(i) + (i % 7));
    }
    engine.GetRecord("Customers", 3).Attach(1, "C:\\a.png", 2);
    var notes = engine.CVLDBUserSet.Item(1).CVLUserNoteSet;
    notes.Add("11/15/2026 1:05:00 AM", 1, "first");
    engine.LogDBActivities(true, false, false, false, false, false, false, false, true);
    engine.DeleteRecord("Customers", "k50");
    engine.SaveDB();
}
function read(file) {
    engine.LoadDB(file);
    engine.DBLegalUser(engine.LogedOnUser, 6);
    if (engine.GetRecordSet("Customers").Count !== 99) return 1;
    if (engine.GetRecord("Customers", "k99").prop(1) !== "n" + letter(99) + "1") return 2;
    return engine.CVLDBUserSet.Item("ann").CVLUserNoteSet.Item(1).Note === "first" ? 0 : 3;
}
var failed = 0;
try {
    engine.LogOn("ann", "secret");
    if (WScript.Arguments(0) === "write") write();
    else failed = read(WScript.Arguments(1));
} catch (error) {
    WScript.Echo(error.description);
    failed = 9;
}
WScript.Echo("1 checks, " + failed + " failed");
