// A text that is being made piece by piece.
//
//     TextSink sink;
//     sink.text += "a record";
//     sink.Pause();
//
// Whoever makes it appends UTF-8 to `text` and calls Pause() often, at least after every record and
// always behind a whole character. Here the text is gathered; a sink that leads to a file takes
// away at a pause what has come together.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace tavolin {

class TextSink {
  public:
    virtual ~TextSink() = default;
    virtual void Pause() {}

    // Views and numbers, the latter in decimal, one after another.
    template <class... Pieces>
    void Put(const Pieces&... pieces) {
        (Add(pieces), ...);
    }

    std::string text;

  private:
    void Add(std::string_view piece) { text.append(piece); }
    void Add(std::int32_t number) {
        char digits[16];
        const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        text.append(digits, static_cast<std::size_t>(end - digits));
    }
};

}  // namespace tavolin
