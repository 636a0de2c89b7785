#include "tavolin/salvage/salvage.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "tavolin/base/text.h"
#include "tavolin/engine/database.h"
#include "tavolin/errors/error.h"
#include "tavolin/model/owner_set.h"
#include "tavolin/persist/checksum.h"
#include "tavolin/persist/file_system.h"
#include "tavolin/persist/little_endian.h"
#include "tavolin/persist/property_bag_layout.h"
#include "tavolin/persist/scrambler.h"

namespace tavolin {

using namespace bag_layout;

namespace {

constexpr std::size_t kDescriptor = 12;
constexpr std::size_t kSearched = 65536;  // bytes, for the beginning of the array
constexpr std::uint32_t kNewestImaginable = 255;

ByteBuffer ReadWhole(std::string_view path) {
    const auto file = FileSystem::Current().Open(path, FileMode::kRead);
    ByteBuffer bytes;
    bytes.Resize(static_cast<std::size_t>(file->Size()));
    bytes.Resize(ReadInto(*file, 0, bytes.bytes()));
    return bytes;
}

}  // namespace

SalvagedFile::SalvagedFile(std::string_view path) : file_(ReadWhole(path)) {
    const std::span<const std::uint8_t> file = file_.bytes();
    std::size_t size = 0;
    array_at_ = Locate(file, size);
    array_ = file.subspan(array_at_, size);
    const bool magic =
        size >= kItemsAt && std::equal(std::begin(kMagic), std::end(kMagic), array_.data());
    const auto version = magic ? LoadLittle<std::uint32_t>(array_.data() + kVersionAt) : 0;
    if (version > kPropertyBagVersion && version <= kNewestImaginable) {
        kind_ = Kind::kNewer;
        return;
    }
    Read();
    Sort();
}

SalvagedFile::~SalvagedFile() = default;

void SalvagedFile::Note(Finding::Kind kind, std::size_t at, std::string where, std::string what) {
    findings_.push_back({kind, array_at_ + at, std::move(where), std::move(what)});
}

// Where the array begins, whatever the descriptor says.
std::size_t SalvagedFile::Locate(std::span<const std::uint8_t> file, std::size_t& size) {
    const auto damage = [&](std::uint64_t offset, std::string what) {
        findings_.push_back({Finding::Kind::kDamage, offset, "descriptor", std::move(what)});
    };
    const auto searched = file.first(std::min(file.size(), kSearched));
    const auto magic =
        std::search(searched.begin(), searched.end(), std::begin(kMagic), std::end(kMagic));
    const auto found = static_cast<std::size_t>(magic - searched.begin());
    const bool has_magic = magic != searched.end();
    const std::size_t at = std::min(has_magic ? found : kDescriptor, file.size());
    const std::size_t there = file.size() - at;
    size = there;
    if (at != kDescriptor) {
        damage(0, at == 0 ? "missing" : "the array does not begin where it should");
    } else if (LoadLittle<std::uint32_t>(file.data()) != 0x00012011 ||
               LoadLittle<std::uint32_t>(file.data() + 8) != 0) {
        damage(0, "does not say that the file holds an array of bytes");
    }
    const std::uint64_t stated =
        at == kDescriptor ? LoadLittle<std::uint32_t>(file.data() + 4) : there;
    const std::uint64_t own = has_magic && there >= kItemsAt
                                  ? LoadLittle<std::uint64_t>(file.data() + at + kLengthAt)
                                  : stated;
    if (stated <= there && (own == stated || own > there)) {
        size = static_cast<std::size_t>(stated);
    } else if (own <= there && own >= kItemsAt) {
        size = static_cast<std::size_t>(own);
    }
    if (stated != size && stated > there && own > there) {
        findings_.push_back({Finding::Kind::kLoss,
                             file.size(),
                             {},
                             "cut off after " + std::to_string(there) + " of " +
                                 std::to_string(stated) + " bytes"});
    } else if (stated != size) {
        damage(4, "says that there are " + std::to_string(stated) + " bytes; there are " +
                      std::to_string(size));
    }
    return at;
}

void SalvagedFile::Read() {
    const auto read = [&](const Layout& layout) {
        return std::make_unique<DamagedBag>(array_, array_at_, layout);
    };
    bag_ = read(DatabaseLayout());
    kind_ = Kind::kDatabase;
    if (bag_->items_found() < 4) {
        auto registry = read(RegistryLayout());
        if (registry->items_found() > bag_->items_found()) {
            bag_ = std::move(registry);
            kind_ = Kind::kRegistry;
        }
        // Anything may look like an item or two.
        if (bag_->items_found() < (bag_->keys_known() ? 1 : 3)) {
            kind_ = Kind::kForeign;
            return;
        }
    }
    root_ = bag_->root();
    if (kind_ == Kind::kDatabase) ReadTables();
    findings_.insert(findings_.end(), bag_->findings().begin(), bag_->findings().end());
    bag_->findings().clear();
    CheckStrictly();
    if (kind_ == Kind::kDatabase) LookAround();
}

void SalvagedFile::ReadTables() {
    for (StoredObject& set : root_["objgl"].objects) {
        for (StoredObject& table : set["List"].objects) {
            StoredItem& name = table["k"];
            if (!name.found) name.instead = "Recovered " + std::to_string(tables_.size() + 1);
            Table entry{&table, "table " + std::string(bag_->Text(name)), {}};
            for (StoredObject& records : table["rl"].objects) {
                std::vector<bool> own_key;
                const auto count =
                    static_cast<std::size_t>(std::max(0, bag_->Int(records["RecordsCount"])));
                for (StoredObject& extra : records["RecordExtra"].objects) {
                    const auto position = static_cast<std::size_t>(bag_->Int(extra["i"]));
                    if (!extra["k"].found || position == 0 || position > count) continue;
                    if (position > array_.size()) continue;
                    if (own_key.size() < position) own_key.resize(position);
                    own_key[position - 1] = true;
                }
                entry.records = bag_->Records(records, entry.title, own_key);
            }
            tables_.push_back(std::move(entry));
        }
    }
}

// The last word has the reader that databases are loaded with.
void SalvagedFile::CheckStrictly() {
    try {
        const auto copy = std::make_shared<ByteBuffer>(array_.size());
        std::copy(array_.begin(), array_.end(), copy->data());
        if (kind_ == Kind::kRegistry) {
            CVLDBOwnerSet().RegistryState(array_);
        } else {
            Database database;
            database.session = std::make_shared<Session>(nullptr);
            PropertyBagReader bag(copy);
            database.ReadProperties(bag);
        }
    } catch (const DamagedState& damage) {
        if (whole()) Note(Finding::Kind::kDamage, 0, {}, damage.what());
    }
}

bool SalvagedFile::whole() const {
    if (kind_ == Kind::kNewer || kind_ == Kind::kForeign) return false;
    return std::all_of(findings_.begin(), findings_.end(), [](const Finding& finding) {
        return finding.kind == Finding::Kind::kRemark;
    });
}

void SalvagedFile::Sort() {
    std::stable_sort(findings_.begin(), findings_.end(),
                     [](const Finding& a, const Finding& b) { return a.offset < b.offset; });
}

std::size_t SalvagedFile::records() const {
    std::size_t count = 0;
    for (const Table& table : tables_) count += table.records.size();
    return count;
}

std::size_t SalvagedFile::users() const {
    std::size_t count = 0;
    for (const StoredObject& set : root_["objusr"].objects) count += set["User"].objects.size();
    return count;
}

std::string_view SalvagedFile::owner() const { return bag_->Text(root_["o"]); }

// --- what an undamaged database may hold and hardly should

void SalvagedFile::LookAround() {
    std::unordered_set<std::string> names;
    for (const Table& table : tables_) {
        const auto name = bag_->Text((*table.object)["k"]);
        if (!names.insert(Fold(name)).second) {
            Note(Finding::Kind::kRemark, table.object->at, table.title,
                 "another table has that name");
        }
        LookAtKeys(table);
        LookAtLinks(table);
    }
    if (whole() && UserNamed(owner()) == nullptr) {
        Note(Finding::Kind::kRemark, root_["o"].at, "owner " + std::string(owner()),
             "is not among the users: nobody can act as the owner");
    }
}

void SalvagedFile::LookAtKeys(const Table& table) {
    std::unordered_map<std::int32_t, std::string_view> own;
    for (const StoredObject& set : std::as_const(*table.object)["rl"].objects) {
        for (const StoredObject& extra : set["RecordExtra"].objects) {
            if (extra["k"].found) own[bag_->Int(extra["i"])] = bag_->Text(extra["k"]);
        }
    }
    std::unordered_set<std::string> keys;
    std::size_t doubled = 0;
    const DamagedBag::Record* first = nullptr;
    for (const DamagedBag::Record& record : table.records) {
        const auto named = own.find(record.position);
        const std::string key =
            Fold(named != own.end() ? std::string(named->second) : record.image.Key());
        if (keys.insert(key).second) continue;
        if (doubled++ == 0) first = &record;
    }
    if (doubled == 0) return;
    Note(Finding::Kind::kRemark, first->at, table.title,
         std::to_string(doubled) +
             " of its records have a key that another one in front has; the "
             "first is record " +
             std::to_string(first->position) + " (key " + first->image.Key() + ")");
}

void SalvagedFile::LookAtLinks(const Table& table) {
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
        std::unordered_set<std::string> keys;
        for (const auto& record : target->records) keys.insert(Fold(record.image.Key()));
        for (const StoredObject& set : std::as_const(*target->object)["rl"].objects) {
            for (const StoredObject& extra : set["RecordExtra"].objects) {
                if (extra["k"].found) keys.insert(Fold(bag_->Text(extra["k"])));
            }
        }
        std::size_t missing = 0;
        const DamagedBag::Record* first = nullptr;
        for (const auto& record : table.records) {
            const std::string_view value = record.image.fields[field];
            if (value.empty() || keys.count(Fold(value)) != 0) continue;
            if (missing++ == 0) first = &record;
        }
        if (missing == 0) continue;
        Note(Finding::Kind::kRemark, first->at, where,
             std::to_string(missing) + " of its values are no key in the table " +
                 std::string(name) + "; the first is " + std::string(first->image.fields[field]) +
                 ", of record " + std::to_string(first->position));
    }
}

