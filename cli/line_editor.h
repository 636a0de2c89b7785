// The lines of a session: with a prompt, history and editing on a terminal, plainly from elsewhere.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "cli/completion.h"
#include "cli/history.h"

namespace tavolin::cli {

class LineEditor {
  public:
    // What may stand at the end of a line.
    using Completer = std::function<LineCompletion(std::string_view line)>;

    // One editor at a time.
    LineEditor(bool on_terminal, Completer completer);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    // The next line without its line break, or nothing at the end of input. Ctrl-C gives up the
    // line and gives an empty one. The prompt is shown on a terminal only.
    std::optional<std::string> Read(const std::string& prompt);

  private:
    void Remember(const std::string& line);

    bool on_terminal_;
    bool edits_;  // not where the output goes elsewhere: editing would write to it
    History history_;
};

}  // namespace tavolin::cli
