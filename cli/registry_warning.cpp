#include "cli/registry_warning.h"

#include <iostream>
#include <string>

#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/paths.h"
#include "tavolin/persist/paths.h"

namespace tavolin::cli {
namespace {

// The report, which only grows, says last what has been done.
bool SavedSince(const CVLDBEngine& engine, std::size_t report_size) {
    const std::string& report = engine.LogReport();
    const std::string line =
        "DATABASE SAVED! As " + JoinPath(engine.DBPath(), engine.DBName()) + "\r\n";
    return report.size() >= report_size + line.size() && report.ends_with(line);
}

}  // namespace

void WarnOfRegistry(const CVLDBEngine& engine, const std::function<void()>& save) {
    const std::size_t report_size = engine.LogReport().size();
    try {
        save();
    } catch (const Error& error) {
        if (!SavedSince(engine, report_size)) throw;
        std::cout.flush();
        std::cerr << "warning: the database is saved; the owner registry is not: ";
        PrintError(std::cerr, error);
        std::cerr << "  folder: " << Printable(MachinePath(LibraryFolder()))
                  << "; the variable TAVOLIN_FOLDER names another one\n";
    }
}

}  // namespace tavolin::cli
