// A table: ten fields with names and labels, a primary key of up to four of them, links from fields
// to other tables, and its records.
//
//     auto customers = engine.CreateNewPrimaryTable("Customers", {"ID", "Name", "City"}, 0);
//     customers->FieldLabel(1, "Full name");
//     auto in_paris = customers->Find("paris", false, 2);
//
// Field numbers are unsigned 8-bit: outside 0 to 255 every member raises 6, and above 9
// GetFieldOutOfRangeError unless it says otherwise.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/model/field_argument.h"
#include "tavolin/model/field_texts.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/record_set.h"
#include "tavolin/model/table_argument.h"
#include "tavolin/model/types.h"

namespace tavolin {

class CVLTableSet;

class TAVOLIN_API CVLTable : public std::enable_shared_from_this<CVLTable> {
  public:
    // Library-internal: tables come from CVLTableSet::Add and from Find.
    explicit CVLTable(std::shared_ptr<Session> session);
    ~CVLTable();
    CVLTable(const CVLTable&) = delete;
    CVLTable& operator=(const CVLTable&) = delete;

    Event<std::string> OnFieldSetAsForeignKey;         // by Link, with the field's name
    Event<std::shared_ptr<CVLRecord>> OnRecordAdd;     // after the record and its references
    Event<std::shared_ptr<CVLRecord>> OnRecordUpDate;  // after the record and its references
    Event<std::shared_ptr<CVLRecord>> OnRecordRemove;  // after the removal

    // The table's name. Setting it on a table of a set files it under the new name there, and every
    // link to it follows; a name that is taken in any letter case raises GetTableAddError, an empty
    // one 5, and nothing has changed.
    const std::string& Key() const { return key_; }
    void Key(std::string_view name);

    // Ten slots with the names of the tables that link to this one; empty where free. Above 9: 9.
    const std::string& ReferencedTable(int TableNum) const;
    void ReferencedTable(int TableNum, std::string_view name);
    bool IsReferenced() const { return ReferenceCount() > 0; }

    // The name of the table that a field links to, or empty. Raises 9 above 9.
    const std::string& LinkedTable(int number0to9) const;
    void LinkedTable(int number0to9, std::string_view name);

    // How many fields are foreign keys.
    std::uint8_t NumberOfLinkedTables() const;
    bool FieldIsForeignKey(int fldNum0to9) const;  // raises 9 above 9
    // isLinkedTable once another table links to it.
    TableEnum SpecificType() const { return type_; }

    const std::string& FieldLabel(int fldNum0to9) const;
    void FieldLabel(int fldNum0to9, std::string_view label);
    const std::string& FieldName(int fldNum0to9) const;
    void FieldName(int fldNum0to9, std::string_view name);

    // Never nothing. Setting nothing raises 91. The set that was there loses its rights unless
    // another table holds it. A search's result gets records of its own when it is given to a
    // table.
    std::shared_ptr<tavolin::CVLRecordSet> CVLRecordSet() const { return records_; }
    void CVLRecordSet(std::shared_ptr<tavolin::CVLRecordSet> records);

    // The fields that make up the keys of records added from now on.
    PrimaryKeyType PrimaryKey() const { return primary_key_; }
    void PrimaryKey(const PrimaryKeyType& key);

    // The number of records.
    std::int32_t Count() const { return records_->Count(); }

    // True when no record has that key; see CVLRecordSet::CanAdd.
    bool CanAdd(IndexKey recordKey) const;

    // Adds a record as CVLRecordSet::Add does, then, for every field that is a foreign key and
    // whose value is not yet a key in the table it links to, a record there with that value in
    // field 0 and the same nKey, and so on along chains of links. All linked tables are looked up
    // in `useTableSet` first: a missing one raises GetTableNotFoundError before anything is added.
    // Where the key that the value makes is taken although CanAdd(value) is true, as when the
    // primary key leaves field 0 out, nothing is added there and the chain ends.
    std::shared_ptr<CVLRecord> Add(const std::shared_ptr<CVLTableSet>& useTableSet,
                                   std::int32_t nKey, const FieldTexts& props,
                                   std::shared_ptr<CVLAttachmentSet> AttachmentsTable = nullptr,
                                   const Placement& place = {});

    // Updates a record as CVLRecordSet::Update does, then adds missing referenced records as Add
    // does, with this table's type as their nKey. Linked tables are looked up before the update. A
    // search's result, which adds none in Add, does so here.
    std::shared_ptr<CVLRecord> Update(const std::shared_ptr<CVLTableSet>& useTableSet,
                                      std::shared_ptr<CVLRecord> record, const FieldTexts& props,
                                      std::shared_ptr<CVLAttachmentSet> AttachmentsTable = nullptr);

    // Removes a record; raises as CVLRecordSet::Item and Remove do. Records that refer to it stay.
    void Remove(IndexKey RecordNumOrKey);

    // Takes the links from this table to another away and returns the other. Asks for `Ownership`,
    // else GetUserIsNotDBOwnerError. A table of another set raises 5. Records stay.
    std::shared_ptr<CVLTable> Unlink(const TableArgument& LinkedTable);

    // Makes a field a foreign key into a table and returns that table, which gets a record for
    // every value of the field that is no key there yet, unless this table was linked to it before.
    // A field that linked elsewhere takes this table out of the references of the table there,
    // unless another field still links to that.
    // Asks for a right to write, else GetUserPermissionToRWError. A field above 9 raises
    // GetReferencedFldNotFoundError, a table of another set 5. After a failure in the middle the
    // changes made so far stay, unless a StopScope stopped it (32755).
    std::shared_ptr<CVLTable> Link(int fldNum0to9, const TableArgument& toTable);

