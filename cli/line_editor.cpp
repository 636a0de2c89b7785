#include "cli/line_editor.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <utility>

#include "cli/terminal.h"
#include "tavolin/base/utf8.h"

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

char kWordBreaks[] = " \t\n";

char* NextMatch(const char*, int state) {
    const auto index = static_cast<std::size_t>(state);
    return index < matches.size() ? strdup(matches[index].c_str()) : nullptr;
}

// The editor's word begins behind the last blank, which may stand in the quotes of a longer one.
std::vector<std::string> FromTheEditorsWord(const LineCompletion& completion, std::string_view line,
                                            std::size_t word_begin) {
    std::vector<std::string> words;
    for (const std::string& word : completion.words) {
        const std::string whole = std::string(line.substr(0, completion.begin)) + word;
        if (whole.starts_with(line.substr(0, word_begin)))
            words.push_back(whole.substr(word_begin));
    }
    return words;
}

// The places that the editor gives are counted in characters.
std::string_view LineToTheCursor() {
    const std::string_view line = rl_line_buffer;
    std::size_t end = 0;
    for (int i = 0; i < rl_point && end < line.size(); ++i) {
        end += FirstUnit(line.substr(end)).length;
    }
    return line.substr(0, end);
}

char** CompleteWord(const char* word, int, int) {
    rl_attempted_completion_over = 1;
    const std::string_view line = LineToTheCursor();
    const std::size_t size = std::strlen(word);
    if (size > line.size()) return nullptr;
    matches = FromTheEditorsWord(active_completer(line), line, line.size() - size);
    if (matches.empty()) return nullptr;
    const bool goes_on =
        matches.size() == 1 && (matches[0].ends_with('=') || matches[0].ends_with('/'));
    rl_completion_append_character = goes_on ? '\0' : ' ';
    return rl_completion_matches(word, NextMatch);
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
    return text;
}

#else

std::optional<std::string> ReadEdited(const std::string& prompt) { return ReadTypedLine(prompt); }

#endif

}  // namespace

#ifdef TAVOLIN_HAVE_EDITLINE
LineEditor::LineEditor(bool on_terminal, Completer completer)
    : on_terminal_(on_terminal), edits_(on_terminal && OutputIsTerminal()) {
    active_completer = std::move(completer);
    if (!edits_) return;
    const Utf8Moment utf8;
    rl_initialize();
    using_history();
    for (const std::string& line : history_.Lines()) add_history(line.c_str());
    rl_basic_word_break_characters = kWordBreaks;
    rl_completer_word_break_characters = kWordBreaks;
    rl_completer_quote_characters = nullptr;
    rl_attempted_completion_function = CompleteWord;
}

LineEditor::~LineEditor() { active_completer = nullptr; }

void LineEditor::Remember(const std::string& line) {
    if (line.empty()) return;
    const Utf8Moment utf8;
    add_history(line.c_str());
    history_.Add(line);
}
#else
LineEditor::LineEditor(bool on_terminal, Completer)
    : on_terminal_(on_terminal), edits_(on_terminal) {}
LineEditor::~LineEditor() = default;
void LineEditor::Remember(const std::string&) {}
#endif

std::optional<std::string> LineEditor::Read(const std::string& prompt) {
    if (!on_terminal_) return ReadPlain();
    ForgetInterrupt();
    std::optional<std::string> line = edits_ ? ReadEdited(prompt) : ReadTypedLine(prompt);
    if (line && edits_) Remember(*line);
    if (line || !Interrupted()) return line;
    std::cin.clear();
    std::cout << '\n';
    return std::string();
}

}  // namespace tavolin::cli
