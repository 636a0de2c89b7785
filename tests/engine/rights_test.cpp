// Who may do what: every public member of every class, called by every kind of user and in every
// state that objects can get into. docs/reliability.md tells the same in words.
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tavolin/persist/paths.h"
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

// An outcome is "." when the member runs, else the letter of the error that it raises.
char Outcome(std::int32_t number) {
    static const std::map<std::int32_t, char> letters = {
        {0, '.'},
        {Num::GetUserPermissionToRdError(), 'r'},
        {Num::GetUserPermissionToRWError(), 'w'},
        {Num::GetUserPermissionToDelError(), 'd'},
        {Num::GetUserIsNotDBOwnerError(), 'o'},
        {Num::GetUserLogedOnNotFoundError(), 'n'},
        {Num::GetNewDBCreationError(), 'c'},
        {Num::GetDBPasswordChangeError(), 'k'},
        {Num::GetDBOwnerChangeError(), 'h'},
        {Num::GetDBPasswordError(), 'p'},
        {Num::GetUserDisabledError(), 'x'},
    };
    const auto found = letters.find(number);
    return found == letters.end() ? '?' : found->second;
}

// The kinds of users, each a column: owner, with the right to delete, to write and to read, a
// stranger with the database password, a disabled user, a stranger without, nobody.
constexpr std::string_view kColumns = "ODWRPXSN";

// In ways that ask for no right.
template <class Set>
auto Nth(const Set& set, int n) {
    auto walk = set.NewEnum();
    auto element = walk.Next();
    while (n-- > 0) element = walk.Next();
    return element;
}

// A saved database that is loaded again, and an object of every kind from it.
struct World {
    std::string folder, file;
    bool for_person = false;  // whose database it is has to be on the disk as well
    std::shared_ptr<CVLDBEngine> engine = std::make_shared<CVLDBEngine>();
    std::shared_ptr<CVLDBEngine> another;
    std::shared_ptr<CVLTableSet> tables;
    std::shared_ptr<CVLTable> table, linked;  // "Items", and "KindItems" that its field 1 links to
    std::shared_ptr<CVLRecordSet> records;
    std::shared_ptr<CVLRecord> record;
    std::shared_ptr<CVLAttachmentSet> attachments;
    std::shared_ptr<CVLAttachment> attachment;
    std::shared_ptr<CVLDBUserSet> users;
    std::shared_ptr<CVLDBUser> user;  // the reader
    std::shared_ptr<CVLUserNoteSet> notes;
    std::shared_ptr<CVLUserNote> note;
    std::shared_ptr<CVLDBOwnerSet> owners;
    std::shared_ptr<CVLOwnerDBSet> databases;

    // Takes the objects that are now the engine's.
    void Take() {
        tables = engine->CVLTableSet();
        table = Nth(*tables, 0);
        linked = Nth(*tables, 1);
        records = table->CVLRecordSet();
        record = Nth(*records, 0);
        attachments = record->CVLAttachmentSet();
        attachment = Nth(*attachments, 0);
        users = engine->CVLDBUserSet();
        user = users->Item("reader");
        notes = user->CVLUserNoteSet();
        note = Nth(*notes, 0);
        owners = engine->CVLDBOwnerSet();
        databases = Nth(*owners, 0)->CVLOwnerDBSet();
    }

    void Act(char column) {
        const char* const names[] = {"ann",   "deleter", "writer", "reader",
                                     "guest", "off",     "guest",  ""};
        const char* const words[] = {"secret", "word", "word", "word", "open", "word", "none", ""};
        const std::size_t who = kColumns.find(column);
        engine->LogOn(names[who], words[who]);
        ErrorNumber([&] { engine->DBLegalUser(engine->LogedOnUser(), Undefined); });
        if (column == 'N') engine->LogedOnUser(nullptr);
    }

    void HandOver() {
        engine->ChangeOwner("reader", "word");
        if (for_person) engine->SaveDB();
    }

    std::shared_ptr<CVLRecord> Present() const {
        return Nth(*Nth(*engine->CVLTableSet(), 0)->CVLRecordSet(), 0);
    }

    std::string New() const {
        static int count = 0;
        return "new" + std::to_string(++count) + ".";
    }

