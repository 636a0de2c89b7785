#include "cli/restored_database.h"

#include <random>
#include <utility>

#include "cli/dump_text.h"
#include "cli/log_activities.h"
#include "cli/paths.h"
#include "cli/registry_warning.h"
#include "tavolin/base/clock.h"
#include "tavolin/base/text.h"
#include "tavolin/persist/paths.h"

namespace tavolin::cli {
namespace {

std::string UnknownPassword() {
    std::random_device random;
    std::string password;
    for (int i = 0; i < 8; ++i) password += std::to_string(random());
    return password;
}

// Makes the clock stand still while one lives, for what takes its date from it.
class StandingClock {
  public:
    explicit StandingClock(std::optional<Date> date) {
        if (date) SetClock([date] { return *date; });
    }
    ~StandingClock() { SetClock({}); }
    StandingClock(const StandingClock&) = delete;
    StandingClock& operator=(const StandingClock&) = delete;
};

// Fields that make up the key, one behind the other, in as many parts as are left: a record whose
// key its fields tell needs none of its own.
bool FindParts(std::string_view key, const std::array<std::string, kFieldCount>& fields,
               std::vector<std::uint8_t>& parts) {
    if (key.empty()) return !parts.empty();
    if (parts.size() == 4) return false;
    for (std::uint8_t field = 0; field < kFieldCount; ++field) {
        if (fields[field].empty() || !key.starts_with(fields[field])) continue;
        parts.push_back(field);
        if (FindParts(key.substr(fields[field].size()), fields, parts)) return true;
        parts.pop_back();
    }
    return false;
}

PrimaryKeyType KeyOf(const std::vector<std::uint8_t>& parts) {
    const auto part = [&](std::size_t i) { return i < parts.size() ? parts[i] : kNoField; };
    return {part(0), part(1), part(2), part(3)};
}

}  // namespace

void RestoredDatabase::Create(const RestoredHead& head) {
    owner_ = head.owner.value_or("");
    log_ = head.log.value_or(LogType{});
    owner_password_ = password_of_(owner_);
    const auto [dir, name] = SplitPath(LibraryPath(path_));
    engine_.LogOn(owner_, owner_password_);
    {
        const StandingClock clock(head.created);
        engine_.CreateNewDB(name, dir, database_password_.value_or(""));
    }
    if (!database_password_ && head.password_empty.value_or(false)) engine_.ChangePassword("", "");
    users_ = std::make_shared<CVLDBUserSet>();
}

CVLDBUser& RestoredDatabase::AddUser(std::uint64_t line, const std::string& name) {
    if (!users_->CanAdd(name)) throw DumpError(line, "the user " + name + " is there already");
    const bool owner = EqualFold(name, owner_);
    user_ = users_->Add(name, owner ? owner_password_ : UnknownPassword(), false, false, false);
    user_notes_.clear();
    return *user_;
}

// Notes go in under dates of no meaning: what a dump tells as a note's date is any text, under
// which it is filed when the database is loaded.
void RestoredDatabase::AddNote(std::uint64_t line, std::int32_t number, const std::string& date,
                               const std::string& text, bool again) {
    if (!user_notes_.insert(Fold(date)).second && !again) {
        throw DumpError(line, "the user has a note of " + date + " already");
    }
    const auto notes = user_->CVLUserNoteSet();
    const Date any{MakeDate(2000, 1, 1).seconds + notes->Count()};
    notes->Add(any, number, text)->dateKey = date;
}

void RestoredDatabase::AddTable(std::uint64_t line, const std::string& name, bool linked) {
    FinishTable();
    const auto tables = engine_.CVLTableSet();
    if (name.empty()) throw DumpError(line, "a table needs a name");
    if (!tables->CanAdd(name)) throw DumpError(line, "the table " + name + " is there already");
    table_type_ = linked ? isLinkedTable : isPrimaryTable;
    table_ = tables->Add(name, table_type_);
    table_records_ = table_->CVLRecordSet();
}

// A link is set as its names say. That it is followed can be had by linking alone, which adds
// nothing to a table without records, and the table itself is always there.
void RestoredDatabase::SetLink(std::uint64_t line, int field, const std::string& target,
                               bool active, bool missing) {
    std::array<std::string, kFieldCount> slots;  // linking writes into them
    for (int i = 0; i < kFieldCount; ++i) slots[std::size_t(i)] = table_->ReferencedTable(i);
    if (active) table_->Link(field, table_);
    table_->LinkedTable(field, target);
    for (int i = 0; i < kFieldCount; ++i) table_->ReferencedTable(i, slots[std::size_t(i)]);
    if (!target.empty()) mentions_.push_back({line, target, missing});
}

void RestoredDatabase::SetLinkedBy(std::uint64_t line, int slot, const std::string& table,
                                   bool missing) {
    table_->ReferencedTable(slot, table);
    mentions_.push_back({line, table, missing});
}

void RestoredDatabase::FinishTable() {
    if (table_ && table_->SpecificType() != table_type_) {
        engine_.CVLTableSet()->Update(table_->Key(), table_type_);
    }
}

std::shared_ptr<CVLAttachmentSet> RestoredDatabase::Attachments(
    const RestoredRecord& record) const {
    if (record.attachments.empty()) return nullptr;
    auto attachments = std::make_shared<CVLAttachmentSet>();
    for (const RestoredAttachment& each : record.attachments) {
        std::string key = each.key;
        if (!each.again && !attachments->CanAdd(key)) {
            throw DumpError(each.line, "the record has an attachment \"" + key + "\" already");
        }
        while (!attachments->CanAdd(key)) key += '+';
        attachments->Add(key, each.number, each.path, each.kind)->Key(each.key);
    }
    return attachments;
}

void RestoredDatabase::AddRecord(const RestoredRecord& record) {
    ++records_;
    try {
        Put(record);
    } catch (const Error& error) {
        if (error.number() != CVLErrorNum::GetRecordAddError()) throw;
        std::string key = record.key;
        if (!record.has_key) {
            for (const std::uint8_t part : table_->PrimaryKey().Parts()) {
                if (part < kFieldCount) key += record.fields[part];
            }
        }
        throw DumpError(record.line,
                        "the key \"" + key + "\" is in the table " + table_->Key() + " already");
    }
}

void RestoredDatabase::Put(const RestoredRecord& record) {
    if (!record.has_key) {
        table_records_->Add(table_->PrimaryKey(), record.number, record.fields,
                            Attachments(record));
        return;
    }
    if (record.again) {
        std::string free = "again" + std::to_string(records_);
        while (!table_records_->CanAdd(free)) free += '+';
        return PutUnder(free, record);
    }
    std::vector<std::uint8_t> parts;
    if (record.key.empty()) {
        table_records_->Add({}, record.number, record.fields, Attachments(record));
    } else if (FindParts(record.key, record.fields, parts)) {
        table_records_->Add(KeyOf(parts), record.number, record.fields, Attachments(record));
    } else {
        PutUnder(record.key, record);
    }
}

// Files a record under a key that its fields do not make.
void RestoredDatabase::PutUnder(std::string_view key, const RestoredRecord& record) {
    std::array<std::string_view, kFieldCount> fields;
    std::copy(record.fields.begin(), record.fields.end(), fields.begin());
    fields[0] = key;
    const auto added = table_records_->Add({0, kNoField, kNoField, kNoField}, record.number, fields,
                                           Attachments(record));
    added->prop(0, record.fields[0]);
    added->Key(record.key);
}

void RestoredDatabase::Save() {
    FinishTable();
    for (const Mention& mention : mentions_) {
        if (!mention.missing && engine_.CVLTableSet()->CanAdd(mention.table)) {
            throw DumpError(mention.line, "there is no table " + mention.table);
        }
    }
    engine_.CVLDBUserSet(users_);
    SetLog(engine_, log_);
    WarnOfRegistry(engine_, [&] { engine_.SaveDB(); });
}

}  // namespace tavolin::cli
