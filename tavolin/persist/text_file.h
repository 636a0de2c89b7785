// Text files as hosts of the platform expect them: code page 1252 as long as every character fits
// it, UTF-8 with a byte-order mark from the first that does not, so that nothing is lost.
#pragma once

#include <memory>
#include <string_view>

#include "tavolin/base/text_sink.h"
#include "tavolin/persist/file_system.h"

namespace tavolin {

enum class TextEncoding {
    kAnsi,  // code page 1252; what is not in it as a numeric character reference, as "&#321;"
    kUtf8,  // UTF-8 behind a byte-order mark
};

// The encoding in which nothing of the text is lost.
TextEncoding EncodingFor(std::string_view text);

// A text on its way into a file, which is created or emptied at once. However long the text is, no
// more than about a MiB of it is in memory between two pauses. Raises the file errors of
// FileSystem; what has been written by then stays.
//
//     TextFileWriter file(path, TextEncoding::kUtf8);
//     for (...) {
//         file.text += line;
//         file.Pause();
//     }
//     file.Close();
class TextFileWriter : public TextSink {
  public:
    TextFileWriter(std::string_view path, TextEncoding encoding);
    void Pause() override;
    // Writes what is left. A writer that goes without it has met a failure and writes nothing more.
    void Close();

  private:
    void Write();

    TextEncoding encoding_;
    std::unique_ptr<File> file_;
};

// Adds to the end of the file, which is created when it is missing. A file in code page 1252 that
// gets its first character from outside is rewritten whole, in one step. Raises the file errors of
// FileSystem.
void AppendTextFile(std::string_view path, std::string_view text);

}  // namespace tavolin
