// A record: a key, a number and ten fields of text, numbered 0 to 9.
//
//     auto record = engine.GetRecord("Customers", "7");
//     record->prop(1, "Ann");
//     std::string city = record->prop(2);
//
// An object that is asked for twice is the same object. A record that was removed from its table
// stays readable for as long as it is held. Reading and writing a record's own fields asks for no
// right: rights guide the members of the sets and of the engine.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tavolin/base/export.h"
#include "tavolin/model/record_arena.h"
#include "tavolin/model/types.h"

namespace tavolin {

class TAVOLIN_API CVLRecord : public std::enable_shared_from_this<CVLRecord>, private HostedObject {
  public:
    // A free-standing record, empty.
    CVLRecord();
    ~CVLRecord();
    CVLRecord(const CVLRecord&) = delete;
    CVLRecord& operator=(const CVLRecord&) = delete;

    // Fired by every assignment of a field, also of an equal value, with the record, "prop0" to
    // "prop9", and the new value. Handlers belong to the record and stay when nobody holds the
    // object.
    class PropertyChange {
      public:
        EventConnection Connect(PropertyChangeEvent::Handler handler);
        void Disconnect(EventConnection connection);

      private:
        friend class CVLRecord;
        explicit PropertyChange(CVLRecord& record) : record_(record) {}
        CVLRecord& record_;
    };
    PropertyChange OnPropertyChange{*this};

    // The key in the set: the values of the primary key's fields, one behind the other. Setting it
    // changes this text only; the set files the record under it when it is next loaded or sorted.
    std::string Key() const;
    void Key(std::string_view key);

    // A number of the caller's choice; nothing looks at it.
    std::int32_t nKey() const;
    void nKey(std::int32_t number);

    // Made empty when there is none yet. Setting nothing takes the set away.
    std::shared_ptr<tavolin::CVLAttachmentSet> CVLAttachmentSet() const;
    void CVLAttachmentSet(std::shared_ptr<tavolin::CVLAttachmentSet> attachments);
    // Whether there is an attachment. Unlike the question for the set, this one makes none.
    bool HasAttachments() const;

    // A field's value; a number above 9 raises GetFieldOutOfRangeError, one outside 0 to 255 raises
    // 6. Setting a field of the primary key does not file the record anew.
    std::string prop(int propNum) const;
    void prop(int propNum, std::string_view value);

    // Adds an attachment with the path as its key; see CVLAttachmentSet::Add for what it raises.
    void Attach(std::int32_t nKey, std::string_view attachFilePathName, attachmentEnum aType);

    // Library-internal: the object of a record in an arena.
    CVLRecord(const std::shared_ptr<RecordArena>& arena, RecordHandle record)
        : HostedObject(record), arena_(arena) {}
    const std::shared_ptr<RecordArena>& arena() const { return arena_; }
    RecordHandle handle() const { return record_; }

  private:
    friend class RecordArena;

    explicit CVLRecord(std::shared_ptr<RecordArena> arena);

    std::shared_ptr<RecordArena> arena_;
};

}  // namespace tavolin
