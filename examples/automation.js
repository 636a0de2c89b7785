// Observers and searching, from JScript: cscript automation.js
var engine = new ActiveXObject("Tavolin.CVLDBEngine");
engine.LogOn("ann", "secret");
engine.CreateNewDB("people", "");
engine.CreateNewPrimaryTable("People", "ID", "Name", "City");
var people = [["1", "Ann", "Paris"], ["2", "Bob", "Lyon"], ["3", "Cleo", "Paris"]];
for (var i = 0; i < people.length; ++i) {
    engine.AddRecord("People", i + 1, people[i][0], people[i][1], people[i][2]);
}

// Any object with these two functions is an observer.
engine.AddObserver({
    Update: function () { WScript.Echo("Look again, please."); },
    AddAffectedRecords: function (database, table, recordKey) {}
}, "ann");
engine.NotifyObservers();
engine.RemoveObserver("ann");

var found = engine.Find("paris");
for (var walk = new Enumerator(found.CVLRecordSet); !walk.atEnd(); walk.moveNext()) {
    WScript.Echo(walk.item().prop(1) + " lives in " + walk.item().prop(2));
}
try {
    engine.Find("Atlantis");
} catch (error) {
    var numbers = new ActiveXObject("Tavolin.CVLErrorNum");
    if (error.number === numbers.GetValueNotFoundError) WScript.Echo(error.description);
}
