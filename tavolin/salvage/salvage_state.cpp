// What can be read of a damaged database, mended and written anew.
#include <algorithm>
#include <unordered_map>
#include <utility>

#include "tavolin/base/text.h"
#include "tavolin/engine/database.h"
#include "tavolin/persist/scrambler.h"
#include "tavolin/salvage/salvage.h"

namespace tavolin {

ByteBuffer SalvagedFile::State(const std::optional<NewOwner>& new_owner) {
    MendUsers(new_owner);
    MendTables();
    Sort();
    PropertyBagWriter writer;
    WriteObject(writer, root_);
    ByteBuffer state = std::move(writer).Finish();
    LoadStrictly(state.bytes());
    return state;
}

void SalvagedFile::MendUsers(const std::optional<NewOwner>& new_owner) {
    StoredItem& users = root_["objusr"];
    if (users.objects.empty()) {
        StoredObject& set = users.objects.emplace_back();
        set.layout = &UserSetLayout();
        set.items.resize(set.layout->slots.size());
    }
    auto& entries = users.objects[0]["User"].objects;
    std::size_t number = 0;
    for (StoredObject& user : entries) {
        ++number;
        if (!user["un"].found) user["un"].instead = "Recovered " + std::to_string(number);
        if (user["un"].found && user["f"].found && user["s"].found) continue;
        user["s"].flag = true;
        Note(Finding::Kind::kLoss, user.at, "user " + std::string(bag_->Text(user["un"])),
             "is disabled in the new database: his name, his password or whether he was disabled "
             "is lost");
    }
    if (new_owner) {
        auto known = std::find_if(entries.begin(), entries.end(), [&](StoredObject& user) {
            return EqualFold(bag_->Text(user["un"]), new_owner->name);
        });
        if (known == entries.end()) {
            known = entries.emplace(entries.end());
            known->layout = &UserLayout();
            known->items.resize(UserLayout().slots.size());
        }
        StoredObject& user = *known;
        user["k"].instead = user["un"].instead = new_owner->name;
        const bool knows =
            user["f"].found && EqualFold(ScrambleText(bag_->Text(user["f"])), new_owner->password);
        if (user["f"].found && !knows) {
            Note(Finding::Kind::kLoss, user.at, "user " + new_owner->name,
                 "has another password in the new database: that of whoever becomes its owner");
        }
        if (!knows) user["f"].instead = ScrambleText(new_owner->password);
        for (const char* right : {"r", "w", "d"}) user[right].flag = true;
        user["s"].flag = false;
        root_["o"].instead = new_owner->name;
    }
    if (!root_["m"].found) {
        // An empty one would let everybody read.
        const StoredObject* owner_entry = nullptr;
        for (const StoredObject& user : entries) {
            if (EqualFold(bag_->Text(user["un"]), owner())) owner_entry = &user;
        }
        if (owner_entry != nullptr) root_["m"].instead = bag_->Text((*owner_entry)["f"]);
        Note(Finding::Kind::kLoss, 0, "the password of the database",
             "is that of the owner in the new database");
    }
}

void SalvagedFile::MendTables() {
    const auto is_there = [&](std::string_view name) {
        return std::any_of(tables_.begin(), tables_.end(), [&](const Table& table) {
            return EqualFold(bag_->Text((*table.object)["k"]), name);
        });
    };
    for (Table& table : tables_) {
        StoredObject& object = *table.object;
        bool any_part = false;
        for (const char* part : {"pkt0", "pkt1", "pkt2", "pkt3"}) {
            const std::uint8_t field = bag_->Byte(object[part], kNoField);
            if (field >= kFieldCount)
                object[part].instead = std::string(1, static_cast<char>(kNoField));
            any_part = any_part || field < kFieldCount;
        }
        if (!any_part && !object["pkt0"].found) object["pkt0"].instead = std::string(1, '\0');
        for (int field = 0; field < kFieldCount; ++field) {
            const std::string number = std::to_string(field);
            StoredItem& from = object["fk" + number];
            if (!bag_->Text(from).empty() && !is_there(bag_->Text(from))) from.instead = "";
            StoredItem& to = object["LK" + number];
            StoredItem& linked = object["fka" + number];
            if (is_there(bag_->Text(to))) {
                linked.flag = linked.flag || !linked.found;
                continue;
            }
            if (linked.flag) {
                Note(Finding::Kind::kLoss, object.at, table.title + ", field " + number,
                     "its link is gone in the new database: the table that it led to is not there");
            }
            linked.flag = false;
            to.instead = "";
        }
    }
}

void SalvagedFile::WriteObject(PropertyBagWriter& bag, const StoredObject& object) const {
    if (object.layout == &RecordSetLayout()) return WriteRecords(bag, object);
    const auto& slots = object.layout->slots;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        const Slot& slot = slots[i];
        const StoredItem& item = object.items[i];
        const bool is_count = i + 1 < slots.size() && slots[i + 1].type == PropertyType::kSeries;
        if (slot.optional && !item.found) continue;
        switch (slot.type) {
            case PropertyType::kText:
                bag.Write(slot.key, bag_->Text(item));
                break;
            case PropertyType::kFalse:
            case PropertyType::kTrue:
                bag.Write(slot.key, item.flag);
                break;
            case PropertyType::kInt:
                bag.Write(slot.key,
                          is_count ? static_cast<std::int32_t>(object.items[i + 1].objects.size())
                                   : bag_->Int(item));
                break;
            case PropertyType::kByte:
                bag.WriteByte(slot.key, bag_->Byte(item, 0));
                break;
            case PropertyType::kDate:
                bag.Write(slot.key, Date{bag_->Date(item)});
                break;
            case PropertyType::kObject:
                bag.WriteObject(slot.key, [&] {
                    StoredObject empty{slot.inside, 0, {}};
                    empty.items.resize(slot.inside->slots.size());
                    WriteObject(bag, item.objects.empty() ? empty : item.objects[0]);
                });
                break;
            case PropertyType::kSeries:
                bag.WriteSeries(slot.key, item.objects.size(), [&](std::size_t number) {
                    WriteObject(bag, item.objects[number - 1]);
                });
                break;
            case PropertyType::kBlocks:
                break;  // records alone
        }
    }
}

