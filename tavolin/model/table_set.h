// The tables of a database, in an order, under their names without regard to case.
//
//     auto tables = engine.CVLTableSet();
//     for (const auto& table : tables->NewEnum()) std::cout << table->Key() << '\n';
//
// Item asks for a right to read, Add and Update for one to write, else GetUserPermissionToRdError
// or -ToRWError; Remove asks for `Ownership`, else GetUserIsNotDBOwnerError. A call that raises
// leaves the set as it was.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/model/field_texts.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/link_index.h"
#include "tavolin/model/object_collection.h"
#include "tavolin/model/table.h"
#include "tavolin/model/types.h"

namespace tavolin {

class TAVOLIN_API CVLTableSet {
  public:
    CVLTableSet();
    explicit CVLTableSet(std::shared_ptr<Session> session);
    ~CVLTableSet();
    CVLTableSet(const CVLTableSet&) = delete;
    CVLTableSet& operator=(const CVLTableSet&) = delete;

    Event<std::shared_ptr<CVLTable>> OnTableAdd;     // after the adding
    Event<std::shared_ptr<CVLTable>> OnTableUpDate;  // after the update
    Event<std::shared_ptr<CVLTable>> OnTableRemove;  // after the removal

    // True when no table has that name or position; always false for an empty name.
    bool CanAdd(IndexKey Key) const;

    // Adds a table at the end and returns it; its labels start equal to its field names. A name
    // that is taken raises GetTableAddError, an empty one 5. A type outside 0 to 255 raises 6, here
    // and in Update.
    std::shared_ptr<CVLTable> Add(std::string_view Key, TableEnum TableType,
                                  std::shared_ptr<CVLRecordSet> RecordSet = nullptr,
                                  const FieldTexts& FieldNames = {});

    // Sets a table's type, isPrimaryTable when it is left out, its record set when one is given,
    // and the labels that are not empty. None such raises GetTableUpDateError.
    std::shared_ptr<CVLTable> Update(IndexKey varKey, TableEnum TableType = isPrimaryTable,
                                     std::shared_ptr<CVLRecordSet> RecordSet = nullptr,
                                     const FieldTexts& FieldLabels = {});

    // The table at a position or of a name; none raises GetTableNotFoundError.
    std::shared_ptr<CVLTable> Item(IndexKey vntIndexKey) const;
    std::int32_t Count() const { return tables_->Count(); }

    // None such raises GetTableNotFoundError. Links are left as they are.
    void Remove(IndexKey vntIndexKey);

    // Asks for no right.
    Enumerator<CVLTable> NewEnum() const { return Enumerator<CVLTable>(tables_); }

    // The table at the end, at the beginning, before or after a 1-based position; where there is
    // none, GetLastTableError, GetFirstTableError, GetPreviousTableError or GetNextTableError. They
    // read through Item and need its right.
    std::shared_ptr<CVLTable> LastTable() const;
    std::shared_ptr<CVLTable> FirstTable() const;
    std::shared_ptr<CVLTable> PreviousTable(std::int32_t nKey) const;
    std::shared_ptr<CVLTable> NextTable(std::int32_t nKey) const;
    bool PreviousTableIsAvailable(std::int32_t nKey) const;
    bool NextTableIsAvailable(std::int32_t nKey) const;
    bool FirstTableIsAvailable() const;

    // A blank, then for each table its name, "\r\n", CVLTable::MakeItText and "\r\n" twice. The
    // record sets ask for a right to read.
    std::string MakeItText() const;

    // Writes a small web site into a folder of `DirPath`, which must be there: a page with frames,
    // a title, a style sheet, and a folder for each table with its records. What it looks like is
    // told in docs/site.md. The folder is named `FileName`, or as the database without ".cdb", and
    // so is the page in it, with ".htm". Existing files are replaced, other files stay, and memory
    // does not grow with the records.
    //
    // All rights to read are asked for, and all names looked at, before the first file is written.
    // A site or a table whose name cannot be a folder's, or is that of one of the site's own files,
    // raises 52; a file of the site that is the open database's or its log 58. After a later
    // failure the files written so far stay.
    void MakeItHTML(std::string_view DirPath, std::string_view FileName = {}) const;

    // CVLTable::MakeItMDB for every table, all into one file and all or none: the file is put in
    // its place once, when every table is in it. All rights to read are asked for, and all names
    // looked at, before anything is written. Without tables no file is made.
    void MakeItMDB(std::string_view DirPath, std::string_view DBShortName) const;

    // CVLRecordSet::PrintToFile.
    void PrintToFile(std::string_view Text, std::string_view FilePathName) const;

    // Library-internal.

    // The table or nothing, without asking for a right.
    std::shared_ptr<CVLTable> Lookup(IndexKey which) const { return tables_->Find(which); }
    // The element, if it is in the set, whatever its key is.
    void Remove(const CVLTable& table);
    void Rename(const CVLTable& table, std::string_view name, const char* source);
    // What the tables of the set mention of each other; they keep it up.
    LinkIndex& links() { return links_; }
    const LinkIndex& links() const { return links_; }
    // Removes a table of this set whatever the rights.
    void TakeOut(const std::shared_ptr<CVLTable>& table);
    // Raises what Remove raises without `Ownership`.
    void AskToRemove() const;
    void JoinSession(std::shared_ptr<Session> session);
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);

  private:
    using Tables = ObjectCollection<CVLTable>;

    void Detach();

    std::shared_ptr<Session> session_;
    std::shared_ptr<Tables> tables_ = std::make_shared<Tables>();
    // By its name, which is likely to be the next asked for as well.
    mutable std::shared_ptr<CVLTable> last_found_;
    LinkIndex links_;
};

}  // namespace tavolin
