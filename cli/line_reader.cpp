#include "cli/line_reader.h"

#include <cstring>

namespace tavolin::cli {

bool LineReader::Fill() { return ReadMore(source_, buffer_, begin_, end_); }

bool LineReader::Next() {
    std::size_t looked = 0;
    const char* found = nullptr;
    while (true) {
        const char* const from = buffer_.data() + begin_;
        const std::size_t there = end_ - begin_;
        if (there > looked) {
            found = static_cast<const char*>(std::memchr(from + looked, '\n', there - looked));
        }
        looked = there;
        if (found != nullptr || !Fill()) break;
    }
    if (found == nullptr && begin_ == end_) return false;
    const char* const from = buffer_.data() + begin_;
    const std::size_t size =
        found != nullptr ? static_cast<std::size_t>(found - from) : end_ - begin_;
    line_ = {from, size};
    cut_off_ = found == nullptr;
    begin_ += size + (cut_off_ ? 0 : 1);
    bytes_read_ += size + 1;
    if (line_.ends_with('\r')) line_.remove_suffix(1);
    if (++number_ == 1 && line_.starts_with("\xEF\xBB\xBF")) line_.remove_prefix(3);
    return true;
}

}  // namespace tavolin::cli