void SalvagedFile::WriteRecords(PropertyBagWriter& bag, const StoredObject& set) const {
    const Table* table = nullptr;
    for (const Table& candidate : tables_) {
        for (const StoredObject& records : std::as_const(*candidate.object)["rl"].objects) {
            if (&records == &set) table = &candidate;
        }
    }
    static const std::vector<DamagedBag::Record> kNone;
    const auto& records = table != nullptr ? table->records : kNone;
    std::uint16_t parts = 0xFFFF;
    for (int part = 3; table != nullptr && part >= 0; --part) {
        const std::uint8_t field =
            bag_->Byte(std::as_const(*table->object)["pkt" + std::to_string(part)], kNoField);
        parts = static_cast<std::uint16_t>(parts << 4 | (field < kFieldCount ? field : 15));
    }
    bag.Write("RecordsCount", static_cast<std::int32_t>(records.size()));
    bag.BeginBlocks("Record");
    std::vector<std::uint8_t> bytes;
    std::unordered_map<std::int32_t, std::int32_t> positions;
    std::int32_t position = 0;
    for (const DamagedBag::Record& record : records) {
        ++position;
        if (record.position != 0) positions[record.position] = position;
        RecordImage image = record.image;
        for (int shift = 0; shift < 16; shift += 4) {
            const int field = (image.parts >> shift) & 15;
            if (field >= kFieldCount && field != 15) image.parts = parts;
        }
        bytes.clear();
        image.AppendTo(bytes);
        bag.Append(bytes.data(), bytes.size());
    }
    bag.EndBlocks();
    std::vector<std::pair<std::int32_t, const StoredObject*>> extras;
    for (const StoredObject& extra : set["RecordExtra"].objects) {
        const auto now = positions.find(bag_->Int(extra["i"]));
        if (now != positions.end()) extras.emplace_back(now->second, &extra);
    }
    bag.WriteSeries("RecordExtra", extras.size(), [&](std::size_t i) {
        const auto& [place, extra] = extras[i - 1];
        bag.Write("i", place);
        if ((*extra)["k"].found) bag.Write("k", bag_->Text((*extra)["k"]));
        for (const StoredObject& attachments : (*extra)["att"].objects) {
            bag.WriteObject("att", [&] { WriteObject(bag, attachments); });
        }
    });
}

}  // namespace tavolin
