#include "tavolin/model/record_set.h"

#include <algorithm>

#include "tavolin/base/text.h"
#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/attachment_set.h"
#include "tavolin/model/field_argument.h"
#include "tavolin/model/former_record.h"
#include "tavolin/model/navigation.h"
#include "tavolin/model/permission.h"
#include "tavolin/model/record_sort.h"
#include "tavolin/model/session.h"

namespace tavolin {
namespace {

constexpr NavigationTexts kRecordNavigation = {"CVLRecordSet",
                                               "Record Not Found Error ",
                                               CVLErrorNum::GetFirstRecordError(),
                                               CVLErrorNum::GetLastRecordError(),
                                               CVLErrorNum::GetPreviousRecordError(),
                                               CVLErrorNum::GetNextRecordError()};

void CheckParts(const PrimaryKeyType& key, const char* source) {
    for (const std::uint8_t part : key.Parts()) {
        if (part != kNoField) CheckedField(part, source);
    }
}

// Both set the fields that differ in more than letter case, up to one that `fixed` holds; false
// when there is such a one.
bool SetPropsAtOnce(const CVLRecord& record, const FieldTexts& props, const PrimaryKeyType& fixed) {
    std::array<bool, kFieldCount> changed = record.arena()->Differing(record.handle(), props);
    bool allowed = true;
    for (int field = 0; field < kFieldCount; ++field) {
        bool& differs = changed[static_cast<std::size_t>(field)];
        if (differs && fixed.Holds(field)) allowed = false;
        differs = differs && allowed;
    }
    const bool any = std::find(changed.begin(), changed.end(), true) != changed.end();
    if (any) record.arena()->SetFields(record.handle(), props, changed);
    return allowed;
}

// Somebody is told of each, who may change the next ones.
bool SetPropsOneByOne(CVLRecord& record, const FieldTexts& props, const PrimaryKeyType& fixed) {
    FormerRecord former(record);
    bool allowed = true;
    OrTakeBack(
        [&] {
            for (int field = 0; allowed && field < kFieldCount; ++field) {
                const auto now = record.arena()->Field(record.handle(), field);
                if (EqualFold(now, props[field])) continue;
                allowed = !fixed.Holds(field);
                if (allowed) record.prop(field, props[field]);
            }
        },
        [&] { former.PutBack(); });
    return allowed;
}

bool SetProps(CVLRecord& record, const FieldTexts& props, const PrimaryKeyType& fixed) {
    const auto event = record.arena()->ChangeEvent(record.handle(), false);
    const bool told = event && event->HasHandlers();
    return told ? SetPropsOneByOne(record, props, fixed) : SetPropsAtOnce(record, props, fixed);
}

}  // namespace

CVLRecordSet::CVLRecordSet() : CVLRecordSet(Session::Current()) {}

CVLRecordSet::CVLRecordSet(std::shared_ptr<Session> session)
    : records_(std::make_shared<RecordCollection>(std::move(session))) {}

bool CVLRecordSet::CanAdd(IndexKey Key) const {
    return Trap("CVLRecordSet:CanAdd Method", [&] {
        if (!Key.is_position() && Key.key().empty()) return false;
        return records_->Find(Key) == kNoHandle;
    });
}

std::shared_ptr<CVLRecord> CVLRecordSet::Add(const PrimaryKeyType& Key, std::int32_t nKey,
                                             const FieldTexts& props,
                                             std::shared_ptr<CVLAttachmentSet> AttachmentSet,
                                             const Placement& place) {
    return Trap("CVLRecordSet:Add Method", [&] {
        auto record = AddUntold(Key, nKey, props, std::move(AttachmentSet), place);
        OnRecordAdd.Fire(record);
        return record;
    });
}

std::shared_ptr<CVLRecord> CVLRecordSet::AddUntold(const PrimaryKeyType& Key, std::int32_t nKey,
                                                   const FieldTexts& props,
                                                   std::shared_ptr<CVLAttachmentSet> AttachmentSet,
                                                   const Placement& place) {
    static constexpr const char* kSource = "CVLRecordSet:Add Method";
    return Trap(kSource, [&] {
        AskWrite(session(), kSource);
        CheckParts(Key, kSource);
        return WhenRaised(
            kDuplicateKey,
            [&] { return records_->Add(nKey, props, Key, std::move(AttachmentSet), place); },
            [&] {
                Raise(CVLErrorNum::GetRecordAddError(), kSource,
                      Message("The Record That Is Being Added Already Exists In DataBase!"));
            });
    });
}

std::shared_ptr<CVLRecord> CVLRecordSet::Update(const PrimaryKeyType& Key,
                                                std::shared_ptr<CVLRecord> record,
                                                const FieldTexts& props,
                                                std::shared_ptr<CVLAttachmentSet> AttachmentSet) {
    static constexpr const char* kSource = "CVLRecordSet:Update Method";
    return Trap(kSource, [&] {
        AskWrite(session(), "CVLRecordSet:UpDate Method");
        if (!record) RaiseRunTime(kObjectNotSet);
        // The record may be of another tree, or of one that was replaced.
        AskWrite(*record->arena()->session(), "CVLRecordSet:UpDate Method");
        // The one thing that still needs memory when the fields have been set.
        if (AttachmentSet) record->arena()->NeedAttachments(record->handle());
        if (!SetProps(*record, props, Key)) {
            Raise(CVLErrorNum::GetRecordUpDateError(), kSource,
                  Message("Record Key Cannot Be UpDated!"));
        }
        if (AttachmentSet) record->CVLAttachmentSet(std::move(AttachmentSet));
        OnRecordUpDate.Fire(record);
        return record;
    });
}

void CVLRecordSet::RaiseMissing(const IndexKey& which, const char* source) {
    if (which.is_position()) {
        Raise(CVLErrorNum::GetRecordNotFoundError(), source,
              Message("No Record Is Found On This Range!"));
    }
    Raise(CVLErrorNum::GetDBNotSetError(), source, Message("DataBase Is Not Set!"));
}

std::shared_ptr<CVLRecord> CVLRecordSet::Item(IndexKey vntIndexKey) const {
    return Trap("CVLRecordSet:Record Property Get", [&] {
        static constexpr const char* kSource = "CVLRecordSet:Item Property Get";
        AskRead(session(), kSource);
        const RecordHandle record = Existing(vntIndexKey, kSource);
        records_->arena().Prefetch(record);  // it comes while the object is made
        return records_->Object(record);
    });
}

std::vector<std::shared_ptr<CVLRecord>> CVLRecordSet::Items(std::span<const IndexKey> which) const {
    static constexpr const char* kSource = "CVLRecordSet:Items Method";
    return Trap(kSource, [&] {
        AskRead(session(), kSource);
        std::vector<std::shared_ptr<CVLRecord>> found;
        found.reserve(which.size());
        while (!which.empty()) {
            const auto batch = which.first(std::min(which.size(), kHandleBatch));
            const auto records = records_->FindBatch(batch);
            for (std::size_t i = 0; i < batch.size(); ++i) {
                if (records[i] == kNoHandle) RaiseMissing(batch[i], kSource);
                found.push_back(records_->Object(records[i]));
            }
            which = which.subspan(batch.size());
        }
        return found;
    });
}

void CVLRecordSet::Remove(IndexKey vntIndexKey) {
    static constexpr const char* kSource = "CVLRecordSet:Remove Method";
    Trap(kSource, [&] {
        AskDelete(session(), kSource);
        Remove(records_->Object(Existing(vntIndexKey, kSource)));
    });
}

void CVLRecordSet::Remove(const std::shared_ptr<CVLRecord>& record) {
    static constexpr const char* kSource = "CVLRecordSet:Remove Method";
    Trap(kSource, [&] {
        AskDelete(session(), kSource);
        if (record->arena() != records_->shared_arena()) RaiseRunTime(kInvalidCall);
        records_->Remove(record->handle());
        OnRecordRemove.Fire(record);
    });
}

bool CVLRecordSet::Sort(int ByFieldNum) {
    static constexpr const char* kSource = "CVLRecordSet:Sort Method";
    return Trap(kSource, [&] {
        const int field = CheckedByte(ByFieldNum);
        AskWrite(session(), kSource);
        if (Count() == 0) return true;
        if (field >= kFieldCount) {
            records_ = std::make_shared<RecordCollection>(records_->arena().session());
            return true;
        }
        std::vector<RecordHandle> records;
        records.reserve(static_cast<std::size_t>(Count()));
        records_->ForEach([&](RecordHandle record) { records.push_back(record); });
        records_ = RecordCollection::Rearranged(records_,
                                                SortedByField(records_->arena(), records, field));
        return true;
    });
}

void CVLRecordSet::AttachToRecord(const std::shared_ptr<CVLRecord>& record, std::int32_t attachNkey,
                                  std::string_view attachFilePathName, attachmentEnum aType) {
    Trap("CVLRecordSet:AttachToRecord Method", [&] {
        if (!record) RaiseRunTime(kObjectNotSet);
        record->Attach(attachNkey, attachFilePathName, aType);
    });
}

void CVLRecordSet::ReplaceCollection(std::shared_ptr<RecordCollection> records) {
    records_ = std::move(records);
}

void CVLRecordSet::JoinSession(std::shared_ptr<Session> session) {
    records_->arena().JoinSession(std::move(session));
}

void CVLRecordSet::Retire() {
    if (!records_->IsGuest()) JoinSession(records_->arena().session()->Retired());
}

std::shared_ptr<CVLRecord> CVLRecordSet::LastRecord() const {
    return Navigation(*this, kRecordNavigation).Last();
}

std::shared_ptr<CVLRecord> CVLRecordSet::FirstRecord() const {
    return Navigation(*this, kRecordNavigation).First();
}

std::shared_ptr<CVLRecord> CVLRecordSet::PreviousRecord(std::int32_t nKey) const {
    return Navigation(*this, kRecordNavigation).Previous(nKey);
}

std::shared_ptr<CVLRecord> CVLRecordSet::NextRecord(std::int32_t nKey) const {
    return Navigation(*this, kRecordNavigation).Next(nKey);
}

bool CVLRecordSet::PreviousRecordIsAvailable(std::int32_t nKey) const {
    return Navigation(*this, kRecordNavigation).PreviousIsAvailable(nKey);
}

bool CVLRecordSet::NextRecordIsAvailable(std::int32_t nKey) const {
    return Navigation(*this, kRecordNavigation).NextIsAvailable(nKey);
}

bool CVLRecordSet::FirstRecordIsAvailable() const {
    return Navigation(*this, kRecordNavigation).FirstIsAvailable();
}

}  // namespace tavolin