    // Everything that a refusal must leave as it is.
    std::string Everything() const {
        std::string all = tavolin::Everything(*tables) + StateText(*users) + StateText(*notes) +
                          StateText(*attachments);
        if (engine) {
            all += tavolin::Everything(*engine->CVLTableSet()) +
                   StateText(*engine->CVLDBUserSet()) + engine->DBName() + engine->DBPath() +
                   engine->DBOwner() + (engine->LoggedActivities() == LogType() ? '0' : '1');
        }
        std::set<std::string> files;
        for (const auto& entry : fs::directory_iterator(NativePath(folder)))
            files.insert(entry.path().filename().string());
        for (const std::string& name : files) all += name + "\n";
        return all;
    }
};

const char* const kNone = "........";
const char* const kRead = ".....rrr";
const char* const kWrite = "...wwwww";
const char* const kDelete = "..dddddd";
const char* const kOwner = ".ooooooo";
// What finds something by its name first.
const char* const kReadWrite = "...wwrrr";
const char* const kReadDelete = "..dddrrr";
const char* const kReadOwner = ".oooorrr";
const char* const kLogOn = ".......n";

struct MemberRow {
    // One, "=" is assignment, behind ">" the source if it is not the usual one; or those of FREE.
    const char* members;
    const char* outcomes;  // one for each column
    void (*call)(World&);
    // Asks who is logged on, whatever the permission state is.
    bool by_person = false;
};

const PrimaryKeyType kKey = {0, 99, 99, 99};
const FieldTexts kLabels = {"ID"};

#define DO(...) [](World& w) { w.__VA_ARGS__; }
// The first row of each type: members that ask for no right, of an object `s` of that type. What
// stands there twice is assigned to as well.
MemberRow Free(const char* members, void (*call)(World&)) { return {members, kNone, call}; }
#define FREE(type, object, ...)                  \
    Free(#type ": " #__VA_ARGS__, [](World& w) { \
        auto& s = object;                        \
        __VA_ARGS__;                             \
    })

