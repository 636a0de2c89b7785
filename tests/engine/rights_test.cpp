// Who may do what: every public member of every class, called by every kind of user and in every
// state that objects can get into. docs/reliability.md tells the same in words.
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "tavolin/persist/paths.h"
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

using Num = CVLErrorNum;
namespace fs = std::filesystem;

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
        std::string all;
        const auto add = [&](const auto& text) { all.append(text).append("\n"); };
        const auto state = [&](const auto& set) {
            for (const std::uint8_t byte : set.ObjectState()) all += static_cast<char>(byte);
        };
        for (const auto& set : {tables, engine ? engine->CVLTableSet() : tables}) {
            for (const auto& each : set->NewEnum()) {
                add(each->Key() + std::to_string(each->SpecificType()));
                for (const std::uint8_t part : each->PrimaryKey().Parts()) all += char(part);
                for (int i = 0; i < kFieldCount; ++i) {
                    add(each->FieldName(i) + "/" + each->FieldLabel(i) + "/" +
                        each->LinkedTable(i) + "/" + each->ReferencedTable(i));
                }
                state(*each->CVLRecordSet());
            }
        }
        state(*users);
        state(*notes);
        state(*attachments);
        if (engine) {
            state(*engine->CVLDBUserSet());
            add(engine->DBName() + engine->DBPath() + engine->DBOwner());
            all += engine->LoggedActivities() == LogType() ? '0' : '1';
        }
        std::set<std::string> files;
        for (const auto& entry : fs::directory_iterator(NativePath(folder)))
            files.insert(entry.path().filename().string());
        for (const std::string& name : files) add(name);
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
    const char* type;
    const char* members;   // several when all of them have the same outcomes; "=" is assignment
    const char* outcomes;  // one for each column
    void (*call)(World&);
    // Asks who is logged on, whatever the permission state is.
    bool by_person = false;
};

using W = World;
const PrimaryKeyType kKey = {0, 99, 99, 99};
const FieldTexts kLabels = {"ID"};
const Date kThatDay = {1};

