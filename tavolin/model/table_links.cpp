// How tables hang together: linking and unlinking, the records that a reference brings along, and
// the tables that a deletion takes along.
#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

#include "tavolin/base/text.h"
#include "tavolin/errors/error_num.h"
#include "tavolin/errors/stop_scope.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/former_record.h"
#include "tavolin/model/permission.h"
#include "tavolin/model/session.h"
#include "tavolin/model/table.h"
#include "tavolin/model/table_set.h"

namespace tavolin {
namespace {

void AskToLink(const Session& session, const char* source) {
    if (session.MayWrite()) return;
    Raise(CVLErrorNum::GetUserPermissionToRWError(), source,
          Message("User: ", session.UserName(), " Does Not Have Permission To Read/Write!"));
}

void AskToUnlink(const Session& session, const char* source) {
    if (session.IsOwner()) return;
    Raise(CVLErrorNum::GetUserIsNotDBOwnerError(), source,
          Message("User: ", session.UserName(),
                  " Is Not The DataBase Owner!\r\n"
                  "Thus Does Not Have The Right To Unlink A Field From A Table!"));
}

// The key that a record with this value in field 0 and nothing else gets in that table.
std::string KeyOfOneField(const CVLTable& table, std::string_view value) {
    std::string key;
    for (const std::uint8_t part : table.PrimaryKey().Parts()) {
        if (part == 0) key += value;
    }
    return key;
}

}  // namespace

// The records that one call adds. When it is stopped or runs out of memory in its middle, they are
// taken out again, for which no memory is needed, and the sets and tables that have told of them
// say so.
class CVLTable::Additions {
  public:
    Additions() = default;
    ~Additions() { Clear(); }
    Additions(const Additions&) = delete;
    Additions& operator=(const Additions&) = delete;

    std::shared_ptr<CVLRecord> Add(std::shared_ptr<tavolin::CVLRecordSet> records,
                                   const PrimaryKeyType& key, std::int32_t n_key,
                                   const FieldTexts& fields,
                                   std::shared_ptr<tavolin::CVLAttachmentSet> attachments = nullptr,
                                   const Placement& place = {}) {
        Addition& addition = additions_.emplace_back();
        addition.records = std::move(records);
        addition.record =
            addition.records->AddUntold(key, n_key, fields, std::move(attachments), place);
        addition.arena = addition.record->arena();
        addition.handle = addition.record->handle();
        addition.arena->AddReference(addition.handle);
        addition.records->OnRecordAdd.Fire(addition.record);
        return addition.record;
    }

    // What a handler has taken out already stays so. Nobody is told before everything is as it was;
    // restore() sees to what is not a record.
    template <class Restore>
    void TakeBack(Restore&& restore) {
        for (auto each = additions_.rbegin(); each != additions_.rend(); ++each) {
            const auto records = each->records->Collection();
            each->taken_back = records->Holds(each->arena, each->handle);
            if (each->taken_back) records->Remove(each->handle);
        }
        restore();
        for (auto each = additions_.rbegin(); each != additions_.rend(); ++each) {
            if (each->taken_back) each->TellRemoval();
        }
    }

    std::size_t size() const { return additions_.size(); }
    // The table fires its event for the addition at `index`, from 0.
    void Tell(std::size_t index, const std::shared_ptr<CVLTable>& table) {
        additions_[index].told_by = table;
        table->OnRecordAdd.Fire(additions_[index].record);
    }

    // A million records are too many for objects.
    void DropObjects() {
        for (auto each = additions_.rbegin(); each != additions_.rend() && each->record; ++each) {
            each->record.reset();
        }
    }
    // They stay whatever comes.
    void Clear() {
        for (const Addition& each : additions_) {
            if (each.arena) each.arena->Release(each.handle);
        }
        additions_.clear();
    }

  private:
    struct Addition {
        std::shared_ptr<tavolin::CVLRecordSet> records;
        std::shared_ptr<RecordArena> arena;  // nothing while the record is not there
        std::shared_ptr<CVLRecord> record;
        std::shared_ptr<CVLTable> told_by;
        RecordHandle handle = kNoHandle;
        bool taken_back = false;