// Where one refusal ends a row, each member that refuses has a row of its own.
const MemberRow kRows[] = {
    FREE(CVLDBEngine, *w.engine, s.LogedOnUser(s.LogedOnUser()), s.DBName(s.DBName()),
         s.DBPath(s.DBPath()), s.DBOwner(), s.DBCreationDate(), s.LoggedActivities(), s.LogReport(),
         s.TransactionStarted(), s.CVLTableSet(s.CVLTableSet()), s.CVLDBUserSet(s.CVLDBUserSet()),
         s.CVLDBOwnerSet(), s.Find("1"), s.GetArrayOwnedDBs(s.GetArrayOwners()[0]),
         s.GetArrayTables(), s.GetArrayUsers(), s.AddObserver(std::make_shared<IUpdater>(), "x"),
         s.NotifyObservers(), s.RemoveObserver("x"), s.ObserversCount(), s.TransactionBegin(),
         s.TansactionAbort(), s.LogOn("any", "any"), s.LogOnAsUser(w.user)),
    {"LogedOnIsOwner", kLogOn, DO(engine->LogedOnIsOwner(w.user))},
    {"PasswordCorrect", kLogOn, DO(engine->PasswordCorrect("x"))},
    {"UserExists", kLogOn, DO(engine->UserExists("x"))},
    {"GetUser", kLogOn, DO(engine->GetUser("reader", "word"))},
    {"ChangePassword", ".kkkkkkn", DO(engine->ChangePassword("x", "y")), true},
    {"ChangePassword", kLogOn, DO(engine->ChangePassword("open", "y"))},
    {"CreateNewUser", ".oooooon", DO(engine->CreateNewUser("x", "y", true, true, true))},
    {"DBLegalUser", ".....xpn", DO(engine->DBLegalUser(w.engine->LogedOnUser(), Undefined)), true},
    {"CreateNewDB", ".......c", DO(engine->CreateNewDB(w.New(), w.folder))},
    {"LoadDB", kLogOn, DO(engine->LoadDB(w.file))},
    {"GetDB", kLogOn, DO(engine->GetDB(w.file))},
    {"SaveDB", "...wwwwn", DO(engine->SaveDB())},
    {"DeleteDB", ".oooooon", DO(engine->DeleteDB(w.file)), true},
    {"ChangeOwner", ".hhhhhhc", DO(engine->ChangeOwner("x")), true},
    {"ChangeOwner", ".hhhhhhc", DO(engine->ChangeOwner("x", "", "", "", w.file)), true},
    {"CreateNewPrimaryTable", kWrite, DO(engine->CreateNewPrimaryTable("x", {"ID"}))},
    {"CreateNewLinkedTable", kReadWrite, DO(engine->CreateNewLinkedTable("Items", 2, {"ID"}))},
    {"LinkTables", kReadWrite, DO(engine->LinkTables("Items", 2, "KindItems"))},
    {"UnlinkTables", kReadOwner, DO(engine->UnlinkTables("Items", "KindItems"))},
    {"GetLinkedTable", kRead, DO(engine->GetLinkedTable("Items", 1))},
    {"GetTable", kRead, DO(engine->GetTable("Items"))},
    {"DeleteTable", kReadOwner, DO(engine->DeleteTable("Items"))},
    {"DeleteTable", kReadOwner, DO(engine->DeleteTable("Free", false))},
    {"GetRecordSet", kRead, DO(engine->GetRecordSet("Items"))},
    {"GetRecord", kRead, DO(engine->GetRecord("Items", "1"))},
    {"AddRecord", kReadWrite, DO(engine->AddRecord("Items", 1, {"9", "z"}))},
    {"UpDateRecord", kReadWrite, DO(engine->UpDateRecord("Items", w.Present(), 1, {"1", "z"}))},
    {"DeleteRecord>RemoveRecord Method", kReadDelete, DO(engine->DeleteRecord("Items", 1))},
    {"TransactionCommit", "...wwwwn",
     DO(engine->TransactionBegin(), w.engine->TransactionCommit())},
    {"LogDBActivities>LogDBActivities", kOwner, DO(engine->LogDBActivities(true))},
    {"GetArrayTables", kLogOn, DO(engine->GetArrayTables(w.file))},
    {"GetArrayUsers", kLogOn, DO(engine->GetArrayUsers(w.file))},
    {"GetArrayFields", kRead, DO(engine->GetArrayFields("Items"))},
    {"GetArrayRecords", kRead, DO(engine->GetArrayRecords("Items"))},
    {"GetArrayAttachments>GetArrayRecords Method", kRead,
     DO(engine->GetArrayAttachments("Items", "1"))},
    {"MakeItText", kRead, DO(engine->MakeItText(w.folder, w.New()))},
    {"MakeItHTML", kRead, DO(engine->MakeItHTML(w.folder, "site"))},
    {"MakeItMDB", kRead, DO(engine->MakeItMDB(w.folder, w.New()))},
    FREE(CVLDBUserSet, *w.users, s.CanAdd("x"), s.Item(1), s.Count(), s.NewEnum(), s.LastUser(),
         s.FirstUser(), s.PreviousUser(2), s.NextUser(1), s.PreviousUserIsAvailable(1),
         s.NextUserIsAvailable(1), s.FirstUserIsAvailable(), s.ObjectState(s.ObjectState())),
    {"Add", kOwner, DO(users->Add("x", "y", true, true, true))},
    {"Update", kOwner, DO(users->Update("reader", {}, true))},
    {"Remove", kOwner, DO(users->Remove("writer"))},
    FREE(CVLDBUser, *w.user, s.UserName(), s.UserFullName(), s.UserDescription(), s.UserDisabled(),
         s.Equals(w.user), s.PasswordCorrect("x"), s.CanRead(), s.CanReadWrite(), s.CanDelete(),
         s.Key(s.Key()), s.CVLUserNoteSet(s.CVLUserNoteSet()), s.ChangePassword("x", "word")),
    {"UserName=>UserName Property let", kOwner, DO(user->UserName("x"))},
    {"UserFullName=>UserFullName Property let", kOwner, DO(user->UserFullName("x"))},
    {"UserDescription=>UserDescription Property let", kOwner, DO(user->UserDescription("x"))},
    {"UserDisabled=", kOwner, DO(user->UserDisabled(true))},
    {"CanRead=", kOwner, DO(user->CanRead(false))},
    {"CanReadWrite=", kOwner, DO(user->CanReadWrite(true))},
    {"CanDelete=", kOwner, DO(user->CanDelete(true))},
    FREE(CVLUserNoteSet, *w.notes, s.CanAdd("x"), s.Count(), s.NewEnum(),
         s.PreviousNoteIsAvailable(1), s.NextNoteIsAvailable(1), s.FirstNoteIsAvailable(),
         s.ObjectState(s.ObjectState())),
    {"Add", ".wwwwwww", DO(notes->Add(Date{1}, 1, "x"))},
    {"Update", ".wwwwwww", DO(notes->Update(1, "x"))},
    {"Item", ".rrrrrrr", DO(notes->Item(1))},
    {"Remove", ".ddddddd", DO(notes->Remove(1))},
    {"LastNote", ".rrrrrrr", DO(notes->LastNote())},
    {"FirstNote", ".rrrrrrr", DO(notes->FirstNote())},
    {"PreviousNote", ".rrrrrrr", DO(notes->PreviousNote(2))},
    {"NextNote", ".rrrrrrr", DO(notes->NextNote(1))},
    FREE(CVLUserNote, *w.note, s.dateKey = std::string(s.dateKey), s.nKey = int(s.nKey),
         s.Note(s.Note())),
    FREE(CVLTableSet, *w.tables, s.CanAdd("x"), s.Count(), s.NewEnum(),
         s.PrintToFile("x", w.folder + "\\" + w.New()), s.PreviousTableIsAvailable(1),
         s.NextTableIsAvailable(1), s.FirstTableIsAvailable()),
    {"Add", kWrite, DO(tables->Add("x", isPrimaryTable))},
    {"Update>UpDate Method", kWrite, DO(tables->Update("Free"))},
    {"Item", kRead, DO(tables->Item("Items"))},
    {"Remove", kOwner, DO(tables->Remove("Free"))},
    {"MakeItMDB", kRead, DO(tables->MakeItMDB(w.folder, w.New()))},
    {"MakeItText", kRead, DO(tables->MakeItText())},
    {"MakeItHTML", kRead, DO(tables->MakeItHTML(w.folder, "site"))},
    {"LastTable", kRead, DO(tables->LastTable())},
    {"FirstTable", kRead, DO(tables->FirstTable())},
    {"PreviousTable", kRead, DO(tables->PreviousTable(2))},
    {"NextTable", kRead, DO(tables->NextTable(1))},
    FREE(CVLTable, *w.table, s.Key(s.Key()), s.ReferencedTable(9, s.ReferencedTable(9)),
         s.LinkedTable(9, s.LinkedTable(9)), s.IsReferenced(), s.NumberOfLinkedTables(),
         s.FieldIsForeignKey(1), s.SpecificType(), s.Count(), s.CanAdd("x"),
         s.FieldLabel(0, std::string(s.FieldLabel(0))), s.FieldName(0, std::string(s.FieldName(0))),
         s.PrimaryKey(s.PrimaryKey()), s.CVLRecordSet(s.CVLRecordSet()), s.SetPrimaryKeyFields(0),
         s.PrintToFile("x", w.folder + "\\" + w.New()), s.Find("1")),
    {"Add", kWrite, DO(table->Add(w.tables, 1, {"9", "z"}))},
    {"Update>UpDate Method", kWrite, DO(table->Update(w.tables, w.record, {"1", "z"}))},
    {"Remove", kReadDelete, DO(table->Remove("1"))},
    {"Unlink", kOwner, DO(table->Unlink(w.linked))},
    {"Link", kWrite, DO(table->Link(2, w.linked))},
    {"GetRecord", kRead, DO(table->GetRecord("1"))},
    {"AttachToRecord>attachToRecord Method", kReadWrite, DO(table->AttachToRecord("1", "x"))},
    {"AttachToRecord>attachToRecord Method", kWrite, DO(table->AttachToRecord(w.record, "x"))},
    {"GetRecord", kRead, DO(table->Find("1")->GetRecord(1))},
    {"Add", kWrite, DO(table->Find("1")->Add(w.tables, 1, {"9"}))},
    {"Sort", kWrite, DO(table->Sort(1))},
    {"MakeItText", kRead, DO(table->MakeItText())},
    {"MakeItHTML", kRead, DO(table->MakeItHTML("", ""))},
    {"MakeItMDB", kRead, DO(table->MakeItMDB(w.folder, w.New()))},
    {"FreeFromInOutLinks", kOwner, DO(table->FreeFromInOutLinks())},
    {"DeleteLinks", kOwner, DO(table->DeleteLinks(w.tables))},
    FREE(CVLRecordSet, *w.records, s.CanAdd("x"), s.Count(), s.NewEnum(),
         s.ObjectState(s.ObjectState()), s.PrintToFile("x", w.folder + "\\" + w.New()),
         s.PreviousRecordIsAvailable(1), s.NextRecordIsAvailable(1), s.FirstRecordIsAvailable()),
    {"Add", kWrite, DO(records->Add(kKey, 1, {"9"}))},
    {"Update>UpDate Method", kWrite, DO(records->Update(kKey, w.record, {"1"}))},
    {"Item", kRead, DO(records->Item("1"))},
    {"Remove", kDelete, DO(records->Remove("1"))},
    {"Remove", kDelete, DO(table->Find("1")->CVLRecordSet()->Remove(1))},
    {"AttachToRecord", kWrite, DO(records->AttachToRecord(w.record, 1, "x", aPicture))},
    {"MakeItMDB", kRead, DO(records->MakeItMDB(w.folder, w.New(), "x", kLabels))},
    {"MakeItText", kRead, DO(records->MakeItText(kLabels))},
    {"MakeItHTML", kRead, DO(records->MakeItHTML("", "", w.table, kLabels))},
    {"LastRecord", kRead, DO(records->LastRecord())},
    {"FirstRecord", kRead, DO(records->FirstRecord())},
    {"PreviousRecord", kRead, DO(records->PreviousRecord(2))},
    {"NextRecord", kRead, DO(records->NextRecord(1))},
    {"Sort", kWrite, DO(records->Sort(1))},
    FREE(CVLRecord, *w.record, s.Key(s.Key()), s.nKey(s.nKey()),
         s.CVLAttachmentSet(s.CVLAttachmentSet()), s.prop(2, s.prop(2))),
    {"Attach", kWrite, DO(record->Attach(1, "x", aPicture))},
    FREE(CVLAttachmentSet, *w.attachments, s.Count(), s.CanAdd("x"), s.NewEnum(),
         s.ObjectState(s.ObjectState()), s.PreviousAttachmentIsAvailable(1),
         s.NextAttachmentIsAvailable(1), s.FirstAttachmentIsAvailable()),
    {"Add", kWrite, DO(attachments->Add("x", 1, "x", aPicture))},
    {"Update>UpDate Method", kWrite, DO(attachments->Update(1, "x", aPicture))},
    {"Item>Remove Method", kRead, DO(attachments->Item(1))},
    {"Remove", kDelete, DO(attachments->Remove(1))},
    {"LastAttachment", kRead, DO(attachments->LastAttachment())},
    {"FirstAttachment", kRead, DO(attachments->FirstAttachment())},
    {"PreviousAttachment", kRead, DO(attachments->PreviousAttachment(2))},
    {"NextAttachment", kRead, DO(attachments->NextAttachment(1))},
    FREE(CVLAttachment, *w.attachment, s.Key(std::string(s.Key())), s.nKey(s.nKey()),
         s.SpecificType(s.SpecificType()),
         s.attachmentPathName(std::string(s.attachmentPathName()))),
    FREE(CVLDBOwnerSet, *w.owners, s.CanAdd("x"), s.Add("x"), s.Item("x"), s.Count(), s.Remove("x"),
         s.NewEnum(), s.Refresh()),
    FREE(CVLDBOwner, *w.owners->Item(1), s.Key(std::string(s.Key())),
         s.CVLOwnerDBSet(s.CVLOwnerDBSet())),
    FREE(CVLOwnerDBSet, *w.databases, s.CanAdd("x"), s.Add("x", "y"), s.Item(1), s.Count(),
         s.Remove("y\\x"), s.NewEnum()),
    FREE(CVLOwnerDB, *w.databases->Item(1), s.Key(std::string(s.Key())),
         s.DBName(std::string(s.DBName())), s.DBDir(std::string(s.DBDir()))),
};

