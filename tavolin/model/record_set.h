// The records of a table, in an order, under their keys without regard to case.
//
//     auto records = engine.GetRecordSet("Customers");
//     for (const auto& record : records->NewEnum()) std::cout << record->prop(1) << '\n';
//     records->Item("7")->prop(2);
//
// Reading a record asks for a right to read, Add and Update for one to write, Remove for one to
// delete; without it GetUserPermissionToRdError, -ToRWError or -ToDelError. Positions and counts
// are 32-bit.
#pragma once

#include <cstdint>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/field_texts.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/record.h"
#include "tavolin/model/record_collection.h"
#include "tavolin/model/types.h"

namespace tavolin {

class CVLTable;
class PropertyBagReader;
class PropertyBagWriter;
class Session;

// A host's walk along the very collection that it was made on, whatever takes that collection's
// place. The removal of a record never makes it skip or repeat another.
class RecordEnumerator {
  public:
    class Iterator;

    explicit RecordEnumerator(std::shared_ptr<const RecordCollection> records)
        : records_(std::move(records)), cursor_(*records_) {}

    // Moving copies: an enumerator always has its collection.
    RecordEnumerator(const RecordEnumerator&) = default;
    RecordEnumerator& operator=(const RecordEnumerator&) = default;

    // The next record, or nothing at the end.
    std::shared_ptr<CVLRecord> Next() {
        return Trap("CVLRecordSet:NewEnum Property Get", [&] {
            const RecordHandle record = cursor_.Next();
            return record == kNoHandle ? nullptr : records_->Object(record);
        });
    }
    void Reset() { cursor_.Reset(); }

    Iterator begin();
    std::default_sentinel_t end() const { return {}; }

  private:
    std::shared_ptr<const RecordCollection> records_;
    RecordCollection::Cursor cursor_;
};

class RecordEnumerator::Iterator {
  public:
    using value_type = std::shared_ptr<CVLRecord>;
    using difference_type = std::ptrdiff_t;

    explicit Iterator(RecordEnumerator* walk) : walk_(walk), record_(walk->Next()) {}
    const value_type& operator*() const { return record_; }
    Iterator& operator++() {
        record_ = walk_->Next();
        return *this;
    }
    void operator++(int) { ++*this; }
    bool operator==(std::default_sentinel_t) const { return record_ == nullptr; }

  private:
    RecordEnumerator* walk_;
    value_type record_;
};

inline RecordEnumerator::Iterator RecordEnumerator::begin() {
    Reset();
    return Iterator(this);
}

class TAVOLIN_API CVLRecordSet {
  public:
    CVLRecordSet();
    explicit CVLRecordSet(std::shared_ptr<Session> session);
    CVLRecordSet(const CVLRecordSet&) = delete;
    CVLRecordSet& operator=(const CVLRecordSet&) = delete;

    Event<std::shared_ptr<CVLRecord>> OnRecordAdd;     // after the record was added
    Event<std::shared_ptr<CVLRecord>> OnRecordUpDate;  // after the record was updated
    Event<std::shared_ptr<CVLRecord>> OnRecordRemove;  // after the record was removed

    // True when no record has that key or position; always false for an empty key.
    bool CanAdd(IndexKey Key) const;

    // Adds a record and returns it. Its key is made of the fields that `Key` names, in that order
    // and without a separator: "ab" and "c" collide with "a" and "bc". It goes before or after the
    // record named, else to the end. The record shares the attachment set given. A key that is
    // taken raises GetRecordAddError, a place that is not there 5, a field above 9 in `Key`
    // GetFieldOutOfRangeError; nothing has been added then.
    std::shared_ptr<CVLRecord> Add(const PrimaryKeyType& Key, std::int32_t nKey,
                                   const FieldTexts& props = {},
                                   std::shared_ptr<CVLAttachmentSet> AttachmentSet = nullptr,
                                   const Placement& place = {});

    // Sets all ten fields of a record, those left out to the empty text. A field that differs in
    // letter case alone keeps its text. The fields of `Key` must be given as they are, in any case:
    // another value raises GetRecordUpDateError, the fields before it being changed already. When
    // memory runs out they are put back, of which OnPropertyChange does not tell.
    std::shared_ptr<CVLRecord> Update(const PrimaryKeyType& Key, std::shared_ptr<CVLRecord> record,
                                      const FieldTexts& props = {},
                                      std::shared_ptr<CVLAttachmentSet> AttachmentSet = nullptr);

    // The record at a position or under a key. No such position raises GetRecordNotFoundError; no
    // such key GetDBNotSetError.
    std::shared_ptr<CVLRecord> Item(IndexKey vntIndexKey) const;
    // The records that Item gives for each of these, in their order. Where they lie far apart they
    // are found in a fraction of the time that it takes one by one. Raises as Item does for the
    // first that is not there.
    std::vector<std::shared_ptr<CVLRecord>> Items(std::span<const IndexKey> which) const;
    std::int32_t Count() const { return records_->Count(); }

    // Takes a record out; raises as Item does.
    void Remove(IndexKey vntIndexKey);

    // Asks for no right.
    RecordEnumerator NewEnum() const { return RecordEnumerator(records_); }

    // All records as one byte array. Assigning replaces them, without events and rights, or raises
    // and changes nothing.
    std::vector<std::uint8_t> ObjectState() const;
    void ObjectState(const std::vector<std::uint8_t>& state);

