// The whole database as SQL.
#include "cli/commands.h"
#include "cli/log_activities.h"
#include "cli/paths.h"
#include "cli/sql_writer.h"
#include "cli/text_output.h"

namespace tavolin::cli {

void ExportSqlCommand(Host& host, const Arguments& words) {
    CVLDBEngine& engine = host.engine();
    const std::string otherwise = WithoutExtension(engine.DBName()) + ".sql";
    const std::string path = OutputPath(words.Get("OUT", otherwise));
    AskToWrite(host, words, path);
    TextOutput out(path);
    SqlWriter(engine, engine.LogedOnIsOwner(engine.LogedOnUser()), LogFileOf(host.Path()),
              out.text(), [&] { out.Flow(); })
        .Write();
    out.Finish();
    if (path != "-") host.Note("exported to " + path);
}

}  // namespace tavolin::cli
