// Names in arrays, for hosts that fill lists.
#include "tavolin/engine/report.h"

namespace tavolin {
namespace {

using Names = std::vector<std::string>;

// What name(element) gives for each element of a set, and the empty text that hosts expect behind.
template <class Set, class Name>
Names NamesIn(const Set& set, Name name) {
    Names names;
    names.reserve(static_cast<std::size_t>(set.Count()) + 1);
    for (const auto& element : set.NewEnum()) names.push_back(name(*element));
    names.emplace_back();
    return names;
}

}  // namespace

// What body(database) gives for the database at a path, or for the open one without a path.
template <class Body>
Names CVLDBEngine::Catalog(const char* source, std::string_view path, Body&& body) {
    return Report(source, [&] {
        const auto other = path.empty() ? nullptr : GetDB(path);
        const CVLDBEngine& engine = other ? *other : *this;
        engine.AskOpen(source);
        return body(*engine.database_);
    });
}

Names CVLDBEngine::GetArrayOwners() {
    return Report("CVLDBEngine:GetArrayOwners Method", [&] {
        return NamesIn(*owners_, [](const CVLDBOwner& owner) { return owner.Key(); });
    });
}

Names CVLDBEngine::GetArrayOwnedDBs(std::string_view forOwnerName) {
    static constexpr const char* kSource = "CVLDBEngine:GetArrayOwnedDBs Method";
    return Report(kSource, [&] {
        if (forOwnerName.empty()) AskLogOn(kSource);
        const std::string owner =
            forOwnerName.empty() ? authority_->user->UserName() : std::string(forOwnerName);
        return NamesIn(*owners_->Item(owner)->CVLOwnerDBSet(),
                       [](const CVLOwnerDB& database) { return database.Key(); });
    });
}

Names CVLDBEngine::GetArrayTables(std::string_view forDBPathName) {
    return Catalog(
        "CVLDBEngine:GetArrayTables Method", forDBPathName, [](const Database& database) {
            return NamesIn(*database.tables, [](const CVLTable& table) { return table.Key(); });
        });
}

Names CVLDBEngine::GetArrayFields(std::string_view forTableName) {
    return Catalog("CVLDBEngine:GetArrayFields Method", {}, [&](const Database& database) {
        const auto table = database.tables->Item(forTableName);
        Names labels;
        for (int field = 0; field < kFieldCount; ++field)
            labels.push_back(table->FieldLabel(field));
        return labels;
    });
}

// Without an object for each record.
Names CVLDBEngine::GetArrayRecords(std::string_view forTableName) {
    return Catalog("CVLDBEngine:GetArrayRecords Method", {}, [&](const Database& database) {
        const auto records = database.tables->Item(forTableName)->CVLRecordSet()->Collection();
        Names keys;
        keys.reserve(static_cast<std::size_t>(records->Count()) + 1);
        records->ForEach(
            [&](RecordHandle record) { keys.push_back(records->arena().Key(record)); });
        keys.emplace_back();
        return keys;
    });
}

Names CVLDBEngine::GetArrayAttachments(std::string_view forTableName,
                                       std::string_view forRecordKey) {
    return Catalog("CVLDBEngine:GetArrayRecords Method", {}, [&](const Database& database) {
        const auto record = database.tables->Item(forTableName)->CVLRecordSet()->Item(forRecordKey);
        // The record's own member would make a set where there is none.
        const auto attachments = record->arena()->Attachments(record->handle(), false);
        if (!attachments) return Names(1);
        return NamesIn(*attachments, [](const CVLAttachment& attachment) {
            return attachment.attachmentPathName();
        });
    });
}

Names CVLDBEngine::GetArrayUsers(std::string_view forDBPathName) {
    return Catalog("CVLDBEngine:GetArrayUsers Method", forDBPathName, [](const Database& database) {
        return NamesIn(*database.users, [](const CVLDBUser& user) { return user.UserName(); });
    });
}

}  // namespace tavolin