        void TellRemoval() {
            const bool heard = records->OnRecordRemove.HasHandlers() ||
                               (told_by && told_by->OnRecordRemove.HasHandlers());
            if (!heard) return;
            if (!record) record = RecordArena::Object(arena, handle);
            records->OnRecordRemove.Fire(record);
            if (told_by) told_by->OnRecordRemove.Fire(record);
        }
    };
    std::vector<Addition> additions_;
};

// A field's link as it is before another takes its place, and what the tables that it leads from
// and to know of it.
class CVLTable::FormerLink {
  public:
    FormerLink(CVLTable& table, std::size_t field, CVLTable& target)
        : table_(table),
          field_(field),
          link_(table.linked_[field]),
          foreign_(table.foreign_[field]) {
        Keep(target.shared_from_this());
        const auto tables = table.session_->Tables();
        if (tables && !link_.empty()) Keep(tables->Lookup(link_));
    }
    FormerLink(const FormerLink&) = delete;
    FormerLink& operator=(const FormerLink&) = delete;

    void PutBack() const {
        table_.SetLink(field_, link_);
        table_.foreign_[field_] = foreign_;
        for (const End& end : ends_) {
            for (std::size_t i = 0; i < kFieldCount; ++i) {
                end.table->SetMention(end.table->referenced_[i], end.references[i]);
            }
            end.table->type_ = end.type;
        }
    }

  private:
    struct End {
        std::shared_ptr<CVLTable> table;
        Names references;
        TableEnum type;
    };

    void Keep(std::shared_ptr<CVLTable> table) {
        if (!table) return;
        ends_.push_back({table, table->referenced_, table->type_});
    }

    CVLTable& table_;
    std::size_t field_;
    std::string link_;
    bool foreign_;
    std::vector<End> ends_;
};

// Adds the one-field records that a value needs: one in the table that it refers to, when it is no
// key there, and so on along the links of field 0, the only field that such a record has.
class CVLTable::Filling {
  public:
    Filling(const std::shared_ptr<CVLTableSet>& tables, CVLTable& first) {
        chain_.push_back(first.shared_from_this());
        // In a circle one of the tables that are looked back for comes again in the end. Those that
        // came twice before it do no harm: a value that was added to them once is a key there.
        const CVLTable* passed = &first;
        while (chain_.back()->foreign_[0]) {
            auto next = tables->Item(chain_.back()->linked_[0]);
            if (next.get() == passed) break;
            chain_.push_back(std::move(next));
            if (std::has_single_bit(chain_.size())) passed = chain_.back().get();
        }
    }

    void Fill(std::string_view text, std::int32_t n_key, Additions& all) const {
        // Most values are keys already, and those need no copy.
        if (!chain_.front()->CanAdd(text)) return;
        const std::string value(text);  // which a handler may change
        const std::size_t first = all.size();
        for (std::size_t i = 0; i < chain_.size(); ++i) {
            CVLTable& table = *chain_[i];
            if (i > 0 && !table.CanAdd(value)) break;
            const std::string key = KeyOfOneField(table, value);
            if (key != value && table.records_->Collection()->Find(key) != kNoHandle) break;
            all.Add(table.records_, table.primary_key_, n_key, {value});
        }
        // A table tells of its record when the records that it refers to are there.
        for (std::size_t i = all.size() - first; i-- > 0;) all.Tell(first + i, chain_[i]);
    }