// Where one refusal ends a row, each member that refuses has a row of its own.
const MemberRow kRows[] = {
    {"CVLDBEngine", "LogedOnUser LogedOnUser=", kNone,
     [](W& w) { w.engine->LogedOnUser(w.engine->LogedOnUser()); }},
    {"CVLDBEngine", "DBName DBName=", kNone, [](W& w) { w.engine->DBName(w.engine->DBName()); }},
    {"CVLDBEngine", "DBPath DBPath=", kNone, [](W& w) { w.engine->DBPath(w.engine->DBPath()); }},
    {"CVLDBEngine", "DBOwner DBCreationDate LoggedActivities LogReport TransactionStarted", kNone,
     [](W& w) {
         w.engine->DBOwner(), w.engine->DBCreationDate(), w.engine->LoggedActivities();
         w.engine->LogReport(), w.engine->TransactionStarted();
     }},
    {"CVLDBEngine", "CVLTableSet CVLTableSet=", kNone,
     [](W& w) { w.engine->CVLTableSet(w.engine->CVLTableSet()); }},
    {"CVLDBEngine", "CVLDBUserSet CVLDBUserSet= CVLDBOwnerSet", kNone,
     [](W& w) { w.engine->CVLDBUserSet(w.engine->CVLDBUserSet()), w.engine->CVLDBOwnerSet(); }},
    {"CVLDBEngine", "LogOn LogOnAsUser", kNone,
     [](W& w) { w.engine->LogOn("any", "any"), w.engine->LogOnAsUser(w.user); }},
    {"CVLDBEngine", "LogedOnIsOwner", kLogOn, [](W& w) { w.engine->LogedOnIsOwner(w.user); }},
    {"CVLDBEngine", "PasswordCorrect", kLogOn, [](W& w) { w.engine->PasswordCorrect("x"); }},
    {"CVLDBEngine", "UserExists", kLogOn, [](W& w) { w.engine->UserExists("x"); }},
    {"CVLDBEngine", "GetUser", kLogOn, [](W& w) { w.engine->GetUser("reader", "word"); }},
    {"CVLDBEngine", "ChangePassword", ".kkkkkkn", [](W& w) { w.engine->ChangePassword("x", "y"); },
     true},
    {"CVLDBEngine", "ChangePassword", kLogOn, [](W& w) { w.engine->ChangePassword("open", "y"); }},
    {"CVLDBEngine", "CreateNewUser", ".oooooon",
     [](W& w) { w.engine->CreateNewUser("x", "y", true, true, true); }},
    {"CVLDBEngine", "DBLegalUser", ".....xpn",
     [](W& w) { w.engine->DBLegalUser(w.engine->LogedOnUser(), Undefined); }, true},
    {"CVLDBEngine", "CreateNewDB", ".......c",
     [](W& w) { w.engine->CreateNewDB(w.New(), w.folder); }},
    {"CVLDBEngine", "LoadDB", kLogOn, [](W& w) { w.engine->LoadDB(w.file); }},
    {"CVLDBEngine", "GetDB", kLogOn, [](W& w) { w.engine->GetDB(w.file); }},
    {"CVLDBEngine", "SaveDB", "...wwwwn", [](W& w) { w.engine->SaveDB(); }},
    {"CVLDBEngine", "DeleteDB", ".oooooon", [](W& w) { w.engine->DeleteDB(w.file); }, true},
    {"CVLDBEngine", "ChangeOwner", ".hhhhhhc", [](W& w) { w.engine->ChangeOwner("x"); }, true},
    {"CVLDBEngine", "ChangeOwner", ".hhhhhhc",
     [](W& w) { w.engine->ChangeOwner("x", "", "", "", w.file); }, true},
    {"CVLDBEngine", "CreateNewPrimaryTable", kWrite,
     [](W& w) { w.engine->CreateNewPrimaryTable("x", {"ID"}); }},
    {"CVLDBEngine", "CreateNewLinkedTable", kReadWrite,
     [](W& w) { w.engine->CreateNewLinkedTable("Items", 2, {"ID"}); }},
    {"CVLDBEngine", "LinkTables", kReadWrite,
     [](W& w) { w.engine->LinkTables("Items", 2, "KindItems"); }},
    {"CVLDBEngine", "UnlinkTables", kReadOwner,
     [](W& w) { w.engine->UnlinkTables("Items", "KindItems"); }},
    {"CVLDBEngine", "GetLinkedTable", kRead, [](W& w) { w.engine->GetLinkedTable("Items", 1); }},
    {"CVLDBEngine", "GetTable", kRead, [](W& w) { w.engine->GetTable("Items"); }},
    {"CVLDBEngine", "DeleteTable", kReadOwner, [](W& w) { w.engine->DeleteTable("Items"); }},
    {"CVLDBEngine", "DeleteTable", kReadOwner, [](W& w) { w.engine->DeleteTable("Free", false); }},
    {"CVLDBEngine", "GetRecordSet", kRead, [](W& w) { w.engine->GetRecordSet("Items"); }},
    {"CVLDBEngine", "GetRecord", kRead, [](W& w) { w.engine->GetRecord("Items", "1"); }},
    {"CVLDBEngine", "AddRecord", kReadWrite,
     [](W& w) { w.engine->AddRecord("Items", 1, {"9", "z"}); }},
    {"CVLDBEngine", "UpDateRecord", kReadWrite,
     [](W& w) { w.engine->UpDateRecord("Items", w.Present(), 1, {"1", "z"}); }},
    {"CVLDBEngine", "DeleteRecord", kReadDelete, [](W& w) { w.engine->DeleteRecord("Items", 1); }},
    {"CVLDBEngine", "Find", kNone, [](W& w) { w.engine->Find("1"); }},
    {"CVLDBEngine", "TransactionBegin TansactionAbort", kNone,
     [](W& w) { w.engine->TransactionBegin(), w.engine->TansactionAbort(); }},
    {"CVLDBEngine", "TransactionCommit", "...wwwwn",
     [](W& w) { w.engine->TransactionBegin(), w.engine->TransactionCommit(); }},
    {"CVLDBEngine", "LogDBActivities", kOwner, [](W& w) { w.engine->LogDBActivities(true); }},
    {"CVLDBEngine", "GetArrayOwners GetArrayOwnedDBs GetArrayTables GetArrayUsers", kNone,
     [](W& w) {
         w.engine->GetArrayOwnedDBs(w.engine->GetArrayOwners()[0]);
         w.engine->GetArrayTables(), w.engine->GetArrayUsers();
     }},
    {"CVLDBEngine", "GetArrayTables", kLogOn, [](W& w) { w.engine->GetArrayTables(w.file); }},
    {"CVLDBEngine", "GetArrayUsers", kLogOn, [](W& w) { w.engine->GetArrayUsers(w.file); }},
    {"CVLDBEngine", "GetArrayFields", kRead, [](W& w) { w.engine->GetArrayFields("Items"); }},
    {"CVLDBEngine", "GetArrayRecords", kRead, [](W& w) { w.engine->GetArrayRecords("Items"); }},
    {"CVLDBEngine", "GetArrayAttachments", kRead,
     [](W& w) { w.engine->GetArrayAttachments("Items", "1"); }},
    {"CVLDBEngine", "AddObserver NotifyObservers RemoveObserver ObserversCount", kNone,
     [](W& w) {
         w.engine->AddObserver(std::make_shared<IUpdater>(), "x"), w.engine->NotifyObservers();
         w.engine->RemoveObserver("x"), w.engine->ObserversCount();
     }},
    {"CVLDBEngine", "MakeItText", kRead, [](W& w) { w.engine->MakeItText(w.folder, w.New()); }},
    {"CVLDBEngine", "MakeItHTML", kRead, [](W& w) { w.engine->MakeItHTML(w.folder, "site"); }},
    {"CVLDBEngine", "MakeItMDB", kRead, [](W& w) { w.engine->MakeItMDB(w.folder, w.New()); }},

    {"CVLDBUserSet", "CanAdd Item Count NewEnum LastUser FirstUser PreviousUser NextUser", kNone,
     [](W& w) {
         w.users->CanAdd("x"), w.users->Item(1), w.users->Count(), w.users->NewEnum();
         w.users->LastUser(), w.users->FirstUser(), w.users->PreviousUser(2), w.users->NextUser(1);
     }},
    {"CVLDBUserSet", "PreviousUserIsAvailable NextUserIsAvailable FirstUserIsAvailable", kNone,
     [](W& w) {
         w.users->PreviousUserIsAvailable(1), w.users->NextUserIsAvailable(1);
         w.users->FirstUserIsAvailable();
     }},
    {"CVLDBUserSet", "ObjectState ObjectState=", kNone,
     [](W& w) { w.users->ObjectState(w.users->ObjectState()); }},
    {"CVLDBUserSet", "Add", kOwner, [](W& w) { w.users->Add("x", "y", true, true, true); }},
    {"CVLDBUserSet", "Update", kOwner, [](W& w) { w.users->Update("reader", {}, true); }},
    {"CVLDBUserSet", "Remove", kOwner, [](W& w) { w.users->Remove("writer"); }},
    {"CVLDBUser", "UserName UserFullName UserDescription UserDisabled Equals PasswordCorrect",
     kNone,
     [](W& w) {
         w.user->UserName(), w.user->UserFullName(), w.user->UserDescription();
         w.user->UserDisabled(), w.user->Equals(w.user), w.user->PasswordCorrect("x");
     }},
    {"CVLDBUser", "CanRead CanReadWrite CanDelete Key Key= CVLUserNoteSet CVLUserNoteSet=", kNone,
     [](W& w) {
         w.user->CanRead(), w.user->CanReadWrite(), w.user->CanDelete();
         w.user->Key(w.user->Key()), w.user->CVLUserNoteSet(w.user->CVLUserNoteSet());
     }},
    {"CVLDBUser", "ChangePassword", kNone, [](W& w) { w.user->ChangePassword("x", "word"); }},
    {"CVLDBUser", "UserName=", kOwner, [](W& w) { w.user->UserName("x"); }},
    {"CVLDBUser", "UserFullName=", kOwner, [](W& w) { w.user->UserFullName("x"); }},
    {"CVLDBUser", "UserDescription=", kOwner, [](W& w) { w.user->UserDescription("x"); }},
    {"CVLDBUser", "UserDisabled=", kOwner, [](W& w) { w.user->UserDisabled(true); }},
    {"CVLDBUser", "CanRead=", kOwner, [](W& w) { w.user->CanRead(false); }},
    {"CVLDBUser", "CanReadWrite=", kOwner, [](W& w) { w.user->CanReadWrite(true); }},
    {"CVLDBUser", "CanDelete=", kOwner, [](W& w) { w.user->CanDelete(true); }},

    {"CVLUserNoteSet", "CanAdd Count NewEnum PreviousNoteIsAvailable", kNone,
     [](W& w) {
         w.notes->CanAdd("x"), w.notes->Count(), w.notes->NewEnum();
         w.notes->PreviousNoteIsAvailable(1);
     }},
    {"CVLUserNoteSet", "NextNoteIsAvailable FirstNoteIsAvailable ObjectState ObjectState=", kNone,
     [](W& w) {
         w.notes->NextNoteIsAvailable(1), w.notes->FirstNoteIsAvailable();
         w.notes->ObjectState(w.notes->ObjectState());
     }},
    {"CVLUserNoteSet", "Add", ".wwwwwww", [](W& w) { w.notes->Add(kThatDay, 1, "x"); }},
    {"CVLUserNoteSet", "Update", ".wwwwwww", [](W& w) { w.notes->Update(1, "x"); }},
    {"CVLUserNoteSet", "Item", ".rrrrrrr", [](W& w) { w.notes->Item(1); }},
    {"CVLUserNoteSet", "Remove", ".ddddddd", [](W& w) { w.notes->Remove(1); }},
    {"CVLUserNoteSet", "LastNote", ".rrrrrrr", [](W& w) { w.notes->LastNote(); }},
    {"CVLUserNoteSet", "FirstNote", ".rrrrrrr", [](W& w) { w.notes->FirstNote(); }},
    {"CVLUserNoteSet", "PreviousNote", ".rrrrrrr", [](W& w) { w.notes->PreviousNote(2); }},
    {"CVLUserNoteSet", "NextNote", ".rrrrrrr", [](W& w) { w.notes->NextNote(1); }},
    {"CVLUserNote", "dateKey dateKey= nKey nKey= Note Note=", kNone,
     [](W& w) {
         w.note->dateKey = std::string(w.note->dateKey), w.note->nKey = int(w.note->nKey);
         w.note->Note(w.note->Note());
     }},

    {"CVLTableSet", "CanAdd Count NewEnum PrintToFile", kNone,
     [](W& w) {
         w.tables->CanAdd("x"), w.tables->Count(), w.tables->NewEnum();
         w.tables->PrintToFile("x", w.folder + "\\" + w.New());
     }},
    {"CVLTableSet", "PreviousTableIsAvailable NextTableIsAvailable FirstTableIsAvailable", kNone,
     [](W& w) {
         w.tables->PreviousTableIsAvailable(1), w.tables->NextTableIsAvailable(1);
         w.tables->FirstTableIsAvailable();
     }},
    {"CVLTableSet", "Add", kWrite, [](W& w) { w.tables->Add("x", isPrimaryTable); }},
    {"CVLTableSet", "Update", kWrite, [](W& w) { w.tables->Update("Free"); }},
    {"CVLTableSet", "Item", kRead, [](W& w) { w.tables->Item("Items"); }},
    {"CVLTableSet", "Remove", kOwner, [](W& w) { w.tables->Remove("Free"); }},
    {"CVLTableSet", "MakeItMDB", kRead, [](W& w) { w.tables->MakeItMDB(w.folder, w.New()); }},
    {"CVLTableSet", "MakeItText", kRead, [](W& w) { w.tables->MakeItText(); }},
    {"CVLTableSet", "MakeItHTML", kRead, [](W& w) { w.tables->MakeItHTML(w.folder, "site"); }},
    {"CVLTableSet", "LastTable", kRead, [](W& w) { w.tables->LastTable(); }},
    {"CVLTableSet", "FirstTable", kRead, [](W& w) { w.tables->FirstTable(); }},
    {"CVLTableSet", "PreviousTable", kRead, [](W& w) { w.tables->PreviousTable(2); }},
    {"CVLTableSet", "NextTable", kRead, [](W& w) { w.tables->NextTable(1); }},

    {"CVLTable", "Key Key= ReferencedTable ReferencedTable= LinkedTable LinkedTable=", kNone,
     [](W& w) {
         w.table->Key(w.table->Key());
         w.table->ReferencedTable(9, w.table->ReferencedTable(9));
         w.table->LinkedTable(9, w.table->LinkedTable(9));
     }},
    {"CVLTable", "IsReferenced NumberOfLinkedTables FieldIsForeignKey SpecificType Count CanAdd",
     kNone,
     [](W& w) {
         w.table->IsReferenced(), w.table->NumberOfLinkedTables(), w.table->FieldIsForeignKey(1);
         w.table->SpecificType(), w.table->Count(), w.table->CanAdd("x");
     }},
    {"CVLTable", "FieldLabel FieldLabel= FieldName FieldName= PrimaryKey PrimaryKey=", kNone,
     [](W& w) {
         w.table->FieldLabel(0, std::string(w.table->FieldLabel(0)));
         w.table->FieldName(0, std::string(w.table->FieldName(0)));
         w.table->PrimaryKey(w.table->PrimaryKey());
     }},
    {"CVLTable", "CVLRecordSet CVLRecordSet= SetPrimaryKeyFields PrintToFile", kNone,
     [](W& w) {
         w.table->CVLRecordSet(w.table->CVLRecordSet()), w.table->SetPrimaryKeyFields(0);
         w.table->PrintToFile("x", w.folder + "\\" + w.New());
     }},
    {"CVLTable", "Add", kWrite, [](W& w) { w.table->Add(w.tables, 1, {"9", "z"}); }},
    {"CVLTable", "Update", kWrite, [](W& w) { w.table->Update(w.tables, w.record, {"1", "z"}); }},
    {"CVLTable", "Remove", kReadDelete, [](W& w) { w.table->Remove("1"); }},
    {"CVLTable", "Unlink", kOwner, [](W& w) { w.table->Unlink(w.linked); }},
    {"CVLTable", "Link", kWrite, [](W& w) { w.table->Link(2, w.linked); }},
    {"CVLTable", "GetRecord", kRead, [](W& w) { w.table->GetRecord("1"); }},
    {"CVLTable", "AttachToRecord", kReadWrite, [](W& w) { w.table->AttachToRecord("1", "x"); }},
    {"CVLTable", "AttachToRecord", kWrite, [](W& w) { w.table->AttachToRecord(w.record, "x"); }},
    {"CVLTable", "Find", kNone, [](W& w) { w.table->Find("1"); }},
    {"CVLTable", "GetRecord", kRead, [](W& w) { w.table->Find("1")->GetRecord(1); }},
    {"CVLTable", "Add", kWrite, [](W& w) { w.table->Find("1")->Add(w.tables, 1, {"9"}); }},
    {"CVLTable", "Sort", kWrite, [](W& w) { w.table->Sort(1); }},
    {"CVLTable", "MakeItText", kRead, [](W& w) { w.table->MakeItText(); }},
    {"CVLTable", "MakeItHTML", kRead, [](W& w) { w.table->MakeItHTML("", ""); }},
    {"CVLTable", "MakeItMDB", kRead, [](W& w) { w.table->MakeItMDB(w.folder, w.New()); }},
    {"CVLTable", "FreeFromInOutLinks", kOwner, [](W& w) { w.table->FreeFromInOutLinks(); }},
    {"CVLTable", "DeleteLinks", kOwner, [](W& w) { w.table->DeleteLinks(w.tables); }},

    {"CVLRecordSet", "CanAdd Count NewEnum ObjectState ObjectState= PrintToFile", kNone,
     [](W& w) {
         w.records->CanAdd("x"), w.records->Count(), w.records->NewEnum();
         w.records->ObjectState(w.records->ObjectState());
         w.records->PrintToFile("x", w.folder + "\\" + w.New());
     }},
    {"CVLRecordSet", "PreviousRecordIsAvailable NextRecordIsAvailable FirstRecordIsAvailable",
     kNone,
     [](W& w) {
         w.records->PreviousRecordIsAvailable(1), w.records->NextRecordIsAvailable(1);
         w.records->FirstRecordIsAvailable();
     }},
    {"CVLRecordSet", "Add", kWrite, [](W& w) { w.records->Add(kKey, 1, {"9"}); }},
    {"CVLRecordSet", "Update", kWrite, [](W& w) { w.records->Update(kKey, w.record, {"1"}); }},
    {"CVLRecordSet", "Item", kRead, [](W& w) { w.records->Item("1"); }},
    {"CVLRecordSet", "Remove", kDelete, [](W& w) { w.records->Remove("1"); }},
    {"CVLRecordSet", "Remove", kDelete,
     [](W& w) { w.table->Find("1")->CVLRecordSet()->Remove(1); }},
    {"CVLRecordSet", "AttachToRecord", kWrite,
     [](W& w) { w.records->AttachToRecord(w.record, 1, "x", aPicture); }},
    {"CVLRecordSet", "MakeItMDB", kRead,
     [](W& w) { w.records->MakeItMDB(w.folder, w.New(), "x", kLabels); }},
    {"CVLRecordSet", "MakeItText", kRead, [](W& w) { w.records->MakeItText(kLabels); }},
    {"CVLRecordSet", "MakeItHTML", kRead,
     [](W& w) { w.records->MakeItHTML("", "", w.table, kLabels); }},
    {"CVLRecordSet", "LastRecord", kRead, [](W& w) { w.records->LastRecord(); }},
    {"CVLRecordSet", "FirstRecord", kRead, [](W& w) { w.records->FirstRecord(); }},
    {"CVLRecordSet", "PreviousRecord", kRead, [](W& w) { w.records->PreviousRecord(2); }},
    {"CVLRecordSet", "NextRecord", kRead, [](W& w) { w.records->NextRecord(1); }},
    {"CVLRecordSet", "Sort", kWrite, [](W& w) { w.records->Sort(1); }},
    {"CVLRecord", "Key Key= nKey nKey= CVLAttachmentSet CVLAttachmentSet= prop prop=", kNone,
     [](W& w) {
         w.record->Key(w.record->Key()), w.record->nKey(w.record->nKey());
         w.record->CVLAttachmentSet(w.record->CVLAttachmentSet());
         w.record->prop(2, w.record->prop(2));
     }},
    {"CVLRecord", "Attach", kWrite, [](W& w) { w.record->Attach(1, "x", aPicture); }},

    {"CVLAttachmentSet", "Count CanAdd NewEnum ObjectState ObjectState=", kNone,
     [](W& w) {
         w.attachments->Count(), w.attachments->CanAdd("x"), w.attachments->NewEnum();
         w.attachments->ObjectState(w.attachments->ObjectState());
     }},
    {"CVLAttachmentSet", "PreviousAttachmentIsAvailable NextAttachmentIsAvailable", kNone,
     [](W& w) {
         w.attachments->PreviousAttachmentIsAvailable(1);
         w.attachments->NextAttachmentIsAvailable(1);
     }},
    {"CVLAttachmentSet", "FirstAttachmentIsAvailable", kNone,
     [](W& w) { w.attachments->FirstAttachmentIsAvailable(); }},
    {"CVLAttachmentSet", "Add", kWrite, [](W& w) { w.attachments->Add("x", 1, "x", aPicture); }},
    {"CVLAttachmentSet", "Update", kWrite, [](W& w) { w.attachments->Update(1, "x", aPicture); }},
    {"CVLAttachmentSet", "Item", kRead, [](W& w) { w.attachments->Item(1); }},
    {"CVLAttachmentSet", "Remove", kDelete, [](W& w) { w.attachments->Remove(1); }},
    {"CVLAttachmentSet", "LastAttachment", kRead, [](W& w) { w.attachments->LastAttachment(); }},
    {"CVLAttachmentSet", "FirstAttachment", kRead, [](W& w) { w.attachments->FirstAttachment(); }},
    {"CVLAttachmentSet", "PreviousAttachment", kRead,
     [](W& w) { w.attachments->PreviousAttachment(2); }},
    {"CVLAttachmentSet", "NextAttachment", kRead, [](W& w) { w.attachments->NextAttachment(1); }},
    {"CVLAttachment", "Key Key= nKey nKey= SpecificType SpecificType=", kNone,
     [](W& w) {
         w.attachment->Key(std::string(w.attachment->Key()));
         w.attachment->nKey(w.attachment->nKey());
         w.attachment->SpecificType(w.attachment->SpecificType());
     }},
    {"CVLAttachment", "attachmentPathName attachmentPathName=", kNone,
     [](W& w) { w.attachment->attachmentPathName(std::string(w.attachment->attachmentPathName())); }},

    {"CVLDBOwnerSet", "CanAdd Add Item Count Remove NewEnum Refresh", kNone,
     [](W& w) {
         w.owners->CanAdd("x"), w.owners->Add("x"), w.owners->Item("x"), w.owners->Count();
         w.owners->Remove("x"), w.owners->NewEnum(), w.owners->Refresh();
     }},
    {"CVLDBOwner", "Key Key= CVLOwnerDBSet CVLOwnerDBSet=", kNone,
     [](W& w) {
         const auto owner = w.owners->Item(1);
         owner->Key(std::string(owner->Key())), owner->CVLOwnerDBSet(owner->CVLOwnerDBSet());
     }},
    {"CVLOwnerDBSet", "CanAdd Add Item Count Remove NewEnum", kNone,
     [](W& w) {
         w.databases->CanAdd("x"), w.databases->Add("x", "y"), w.databases->Item(1);
         w.databases->Count(), w.databases->Remove("y\\x"), w.databases->NewEnum();
     }},
    {"CVLOwnerDB", "Key Key= DBName DBName= DBDir DBDir=", kNone,
     [](W& w) {
         const auto database = w.databases->Item(1);
         database->Key(std::string(database->Key()));
         database->DBName(std::string(database->DBName()));
         database->DBDir(std::string(database->DBDir()));
     }},
};

