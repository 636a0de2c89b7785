#include "cli/csv_reader.h"

#include <algorithm>
#include <utility>

#include "cli/display_text.h"

namespace tavolin::cli {

CsvReader::CsvReader(ByteSource source, std::size_t buffer_size)
    : source_(std::move(source)), buffer_(std::max<std::size_t>(buffer_size, 4)) {}

bool CsvReader::Next() {
    if (!std::exchange(started_, true)) SkipByteOrderMark();
    do {
        record_ = cursor_;
        if (Peek() == kEnd) return false;
    } while (SkipLineBreak());
    record_ = cursor_;
    if (Peek() == kEnd) return false;
    line_ = next_line_;
    spans_.clear();
    while (ReadField()) {
    }
    CutFields();
    return true;
}

// Reads more behind the bytes of the record that is being read.
bool CsvReader::Fill() {
    bytes_before_ += record_;
    cursor_ -= record_;
    return ReadMore(source_, buffer_, record_, end_);
}

void CsvReader::SkipByteOrderMark() {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    while (end_ < kMark.size() && Fill()) {
    }
    if (std::string_view(buffer_.data(), end_).substr(0, kMark.size()) == kMark) {
        cursor_ = kMark.size();
    }
}

bool CsvReader::SkipLineBreak() {
    const int c = Peek();
    if (c != '\r' && c != '\n') return false;
    ++cursor_;
    if (c == '\r' && Peek() == '\n') ++cursor_;
    ++next_line_;
    return true;
}

// Returns whether another field follows.
bool CsvReader::ReadField() {
    spans_.push_back(Peek() == '"' ? ReadQuoted() : ReadPlain());
    if (Peek() == kEnd || SkipLineBreak()) return false;
    if (Peek() != ',') Fail(spans_.size(), "text after the closing quote");
    ++cursor_;
    return true;
}

CsvReader::Span CsvReader::ReadPlain() {
    const std::size_t begin = cursor_ - record_;
    do {
        const char* const bytes = buffer_.data();
        while (cursor_ < end_) {
            const char c = bytes[cursor_];
            if (c == ',' || c == '\n' || c == '\r') return {begin, cursor_ - record_ - begin};
            ++cursor_;
        }
    } while (Fill());
    return {begin, cursor_ - record_ - begin};
}

// Doubled quotes become one where the field stands: what is written never overtakes what is read.
CsvReader::Span CsvReader::ReadQuoted() {
    ++cursor_;
    const std::size_t begin = cursor_ - record_;
    std::size_t size = 0;
    int before = 0;
    while (true) {
        const int c = Peek();
        if (c == kEnd) Fail(spans_.size() + 1, "a quote that is never closed");
        ++cursor_;
        if (c == '"') {
            if (Peek() != '"') return {begin, size};
            ++cursor_;
        } else if (c == '\r' || (c == '\n' && before != '\r')) {
            ++next_line_;
        }
        before = c;
        buffer_[record_ + begin + size++] = static_cast<char>(c);
    }
}

void CsvReader::CutFields() {
    fields_.clear();
    for (const Span& span : spans_) {
        fields_.emplace_back(buffer_.data() + record_ + span.begin, span.size);
        std::size_t bad = 0;
        if (IsUtf8(fields_.back(), bad)) continue;
        Fail(fields_.size(), "byte " + std::to_string(bad + 1) + " of the field, " +
                                 Printable(fields_.back().substr(bad, 1)) + ", is not UTF-8");
    }
}

void CsvReader::Fail(std::size_t column, const std::string& what) const {
    throw CsvError(line_, column, what);
}

}  // namespace tavolin::cli