  private:
    std::vector<std::shared_ptr<CVLTable>> chain_;
};

std::shared_ptr<CVLRecord> CVLTable::Add(const std::shared_ptr<CVLTableSet>& useTableSet,
                                         std::int32_t nKey, const FieldTexts& props,
                                         std::shared_ptr<CVLAttachmentSet> AttachmentsTable,
                                         const Placement& place) {
    static constexpr const char* kSource = "CVLTable:Add Method";
    return Trap(kSource, [&] {
        AskWrite(*session_, kSource);  // before a linked table asks for the right to read
        // Adding to what a search found changes nothing else.
        const auto fillings = is_result_ ? Fillings() : PlanFillings(useTableSet);
        const auto records = records_;  // a handler may give the table another set
        std::shared_ptr<CVLRecord> record;
        if (fillings.empty()) {
            record = records->Add(primary_key_, nKey, props, std::move(AttachmentsTable), place);
        } else {
            Additions all;
            OrTakeBack(
                [&] {
                    record = all.Add(records, primary_key_, nKey, props,
                                     std::move(AttachmentsTable), place);
                    Fill(fillings, *record, nKey, all);
                },
                [&] { all.TakeBack([] {}); });
        }
        OnRecordAdd.Fire(record);
        return record;
    });
}

std::shared_ptr<CVLRecord> CVLTable::Update(const std::shared_ptr<CVLTableSet>& useTableSet,
                                            std::shared_ptr<CVLRecord> record,
                                            const FieldTexts& props,
                                            std::shared_ptr<CVLAttachmentSet> AttachmentsTable) {
    static constexpr const char* kSource = "CVLTable:UpDate Method";
    return Trap(kSource, [&] {
        AskWrite(*session_, kSource);
        const auto fillings = PlanFillings(useTableSet);
        const auto records = records_;
        if (fillings.empty() || !record) {
            records->Update(primary_key_, record, props, std::move(AttachmentsTable));
        } else {
            FormerRecord former(*record);
            Additions all;
            OrTakeBack(
                [&] {
                    records->Update(primary_key_, record, props, std::move(AttachmentsTable));
                    Fill(fillings, *record, type_, all);
                },
                [&] { all.TakeBack([&] { former.PutBack(); }); });
        }
        OnRecordUpDate.Fire(record);
        return record;
    });
}

CVLTable::Fillings CVLTable::PlanFillings(const std::shared_ptr<CVLTableSet>& tables) const {
    Fillings fillings;
    for (int field = 0; field < kFieldCount; ++field) {
        if (!foreign_[static_cast<std::size_t>(field)]) continue;
        if (!tables) RaiseRunTime(kObjectNotSet);
        const auto target = tables->Item(linked_[static_cast<std::size_t>(field)]);
        fillings.push_back({field, std::make_shared<Filling>(tables, *target)});
    }
    return fillings;
}

void CVLTable::Fill(const Fillings& fillings, const CVLRecord& record, std::int32_t n_key,
                    Additions& all) {
    for (const FieldFilling& filling : fillings) {
        filling.chain->Fill(record.arena()->Field(record.handle(), filling.field), n_key, all);
    }
}

std::shared_ptr<CVLTable> CVLTable::Resolve(const TableArgument& table, const char* source) const {
    const auto tables = session_->Tables();
    if (table.is_table() ? !table.table() : !tables) {
        Raise(CVLErrorNum::GetTableNotFoundError(), source, Message("Table Not Found!"));
    }
    auto found = table.is_table() ? table.table() : tables->Item(table.which());
    // What a search found has no links of its own: they are those of the table searched.
    if (is_result_ || found->is_result_) RaiseRunTime(kInvalidCall);
    // Nor has a table that was removed.
    if (set_ == nullptr || found->set_ == nullptr) {
        Raise(CVLErrorNum::GetTableNotFoundError(), source, Message("Table Not Found!"));
    }
    // Links are names, which mean nothing in another set.
    if (found->set_ != set_) RaiseRunTime(kInvalidCall);
    return found;
}

std::shared_ptr<CVLTable> CVLTable::Link(int fldNum0to9, const TableArgument& toTable) {
    static constexpr const char* kSource = "CVLTable:Link Method";
    return Trap(kSource, [&] {
        AskToLink(*session_, kSource);
        if (CheckedByte(fldNum0to9) >= kFieldCount) {
            Raise(CVLErrorNum::GetReferencedFldNotFoundError(), kSource,
                  Message("Referenced Field Not Found!"));
        }
        auto target = Resolve(toTable, kSource);
        const auto field = static_cast<std::size_t>(fldNum0to9);
        const FormerLink former(*this, field, *target);
        Additions added;
        WhenRaised(
            kCancelled,
            [&] {
                DropOldLink(fldNum0to9, target->key_);
                SetLink(field, target->key_);
                foreign_[field] = true;
                if (target->NoteReferenceFrom(key_)) FillFrom(fldNum0to9, *target, added);
            },
            [&] { added.TakeBack([&] { former.PutBack(); }); });
        target->type_ = isLinkedTable;
        OnFieldSetAsForeignKey.Fire(names_[field]);
        return target;
    });
}

// False when the reference is there already. Where all slots are taken it is not written down, and
// counts as new each time.
bool CVLTable::NoteReferenceFrom(std::string_view table) {
    const auto same = [&](const std::string& name) { return EqualFold(name, table); };
    if (std::any_of(referenced_.begin(), referenced_.end(), same)) return false;
    const auto free = std::find(referenced_.begin(), referenced_.end(), std::string());
    if (free != referenced_.end()) SetMention(*free, table);
    return true;
}

// Every change of a table's links and slots but a renaming (CVLTableSet::Rename) goes through here.
void CVLTable::SetMention(std::string& mention, std::string_view name) {
    std::string copy(name);
    if (set_ != nullptr) set_->links().Add(copy, *this);  // or it fails and nothing has changed
    if (set_ != nullptr) set_->links().Remove(mention, *this);
    mention.swap(copy);
}

// A field that links to nothing needs no counts.
void CVLTable::SetLink(std::size_t field, std::string_view target) {
    SetMention(linked_[field], target);
    if (linked_[field].empty()) records_->Collection()->ForgetHolders(static_cast<int>(field));
}

void CVLTable::DropOldLink(int field, const std::string& new_target) {
    const auto at = static_cast<std::size_t>(field);
    const std::string old_target = linked_[at];
    if (old_target.empty() || EqualFold(old_target, new_target)) return;
    SetLink(at, {});
    const auto tables = session_->Tables();
    if (RefersTo(old_target) || !tables || tables.get() != set_) return;
    const auto old_table = tables->Lookup(old_target);
    if (!old_table) return;
    old_table->ClearReferencesTo(key_);
    old_table->RecomputeType();
}

void CVLTable::ClearReferencesTo(std::string_view table) {
    for (std::string& name : referenced_) {
        if (EqualFold(name, table)) SetMention(name, {});
    }
}

void CVLTable::RecomputeType() { type_ = IsReferenced() ? isLinkedTable : isPrimaryTable; }

void CVLTable::FillFrom(int field, CVLTable& target, Additions& added) {
    const StopCheck stop;
    const Filling filling(session_->Tables(), target);
    const auto records = records_->Collection();
    RecordCollection::Cursor cursor(*records);
    for (RecordHandle record; (record = cursor.Next()) != kNoHandle;) {
        stop.Ask();
        filling.Fill(records->arena().Field(record, field), 1, added);
        if (stop.active()) {
            added.DropObjects();
        } else {
            added.Clear();
        }
    }
}

std::shared_ptr<CVLTable> CVLTable::Unlink(const TableArgument& LinkedTable) {
    static constexpr const char* kSource = "CVLTable:Unlink Method";
    return Trap(kSource, [&] {
        AskToUnlink(*session_, kSource);
        std::shared_ptr<CVLTable> target;
        try {
            target = Resolve(LinkedTable, kSource);
        } catch (const Error& error) {
            if (error.number() != CVLErrorNum::GetTableNotFoundError()) throw;
            Raise(error.number(), kSource, Message("Table: ", LinkedTable.Text(), " Not Found!"));
        }
        target->ClearReferencesTo(key_);
        ForgetLinksTo(target->key_);
        target->RecomputeType();
        return target;
    });
}

void CVLTable::ForgetLinksTo(std::string_view table) {
    for (std::size_t i = 0; i < kFieldCount; ++i) {
        if (!EqualFold(linked_[i], table)) continue;
        SetLink(i, {});
        foreign_[i] = false;
    }
}

void CVLTable::FreeFromInOutLinks() {
    static constexpr const char* kSource = "CVLTable:FreeFromInOutLinks Method";
    Trap(kSource, [&] {
        AskToUnlink(*session_, kSource);
        if (is_result_) RaiseRunTime(kInvalidCall);
        const auto tables = session_->Tables();
        if (tables && tables.get() == set_) FreeInSet(*tables);
        for (std::size_t i = 0; i < kFieldCount; ++i) SetLink(i, {});
        foreign_.fill(false);
        for (std::string& name : referenced_) SetMention(name, {});
        RecomputeType();
    });
}

void CVLTable::FreeInSet(const CVLTableSet& tables) {
    for (std::size_t i = 0; i < kFieldCount; ++i) {
        const auto target = linked_[i].empty() ? nullptr : tables.Lookup(linked_[i]);
        if (target) Unlink(target);
    }
    // Not only those that the ten slots have room for.
    for (CVLTable* const referrer : tables.links().All(key_)) {
        if (referrer->RefersTo(key_)) referrer->Unlink(shared_from_this());
    }
}

// The walk of DeleteLinks, without a call within a call for every table on the way down.
class CVLTable::Cascade {
  public:
    explicit Cascade(std::shared_ptr<CVLTableSet> tables) : tables_(std::move(tables)) {}
    ~Cascade() {
        for (const Frame& frame : frames_) frame.table->cascade_guard_ = true;
    }

