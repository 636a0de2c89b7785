// CSV as RFC 4180 tells it, read record by record in one pass over a large buffer.
//
//     CsvReader reader(FileSource("cities.csv"));
//     while (reader.Next()) Use(reader.fields());
//
// Fields stand between commas; a field that begins with a quote ends with one, holds commas, line
// breaks and doubled quotes, and may be followed by nothing but a comma or the end of the record.
// Lines end in CRLF, LF or CR. Lines with nothing in them are passed over. Text is UTF-8, with or
// without a byte order mark at its beginning.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "cli/byte_source.h"

namespace tavolin::cli {

// What is wrong, and where: the line that the record begins on and the field's number, from 1.
class CsvError : public std::runtime_error {
  public:
    CsvError(std::uint64_t line, std::size_t column, const std::string& what)
        : std::runtime_error(what), line_(line), column_(column) {}
    std::uint64_t line() const { return line_; }
    std::size_t column() const { return column_; }

  private:
    std::uint64_t line_;
    std::size_t column_;
};

class CsvReader {
  public:
    // The buffer grows when a record does not fit in it.
    explicit CsvReader(ByteSource source, std::size_t buffer_size = std::size_t{1} << 20);

    // Reads the next record; false at the end. Raises CsvError, and must not be called again then.
    bool Next();

    // The record's fields, never none after Next() was true. They hold until the next call of it.
    const std::vector<std::string_view>& fields() const { return fields_; }
    // The line, from 1, that the record begins on.
    std::uint64_t line() const { return line_; }
    // How many bytes of the source have been read as records.
    std::uint64_t bytes_read() const { return bytes_before_ + cursor_; }

  private:
    struct Span {
        std::size_t begin;  // counted from the record's beginning, which moves with the buffer
        std::size_t size;
    };
    static constexpr int kEnd = -1;

    int Peek() {
        if (cursor_ == end_ && !Fill()) return kEnd;
        return static_cast<unsigned char>(buffer_[cursor_]);
    }
    bool Fill();
    void SkipByteOrderMark();
    bool SkipLineBreak();
    bool ReadField();
    Span ReadPlain();
    Span ReadQuoted();
    void CutFields();
    [[noreturn]] void Fail(std::size_t column, const std::string& what) const;

    ByteSource source_;
    std::vector<char> buffer_;
    std::size_t record_ = 0;  // where the record begins in the buffer
    std::size_t cursor_ = 0;
    std::size_t end_ = 0;
    std::uint64_t bytes_before_ = 0;  // bytes that have left the buffer
    std::uint64_t line_ = 0;
    std::uint64_t next_line_ = 1;
    bool started_ = false;
    std::vector<Span> spans_;
    std::vector<std::string_view> fields_;
};

}  // namespace tavolin::cli
