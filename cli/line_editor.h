// The lines of a session: with a prompt, history and editing on a terminal, plainly from elsewhere.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavolin::cli {

class LineEditor {
  public:
    // The words that may stand where `word` begins, after `before` on the same line.
    using Completer =
        std::function<std::vector<std::string>(std::string_view before, std::string_view word)>;

    // One editor at a time.
    LineEditor(bool on_terminal, Completer completer);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    // The next line without its line break, or nothing at the end of input. Ctrl-C gives up the
    // line and gives an empty one. The prompt is shown on a terminal only.
    std::optional<std::string> Read(const std::string& prompt);

  private:
    bool on_terminal_;
};

}  // namespace tavolin::cli
