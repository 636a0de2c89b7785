#include "tavolin/model/owner_db_set.h"

#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/stored_collection.h"
#include "tavolin/persist/paths.h"

namespace tavolin {
namespace {

[[noreturn]] void RaiseOwnerDBNotFound(const char* source) {
    Raise(CVLErrorNum::GetDBNotFoundError(), source, Message("DataBase Not Found!"));
}

}  // namespace

bool CVLOwnerDBSet::CanAdd(IndexKey Key) const {
    return Trap("CVLOwnerDBSet:CanAdd Method", [&] { return databases_->Find(Key) == nullptr; });
}

std::shared_ptr<CVLOwnerDB> CVLOwnerDBSet::Add(std::string_view DBName, std::string_view DBDir) {
    static constexpr const char* kSource = "CVLOwnerDBSet:Add Method";
    return Trap(kSource, [&] {
        auto database = std::make_shared<CVLOwnerDB>();
        database->Key(JoinPath(DBDir, DBName));
        database->DBName(DBName);
        database->DBDir(DBDir);
        if (databases_->Contains(database->Key())) {
            Raise(CVLErrorNum::GetDBAddError(), kSource,
                  Message("The DataBase That Is Being Created Already Exists!"));
        }
        databases_->Add(database->Key(), database);
        OnDBAdd.Fire(database);
        return database;
    });
}

std::shared_ptr<CVLOwnerDB> CVLOwnerDBSet::Item(IndexKey vntIndexKey) const {
    static constexpr const char* kSource = "CVLOwnerDBSet:Item Get Property";
    return Trap(kSource, [&] {
        auto database = databases_->Find(vntIndexKey);
        if (!database) RaiseOwnerDBNotFound(kSource);
        return database;
    });
}

void CVLOwnerDBSet::Remove(IndexKey vntIndexKey) {
    static constexpr const char* kSource = "CVLOwnerDBSet:Remove Method";
    Trap(kSource, [&] {
        if (!databases_->Find(vntIndexKey)) RaiseOwnerDBNotFound(kSource);
        OnDBRemove.Fire(databases_->Remove(vntIndexKey));
    });
}

void CVLOwnerDBSet::Remove(const CVLOwnerDB& database) {
    const std::int32_t position = databases_->PositionOf(&database);
    if (position != 0) Remove(position);
}

void CVLOwnerDBSet::AddCopy(const CVLOwnerDB& database) {
    auto copy = std::make_shared<CVLOwnerDB>();
    copy->Key(database.Key());
    copy->DBName(database.DBName());
    copy->DBDir(database.DBDir());
    databases_->Add(database.Key(), std::move(copy));
}

void CVLOwnerDBSet::WriteProperties(PropertyBagWriter& bag) const {
    WriteCollection(bag, *databases_, "DBCnt", "DB");
}

void CVLOwnerDBSet::ReadProperties(PropertyBagReader& bag) {
    databases_ = ReadCollection<CVLOwnerDB>(
        bag, "DBCnt", "DB", [] { return std::make_shared<CVLOwnerDB>(); },
        [](const CVLOwnerDB& database) { return std::string_view(database.Key()); });
}

}  // namespace tavolin
