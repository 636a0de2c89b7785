// What a command answers: rows under headers, in the form that the user asked for.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "cli/text_table.h"

namespace tavolin::cli {

enum class Format {
    kTable,  // aligned columns, the number of rows behind them
    kCsv,    // RFC 4180 with LF, values as they are
    kLines,  // a "Name: value" line a field, an empty line between rows
};

struct ResultStyle {
    Format format = Format::kTable;
    bool header = true;
    bool count = true;
    std::size_t width = 0;  // of the terminal; 0 for no limit
};

// "1 record", "3 records", "2 countries".
std::string Counted(std::size_t count, std::string_view noun);

// A value as it stands in a CSV file.
std::string CsvField(std::string_view value);

class Results {
  public:
    // Rows of CSV and lines are printed as they come, a table at the end.
    Results(std::ostream& out, const ResultStyle& style, std::vector<std::string> headers);

    void Add(const std::vector<std::string>& row);
    // Prints what is still to be printed; with a noun, the number of rows behind a table.
    void Finish(std::string_view noun = {});

  private:
    void PrintCsv(const std::vector<std::string>& row);
    void PrintLines(const std::vector<std::string>& row);

    std::ostream& out_;
    ResultStyle style_;
    std::vector<std::string> headers_;
    TextTable table_;
    std::size_t count_ = 0;
};

}  // namespace tavolin::cli
