// Text that is written as it is made: to the standard output, or to a file that takes its place in
// one step when it is whole.
//
//     TextOutput out("shop.txt");    // "-" is the standard output
//     out.text() += "a line\n";
//     out.Flow();                    // now and then
//     out.Finish();
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "cli/failure.h"
#include "cli/host.h"
#include "cli/paths.h"
#include "cli/progress.h"
#include "cli/terminal.h"
#include "tavolin/persist/file_system.h"

namespace tavolin::cli {

// Asks before a file that is there is written over; the database's own is refused, and a folder.
void AskToWrite(Host& host, const Arguments& words, const std::string& path);

// Runs body(), which writes a file, and raises CommandFailure for what the machine refuses.
template <class Body>
void OrCannotWrite(const std::string& path, Body&& body) {
    try {
        body();
    } catch (const std::filesystem::filesystem_error& error) {
        throw CommandFailure(MachinePath(path) + " cannot be written: " + error.code().message());
    }
}

class TextOutput {
  public:
    explicit TextOutput(const std::string& path);
    // Without Finish nothing is left of a file, and an older one is as it was.
    ~TextOutput();
    TextOutput(const TextOutput&) = delete;
    TextOutput& operator=(const TextOutput&) = delete;

    // What is still to be written; whoever makes text appends it here.
    std::string& text() { return text_; }
    // Writes it when there is enough of it. Raises CommandFailure after Ctrl-C and when the output
    // cannot be written.
    void Flow() {
        if (text_.size() >= kEnough || Interrupted()) Write();
    }
    void Finish();

  private:
    static constexpr std::size_t kEnough = std::size_t{1} << 17;

    void Write();

    std::string path_;
    std::string beside_;
    std::unique_ptr<File> file_;
    std::string text_;
    Progress progress_{0, "MB"};
    std::uint64_t written_ = 0;
};

}  // namespace tavolin::cli