    void Run(const std::shared_ptr<CVLTable>& table) {
        Enter(table);
        while (!frames_.empty()) Step();
    }

  private:
    struct Frame {
        std::shared_ptr<CVLTable> table;
        std::size_t field = 0;
        std::shared_ptr<CVLTable> entered =
            nullptr;  // the target whose own links are being deleted
        bool only_referrer = false;
    };

    void Enter(const std::shared_ptr<CVLTable>& table) {
        frames_.push_back({table});
        table->cascade_guard_ = false;
    }

    void Step() {
        Frame& frame = frames_.back();
        if (frame.entered) {
            Finish(frame);
        } else if (frame.field == kFieldCount) {
            frame.table->cascade_guard_ = true;
            frames_.pop_back();
        } else {
            Visit(frame);
        }
    }

    void Visit(Frame& frame) {
        CVLTable& table = *frame.table;
        const std::size_t field = frame.field++;
        if (!table.foreign_[field]) return;
        const auto target = tables_->Lookup(table.linked_[field]);
        if (!target) return;
        const int references = target->ReferenceCount();
        if (target->cascade_guard_ && references < 2 && !OthersReferTo(*target, table)) {
            frame.entered = target;
            frame.only_referrer = references == 1;
            Enter(target);
        } else {
            target->ClearReferencesTo(table.key_);
        }
    }

    void Finish(Frame& frame) {
        const auto target = std::exchange(frame.entered, nullptr);
        // A handler may have removed the one or the other meanwhile.
        if (target->set_ == nullptr || frame.table->set_ == nullptr) return;
        frame.table->Unlink(target);
        if (frame.only_referrer) tables_->Remove(*target);
    }

    bool OthersReferTo(const CVLTable& target, const CVLTable& table) const {
        return tables_->links().Any(target.key_, [&](const CVLTable& other) {
            return &other != &table && other.RefersTo(target.key_);
        });
    }

    std::shared_ptr<CVLTableSet> tables_;
    std::vector<Frame> frames_;
};

void CVLTable::DeleteLinks(const std::shared_ptr<CVLTableSet>& useTableSet) {
    static constexpr const char* kSource = "CVLTable:DeleteLinks Method";
    Trap(kSource, [&] {
        AskToUnlink(*session_, kSource);
        if (!useTableSet) RaiseRunTime(kObjectNotSet);
        if (is_result_ || useTableSet.get() != set_) RaiseRunTime(kInvalidCall);
        Cascade(useTableSet).Run(shared_from_this());
    });
}

}  // namespace tavolin