// Calls body(type, row) for every row of every type.
template <class Body>
void ForEachRow(Body&& body) {
    std::string type;
    for (const MemberRow& row : kRows) {
        const std::string_view members = row.members;
        if (members.find(':') != members.npos) type = members.substr(0, members.find(':'));
        body(type, row);
    }
}

std::string MemberOf(const MemberRow& row) {
    const std::string_view members = row.members;
    return std::string(members.substr(0, members.find('>')));
}

std::string SourceOf(const std::string& type, const MemberRow& row) {
    std::string member = MemberOf(row);
    if (member != row.members) {
        member = row.members + member.size() + 1;
    } else if (member.back() == '=') {
        member.replace(member.size() - 1, 1, " Property Let");
    } else if (member == "Item") {
        member += " Property Get";
    } else {
        for (const auto& [prefix, move] : {std::pair{"First", "moveFirst"},
                                           {"Last", "moveEnd"},
                                           {"Previous", "movePrevious"},
                                           {"Next", "moveNext"}}) {
            if (member.starts_with(prefix)) member = move;
        }
        member += " Method";
    }
    return type + ":" + member;
}

// The texts that are not those of their letter; "*" is the user's name.
const std::map<std::string, const char*> kTexts = {
    {"CVLTable.Link", "User: * Does Not Have Permission To Read/Write!"},
    {"CVLDBEngine.LinkTables w", "User: * Does Not Have Permission To Read/Write!"},
    {"CVLDBEngine.LogDBActivities",
     "User: * Is Not The DataBase Owner\r\nThus Does Not Permission To Set The Log!"},
    {"CVLDBEngine.DeleteDB o",
     "User: * Is Not The DataBase Owner\r\nThus Does Not Have The Right To Delete\r\n"},
    {"CVLDBEngine.LoadDB", "User Should Log On To Be Able To Open A DataBase!"},
    {"CVLUserNoteSet r", "* Does Not Have Permission Read Notes!"},
    {"CVLUserNoteSet w", "* Does Not Have Permission Write Notes!"},
    {"CVLUserNoteSet d", "* Does Not Have Permission Delete Notes!"},
    {"r", "User * Does Not Have Permission To Read!"},
    {"w", "User * Does Not Have Permission To Read/Write!"},
    {"d", "User * Does Not Have Permission To Delete!"},
    {"n", "User Should Log On To Be Able To Perform Any DataBase Activity!"},
    {"c", "User Should Log On To Create A New DataBase!"},
    {"k",
     "DataBase Password Did Not Change!\r\nCause: Old DataBase Password Provided By * Is "
     "Incorrect!"},
    {"h", "User: * Is Not The DataBase Owner\r\nThus Does Not Have The Right To Change Ownership!"},
    {"p", "Log In To DataBase Denied!\r\nCause: Incorrect DataBase Password!"},
    {"x", "Log In To DataBase Denied!\r\nCause: User Is Disabled!"},
};

