#include "tavolin/model/attachment_set.h"

#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/navigation.h"
#include "tavolin/model/permission.h"
#include "tavolin/model/session.h"
#include "tavolin/model/stored_collection.h"

namespace tavolin {
namespace {

constexpr NavigationTexts kAttachmentNavigation = {"CVLAttachmentSet",
                                                   "Attachment Not Found Error ",
                                                   CVLErrorNum::GetFirstAttachmentError(),
                                                   CVLErrorNum::GetLastAttachmentError(),
                                                   CVLErrorNum::GetPreviousAttachmentError(),
                                                   CVLErrorNum::GetNextAttachmentError()};

[[noreturn]] void RaiseAttachmentNotFound(const char* source) {
    Raise(CVLErrorNum::GetAttachmentNotFoundError(), source,
          Message("Record's Attachment Not Found!"));
}

}  // namespace

CVLAttachmentSet::CVLAttachmentSet() : CVLAttachmentSet(Session::Current()) {}

CVLAttachmentSet::CVLAttachmentSet(std::shared_ptr<Session> session)
    : session_(std::move(session)) {}

bool CVLAttachmentSet::CanAdd(IndexKey Key) const {
    return Trap("CVLAttachmentSet:CanAdd Method",
                [&] { return attachments_->Find(Key) == nullptr; });
}

std::shared_ptr<CVLAttachment> CVLAttachmentSet::Add(std::string_view Key, std::int32_t nKey,
                                                     std::string_view attachmentPathName,
                                                     attachmentEnum aType) {
    static constexpr const char* kSource = "CVLAttachmentSet:Add Method";
    return Trap(kSource, [&] {
        AskWrite(*session_, kSource);
        if (attachments_->Contains(Key)) {
            Raise(CVLErrorNum::GetAttachmentAddError(), kSource,
                  Message("The Attachment That Is Being Added Already Exists In DataBase!"));
        }
        auto attachment = std::make_shared<CVLAttachment>();
        attachment->Key(Key);
        attachment->nKey(nKey);
        attachment->attachmentPathName(attachmentPathName);
        attachment->SpecificType(aType);
        attachments_->Add(Key, attachment);
        OnAttachmentAdd.Fire(attachment->attachmentPathName());
        return attachment;
    });
}

std::shared_ptr<CVLAttachment> CVLAttachmentSet::Update(IndexKey varKey,
                                                        std::string_view attachmentPathName,
                                                        attachmentEnum aType) {
    static constexpr const char* kSource = "CVLAttachmentSet:Update Method";
    return Trap(kSource, [&] {
        AskWrite(*session_, "CVLAttachmentSet:UpDate Method");
        auto attachment = attachments_->Find(varKey);
        if (!attachment) {
            Raise(CVLErrorNum::GetAttachmentUpDateError(), kSource,
                  Message("Attachment Does Not Exist!"));
        }
        attachment->attachmentPathName(attachmentPathName);
        attachment->SpecificType(aType);
        return attachment;
    });
}

std::shared_ptr<CVLAttachment> CVLAttachmentSet::Item(IndexKey vntIndexKey) const {
    static constexpr const char* kSource = "CVLAttachmentSet:Item Property Get";
    return Trap(kSource, [&] {
        AskRead(*session_, "CVLAttachmentSet:Remove Method");
        auto attachment = attachments_->Find(vntIndexKey);
        if (!attachment) RaiseAttachmentNotFound(kSource);
        return attachment;
    });
}

void CVLAttachmentSet::Remove(IndexKey vntIndexKey) {
    static constexpr const char* kSource = "CVLAttachmentSet:Remove Method";
    Trap(kSource, [&] {
        AskDelete(*session_, kSource);
        if (!attachments_->Find(vntIndexKey)) RaiseAttachmentNotFound(kSource);
        OnAttachmentRemove.Fire(attachments_->Remove(vntIndexKey));
    });
}

std::vector<std::uint8_t> CVLAttachmentSet::ObjectState() const {
    return Trap("CVLAttachmentSet:ObjectState Property Get", [&] {
        return MakeState([&](PropertyBagWriter& bag) {
            WriteCollection(bag, *attachments_, "RecordsCount", "Record");
        });
    });
}

void CVLAttachmentSet::ObjectState(const std::vector<std::uint8_t>& state) {
    Trap("CVLAttachmentSet:ObjectState Property Let", [&] {
        PropertyBagReader bag(state);
        attachments_ = Read(bag, "RecordsCount", "Record");
    });
}

void CVLAttachmentSet::WriteProperties(PropertyBagWriter& bag) const {
    WriteCollection(bag, *attachments_, "AttCount", "Attachment");
}

void CVLAttachmentSet::ReadProperties(PropertyBagReader& bag) {
    attachments_ = Read(bag, "AttCount", "Attachment");
}

std::shared_ptr<CVLAttachmentSet::Attachments> CVLAttachmentSet::Read(PropertyBagReader& bag,
                                                                      const char* count_key,
                                                                      const char* prefix) {
    return ReadCollection<CVLAttachment>(
        bag, count_key, prefix, [] { return std::make_shared<CVLAttachment>(); },
        [](const CVLAttachment& attachment) { return std::string_view(attachment.Key()); });
}

std::shared_ptr<CVLAttachment> CVLAttachmentSet::LastAttachment() const {
    return Navigation(*this, kAttachmentNavigation).Last();
}

std::shared_ptr<CVLAttachment> CVLAttachmentSet::FirstAttachment() const {
    return Navigation(*this, kAttachmentNavigation).First();
}

std::shared_ptr<CVLAttachment> CVLAttachmentSet::PreviousAttachment(std::int32_t nKey) const {
    return Navigation(*this, kAttachmentNavigation).Previous(nKey);
}

std::shared_ptr<CVLAttachment> CVLAttachmentSet::NextAttachment(std::int32_t nKey) const {
    return Navigation(*this, kAttachmentNavigation).Next(nKey);
}

bool CVLAttachmentSet::PreviousAttachmentIsAvailable(std::int32_t nKey) const {
    return Navigation(*this, kAttachmentNavigation).PreviousIsAvailable(nKey);
}

bool CVLAttachmentSet::NextAttachmentIsAvailable(std::int32_t nKey) const {
    return Navigation(*this, kAttachmentNavigation).NextIsAvailable(nKey);
}

bool CVLAttachmentSet::FirstAttachmentIsAvailable() const {
    return Navigation(*this, kAttachmentNavigation).FirstIsAvailable();
}

}  // namespace tavolin
