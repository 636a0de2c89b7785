#include "tavolin/model/owner_db.h"

#include "tavolin/errors/trap.h"
#include "tavolin/persist/property_bag.h"

namespace tavolin {

void CVLOwnerDB::DBName(std::string_view name) {
    Trap("CVLOwnerDB:DBName Property Let", [&] {
        name_ = name;
        OnDBNameChange.Fire(name_);
    });
}

void CVLOwnerDB::DBDir(std::string_view directory) {
    Trap("CVLOwnerDB:DBDir Property Let", [&] {
        directory_ = directory;
        OnDBDirChange.Fire(directory_);
    });
}

void CVLOwnerDB::WriteProperties(PropertyBagWriter& bag) const {
    bag.Write("dk", key_);
    bag.Write("dn", name_);
    bag.Write("dd", directory_);
}

void CVLOwnerDB::ReadProperties(PropertyBagReader& bag) {
    key_ = bag.ReadText("dk");
    name_ = bag.ReadText("dn");
    directory_ = bag.ReadText("dd");
}

}  // namespace tavolin