// The right that the owner alone has.
const std::map<std::string, const char*> kOwnersRights = {
    {"CVLDBEngine.CreateNewUser", "!\r\nThus Does Not Have The Right To Create Users"},
    {"CVLDBUserSet.Add", "!\r\nThus Does Not Have The Right To Create Users"},
    {"CVLDBUserSet.Update", "!\r\nThus Does Not Have The Right To UpDate Users"},
    {"CVLDBUserSet.Remove", "!\r\nThus Does Not Have The Right To Delete Users"},
    {"CVLDBUser", "\r\nThus Does Not Have The Right To Set User State!"},
    {"CVLDBEngine.DeleteTable", "\r\nThus Does Not Have The Right To Delete Tables!"},
    {"CVLTableSet.Remove", "\r\nThus Does Not Have The Right To Delete Tables!"},
    {"", "!\r\nThus Does Not Have The Right To Unlink A Field From A Table!"},
};

std::string TextOf(const std::string& type, const MemberRow& row, char outcome,
                   const std::string& user) {
    const std::string member = type + "." + MemberOf(row);
    const std::string letter(1, outcome);
    std::string text;
    for (const auto& key : {letter, type + " " + letter, member, member + " " + letter}) {
        if (kTexts.contains(key)) text = kTexts.at(key);
    }
    if (text.empty()) {
        text = "User: * Is Not The DataBase Owner";
        for (const auto& key : {member, type, std::string()}) {
            if (!kOwnersRights.contains(key)) continue;
            text += kOwnersRights.at(key);
            break;
        }
    }
    const std::size_t name = text.find('*');
    return name == text.npos ? text : text.replace(name, 1, user);
}

