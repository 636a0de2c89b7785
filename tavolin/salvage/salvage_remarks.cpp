// What an undamaged database may hold and hardly should.
#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tavolin/base/text.h"
#include "tavolin/salvage/salvage.h"

namespace tavolin {

struct SalvagedFile::Keys {
    std::unordered_set<std::string> all;  // folded
    std::size_t doubled = 0;
    const DamagedBag::Record* first_doubled = nullptr;
};

void SalvagedFile::LookAround() {
    std::unordered_set<std::string> names;
    std::vector<Keys> keys;
    for (const Table& table : tables_) keys.push_back(KeysOf(table));
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        const Table& table = tables_[i];
        const auto name = bag_->Text((*table.object)["k"]);
        if (!names.insert(Fold(name)).second) {
            Note(Finding::Kind::kRemark, table.object->at, table.title,
                 "another table has that name");
        }
        LookAtKeys(table, keys[i]);
        LookAtLinks(table, keys);
    }
    if (whole() && UserNamed(owner()) == nullptr) {
        Note(Finding::Kind::kRemark, root_["o"].at, "owner " + std::string(owner()),
             "is not among the users: nobody can act as the owner");
    }
}

SalvagedFile::Keys SalvagedFile::KeysOf(const Table& table) const {
    std::unordered_map<std::int32_t, std::string_view> own;
    for (const StoredObject& set : std::as_const(*table.object)["rl"].objects) {
        for (const StoredObject& extra : set["RecordExtra"].objects) {
            if (extra["k"].found) own[bag_->Int(extra["i"])] = bag_->Text(extra["k"]);
        }
    }
    Keys keys;
    for (const DamagedBag::Record& record : table.records) {
        const auto named = own.find(record.position);
        const std::string key =
            Fold(named != own.end() ? std::string(named->second) : record.image.Key());
        if (!keys.all.insert(key).second && keys.doubled++ == 0) keys.first_doubled = &record;
    }
    return keys;
}

void SalvagedFile::LookAtKeys(const Table& table, const Keys& keys) {
    if (keys.doubled == 0) return;
    const DamagedBag::Record& first = *keys.first_doubled;
    Note(Finding::Kind::kRemark, first.at, table.title,
         std::to_string(keys.doubled) +
             " of its records have a key that another one in front has; the "
             "first is record " +
             std::to_string(first.position) + " (key " + first.image.Key() + ")");
}

void SalvagedFile::LookAtLinks(const Table& table, std::span<const Keys> keys) {
    const StoredObject& object = *table.object;
    for (std::size_t field = 0; field < kFieldCount; ++field) {
        const std::string number = std::to_string(field);
        if (!object["fka" + number].flag) continue;
        const auto name = bag_->Text(object["LK" + number]);
        const auto target = std::find_if(tables_.begin(), tables_.end(), [&](const Table& other) {
            return EqualFold(bag_->Text((*other.object)["k"]), name);
        });
        const std::string where = table.title + ", field " + number;
        if (target == tables_.end()) {
            Note(Finding::Kind::kRemark, object["LK" + number].at, where,
                 "leads to the table " + std::string(name) + ", which is not there");
            continue;
        }
        const auto& known = keys[static_cast<std::size_t>(target - tables_.begin())].all;
        std::size_t missing = 0;
        const DamagedBag::Record* first = nullptr;
        for (const auto& record : table.records) {
            const std::string_view value = record.image.fields[field];
            if (value.empty() || known.contains(Fold(value))) continue;
            if (missing++ == 0) first = &record;
        }
        if (missing == 0) continue;
        Note(Finding::Kind::kRemark, first->at, where,
             std::to_string(missing) + " of its values are no key in the table " +
                 std::string(name) + "; the first is " + std::string(first->image.fields[field]) +
                 ", of record " + std::to_string(first->position));
    }
}

}  // namespace tavolin
