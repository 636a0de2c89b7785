// Files of the Jet 4.0 format, as Microsoft Access 2000 and later read them (.mdb), without that
// program or its engine. Tables have text columns of at most 255 characters, and no indexes.
//
//     mdb::Writer file("C:\\Data\\Shop.mdb");
//     auto& people = file.CreateTable("People", {"Name", "City"});
//     people.Append({"Ada", "London"});
//     people.Append({"Ben", "Paris"});
//     file.Close();
//
// A file that is there is added to if this library wrote it and nobody changed it since; anything
// else of that name raises 58. Everything is written to a file beside it, which Close puts in its
// place in one step: without Close, or after any failure, the old file stands as it was and no new
// one is left behind. Create all tables before the first row, and no name is found out to be wrong
// after data has been written.
//
// "Characters" are units of UTF-16: one above U+FFFF counts two. Memory does not depend on the
// number of rows, but for some bytes a page when the rows of several tables are mixed.
//
// Errors have the numbers of FailureNumber and descriptions that name what they are about; failures
// of the machine come as std::filesystem::filesystem_error, as from the file system.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/errors/error.h"
#include "tavolin/export/mdb/catalog.h"
#include "tavolin/export/mdb/page_file.h"
#include "tavolin/export/mdb/row.h"
#include "tavolin/export/mdb/row_page.h"

namespace tavolin::mdb {

class TableWriter {
  public:
    using Texts = std::span<const std::string_view>;

    // Adds a row with one text for each column. A text of more than 255 characters raises
    // kFieldTooSmall, a row that no page can hold kRecordTooLarge; the row is not added then. The
    // row's limit is 4060 bytes: texts of Latin characters alone take a byte a character and two,
    // others two bytes a character. A lone surrogate becomes U+FFFD. A text that begins with U+FEFF
    // and has a character whose code ends in 00 has no form in a file and raises 5.
    void Append(Texts values);
    void Append(std::initializer_list<std::string_view> values) {
        Append(Texts(values.begin(), values.size()));
    }

  private:
    friend class Writer;
    TableWriter(PageFile& file, std::string_view name, Texts columns, PageNumber definition);

    void AppendValue(std::size_t column, std::string_view value);
    Message Where(const char* what, std::size_t column, const std::string& cause) const;
    void Finish();

    PageFile& file_;
    std::string name_;
    std::vector<std::string> columns_;
    PageNumber definition_;
    RowStream rows_;
    Row row_;
};

class Writer {
  public:
    // Nothing is written before the first full page, or Close.
    explicit Writer(std::string_view path);

    // Adds a table, empty at first; the reference holds until Close. A column or table name that
    // the format does not allow raises kInvalidName, two columns of one name kDuplicateField, the
    // name of a table in the file kTableExists; all without regard to case. See names.h.
    // More than 25 columns raise 5.
    TableWriter& CreateTable(std::string_view name, TableWriter::Texts columns);
    TableWriter& CreateTable(std::string_view name,
                             std::initializer_list<std::string_view> columns) {
        return CreateTable(name, TableWriter::Texts(columns.begin(), columns.size()));
    }

    // Completes the file and puts it in its place. Nothing may be called afterwards.
    void Close();

  private:
    void CheckColumns(std::string_view table, TableWriter::Texts columns) const;

    PageFile file_;
    Catalog catalog_;
    std::vector<std::unique_ptr<TableWriter>> tables_;
};

}  // namespace tavolin::mdb
