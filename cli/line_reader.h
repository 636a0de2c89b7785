// A text's lines, one at a time, from a large buffer.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/byte_source.h"

namespace tavolin::cli {

class LineReader {
  public:
    explicit LineReader(ByteSource source) : source_(std::move(source)), buffer_(1 << 20) {}

    // Reads the next line; false at the end.
    bool Next();
    // The line without its line break (LF or CRLF) and without a byte order mark; it holds until
    // the next call of Next.
    std::string_view line() const { return line_; }
    std::uint64_t number() const { return number_; }
    std::uint64_t bytes_read() const { return bytes_read_; }
    // Whether the line ended where the text does, with no line break behind it.
    bool cut_off() const { return cut_off_; }

  private:
    bool Fill();

    ByteSource source_;
    std::vector<char> buffer_;  // grows when a line does not fit in it
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::string_view line_;
    std::uint64_t number_ = 0;
    std::uint64_t bytes_read_ = 0;
    bool cut_off_ = false;
};

}  // namespace tavolin::cli
