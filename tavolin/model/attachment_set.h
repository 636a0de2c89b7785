// The attachments of a record, in the order of adding, under their keys without regard to case.
//
//     record->CVLAttachmentSet()->Add("map", 1, "C:\\maps\\7.png", tavolin::aPicture);
//
// Reading an element asks for a right to read, Add and Update for one to write, Remove for one to
// delete; without it GetUserPermissionToRdError, -ToRWError or -ToDelError. A call that raises
// leaves the set as it was.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/model/attachment.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/object_collection.h"

namespace tavolin {

class Session;

class TAVOLIN_API CVLAttachmentSet {
  public:
    CVLAttachmentSet();
    explicit CVLAttachmentSet(std::shared_ptr<Session> session);
    CVLAttachmentSet(const CVLAttachmentSet&) = delete;
    CVLAttachmentSet& operator=(const CVLAttachmentSet&) = delete;

    Event<std::string> OnAttachmentAdd;                        // after the adding, with the path
    Event<std::shared_ptr<CVLAttachment>> OnAttachmentRemove;  // after the removal

    std::int32_t Count() const { return attachments_->Count(); }

    // True when no attachment has that key or position.
    bool CanAdd(IndexKey Key) const;

    // Adds an attachment at the end and returns it. A key that is taken raises
    // GetAttachmentAddError.
    std::shared_ptr<CVLAttachment> Add(std::string_view Key, std::int32_t nKey,
                                       std::string_view attachmentPathName, attachmentEnum aType);

    // Sets path and kind and returns the attachment; none such raises GetAttachmentUpDateError.
    std::shared_ptr<CVLAttachment> Update(IndexKey varKey, std::string_view attachmentPathName,
                                          attachmentEnum aType);

    // The attachment at a position or under a key; none raises GetAttachmentNotFoundError. A
    // missing right is reported under the source of Remove.
    std::shared_ptr<CVLAttachment> Item(IndexKey vntIndexKey) const;

    // None such raises GetAttachmentNotFoundError.
    void Remove(IndexKey vntIndexKey);

    Enumerator<CVLAttachment> NewEnum() const { return Enumerator<CVLAttachment>(attachments_); }

    // All attachments as one byte array. Assigning replaces them, without events, or raises and
    // changes nothing.
    std::vector<std::uint8_t> ObjectState() const;
    void ObjectState(const std::vector<std::uint8_t>& state);

    // The attachment at the end, at the beginning, before or after a 1-based position; where there
    // is none, GetLastAttachmentError, GetFirstAttachmentError, GetPreviousAttachmentError or
    // GetNextAttachmentError. They read through Item and need its right.
    std::shared_ptr<CVLAttachment> LastAttachment() const;
    std::shared_ptr<CVLAttachment> FirstAttachment() const;
    std::shared_ptr<CVLAttachment> PreviousAttachment(std::int32_t nKey) const;
    std::shared_ptr<CVLAttachment> NextAttachment(std::int32_t nKey) const;
    bool PreviousAttachmentIsAvailable(std::int32_t nKey) const;
    bool NextAttachmentIsAvailable(std::int32_t nKey) const;
    bool FirstAttachmentIsAvailable() const;

    // Library-internal: how the set is stored inside its record, under other keys than in
    // ObjectState, and whose rights it asks for.
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);
    void JoinSession(std::shared_ptr<Session> session) { session_ = std::move(session); }

  private:
    using Attachments = ObjectCollection<CVLAttachment>;

    static std::shared_ptr<Attachments> Read(PropertyBagReader& bag, const char* count_key,
                                             const char* prefix);

    std::shared_ptr<Session> session_;
    std::shared_ptr<Attachments> attachments_ = std::make_shared<Attachments>();
};

}  // namespace tavolin
