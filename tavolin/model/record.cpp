#include "tavolin/model/record.h"

#include "tavolin/errors/trap.h"
#include "tavolin/model/attachment_set.h"
#include "tavolin/model/field_argument.h"
#include "tavolin/model/session.h"

namespace tavolin {

CVLRecord::CVLRecord() : CVLRecord(std::make_shared<RecordArena>(Session::Current())) {}

// A free-standing record goes with its arena.
CVLRecord::CVLRecord(std::shared_ptr<RecordArena> arena)
    : HostedObject(arena->Create(0, {}, {})), arena_(std::move(arena)) {
    arena_->AddReference(record_);
}

CVLRecord::~CVLRecord() { arena_->Forget(record_, *this); }

EventConnection CVLRecord::PropertyChange::Connect(PropertyChangeEvent::Handler handler) {
    return Trap("CVLRecord:OnPropertyChange Method", [&] {
        return record_.arena_->ChangeEvent(record_.record_, true)->Connect(std::move(handler));
    });
}

void CVLRecord::PropertyChange::Disconnect(EventConnection connection) {
    const auto event = record_.arena_->ChangeEvent(record_.record_, false);
    if (event) event->Disconnect(connection);
}

std::string CVLRecord::Key() const {
    return Trap("CVLRecord:Key Property Get", [&] { return arena_->Key(record_); });
}

void CVLRecord::Key(std::string_view key) {
    Trap("CVLRecord:Key Property Let", [&] { arena_->SetKey(record_, key); });
}

std::int32_t CVLRecord::nKey() const { return arena_->NumberKey(record_); }

void CVLRecord::nKey(std::int32_t number) { arena_->NumberKey(record_, number); }

std::shared_ptr<CVLAttachmentSet> CVLRecord::CVLAttachmentSet() const {
    return Trap("CVLRecord:CVLAttachmentSet Property Get",
                [&] { return arena_->Attachments(record_, true); });
}

void CVLRecord::CVLAttachmentSet(std::shared_ptr<tavolin::CVLAttachmentSet> attachments) {
    Trap("CVLRecord:CVLAttachmentSet Property Set",
         [&] { arena_->Attachments(record_, std::move(attachments)); });
}

bool CVLRecord::HasAttachments() const { return arena_->HasAttachments(record_); }

std::string CVLRecord::prop(int propNum) const {
    static constexpr const char* kSource = "CVLRecord:prop Property Get";
    return Trap(kSource, [&] {
        return std::string(arena_->Field(record_, CheckedField(propNum, kSource)));
    });
}

void CVLRecord::prop(int propNum, std::string_view value) {
    static constexpr const char* kSource = "CVLRecord:prop Property Let";
    Trap(kSource, [&] {
        const int field = CheckedField(propNum, kSource);
        const std::string kept(value);
        std::array<std::string_view, kFieldCount> values;
        std::array<bool, kFieldCount> changed{};
        values[static_cast<std::size_t>(field)] = kept;
        changed[static_cast<std::size_t>(field)] = true;
        arena_->SetFields(record_, values, changed);
        const auto event = arena_->ChangeEvent(record_, false);
        if (!event || !event->HasHandlers()) return;
        auto self = weak_from_this().lock();
        // A record that no shared_ptr owns is handed out without being owned.
        if (!self) self = std::shared_ptr<CVLRecord>(std::shared_ptr<void>(), this);
        event->Fire(self, "prop" + std::to_string(field), kept);
    });
}

void CVLRecord::Attach(std::int32_t nKey, std::string_view attachFilePathName,
                       attachmentEnum aType) {
    Trap("CVLRecord:Attach Method",
         [&] { CVLAttachmentSet()->Add(attachFilePathName, nKey, attachFilePathName, aType); });
}

}  // namespace tavolin
