// The database as an Access database.
#include "tavolin/base/text.h"
#include "tavolin/engine/report.h"

namespace tavolin {

void CVLDBEngine::MakeItMDB(std::string_view DirPath, std::string_view FileName) {
    static constexpr const char* kSource = "CVLDBEngine:MakeItMDB Method";
    Report(kSource, [&] {
        AskOpen(kSource);
        const auto tables = database_->tables;
        const bool named = !FileName.empty() && !EqualFold(FileName, DBName());
        tables->MakeItMDB(DirPath, named ? std::string(FileName) : DBName());
    });
}

}  // namespace tavolin
