// Whole-file input and output.
#include "tavolin/engine/report.h"
#include "tavolin/persist/database_file.h"
#include "tavolin/persist/text_file.h"

namespace tavolin {

// The file number is a handle of the platform's; whatever it is, a file is opened and closed here.

void CVLDBEngine::PrintToTextFile(const std::function<void(TextSink&)>& write,
                                  TextEncoding encoding, std::string_view path, std::uint8_t) {
    Report("CVLDBEngine:PrintToTextFile Method", [&] {
        TextFileWriter file(path, encoding);
        file.Put("\"");
        write(file);
        file.Put("\"", kLineBreak);
        file.Close();
    });
}

void CVLDBEngine::PrintToBinaryFile(std::span<const std::uint8_t> data, std::string_view path,
                                    std::uint8_t, bool cut_tail,
                                    const std::function<void()>& last_look) {
    Report("CVLDBEngine:PrintToBinaryFile Method",
           [&] { WriteDatabaseFile(path, data, cut_tail, last_look); });
}

ByteBuffer CVLDBEngine::GetBinaryFile(std::string_view path, std::uint8_t) {
    return Report("CVLDBEngine:GetBinaryFile Method", [&] { return ReadDatabaseFile(path); });
}

}  // namespace tavolin
