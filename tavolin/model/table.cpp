#include "tavolin/model/table.h"

#include "tavolin/base/text.h"
#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/record_search.h"
#include "tavolin/model/session.h"
#include "tavolin/model/table_set.h"
#include "tavolin/persist/property_bag.h"

namespace tavolin {
namespace {

std::size_t CheckedSlot(int number) {
    if (CheckedByte(number) >= kFieldCount) RaiseRunTime(kSubscriptOutOfRange);
    return static_cast<std::size_t>(number);
}

std::uint8_t CheckedPart(int field, const char* source) {
    return static_cast<std::uint8_t>(field == kNoField ? field : CheckedField(field, source));
}

}  // namespace

std::string TableArgument::Text() const {
    if (!is_table_) return which_.Text();
    return table_ ? table_->Key() : std::string();
}

CVLTable::CVLTable(std::shared_ptr<Session> session)
    : session_(std::move(session)), records_(std::make_shared<tavolin::CVLRecordSet>(session_)) {
    records_->AddHolder();
}

CVLTable::~CVLTable() { records_->DropHolder(); }

void CVLTable::Key(std::string_view name) {
    static constexpr const char* kSource = "CVLTable:Key Property Let";
    Trap(kSource, [&] {
        std::string kept(name);  // it may be one of the names that follow
        if (set_ != nullptr) set_->Rename(*this, kept, kSource);
        key_.swap(kept);
    });
}

const std::string& CVLTable::ReferencedTable(int TableNum) const {
    return Trap("CVLTable:ReferencedTable Property Get",
                [&]() -> const std::string& { return referenced_[CheckedSlot(TableNum)]; });
}

void CVLTable::ReferencedTable(int TableNum, std::string_view name) {
    Trap("CVLTable:ReferencedTable Property Let",
         [&] { SetMention(referenced_[CheckedSlot(TableNum)], name); });
}

const std::string& CVLTable::LinkedTable(int number0to9) const {
    return Trap("CVLTable:LinkedTable Property Get",
                [&]() -> const std::string& { return linked_[CheckedSlot(number0to9)]; });
}

void CVLTable::LinkedTable(int number0to9, std::string_view name) {
    Trap("CVLTable:LinkedTable Property Let", [&] { SetLink(CheckedSlot(number0to9), name); });
}

std::uint8_t CVLTable::NumberOfLinkedTables() const {
    return static_cast<std::uint8_t>(std::count(foreign_.begin(), foreign_.end(), true));
}

bool CVLTable::FieldIsForeignKey(int fldNum0to9) const {
    return Trap("CVLTable:FieldIsForeignKey Property Get",
                [&]() -> bool { return foreign_[CheckedSlot(fldNum0to9)]; });
}

const std::string& CVLTable::FieldLabel(int fldNum0to9) const {
    static constexpr const char* kSource = "CVLTable:FieldLabel Property Get";
    return Trap(kSource, [&]() -> const std::string& {
        return labels_[static_cast<std::size_t>(CheckedField(fldNum0to9, kSource))];
    });
}

void CVLTable::FieldLabel(int fldNum0to9, std::string_view label) {
    static constexpr const char* kSource = "CVLTable:FieldLabel Property Let";
    Trap(kSource,
         [&] { labels_[static_cast<std::size_t>(CheckedField(fldNum0to9, kSource))] = label; });
}

const std::string& CVLTable::FieldName(int fldNum0to9) const {
    static constexpr const char* kSource = "CVLTable:FieldName Property Get";
    return Trap(kSource, [&]() -> const std::string& {
        return names_[static_cast<std::size_t>(CheckedField(fldNum0to9, kSource))];
    });
}

void CVLTable::FieldName(int fldNum0to9, std::string_view name) {
    static constexpr const char* kSource = "CVLTable:FieldName Property Let";
    Trap(kSource,
         [&] { names_[static_cast<std::size_t>(CheckedField(fldNum0to9, kSource))] = name; });
}

void CVLTable::CVLRecordSet(std::shared_ptr<tavolin::CVLRecordSet> records) {
    Trap("CVLTable:CVLRecordSet Property Set", [&] {
        if (!records) RaiseRunTime(kObjectNotSet);
        if (records == records_) return;
        // The records of a search's result stand in another set; this one gets its own.
        if (records->Collection()->IsGuest()) records->ObjectState(records->ObjectState());
        if (records_->holders() == 1) records_->Retire();
        records->JoinSession(session_);
        records_->DropHolder();
        records_ = std::move(records);
        records_->AddHolder();
    });
}

void CVLTable::JoinSession(std::shared_ptr<Session> session) {
    session_ = std::move(session);
    records_->JoinSession(session_);
}

void CVLTable::PrimaryKey(const PrimaryKeyType& key) {
    static constexpr const char* kSource = "CVLTable:PrimaryKey Property Let";
    Trap(kSource, [&] {
        for (const std::uint8_t part : key.Parts()) CheckedPart(part, kSource);
        primary_key_ = key;
    });
}

PrimaryKeyType CVLTable::SetPrimaryKeyFields(int FieldNum, int withFieldNum, int andFieldNum,
                                             int plusFieldNum) {
    static constexpr const char* kSource = "CVLTable:SetPrimaryKeyFields Method";
    return Trap(kSource, [&] {
        PrimaryKeyType key{CheckedPart(FieldNum, kSource), CheckedPart(withFieldNum, kSource),
                           CheckedPart(andFieldNum, kSource), CheckedPart(plusFieldNum, kSource)};
        if (key == PrimaryKeyType{}) key.Part0 = 0;
        primary_key_ = key;
        return key;
    });
}

bool CVLTable::CanAdd(IndexKey recordKey) const {
    return Trap("CVLTable:CanAdd Method", [&] { return records_->CanAdd(recordKey); });
}

void CVLTable::Remove(IndexKey RecordNumOrKey) {
    Trap("CVLTable:Remove Method", [&] {
        const auto records = records_;  // a handler may give the table another set
        const auto record = records->Item(RecordNumOrKey);
        records->Remove(record);
        OnRecordRemove.Fire(record);
    });
}

void CVLTable::Remove(const std::shared_ptr<CVLRecord>& record) {
    Trap("CVLTable:Remove Method", [&] {
        const auto records = records_;
        records->Remove(record);
        OnRecordRemove.Fire(record);
    });
}

std::shared_ptr<CVLRecord> CVLTable::GetRecord(IndexKey RecordNumOrKey) const {
    return Trap("CVLTable:GetRecord Method", [&] { return records_->Item(RecordNumOrKey); });
}

std::vector<std::shared_ptr<CVLRecord>> CVLTable::GetRecords(
    std::span<const IndexKey> which) const {
    return Trap("CVLTable:GetRecords Method", [&] { return records_->Items(which); });
}

bool CVLTable::Sort(int ByFieldNum0to9) {
    return Trap("CVLTable:Sort Method", [&] { return records_->Sort(ByFieldNum0to9); });
}

std::shared_ptr<CVLRecord> CVLTable::AttachToRecord(const RecordArgument& record,
                                                    std::string_view attachPathName,
                                                    attachmentEnum attachmentType) {
    return Trap("CVLTable:attachToRecord Method", [&] {
        auto found = record.is_record() ? record.record() : records_->Item(record.which());
        if (!found) RaiseRunTime(kObjectNotSet);
        found->Attach(found->nKey(), attachPathName, attachmentType);
        return found;
    });
}

std::shared_ptr<CVLTable> CVLTable::Find(std::string_view Value, bool ValueIsAKey,
                                         int inFldNum0to9) const {
    static constexpr const char* kSource = "CVLTable:Find Method";
    return Trap(kSource, [&] {
        const int number = CheckedByte(inFldNum0to9);
        const int field = ValueIsAKey ? kNoField : CheckedPart(number, kSource);
        auto result = std::make_shared<CVLTable>(session_);
        result->foreign_ = foreign_;
        result->labels_ = labels_;
        result->names_ = names_;
        result->referenced_ = referenced_;
        result->linked_ = linked_;
        result->primary_key_ = primary_key_;
        result->type_ = type_;
        result->is_result_ = true;
        RecordCollection& records = *records_->Collection();
        result->records_->ReplaceCollection(std::make_shared<RecordCollection>(
            records.shared_arena(),
            ValueIsAKey ? records.WithKey(Value) : RecordsWithText(records, Value, field)));
        return result;
    });
}

int CVLTable::ReferenceCount() const {
    return static_cast<int>(std::count_if(referenced_.begin(), referenced_.end(),
                                          [](const std::string& name) { return !name.empty(); }));
}

bool CVLTable::RefersTo(std::string_view table) const {
    return std::any_of(linked_.begin(), linked_.end(), [&](const std::string& name) {
        return !name.empty() && EqualFold(name, table);
    });
}

int CVLTable::FieldNumber(std::string_view name) const {
    const auto found = std::find(names_.begin(), names_.end(), name);
    return found == names_.end() ? 0 : static_cast<int>(found - names_.begin());
}

int CVLTable::FieldNumber(const FieldArgument& field) const {
    return field.is_name() ? FieldNumber(field.name()) : CheckedByte(field.number());
}

void CVLTable::WriteProperties(PropertyBagWriter& bag) const {
    bag.Write("k", key_);
    bag.WriteByte("nk", static_cast<std::uint8_t>(type_));
    bag.WriteByte("pkt0", primary_key_.Part0);
    bag.WriteByte("pkt1", primary_key_.Part1);
    bag.WriteByte("pkt2", primary_key_.Part2);
    bag.WriteByte("pkt3", primary_key_.Part3);
    for (std::size_t i = 0; i < kFieldCount; ++i) {
        const std::string number = std::to_string(i);
        bag.Write("f" + number, labels_[i]);
        bag.Write("fn" + number, names_[i]);
        bag.Write("fk" + number, referenced_[i]);
        bag.Write("fka" + number, static_cast<bool>(foreign_[i]));
        bag.Write("LK" + number, linked_[i]);
    }
    bag.WriteObject("rl", [&] { records_->WriteProperties(bag); });
}

void CVLTable::ReadProperties(PropertyBagReader& bag) {
    key_ = bag.ReadText("k");
    type_ = static_cast<TableEnum>(bag.ReadByte("nk", isPrimaryTable));
    const auto part = [&](const char* key) {
        const std::uint8_t field = bag.ReadByte(key, kNoField);
        if (field >= kFieldCount && field != kNoField) bag.Refuse(key, "no such field");
        return field;
    };
    primary_key_ = {part("pkt0"), part("pkt1"), part("pkt2"), part("pkt3")};
    for (std::size_t i = 0; i < kFieldCount; ++i) {
        const std::string number = std::to_string(i);
        labels_[i] = bag.ReadText("f" + number);
        names_[i] = bag.ReadText("fn" + number);
        referenced_[i] = bag.ReadText("fk" + number);
        foreign_[i] = bag.ReadBool("fka" + number);
        linked_[i] = bag.ReadText("LK" + number);
    }
    bag.ReadObject("rl", [&] { records_->ReadProperties(bag); });
}

}  // namespace tavolin
