// Text that is written as it is made: to the standard output, or to a file that takes its place in
// one step when it is whole.
//
//     TextOutput out("shop.txt");    // "-" is the standard output
//     out.text() += "a line\n";
//     out.Flow();                    // now and then
//     out.Finish();
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "cli/host.h"
#include "cli/progress.h"
#include "cli/terminal.h"
#include "tavolin/persist/file_replacement.h"
#include "tavolin/persist/file_system.h"

namespace tavolin::cli {

// Asks before a file that is there is written over; the database's own is refused. The path is as
// OutputPath gives it.
void AskToWrite(Host& host, const Arguments& words, const std::string& path);

class TextOutput {
  public:
    // Without Finish nothing is left of a file, and an older one is as it was, also after Ctrl-C,
    // which is caught meanwhile. CommandFailure for a path that cannot be written.
    explicit TextOutput(const std::string& path);

    // What is still to be written; whoever makes text appends it here.
    std::string& text() { return text_; }
    // Writes it when there is enough of it. Raises Cancelled after Ctrl-C, and CommandFailure when
    // the output cannot be written; so does Finish.
    void Flow() {
        if (text_.size() >= kEnough || Interrupted()) Write();
    }
    void Finish();

  private:
    static constexpr std::size_t kEnough = std::size_t{1} << 17;

    void Write();

    const InterruptCatcher catcher_;
    std::string path_;
    std::optional<FileReplacement> replacement_;
    std::unique_ptr<File> device_;
    File* file_ = nullptr;  // one of these; neither for the standard output
    std::string text_;
    Progress progress_{0, "MB"};
    std::uint64_t written_ = 0;
};

}  // namespace tavolin::cli