struct RightsTest : testing::Test {
    // "ann" owns one database, "bob" the other, where she may read.
    RightsTest() : folder_(PortablePath(library_.folder().path())) {
        for (const char* const owner : {"bob", "ann"}) {
            CVLDBEngine engine;
            engine.LogOn(owner, "secret");
            engine.CreateNewDB(owner, folder_, "open");
            if (owner == std::string("bob"))
                engine.CreateNewUser("ann", "secret", true, false, false);
            engine.CreateNewUser("reader", "word", true, false, false);
            engine.CreateNewUser("writer", "word", true, true, false);
            engine.CreateNewUser("deleter", "word", true, true, true);
            engine.CreateNewUser("off", "word", true, true, true, {}, {}, true);
            const auto notes = engine.GetUser("reader", "word")->CVLUserNoteSet();
            notes->Add(Date{0}, 1, "one"), notes->Add(Date{2}, 2, "two");
            engine.CreateNewPrimaryTable("Items", {"ID", "Kind", "Other"});
            engine.CreateNewLinkedTable("Items", 1, {"Kind"});
            engine.CreateNewPrimaryTable("Free", {"ID"});
            const auto record = engine.AddRecord("Items", 1, {"1", "a"});
            record->Attach(1, "one", aPicture), record->Attach(2, "two", aPicture);
            engine.AddRecord("Items", 2, {"2", "b"});
            engine.SaveDB();
            paths_[*owner] = JoinPath(folder_, engine.DBName());
        }
        for (const std::string& path : {paths_['a'], paths_['b'], folder_ + "\\RDX.dat"})
            saved_[path] = Contents(path);
    }

