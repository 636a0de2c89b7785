#include "cli/text_output.h"

#include <filesystem>
#include <iostream>

#include "cli/log_activities.h"
#include "tavolin/persist/paths.h"

namespace tavolin::cli {

void AskToWrite(Host& host, const Arguments& words, const std::string& path) {
    namespace fs = std::filesystem;
    if (path == "-" || !fs::exists(PathOf(path))) return;
    if (fs::is_directory(PathOf(path))) throw CommandFailure(path + " is a folder");
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
    OrCannotWrite(path_, [&] {
        const PathKind kind = files.Kind(target);
        // A device or a pipe has no place to be taken.
        if (kind == PathKind::kOther) {
            file_ = files.Open(target, FileMode::kWrite);
            return;
        }
        path_ = files.FollowLink(target);
        for (int i = 1; beside_.empty() || files.Exists(beside_); ++i) {
            beside_ = path_ + ".tavolin-new" + std::to_string(i);
        }
        file_ = files.Create(beside_, kind == PathKind::kFile ? path_ : "");
    });
}

TextOutput::~TextOutput() {
    if (!file_) return;
    file_.reset();
    try {
        if (!beside_.empty()) FileSystem::Current().Delete(beside_);
    } catch (const std::filesystem::filesystem_error&) {
        // It is in nobody's way.
    }
}

void TextOutput::Write() {
    if (Interrupted()) throw Cancelled(MachinePath(path_) + " is not made");
    if (!file_) {
        if (!std::cout.write(text_.data(), static_cast<std::streamsize>(text_.size()))) {
            throw CommandFailure("the output cannot be written");
        }
    } else {
        OrCannotWrite(path_, [&] {
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
    if (!file_ || beside_.empty()) {
        file_.reset();
        return;
    }
    OrCannotWrite(path_, [&] {
        FileSystem& files = FileSystem::Current();
        file_->Flush();
        file_->Close();
        files.Rename(beside_, path_);
        file_.reset();
        files.FlushFolder(SplitPath(path_).dir);
    });
}

}  // namespace tavolin::cli
