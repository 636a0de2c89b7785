#include "tavolin/salvage/salvage.h"

#include <algorithm>
#include <utility>

#include "tavolin/base/text.h"
#include "tavolin/engine/database.h"
#include "tavolin/errors/error.h"
#include "tavolin/model/owner_set.h"
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
        if (kind_ == Kind::kRegistry) {
            CVLDBOwnerSet().RegistryState(array_);
        } else {
            LoadStrictly(array_);
        }
    } catch (const DamagedState& damage) {
        if (whole()) Note(Finding::Kind::kDamage, 0, {}, damage.what());
    }
}

// Raises DamagedState for what cannot be loaded as a database.
void SalvagedFile::LoadStrictly(std::span<const std::uint8_t> state) {
    Database database;
    database.session = std::make_shared<Session>(nullptr);
    PropertyBagReader bag(state);
    database.ReadProperties(bag);
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

}  // namespace tavolin