    World MakeWorld() {
        for (const auto& [path, contents] : saved_) {
            if (!FileExists(path) || Contents(path) != contents) WriteContents(path, contents);
        }
        World world;
        world.folder = folder_;
        world.file = paths_['a'];
        world.engine->LogOn("ann", "secret");
        world.engine->LoadDB(world.file);
        return world;
    }

    // One outcome, how a refusal reads, and that it has changed nothing.
    static void Expect(char expected, const std::string& type, const MemberRow& row, World& world,
                       const std::string& where) {
        SCOPED_TRACE(type + "." + row.members + ", " + where);
        const std::string before = expected == '.' ? std::string() : world.Everything();
        const auto user = world.engine ? world.engine->LogedOnUser() : nullptr;
        Error raised(0);
        try {
            row.call(world);
        } catch (const Error& error) {
            raised = error;
        }
        EXPECT_EQ(Outcome(raised.number()), expected) << raised.source() << raised.description();
        if (expected == '.') return;
        EXPECT_TRUE(world.Everything() == before);
        EXPECT_EQ(raised.source(), SourceOf(type, row));
        EXPECT_EQ(raised.description(),
                  TextOf(type, row, expected, user ? user->UserName() : "---"));
    }

    ScopedLibraryFolder library_;
    std::string folder_;
    std::map<char, std::string> paths_;
    std::map<std::string, std::string> saved_;
};

TEST_F(RightsTest, EveryMemberForEveryKindOfUser) {
    ForEachRow([&](const std::string& type, const MemberRow& row) {
        for (const char column : kColumns) {
            World world = MakeWorld();
            world.Act(column);
            world.Take();
            Expect(row.outcomes[kColumns.find(column)], type, row, world, std::string(1, column));
        }
    });
}

// How an engine comes to another state, and what holds then: `state` is the column that the members
// of the engine and of the objects taken follow, `person` that of what asks who is logged on.
struct Turn {
    const char* what;
    char state, person;
    void (*happens)(World&);
};

