#include "tavolin/engine/database.h"

#include "tavolin/persist/property_bag.h"
#include "tavolin/persist/scrambler.h"

namespace tavolin {
namespace {

struct Switch {
    const char* key;
    bool LogType::*field;
};

// The keys are part of the file format: do not change.
constexpr Switch kFirstSwitches[] = {
    {"v0", &LogType::logErrors},        {"v1", &LogType::logDBLogOn},
    {"v2", &LogType::logOwnerChange},   {"v3", &LogType::logTableCreation},
    {"v4", &LogType::logTransactions},  {"v5", &LogType::logUserCreation},
    {"v6", &LogType::logTablesLinking}, {"v7", &LogType::logTableUnlinking},
};
constexpr Switch kSecondSwitches[] = {
    {"d1", &LogType::logLkTableCreation}, {"d2", &LogType::logTableDeletion},
    {"d3", &LogType::logLkTableDeletion}, {"d4", &LogType::logRecordAdd},
    {"d5", &LogType::logRecordUpDate},    {"d6", &LogType::logRecordDelete},
};

}  // namespace

void Database::WriteProperties(PropertyBagWriter& bag) const {
    // Nearly all of a state is records, so that it hardly ever has to move while it grows.
    std::size_t records = 0;
    for (const auto& table : tables->NewEnum()) records += table->CVLRecordSet()->StateSize();
    bag.Reserve(records);
    bag.Write("n", name);
    bag.Write("p", path);
    bag.Write("o", session->owner);
    bag.WriteObject("objgl", [&] { tables->WriteProperties(bag); });
    for (const Switch& each : kFirstSwitches) bag.Write(each.key, switches.*each.field);
    bag.Write("m", ScrambleText(password));
    bag.WriteObject("objusr", [&] { users->WriteProperties(bag); });
    bag.Write("dd", created);
    for (const Switch& each : kSecondSwitches) bag.Write(each.key, switches.*each.field);
}

void Database::ReadProperties(PropertyBagReader& bag) {
    session->owner = bag.ReadText("o");
    password = ScrambleText(bag.ReadText("m"));
    users = std::make_shared<CVLDBUserSet>(session);
    if (!bag.ReadObject("objusr", [&] { users->ReadProperties(bag); })) {
        bag.Refuse("objusr", "missing");
    }
    name = bag.ReadText("n");
    path = bag.ReadText("p");
    created = bag.ReadDate("dd");
    for (const Switch& each : kFirstSwitches) switches.*each.field = bag.ReadBool(each.key);
    for (const Switch& each : kSecondSwitches) switches.*each.field = bag.ReadBool(each.key);
    tables = std::make_shared<CVLTableSet>(session);
    if (!bag.ReadObject("objgl", [&] { tables->ReadProperties(bag); })) {
        bag.Refuse("objgl", "missing");
    }
}

}  // namespace tavolin
