#include "cli/text_output.h"

#include <filesystem>
#include <iostream>

#include "cli/failure.h"
#include "cli/log_activities.h"
#include "cli/paths.h"
#include "tavolin/persist/paths.h"

namespace tavolin::cli {
namespace {

template <class Body>
void OrFail(const std::string& path, Body&& body) {
    try {
        body();
    } catch (const std::filesystem::filesystem_error& error) {
        throw CommandFailure(path + " cannot be written: " + error.code().message());
    }
}

}  // namespace

void AskToWrite(Host& host, const Arguments& words, const std::string& path) {
    namespace fs = std::filesystem;
    if (path == "-" || !fs::exists(PathOf(path))) return;
    const std::string target = LibraryPath(path);
    for (const std::string& own : {host.Path(), LogFileOf(host.Path())}) {
        if (!IsOneFile(target, LibraryPath(own))) continue;
        throw CommandFailure(path + " is the database's own file");
    }
    if (fs::is_regular_file(PathOf(path))) host.Confirm(words, "Write over " + path + "?", false);
}

TextOutput::TextOutput(const std::string& path) : path_(path) {
    if (path == "-") return;
    FileSystem& files = FileSystem::Current();
    const std::string target = LibraryPath(path);
    OrFail(path_, [&] {
        const PathKind kind = files.Kind(target);
        if (kind == PathKind::kFolder) throw CommandFailure(path_ + " is a folder");
        // A device or a pipe has no place to be taken.
        if (kind == PathKind::kOther) {
            device_ = files.Open(target, FileMode::kWrite);
            file_ = device_.get();
        } else {
            file_ = &replacement_.emplace(files, target).Begin();
        }
    });
}

void TextOutput::Write() {
    if (Interrupted()) throw Cancelled(path_ + " is not made");
    if (!file_) {
        if (!std::cout.write(text_.data(), static_cast<std::streamsize>(text_.size()))) {
            throw CommandFailure("the output cannot be written");
        }
    } else {
        OrFail(path_, [&] {
            WriteAll(*file_, {reinterpret_cast<const std::uint8_t*>(text_.data()), text_.size()});
        });
    }
    written_ += text_.size();
    text_.clear();
    progress_.Show(0, written_ / 1'000'000);
}

void TextOutput::Finish() {
    Write();
    progress_.Clear();
    if (replacement_) OrFail(path_, [&] { replacement_->Commit(); });
}

}  // namespace tavolin::cli