// --- rights

const StoredObject* SalvagedFile::UserNamed(std::string_view name) const {
    for (const StoredObject& set : root_["objusr"].objects) {
        for (const StoredObject& user : set["User"].objects) {
            if (user["un"].found && EqualFold(bag_->Text(user["un"]), name)) return &user;
        }
    }
    return nullptr;
}

SalvagedFile::Access SalvagedFile::AccessOf(std::string_view user,
                                            std::string_view password) const {
    const StoredObject* owner_entry = root_["o"].found ? UserNamed(owner()) : nullptr;
    const bool owner_lost = owner_entry == nullptr || !(*owner_entry)["f"].found;
    const auto is = [&](const StoredObject& entry) {
        return entry["f"].found && EqualFold(std::string(bag_->Text(entry["un"])) +
                                                 ScrambleText(bag_->Text(entry["f"])),
                                             std::string(user) + std::string(password));
    };
    const StoredItem& database_password = root_["m"];
    const bool knows_database =
        database_password.found && EqualFold(ScrambleText(bag_->Text(database_password)), password);
    bool granted = false;
    if (!owner_lost && is(*owner_entry)) {
        granted = true;
    } else if (const StoredObject* const stored = UserNamed(user)) {
        // Somebody whose own entry is damaged can only have shown that he knows the database's.
        const bool disabled = (*stored)["s"].found && (*stored)["s"].flag;
        if (is(*stored)) {
            granted = (*stored)["s"].found && !disabled &&
                      ((*stored)["r"].flag || (*stored)["w"].flag || (*stored)["d"].flag);
        } else {
            granted = !disabled && knows_database;
        }
    } else {
        granted = knows_database || (owner_lost && !database_password.found);
    }
    if (!granted) return Access::kRefused;
    return owner_lost ? Access::kOwnerLost : Access::kGranted;
}

// --- what is written anew

ByteBuffer SalvagedFile::State(const std::optional<NewOwner>& new_owner) {
    MendUsers(new_owner);
    MendTables();
    Sort();
    PropertyBagWriter writer;
    WriteObject(writer, root_);
    ByteBuffer state = std::move(writer).Finish();
    const auto copy = std::make_shared<ByteBuffer>(state.size());
    std::copy(state.bytes().begin(), state.bytes().end(), copy->data());
    Database database;
    database.session = std::make_shared<Session>(nullptr);
    PropertyBagReader bag(copy);
    database.ReadProperties(bag);
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
        if (!user["f"].found) user["f"].instead = ScrambleText(new_owner->password);
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
