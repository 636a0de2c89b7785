#include "tavolin/salvage/layout.h"

#include "tavolin/model/types.h"

namespace tavolin {
namespace {

constexpr PropertyType kText = PropertyType::kText;
constexpr PropertyType kBool = PropertyType::kFalse;
constexpr PropertyType kInt = PropertyType::kInt;
constexpr PropertyType kByte = PropertyType::kByte;
constexpr PropertyType kObject = PropertyType::kObject;
constexpr PropertyType kSeries = PropertyType::kSeries;

const Layout& AttachmentSetLayout() {
    static const Layout attachment{"attachment",
                                   {{"k", kText, "its key"},
                                    {"nk", kInt, "its number"},
                                    {"a", kText, "its path"},
                                    {"t", kInt, "its type"}},
                                   "k"};
    static const Layout set{"attachments",
                            {{"AttCount", kInt, "the number of attachments"},
                             {"Attachment", kSeries, "the attachments", &attachment}},
                            {}};
    return set;
}

const Layout& NoteSetLayout() {
    static const Layout note{
        "note",
        {{"k", kText, "its date"}, {"nk", kInt, "its number"}, {"n", kText, "its text"}},
        {}};
    static const Layout set{
        "notes",
        {{"NoteCount", kInt, "the number of notes"}, {"Note", kSeries, "the notes", &note}},
        {}};
    return set;
}

const Layout& TableSetLayout() {
    static const Layout set{"tables",
                            {{"ListsCount", kInt, "the number of tables"},
                             {"List", kSeries, "the tables", &TableLayout()}},
                            {}};
    return set;
}

void AddSwitches(std::vector<Slot>& slots, char letter, int first, int last) {
    for (int i = first; i <= last; ++i) {
        slots.push_back({letter + std::to_string(i), kBool, "a switch of the log"});
    }
}

}  // namespace

const Layout& RecordSetLayout() {
    static const Layout extra{"what is kept beside record",
                              {{"i", kInt, "the record's position"},
                               {"k", kText, "its own key", nullptr, true},
                               {"att", kObject, "its attachments", &AttachmentSetLayout(), true}},
                              {}};
    static const Layout set{"records",
                            {{"RecordsCount", kInt, "the number of records"},
                             {"Record", PropertyType::kBlocks, "the records"},
                             {"RecordExtra", kSeries, "what is kept beside records", &extra}},
                            {}};
    return set;
}

const Layout& TableLayout() {
    static const Layout table = [] {
        std::vector<Slot> slots = {{"k", kText, "its name"}, {"nk", kByte, "its type"}};
        for (int i = 0; i < 4; ++i) {
            slots.push_back({"pkt" + std::to_string(i), kByte, "a part of its key"});
        }
        for (int i = 0; i < kFieldCount; ++i) {
            const std::string n = std::to_string(i);
            slots.push_back({"f" + n, kText, "the label of field " + n});
            slots.push_back({"fn" + n, kText, "the name of field " + n});
            slots.push_back({"fk" + n, kText, "a table that links to it"});
            slots.push_back({"fka" + n, kBool, "whether field " + n + " is a link"});
            slots.push_back({"LK" + n, kText, "where field " + n + " leads"});
        }
        slots.push_back({"rl", kObject, "its records", &RecordSetLayout()});
        return Layout{"table", std::move(slots), "k"};
    }();
    return table;
}

const Layout& UserLayout() {
    static const Layout user{"user",
                             {{"k", kText, "the key"},
                              {"un", kText, "the name"},
                              {"r", kBool, "the right to read"},
                              {"w", kBool, "the right to write"},
                              {"d", kBool, "the right to delete"},
                              {"f", kText, "the password"},
                              {"s", kBool, "whether the user is disabled"},
                              {"uf", kText, "the full name"},
                              {"ud", kText, "the description"},
                              {"objn", kObject, "the notes", &NoteSetLayout()}},
                             "un"};
    return user;
}

const Layout& UserSetLayout() {
    static const Layout set{
        "users",
        {{"UserCount", kInt, "the number of users"}, {"User", kSeries, "the users", &UserLayout()}},
        {}};
    return set;
}

const Layout& DatabaseLayout() {
    static const Layout database = [] {
        std::vector<Slot> slots = {{"n", kText, "the name of the database"},
                                   {"p", kText, "its folder"},
                                   {"o", kText, "its owner's name"},
                                   {"objgl", kObject, "the tables", &TableSetLayout()}};
        AddSwitches(slots, 'v', 0, 7);
        slots.push_back({"m", kText, "the password of the database"});
        slots.push_back({"objusr", kObject, "the users", &UserSetLayout()});
        slots.push_back({"dd", PropertyType::kDate, "the date of creation"});
        AddSwitches(slots, 'd', 1, 6);
        return Layout{"database", std::move(slots), {}};
    }();
    return database;
}

const Layout& RegistryLayout() {
    static const Layout database{
        "database",
        {{"dk", kText, "its path"}, {"dn", kText, "its name"}, {"dd", kText, "its folder"}},
        "dk"};
    static const Layout databases{
        "databases",
        {{"DBCnt", kInt, "the number of databases"}, {"DB", kSeries, "the databases", &database}},
        {}};
    static const Layout owner{
        "owner", {{"ok", kText, "the name"}, {"od", kObject, "the databases", &databases}}, "ok"};
    static const Layout owners{
        "owners",
        {{"OwCnt", kInt, "the number of owners"}, {"Owner", kSeries, "the owners", &owner}},
        {}};
    static const Layout registry{"registry", {{"objner", kObject, "the owners", &owners}}, {}};
    return registry;
}

}  // namespace tavolin
