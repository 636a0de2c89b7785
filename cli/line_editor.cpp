#include "cli/line_editor.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <utility>

#include "cli/terminal.h"

#ifdef TAVOLIN_HAVE_EDITLINE
#include <editline/readline.h>
#include <locale.h>
#endif

namespace tavolin::cli {
namespace {

std::optional<std::string> ReadPlain() {
    std::string line;
    if (!std::getline(std::cin, line)) return std::nullopt;
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

#ifdef TAVOLIN_HAVE_EDITLINE

LineEditor::Completer active_completer;
std::vector<std::string> matches;

char* NextMatch(const char*, int state) {
    const auto index = static_cast<std::size_t>(state);
    return index < matches.size() ? strdup(matches[index].c_str()) : nullptr;
}

char** CompleteWord(const char* word, int start, int) {
    rl_attempted_completion_over = 1;
    const std::string_view line = rl_line_buffer;
    matches = active_completer(line.substr(0, static_cast<std::size_t>(start)), word);
    return matches.empty() ? nullptr : rl_completion_matches(word, NextMatch);
}

// The editor asks the C library what bytes make up a character. The answer for this thread is
// UTF-8 while it runs, whatever the environment says, and nothing else in the program is touched.
class Utf8Moment {
  public:
    Utf8Moment() : utf8_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
        if (utf8_ != nullptr) previous_ = uselocale(utf8_);
    }
    ~Utf8Moment() {
        if (utf8_ == nullptr) return;
        uselocale(previous_);
        freelocale(utf8_);
    }
    Utf8Moment(const Utf8Moment&) = delete;
    Utf8Moment& operator=(const Utf8Moment&) = delete;

  private:
    locale_t utf8_;
    locale_t previous_{};
};

std::optional<std::string> ReadEdited(const std::string& prompt) {
    const Utf8Moment utf8;
    char* const line = readline(prompt.c_str());
    if (line == nullptr) return std::nullopt;
    std::string text = line;
    std::free(line);
    if (!text.empty()) add_history(text.c_str());
    return text;
}

#else

std::optional<std::string> ReadEdited(const std::string& prompt) {
    return ReadTypedLine(prompt);
}

#endif

}  // namespace

#ifdef TAVOLIN_HAVE_EDITLINE
LineEditor::LineEditor(bool on_terminal, Completer completer) : on_terminal_(on_terminal) {
    active_completer = std::move(completer);
    if (!on_terminal_) return;
    const Utf8Moment utf8;
    rl_initialize();
    using_history();
    rl_attempted_completion_function = CompleteWord;
}

LineEditor::~LineEditor() { active_completer = nullptr; }
#else
LineEditor::LineEditor(bool on_terminal, Completer) : on_terminal_(on_terminal) {}
LineEditor::~LineEditor() = default;
#endif

std::optional<std::string> LineEditor::Read(const std::string& prompt) {
    if (!on_terminal_) return ReadPlain();
    ForgetInterrupt();
    std::optional<std::string> line = ReadEdited(prompt);
    if (line || !Interrupted()) return line;
    std::cin.clear();
    std::cout << '\n';
    return std::string();
}

}  // namespace tavolin::cli
