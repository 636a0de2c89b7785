// What a record holds before it is updated, for when memory runs out on the way.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "tavolin/model/record.h"

namespace tavolin {

class FormerRecord {
  public:
    explicit FormerRecord(const CVLRecord& record)
        : arena_(record.arena()),
          record_(record.handle()),
          attachments_(arena_->Attachments(record_, false)),
          text_(arena_->AllFields(record_)) {
        const char* begin = text_.data();
        for (int i = 0; i < kFieldCount; ++i) {
            auto& field = fields_[static_cast<std::size_t>(i)];
            field = {begin, arena_->Field(record_, i).size()};
            begin += field.size();
        }
    }
    FormerRecord(const FormerRecord&) = delete;
    FormerRecord& operator=(const FormerRecord&) = delete;

    // They fit into the block that they came from, and attachments have a place if there have been
    // others meanwhile.
    void PutBack() const {
        arena_->SetFields(record_, fields_, arena_->Differing(record_, fields_));
        if (arena_->Attachments(record_, false) != attachments_) {
            arena_->Attachments(record_, attachments_);
        }
    }

  private:
    std::shared_ptr<RecordArena> arena_;
    RecordHandle record_;
    std::shared_ptr<CVLAttachmentSet> attachments_;
    std::string text_;
    std::array<std::string_view, kFieldCount> fields_;
};

}  // namespace tavolin
