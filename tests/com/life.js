// The same component from JScript, on the database that life.vbs has saved: cscript life.js FOLDER
var failures = 0, checks = 0;
function check(what, got, wanted) {
    ++checks;
    if (String(got) === String(wanted)) return;
    ++failures;
    WScript.Echo("FAILED " + what + ": " + got + " instead of " + wanted);
}
// The number and the text of the error that `body` raises.
function raised(body) {
    try {
        body();
    } catch (error) {
        var number = error.number < 0 ? error.number + 0x100000000 : error.number;
        return number.toString(16) + ": " + error.description;
    }
    return "no error";
}
function keys(set) {
    var text = [];
    for (var walk = new Enumerator(set); !walk.atEnd(); walk.moveNext()) text.push(walk.item().Key);
    return text.join(" ");
}

var folder = WScript.Arguments(0);
var engine = new ActiveXObject("Tavolin.CVLDBEngine");
check("nobody", engine.LogedOnUser, null);
check("LoadDB first", raised(function () { engine.LoadDB(folder + "life.cdb"); }),
      "8004ec53: User Should Log On To Be Able To Open A DataBase!");
engine.LogOn("ann", "secret");
var tables = engine.LoadDB(folder + "life.cdb");
check("tables", keys(tables), "Customers Orders");
check("rights", raised(function () { tables.Item("Orders"); }),
      "8004ed1c: User ann Does Not Have Permission To Read!");
check("DBLegalUser", engine.DBLegalUser(engine.LogedOnUser, 6), true);
check("links", tables.Item(2).LinkedTable(1), "Customers");
check("record", engine.GetRecord("Orders", 1).prop(2), "Paris");
var record = engine.AddRecord("Orders", 4, 2000 + 1, "c9");
check("number as text", record.Key, "2001");
record.prop(5) = "\u00fc";
check("prop", record.prop(5), "\u00fc");
record.Key = "other";
check("Key", engine.GetRecord("Orders", "2001").Key, "other");
check("missing record", raised(function () { engine.GetRecord("Orders", 99); }),
      "8004ea65: Record 99 Not Found!");
var notes = new ActiveXObject("Tavolin.CVLUserNoteSet");
engine.CVLDBUserSet.Item("ann").CVLUserNoteSet = notes;
check("set by value", engine.CVLDBUserSet.Item("ann").CVLUserNoteSet.Count, 0);
check("DeleteDB", engine.DeleteDB(folder + "life.cdb"), true);
WScript.Echo(checks + " checks, " + failures + " failed");
WScript.Quit(failures);
