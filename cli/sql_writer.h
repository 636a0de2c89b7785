// The whole open database as SQL that SQLite and PostgreSQL load as it is; docs/sql-export.md tells
// what becomes of what.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/sql_inserter.h"
#include "cli/sql_schema.h"
#include "tavolin/engine/engine.h"

namespace tavolin::cli {

class SqlWriter {
  public:
    // Appends to `text`, and calls `flow` every few rows, which may empty it. Notes and the lines
    // of the log file are the owner's: they are left out for others.
    SqlWriter(CVLDBEngine& engine, bool owner, std::string log_file, std::string& text,
              std::function<void()> flow)
        : engine_(engine),
          owner_(owner),
          log_file_(std::move(log_file)),
          sink_{text, std::move(flow)} {}

    void Write();

  private:
    void WriteHead();
    void CreateTable(const SqlTable& table, std::size_t number);
    void AddColumns(const SqlTable& table, std::size_t number);
    std::string Definition(const SqlTable& table, const SqlColumn& column,
                           std::size_t number) const;
    void WriteRecords(const SqlTable& table);
    void WriteAttachments(const SqlTable& table, SqlInserter& rows);
    void WriteDatabase();
    void WriteTables();
    void WriteUsers();
    void WriteNotes();
    void WriteLog();

    CVLDBEngine& engine_;
    bool owner_;
    std::string log_file_;
    SqlSink sink_;
    SqlSchema schema_;
    std::int64_t attachments_ = 0;
};

}  // namespace tavolin::cli
