#include "cli/byte_source.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

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

bool ReadMore(const ByteSource& source, std::vector<char>& buffer, std::size_t& begin,
              std::size_t& end) {
    if (begin > 0) {
        std::memmove(buffer.data(), buffer.data() + begin, end - begin);
        end -= begin;
        begin = 0;
    }
    if (end == buffer.size()) buffer.resize(2 * buffer.size());
    const std::size_t count = source(buffer.data() + end, buffer.size() - end);
    end += count;
    return count > 0;
}

}  // namespace tavolin::cli
