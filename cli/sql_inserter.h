// Rows of one SQL table, many in a statement.
//
//     SqlInserter rows(sink, "Customers", {"tavolin_position", "Name"});
//     rows.Begin(1);            // the number that tells the row from the table's others
//     rows.Text("Ann");
//     rows.End();
//     rows.Finish();
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tavolin::cli {

// Where text is appended, and who is asked now and then to carry it away.
struct SqlSink {
    std::string& text;
    std::function<void()> flow;
};

// Where texts go that SQL cannot hold as they are.
inline constexpr std::string_view kExactTexts = "tavolin_exact_texts";

class SqlInserter {
  public:
    // `columns` are those behind the first one, which is the row's number.
    SqlInserter(SqlSink& sink, std::string table, std::string number_column,
                std::vector<std::string> columns);

    void Begin(std::int64_t number);
    void Number(std::int64_t number);
    void Text(std::string_view text);
    void Null();
    void End();
    void Finish();

  private:
    void NextValue();

    SqlSink& sink_;
    std::string table_;
    std::vector<std::string> columns_;
    std::string head_;
    std::int64_t number_ = 0;
    std::size_t column_ = 0;
    std::size_t rows_ = 0;
    std::size_t begin_ = 0;
    std::size_t bytes_ = 0;
    std::string exact_;  // rows of kExactTexts that wait for the statement's end
};

}  // namespace tavolin::cli
