// The texts and the lines of a dump; docs/dump-format.md tells what they look like.
//
//     AppendQuoted("two\nlines", line);                // "two\nlines", with the quotes
//     DumpLine words("note 1 \"text\"", 12);
//     words.Word(); words.Number(); words.Text();      // note, 1, text
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tavolin::cli {

// A line that cannot be read, and why.
class DumpError : public std::runtime_error {
  public:
    DumpError(std::uint64_t line, const std::string& what)
        : std::runtime_error(what), line_(line) {}
    std::uint64_t line() const { return line_; }

  private:
    std::uint64_t line_;
};

// Appends a text between quotes, so that it stands in one line of well-formed UTF-8 that shows what
// is in it. Whatever bytes a text holds, Text() gives them back.
void AppendQuoted(std::string_view text, std::string& out);

// One line, taken apart from left to right. What is not as expected raises DumpError.
class DumpLine {
  public:
    DumpLine(std::string_view line, std::uint64_t number) : rest_(line), number_(number) {
        SkipBlanks();
    }

    std::uint64_t number() const { return number_; }
    bool Done() const { return rest_.empty(); }
    bool AtText() const { return !Done() && rest_.front() == '"'; }
    // A word without quotes; empty at the end of the line.
    std::string_view Word();
    // The word, if the line goes on with it.
    bool TakeWord(std::string_view word);
    std::int32_t Number();
    // Puts a text between quotes into `into`.
    void TextInto(std::string& into);
    std::string Text();
    // There is nothing more.
    void Finish() const;

    [[noreturn]] void Fail(const std::string& what) const { throw DumpError(number_, what); }

  private:
    void SkipBlanks();
    void TakeEscape(std::string& into);
    void TakeCharacter(std::string& into);
    std::uint32_t Hex(std::size_t digits);

    std::string_view rest_;
    std::uint64_t number_;
};

}  // namespace tavolin::cli
