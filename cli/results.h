// What a command answers: rows under headers, in the form that the user asked for.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "cli/output.h"
#include "cli/text_table.h"

namespace tavolin::cli {

struct ResultStyle {
    Format format = Format::kTable;
    bool header = true;
    bool count = true;
    std::size_t width = 0;  // of the terminal; 0 for no limit
    TextTable::Fit fit = TextTable::Fit::kCut;
};

// "1 record", "3 records", "2 countries".
std::string Counted(std::size_t count, std::string_view noun);

// A value as it stands in a CSV file.
std::string CsvField(std::string_view value);
// A whole line of one, with the line break.
std::string CsvLine(const std::vector<std::string>& row);

class Results {
  public:
    // All rows but those of a table are printed as they come, a table at the end.
    Results(std::ostream& out, const ResultStyle& style, std::vector<std::string> headers);

    // The columns hold numbers: at the right edge in a table, without quotes in JSON.
    Results& Numbers(std::initializer_list<std::size_t> columns);

    void Add(const std::vector<std::string>& row);
    // Prints what is still to be printed; with a noun, the number of rows behind a table.
    void Finish(std::string_view noun = {});

    // Whether anybody still reads it: false after somebody left the pager.
    bool wanted() const;

  private:
    void PrintJson(const std::vector<std::string>& row);
    void PrintLines(const std::vector<std::string>& row);

    std::ostream& out_;
    ResultStyle style_;
    std::vector<std::string> headers_;
    std::vector<std::string> names_;  // in JSON, each with its colon
    std::vector<bool> numbers_;
    TextTable table_;
    std::size_t count_ = 0;
};

// One thing with its properties, by name: a line each in a table, else one row.
using Properties = std::vector<std::pair<std::string, std::string>>;
void PrintProperties(std::ostream& out, const ResultStyle& style, const Properties& properties,
                     std::string_view title = "Property");

}  // namespace tavolin::cli
