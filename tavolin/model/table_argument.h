// Tables and records as members take them.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "tavolin/base/export.h"
#include "tavolin/model/index_key.h"

namespace tavolin {

class CVLRecord;
class CVLTable;

// A table by its position, by its name, or itself. A view: a text must outlive the call.
class TableArgument {
  public:
    template <class Which>
    requires std::convertible_to<Which, IndexKey> TableArgument(const Which& which)
        : which_(IndexKey(which)) {}                // NOLINT: conversions are its use
    TableArgument(std::shared_ptr<CVLTable> table)  // NOLINT
        : which_(std::string_view()), is_table_(true), table_(std::move(table)) {}

    bool is_table() const { return is_table_; }
    const std::shared_ptr<CVLTable>& table() const { return table_; }
    const IndexKey& which() const { return which_; }
    // As it stands in messages and in the names of linked tables: a name, a position in decimal, or
    // the table's Key.
    TAVOLIN_API std::string Text() const;

  private:
    IndexKey which_;
    bool is_table_ = false;
    std::shared_ptr<CVLTable> table_;
};

// A record by its position, by its key, or itself.
class RecordArgument {
  public:
    template <class Which>
    requires std::convertible_to<Which, IndexKey> RecordArgument(const Which& which)
        : which_(IndexKey(which)) {}                   // NOLINT
    RecordArgument(std::shared_ptr<CVLRecord> record)  // NOLINT
        : which_(std::string_view()), is_record_(true), record_(std::move(record)) {}

    bool is_record() const { return is_record_; }
    const std::shared_ptr<CVLRecord>& record() const { return record_; }
    const IndexKey& which() const { return which_; }

  private:
    IndexKey which_;
    bool is_record_ = false;
    std::shared_ptr<CVLRecord> record_;
};

}  // namespace tavolin
