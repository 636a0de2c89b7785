// What a record holds before it is updated, for when memory runs out on the way or it is stopped.
#pragma once

#include <memory>
#include <utility>

#include "tavolin/model/record.h"

namespace tavolin {

class FormerRecord {
  public:
    explicit FormerRecord(const CVLRecord& record)
        : arena_(record.arena()),
          record_(record.handle()),
          attachments_(arena_->Attachments(record_, false)),
          fields_(arena_->KeepFields(record_)) {}
    ~FormerRecord() { arena_->DropFields(fields_); }
    FormerRecord(const FormerRecord&) = delete;
    FormerRecord& operator=(const FormerRecord&) = delete;

    // Once. Attachments have a place if there have been others meanwhile.
    void PutBack() {
        arena_->PutBackFields(record_, fields_);
        if (arena_->Attachments(record_, false) != attachments_) {
            arena_->Attachments(record_, std::move(attachments_));
        }
    }

  private:
    std::shared_ptr<RecordArena> arena_;
    RecordHandle record_;
    std::shared_ptr<CVLAttachmentSet> attachments_;
    RecordArena::KeptFields fields_;
};

}  // namespace tavolin