// The sources that are not the member's name and its kind.
const std::map<std::string, const char*> kSources = {
    {"CVLDBEngine.DeleteRecord", "RemoveRecord Method"},
    {"CVLDBEngine.GetArrayAttachments", "GetArrayRecords Method"},
    {"CVLDBEngine.LogDBActivities", "LogDBActivities"},
    {"CVLDBUser.UserName=", "UserName Property let"},
    {"CVLDBUser.UserFullName=", "UserFullName Property let"},
    {"CVLDBUser.UserDescription=", "UserDescription Property let"},
    {"CVLTableSet.Update", "UpDate Method"},
    {"CVLTable.Update", "UpDate Method"},
    {"CVLTable.AttachToRecord", "attachToRecord Method"},
    {"CVLRecordSet.Update", "UpDate Method"},
    {"CVLAttachmentSet.Update", "UpDate Method"},
    {"CVLAttachmentSet.Item", "Remove Method"},
};

std::string SourceOf(const MemberRow& row) {
    std::string member = row.members;
    const auto known = kSources.find(std::string(row.type) + "." + member);
    if (known != kSources.end()) {
        member = known->second;
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
    return std::string(row.type) + ":" + member;
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

std::string TextOf(const MemberRow& row, char outcome, const std::string& user) {
    const std::string type = row.type, member = type + "." + row.members;
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

class RightsTest : public testing::Test {
  protected:
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
    static void Expect(char expected, const MemberRow& row, World& world,
                       const std::string& where) {
        SCOPED_TRACE(std::string(row.type) + "." + row.members + ", " + where);
        const std::string before = expected == '.' ? std::string() : world.Everything();
        const auto user = world.engine ? world.engine->LogedOnUser() : nullptr;
        Error raised(0);
        try {
            row.call(world);
        } catch (const Error& error) {
            raised = error;
        }
        EXPECT_EQ(Outcome(raised.number()), expected) << raised.description();
        if (expected == '.') return;
        EXPECT_TRUE(world.Everything() == before);
        EXPECT_EQ(raised.source(), SourceOf(row));
        EXPECT_EQ(raised.description(), TextOf(row, expected, user ? user->UserName() : "---"));
    }

    ScopedLibraryFolder library_;
    std::string folder_;
    std::map<char, std::string> paths_;
    std::map<std::string, std::string> saved_;
};

TEST_F(RightsTest, EveryMemberForEveryKindOfUser) {
    for (const MemberRow& row : kRows) {
        for (const char column : kColumns) {
            World world = MakeWorld();
            world.Act(column);
            world.Take();
            Expect(row.outcomes[kColumns.find(column)], row, world, std::string(1, column));
        }
    }
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
     [](W& w) { w.Take(), w.engine->TransactionBegin(), w.engine->TansactionAbort(); }},
    {"after a roll-back", 'O', 'O',
     [](W& w) { w.engine->TransactionBegin(), w.engine->TansactionAbort(), w.Take(); }},
    {"objects from before a loading", 'S', 'O', [](W& w) { w.Take(), w.engine->LoadDB(w.file); }},
    {"loaded again", 'O', 'O', [](W& w) { w.engine->LoadDB(w.file), w.Take(); }},
    {"a loading refused", 'O', 'O',
     [](W& w) { w.Take(), ErrorNumber([&] { w.engine->LoadDB(w.folder); }); }},
    {"objects from before another's database", 'S', 'R',
     [](W& w) { w.Take(), w.file = w.folder + "\\bob.cdb", w.engine->LoadDB(w.file); }},
    {"another's database", 'R', 'R',
     [](W& w) { w.file = w.folder + "\\bob.cdb", w.engine->LoadDB(w.file), w.Take(); }},
    {"the engine that GetDB makes", 'S', 'O',
     [](W& w) {
         w.another = w.engine;
         w.engine = w.engine->GetDB(w.file), w.Take();
     }},
    {"after GetDB", 'O', 'O', [](W& w) { w.Take(), w.another = w.engine->GetDB(w.file); }},
    {"beside a newer engine", 'O', 'O',
     [](W& w) { w.Take(), w.another = std::make_shared<CVLDBEngine>(); }},
    {"handed over", 'D', 'D', [](W& w) { w.Take(), w.HandOver(); }},
    {"the new owner", 'O', 'O',
     [](W& w) {
         w.Take(), w.HandOver();
         w.engine->LogOn("reader", "word");
         w.engine->DBLegalUser(w.engine->LogedOnUser(), Undefined);
     }},
    {"logged on again, not yet let in", 'S', 'O',
     [](W& w) { w.Take(), w.engine->LogOn("ann", "secret"); }},
    {"put in place, not yet let in", 'S', 'O',
     [](W& w) { w.Take(), w.engine->LogedOnUser(w.engine->LogedOnUser()); }},
    {"after the refusal of another", 'S', 'O',
     [](W& w) {
         w.Take();
         const auto ann = w.engine->LogedOnUser();
         w.engine->LogOn("eve", "wrong");
         const auto eve = w.engine->LogedOnUser();
         w.engine->LogedOnUser(ann), w.engine->DBLegalUser(ann, Ownership);
         ErrorNumber([&] { w.engine->DBLegalUser(eve, ToRead); });
     }},
    {"the engine gone", 'S', '-', [](W& w) { w.Take(), w.engine = nullptr; }},
};

TEST_F(RightsTest, EveryMemberAfterEveryTurn) {
    for (const Turn& turn : kTurns) {
        for (const MemberRow& row : kRows) {
            World world = MakeWorld();
            world.Act('O');
            world.for_person = row.by_person;
            turn.happens(world);
            const bool of_engine = row.type == std::string("CVLDBEngine");
            if (of_engine && !world.engine) continue;
            // Objects that are not the engine's any more say nothing about its members.
            char column = row.by_person ? turn.person : turn.state;
            if (of_engine && !row.by_person && world.tables != world.engine->CVLTableSet())
                column = turn.person;
            Expect(row.outcomes[kColumns.find(column)], row, world, turn.what);
        }
    }
}

// The published boundary lists all members.
TEST(RightsTableTest, HasARowForEveryMember) {
    std::set<std::string> missing, told;
    std::ifstream boundary(TAVOLIN_SOURCE_DIR "/tests/com/boundary.txt");
    std::string type, number, name;
    for (std::string line; std::getline(boundary, line);) {
        std::istringstream words(line);
        words >> type >> number >> name;
        if (!type.starts_with("_CVL") || type == "_CVLErrorNum" || number.starts_with("{"))
            continue;
        std::string suffix;
        if (name == "put" || name == "set") suffix = "=";
        if (name == "put" || name == "set" || name == "get") words >> name;
        missing.insert(type.substr(1) + "." + name.substr(0, name.find('(')) + suffix);
    }
    ASSERT_GT(missing.size(), 200u);
    const std::set<std::string> members = missing;
    for (const MemberRow& row : kRows) {
        ASSERT_EQ(std::string_view(row.outcomes).size(), kColumns.size()) << row.members;
        std::istringstream words(row.members);
        while (words >> name) {
            const std::string member = std::string(row.type) + "." + name;
            EXPECT_TRUE(members.contains(member)) << member;
            missing.erase(member);
        }
    }
    for (const std::string& member : missing) ADD_FAILURE() << member << " has no row";
}

}  // namespace
}  // namespace tavolin
