#include "cli/sql_inserter.h"

#include <utility>

#include "cli/sql_text.h"

namespace tavolin::cli {
namespace {

constexpr std::size_t kMostRows = 500;
constexpr std::size_t kManyBytes = std::size_t{1} << 18;

std::string Hex(std::string_view bytes) {
    std::string hex;
    for (const char c : bytes) {
        const auto byte = static_cast<std::uint8_t>(c);
        hex += "0123456789ABCDEF"[byte >> 4];
        hex += "0123456789ABCDEF"[byte & 0xF];
    }
    return hex;
}

}  // namespace

SqlInserter::SqlInserter(SqlSink& sink, std::string table, std::string number_column,
                         std::vector<std::string> columns)
    : sink_(sink), table_(std::move(table)), columns_(std::move(columns)) {
    head_ = "INSERT INTO " + QuotedName(table_) + " (" + QuotedName(number_column);
    for (const std::string& column : columns_) head_ += ", " + QuotedName(column);
    head_ += ") VALUES\n";
}

void SqlInserter::Begin(std::int64_t number) {
    begin_ = sink_.text.size();
    sink_.text.append(rows_ == 0 ? head_ : ",\n").append("(").append(std::to_string(number));
    number_ = number;
    column_ = 0;
}

void SqlInserter::NextValue() {
    sink_.text += ", ";
    ++column_;
}

void SqlInserter::Number(std::int64_t number) {
    NextValue();
    sink_.text += std::to_string(number);
}

void SqlInserter::Null() {
    NextValue();
    sink_.text += "NULL";
}

void SqlInserter::Text(std::string_view text) {
    NextValue();
    const SqlText storable(text);
    AppendLiteral(storable, sink_.text);
    if (storable.exact) return;
    exact_ +=
        exact_.empty() ? "INSERT INTO \"" + std::string(kExactTexts) + "\" VALUES\n(" : ",\n(";
    AppendLiteral(SqlText(table_), exact_);
    exact_ += ", " + std::to_string(number_) + ", ";
    AppendLiteral(SqlText(columns_[column_ - 1]), exact_);
    exact_ += ", '" + Hex(text) + "')";
}

void SqlInserter::End() {
    sink_.text += ')';
    bytes_ += sink_.text.size() - begin_;
    if (++rows_ == kMostRows || bytes_ >= kManyBytes) {
        Finish();
    } else {
        sink_.flow();
    }
}

void SqlInserter::Finish() {
    if (rows_ > 0) sink_.text += ";\n";
    if (!exact_.empty()) sink_.text += std::exchange(exact_, {}) + ";\n";
    rows_ = bytes_ = 0;
    sink_.flow();
}

}  // namespace tavolin::cli