    // CVLRecordSet::Item.
    std::shared_ptr<CVLRecord> GetRecord(IndexKey RecordNumOrKey) const;
    // CVLRecordSet::Items.
    std::vector<std::shared_ptr<CVLRecord>> GetRecords(std::span<const IndexKey> which) const;

    // 99 is no field; with all four left out the key is field 0.
    PrimaryKeyType SetPrimaryKeyFields(int FieldNum = kNoField, int withFieldNum = kNoField,
                                       int andFieldNum = kNoField, int plusFieldNum = kNoField);

    // Adds an attachment with the record's nKey to a record and returns the record.
    std::shared_ptr<CVLRecord> AttachToRecord(const RecordArgument& record,
                                              std::string_view attachPathName,
                                              attachmentEnum attachmentType = Miscellenius);

    // A new table of this one's shape that holds the matches: the records that contain `Value` in
    // the given field, or in all fields joined without a separator, ignoring case; or, when
    // `ValueIsAKey`, which leaves the field out, the one with that key. The records are shared, not
    // copied; adding to the result or removing from it changes the result only, and it can be
    // neither linked nor unlinked (5). An empty value matches every record. From 65,536 records on
    // up to four processors share the search, by threads that end with it.
    std::shared_ptr<CVLTable> Find(std::string_view Value, bool ValueIsAKey = false,
                                   int inFldNum0to9 = kNoField) const;

    // CVLRecordSet::Sort.
    bool Sort(int ByFieldNum0to9);

    // Takes all links from and to this table away. Asks for `Ownership`. Links to tables that are
    // gone are passed over.
    void FreeFromInOutLinks();

    // Deletes, depth first, every table of `useTableSet` that only this one's links refer to. Asks
    // for `Ownership`. Tables that others refer to stay and lose the reference to this one. A set
    // that this table is not in raises 5; links to tables that are gone are passed over.
    void DeleteLinks(const std::shared_ptr<CVLTableSet>& useTableSet);

    // CVLRecordSet::MakeItText, MakeItHTML and MakeItMDB for the records, with the table's labels,
    // links and Key; CVLRecordSet::PrintToFile.
    std::string MakeItText() const;
    std::string MakeItHTML(std::string_view DirPath, std::string_view FileName) const;
    void MakeItMDB(std::string_view DirPath, std::string_view DBShortName) const;
    void PrintToFile(std::string_view Text, std::string_view FilePathName) const;

    // Library-internal.
    void Remove(const std::shared_ptr<CVLRecord>& record);
    void SetForeignKey(int field, bool is) { foreign_[static_cast<std::size_t>(field)] = is; }
    void SetSpecificType(TableEnum type) { type_ = type; }
    bool CascadeGuard() const { return cascade_guard_; }
    void SetCascadeGuard(bool guard) { cascade_guard_ = guard; }
    int ReferenceCount() const;
    bool RefersTo(std::string_view table) const;
    // The first field of that name, case counting; field 0 when there is none.
    int FieldNumber(std::string_view name) const;
    int FieldNumber(const FieldArgument& field) const;
    bool IsResult() const { return is_result_; }
    void JoinSet(CVLTableSet* set) { set_ = set; }
    const CVLTableSet* set() const { return set_; }
    void JoinSession(std::shared_ptr<Session> session);
    void NameResult(std::string_view key) { key_ = key; }
    template <class Body>
    void ForEachMention(Body&& body) {
        for (std::string& name : linked_) body(name);
        for (std::string& name : referenced_) body(name);
    }
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);

  private:
    using Names = std::array<std::string, kFieldCount>;
    class Additions;
    class FormerLink;
    class Filling;
    class Cascade;
    struct FieldFilling {
        int field;
        std::shared_ptr<Filling> chain;
    };

    using Fillings = std::vector<FieldFilling>;
    Fillings PlanFillings(const std::shared_ptr<CVLTableSet>& tables) const;
    static void Fill(const Fillings& fillings, const CVLRecord& record, std::int32_t n_key,
                     Additions& all);
    std::shared_ptr<CVLTable> Resolve(const TableArgument& table, const char* source) const;
    void SetMention(std::string& mention, std::string_view name);
    void SetLink(std::size_t field, std::string_view target);
    void DropOldLink(int field, const std::string& new_target);
    bool NoteReferenceFrom(std::string_view table);
    void ClearReferencesTo(std::string_view table);
    void FreeInSet(const CVLTableSet& tables);
    void ForgetLinksTo(std::string_view table);
    void RecomputeType();
    void FillFrom(int field, CVLTable& target, Additions& added);

    std::shared_ptr<Session> session_;
    CVLTableSet* set_ = nullptr;  // the set that the table stands in; it clears this when it goes
    std::string key_;
    TableEnum type_ = isPrimaryTable;
    PrimaryKeyType primary_key_;
    Names labels_;
    Names names_;
    Names referenced_;
    Names linked_;
    std::array<bool, kFieldCount> foreign_{};
    std::shared_ptr<tavolin::CVLRecordSet> records_;
    bool cascade_guard_ = true;  // false while the table is being deleted
    bool is_result_ = false;
};

}  // namespace tavolin
