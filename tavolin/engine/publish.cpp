// The database as text and as a web site.
#include "tavolin/base/text.h"
#include "tavolin/engine/report.h"
#include "tavolin/export/protection.h"
#include "tavolin/export/text_export.h"
#include "tavolin/persist/paths.h"
#include "tavolin/persist/text_file.h"

namespace tavolin {

void CVLDBEngine::MakeItText(std::string_view DirPath, std::string_view FileName) {
    static constexpr const char* kSource = "CVLDBEngine:MakeItText Method";
    Report(kSource, [&] {
        AskOpen(kSource);
        const bool named = !FileName.empty() && !EqualFold(FileName, DBName());
        const std::string name =
            (named ? std::string(FileName) : ReplaceFold(DBName(), DefaultExtension(), "")) + "txt";
        const std::string path = ExportPath(DirPath, name);
        const auto tables = database_->tables;
        const TextEncoding encoding = EncodingForText(*tables);
        AskToExportTo(path, *session_);
        PrintToTextFile([&](TextSink& sink) { WriteText(*tables, sink); }, encoding, path);
    });
}

void CVLDBEngine::MakeItHTML(std::string_view DirPath, std::string_view FileName) {
    static constexpr const char* kSource = "CVLDBEngine:MakeItHTML Method";
    Report(kSource, [&] {
        AskOpen(kSource);
        const auto tables = database_->tables;
        tables->MakeItHTML(DirPath, FileName);
    });
}

}  // namespace tavolin