const Turn kTurns[] = {
    {"objects from before a roll-back", 'S', 'O',
     [](World& w) { w.Take(), w.engine->TransactionBegin(), w.engine->TansactionAbort(); }},
    {"after a roll-back", 'O', 'O',
     [](World& w) { w.engine->TransactionBegin(), w.engine->TansactionAbort(), w.Take(); }},
    {"objects from before a loading", 'S', 'O',
     [](World& w) { w.Take(), w.engine->LoadDB(w.file); }},
    {"loaded again", 'O', 'O', [](World& w) { w.engine->LoadDB(w.file), w.Take(); }},
    {"a loading refused", 'O', 'O',
     [](World& w) { w.Take(), ErrorNumber([&] { w.engine->LoadDB(w.folder); }); }},
    {"objects from before another's database", 'S', 'R',
     [](World& w) { w.Take(), w.file = w.folder + "\\bob.cdb", w.engine->LoadDB(w.file); }},
    {"another's database", 'R', 'R',
     [](World& w) { w.file = w.folder + "\\bob.cdb", w.engine->LoadDB(w.file), w.Take(); }},
    {"the engine that GetDB makes", 'S', 'O',
     [](World& w) {
         w.another = w.engine;
         w.engine = w.engine->GetDB(w.file), w.Take();
     }},
    {"after GetDB", 'O', 'O', [](World& w) { w.Take(), w.another = w.engine->GetDB(w.file); }},
    {"beside a newer engine", 'O', 'O',
     [](World& w) { w.Take(), w.another = std::make_shared<CVLDBEngine>(); }},
    {"handed over", 'D', 'D', [](World& w) { w.Take(), w.HandOver(); }},
    {"the new owner", 'O', 'O',
     [](World& w) {
         w.Take(), w.HandOver();
         w.engine->LogOn("reader", "word");
         w.engine->DBLegalUser(w.engine->LogedOnUser(), Undefined);
     }},
    {"logged on again, not yet let in", 'S', 'O',
     [](World& w) { w.Take(), w.engine->LogOn("ann", "secret"); }},
    {"put in place, not yet let in", 'S', 'O',
     [](World& w) { w.Take(), w.engine->LogedOnUser(w.engine->LogedOnUser()); }},
    {"after the refusal of another", 'S', 'O',
     [](World& w) {
         w.Take();
         const auto ann = w.engine->LogedOnUser();
         w.engine->LogOn("eve", "wrong");
         const auto eve = w.engine->LogedOnUser();
         w.engine->LogedOnUser(ann), w.engine->DBLegalUser(ann, Ownership);
         ErrorNumber([&] { w.engine->DBLegalUser(eve, ToRead); });
     }},
    {"the engine gone", 'S', '-', [](World& w) { w.Take(), w.engine = nullptr; }},
};

TEST_F(RightsTest, EveryMemberAfterEveryTurn) {
    for (const Turn& turn : kTurns) {
        ForEachRow([&](const std::string& type, const MemberRow& row) {
            World world = MakeWorld();
            world.Act('O');
            world.for_person = row.by_person;
            turn.happens(world);
            const bool of_engine = type == "CVLDBEngine";
            if (of_engine && !world.engine) return;
            // Objects that are not the engine's any more say nothing about its members.
            char column = row.by_person ? turn.person : turn.state;
            if (of_engine && !row.by_person && world.tables != world.engine->CVLTableSet())
                column = turn.person;
            Expect(row.outcomes[kColumns.find(column)], type, row, world, turn.what);
        });
    }
}

// The published boundary lists all members.
TEST(RightsTableTest, HasARowForEveryMember) {
    std::set<std::string> missing;
    std::ifstream boundary(TAVOLIN_SOURCE_DIR "/tests/com/boundary.txt");
    std::string type, name;
    for (std::string line; std::getline(boundary, line);) {
        std::istringstream words(line);
        if (!line.starts_with(' ')) {
            words >> type;  // whose members the lines that follow name
            continue;
        }
        while (words >> name) missing.insert(type.substr(1) + "." + name);
    }
    ASSERT_GT(missing.size(), 200u);
    ForEachRow([&](const std::string& of, const MemberRow& row) {
        ASSERT_EQ(std::string_view(row.outcomes).size(), kColumns.size()) << row.members;
        const std::string members = row.members;
        if (members.find(':') == members.npos) missing.erase(of + "." + MemberOf(row));
        static const std::regex in_call(R"(\bs\.(\w+))");
        std::set<std::string> met;
        for (auto call = std::sregex_iterator(members.begin(), members.end(), in_call);
             call != std::sregex_iterator(); ++call) {
            name = (*call)[1];
            missing.erase(of + "." + name + (met.insert(name).second ? "" : "="));
        }
    });
    for (const std::string& member : missing) ADD_FAILURE() << member << " has no row";
}

}  // namespace
}  // namespace tavolin
