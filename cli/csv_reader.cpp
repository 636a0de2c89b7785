#include "cli/csv_reader.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <utility>

#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/paths.h"

namespace tavolin::cli {

ByteSource FileSource(const std::string& path) {
    const auto file = std::make_shared<std::ifstream>(PathOf(path), std::ios::binary);
    if (!*file || std::filesystem::is_directory(PathOf(path))) {
        throw CommandFailure("the file " + path + " cannot be opened");
    }
    return [file, path](char* into, std::size_t room) {
        file->read(into, static_cast<std::streamsize>(room));
        if (file->bad()) throw CommandFailure("the file " + path + " cannot be read");
        return static_cast<std::size_t>(file->gcount());
    };
}

ByteSource TextSource(std::string_view text, std::size_t step) {
    return [text, step](char* into, std::size_t room) mutable {
        const std::size_t size = std::min({text.size(), room, step});
        std::memcpy(into, text.data(), size);
        text.remove_prefix(size);
        return size;
    };
}

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

// Makes room behind the bytes of the record that is being read, and reads more.
bool CsvReader::Fill() {
    if (record_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + record_, end_ - record_);
        bytes_before_ += record_;
        cursor_ -= record_;
        end_ -= record_;
        record_ = 0;
    }
    if (end_ == buffer_.size()) buffer_.resize(2 * buffer_.size());
    const std::size_t count = source_(buffer_.data() + end_, buffer_.size() - end_);
    end_ += count;
    return count > 0;
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
