#include "tavolin/model/owner.h"

#include "tavolin/errors/trap.h"
#include "tavolin/model/owner_db_set.h"
#include "tavolin/persist/property_bag.h"

namespace tavolin {

CVLDBOwner::CVLDBOwner() : databases_(std::make_shared<tavolin::CVLOwnerDBSet>()) {}

void CVLDBOwner::CVLOwnerDBSet(std::shared_ptr<tavolin::CVLOwnerDBSet> databases) {
    Trap("CVLOwner:CVLOwnerDBSet Property Set", [&] {
        if (!databases) RaiseRunTime(kObjectNotSet);
        databases_ = std::move(databases);
        OnOwnerDBSetChange.Fire();
    });
}

void CVLDBOwner::WriteProperties(PropertyBagWriter& bag) const {
    bag.Write("ok", key_);
    bag.WriteObject("od", [&] { databases_->WriteProperties(bag); });
}

void CVLDBOwner::ReadProperties(PropertyBagReader& bag) {
    key_ = bag.ReadText("ok");
    bag.ReadObject("od", [&] { databases_->ReadProperties(bag); });
}

}  // namespace tavolin
