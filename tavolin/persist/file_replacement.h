// A file's new contents, which take its place in one step or not at all.
//
//     FileReplacement replacement(files, "C:\\Data\\Shop.mdb");
//     WriteAll(replacement.Begin(), bytes);
//     replacement.Commit();    // without it the file stays as it was
//
// The contents go to a sibling file in the same folder, which is deleted again unless it has been
// committed.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tavolin/persist/file_system.h"

namespace tavolin {

class TAVOLIN_API FileReplacement {
  public:
    // Opens the file to be replaced, if there is one. It must be an ordinary one that may be
    // written; a link stays a link, the file that it leads to is replaced.
    FileReplacement(FileSystem& files, std::string_view path);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    // The file to be replaced, or nothing; until Commit.
    File* old() const { return old_.get(); }

    // Creates the sibling, with the old file's permission bits; to write.
    File& Begin();
    // Puts the bytes on the disk and the sibling in the file's place. Only the last step of all,
    // which makes the exchange itself safe from a power cut, can fail with the new file already in
    // place. `last_look` is that of FileSystem::Replace.
    void Commit(const std::function<void()>& last_look = {});

  private:
    FileSystem& files_;
    std::string target_;
    std::string sibling_;
    std::unique_ptr<File> old_;
    std::unique_ptr<File> file_;
    bool sibling_there_ = false;
};

}  // namespace tavolin
