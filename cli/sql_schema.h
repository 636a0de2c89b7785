// What becomes of a database's tables in SQL: their names and columns, the keys and links that the
// data keeps, and an order in which tables can be made.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/sql_text.h"
#include "tavolin/engine/engine.h"

namespace tavolin::cli {

struct SqlColumn {
    int field;
    std::string name;
    // The place among the tables of the one that this column is a foreign key to.
    std::optional<std::size_t> target;
    // Added to the table when the target has been made as well, which links in a circle need.
    bool added_later = false;
};

struct SqlTable {
    std::shared_ptr<CVLTable> source;
    std::string name;
    std::vector<SqlColumn> columns;
    std::vector<std::size_t> key;  // of the columns; empty when the data does not keep it
    bool has_own_keys = false;     // some records have another key than their key fields make
    std::vector<std::string> remarks;

    const SqlColumn* ColumnOf(int field) const;
};

struct SqlSchema {
    std::vector<SqlTable> tables;    // as in the database
    std::vector<std::size_t> order;  // in which they are made
};

// Walks along all records a few times. `look` is called now and then.
SqlSchema MakeSqlSchema(CVLDBEngine& engine, const std::function<void()>& look);

}  // namespace tavolin::cli