    // Puts the records in ascending order of one text each: the field, then the other nine in
    // theirs, with nothing between them and without regard to letter case. So 10 stands before 9,
    // and "Anna" of "z2" before "Ann" of "z1", as "annaz2" before "annz1". Records with equal texts
    // keep their order; a walk that has begun goes on in the old one. CAUTION: a field from 10 to
    // 255 is no error: it takes every record out of the set. Sorting by field 1 places records with
    // an equal field 1, where that is not empty, by a rule of its own that differs from ascending
    // order.
    //
    // Asks for a right to write. nKeys and Keys stay, and each record is filed under the Key that
    // it has now; if two have the same one, 457. True unless it raises, and then nothing has
    // changed.
    bool Sort(int ByFieldNum);

    // Calls CVLRecord::Attach.
    void AttachToRecord(const std::shared_ptr<CVLRecord>& record, std::int32_t attachNkey,
                        std::string_view attachFilePathName, attachmentEnum aType);

    // The record at the end, at the beginning, before or after a 1-based position; where there is
    // none, GetLastRecordError, GetFirstRecordError, GetPreviousRecordError or GetNextRecordError.
    // They read through Item and need its right.
    std::shared_ptr<CVLRecord> LastRecord() const;
    std::shared_ptr<CVLRecord> FirstRecord() const;
    std::shared_ptr<CVLRecord> PreviousRecord(std::int32_t nKey) const;
    std::shared_ptr<CVLRecord> NextRecord(std::int32_t nKey) const;
    bool PreviousRecordIsAvailable(std::int32_t nKey) const;
    bool NextRecordIsAvailable(std::int32_t nKey) const;
    bool FirstRecordIsAvailable() const;

    // --- Publishing. MakeItText, MakeItHTML and MakeItMDB ask for a right to read, and for none of
    // `Item`.

    // The records as text: a blank, then for each record a line with its number, from 1 on, a line
    // "label: value" for each field that has a label, with "NULL" for an empty value, and an empty
    // line. Lines begin with "\r\n", and a record ends in two of them. Values are as stored.
    std::string MakeItText(const FieldTexts& FieldLbls) const;

    // The records as a piece of a web page: a blank, then for each record its number, at an anchor
    // named by its key, and a table of the fields that have a label. A value of a field that is a
    // foreign key of `table` is a link to DirPath + FileName + "\", the linked table's name and
    // "\records.htm#" with the value. UTF-8; nothing is escaped, so values with mark-up characters
    // act as mark-up. No table raises 91.
    std::string MakeItHTML(std::string_view DirPath, std::string_view FileName,
                           const std::shared_ptr<CVLTable>& table,
                           const FieldTexts& FieldLbls) const;

    // Writes the records into a table `TableName` of an Access database: a text column for each
    // field that has a label, in that order and named by it, and a row for each record, with "NULL"
    // for an empty value. The file stands in `DirPath` and is named as `DBShortName` without "cdb"
    // and with "mdb" right behind it; a name that leads out of the folder raises 52. What is
    // written, and its limits, is told in docs/mdb-export.md.
    //
    // A file that is there gets the table added, if this library wrote it and nobody has changed it
    // since; any other file, and the open database's own, raises 58. Errors name table, record and
    // column: 3163 for a value of more than 255 characters, 3047 for a record of more than 4060
    // bytes, 5 for a value that the format has no form for, 3125 for a table's name or label that
    // is not allowed, 3191 for two equal labels, 3010 for a table that the file holds already, all
    // without regard to case; 3026 when the disk is full or the file would pass 2 GB. After a
    // failure everything is as it was: no new file, and an old one unchanged.
    void MakeItMDB(std::string_view DirPath, std::string_view DBShortName,
                   std::string_view TableName, const FieldTexts& FieldLbls) const;

    // Writes any text to a file, which is created or replaced, between two quotation marks and with
    // a line break behind it: in code page 1252 if all characters are in it, else as UTF-8 with a
    // byte-order mark. Asks for no right. The open database's file and its log raise 58; file
    // errors are 52, 61, 70, 75, 76 ... and may leave a first part of the text.
    void PrintToFile(std::string_view Text, std::string_view FilePathName) const;

    // Library-internal.

    // Add, without the event.
    std::shared_ptr<CVLRecord> AddUntold(const PrimaryKeyType& Key, std::int32_t nKey,
                                         const FieldTexts& props,
                                         std::shared_ptr<CVLAttachmentSet> AttachmentSet,
                                         const Placement& place);
    // Remove, for a record that is known to stand in the set.
    void Remove(const std::shared_ptr<CVLRecord>& record);
    void ReplaceCollection(std::shared_ptr<RecordCollection> records);
    const std::shared_ptr<RecordCollection>& Collection() const { return records_; }
    // About how many bytes the stored form takes.
    std::size_t StateSize() const {
        return records_->arena().memory() +
               static_cast<std::size_t>(Count()) * sizeof(RecordHandle);
    }
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);
    void JoinSession(std::shared_ptr<Session> session);
    // Takes the records' rights away, unless they stand in another set as well.
    void Retire();
    // How many tables have the set.
    void AddHolder() { ++holders_; }
    void DropHolder() { --holders_; }
    int holders() const { return holders_; }

  private:
    RecordHandle Existing(const IndexKey& which, const char* source) const {
        const RecordHandle record = records_->Find(which);
        if (record == kNoHandle) RaiseMissing(which, source);
        return record;
    }
    [[noreturn]] static void RaiseMissing(const IndexKey& which, const char* source);

    // Whose rights count: those of the tree that the records stand in, which a search's result
    // shares.
    const Session& session() const { return *records_->arena().session(); }

    std::shared_ptr<RecordCollection> records_;
    int holders_ = 0;
};

}  // namespace tavolin
