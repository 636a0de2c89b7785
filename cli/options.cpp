#include "cli/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <utility>

#include "cli/data_folder.h"
#include "cli/environment.h"
#include "cli/failure.h"
#include "cli/paths.h"
#include "cli/tools.h"
#include "tavolin/version.h"

namespace tavolin::cli {
namespace {

const std::string kFooter =
    "`tavolin check FILE` says whether a database file is damaged, and where; `tavolin salvage\n"
    "FILE NEW` makes a new database of what can still be read of one. For a database that is\n"
    "named so itself write ./check.\n"
    "Without COMMAND, commands are read from the input. `tavolin help` lists the commands,\n"
    "`tavolin help COMMAND` explains one; for a database of that name write ./help.\n"
    "The password is that of --password-file or TAVOLIN_PASSWORD; on a terminal it is asked\n"
    "for when it is needed.\n"
    "The registry of owners stands in the folder TAVOLIN_FOLDER, else beside the program, or in\n" +
    std::string(kUsersFolder) +
    " when you may not write there.\n"
    "Exit status: 0, 1 for a refused or failed command, 2 for words that make no sense,\n"
    "130 after Ctrl-C; `tavolin help check` and `tavolin help salvage` tell theirs.";

std::string UserName(const std::string& given) {
    if (!given.empty()) return given;
    const std::string named = Environment("TAVOLIN_USER");
    return named.empty() ? SystemUserName() : named;
}

std::optional<std::string> Password(const std::string& file) {
    if (!file.empty()) return FirstLine(file);
    std::string named = Environment("TAVOLIN_PASSWORD");
    if (named.empty()) return std::nullopt;
    return named;
}

}  // namespace

std::optional<HostOptions> ParseOptions(std::vector<std::string> words) {
    HostOptions options;
    std::string password_file;
    std::string format = "table";
    bool no_header = false;
    bool no_pager = false;
    CLI::App app("Work on a Tavolin database file: tavolin [OPTIONS] FILE [COMMAND WORDS...]",
                 "tavolin");
    app.footer(kFooter);
    app.set_version_flag("--version", "tavolin " TAVOLIN_VERSION);
    app.add_option("FILE", options.file, "The database file; .cdb if it has no extension");
    app.add_option("--user", options.user,
                   "Who you are; else TAVOLIN_USER, else the system's name");
    app.add_option("--password-file", password_file, "A file whose first line is your password");
    app.add_option("--format", format, "How results are shown: table, csv, json or lines")
        ->check(CLI::IsMember(SettingValues("format")));
    app.add_flag("--no-header", no_header, "No headers in results");
    app.add_flag("--no-pager", no_pager, "Results longer than the screen are not paged");
    app.add_flag("--timing", options.output.timing, "Show how long each command took");
    app.add_flag("-q,--quiet", options.output.quiet, "Nothing but results and errors");
    app.add_flag("--keep-going", options.keep_going, "Go on after a failed command of a pipe");
    app.prefix_command();  // the command's own words are not looked at here
    try {
        std::reverse(words.begin(), words.end());  // as the parser wants them
        app.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) throw UsageError(error.what());
        app.exit(error);
        return std::nullopt;
    }
    options.words = app.remaining();
    if (!options.words.empty() && options.words[0] == "--") {
        options.words.erase(options.words.begin());
    }
    if (!options.words.empty() && options.words[0].starts_with('-')) {
        throw UsageError("there is no option " + options.words[0]);
    }
    if (options.file.empty())
        throw UsageError("FILE is missing; try `tavolin --help` or `tavolin help`");
    if (IsTool(options.file)) options.tool = std::exchange(options.file, {});
    if (options.file == "help") {
        options.words.insert(options.words.begin(), std::exchange(options.file, {}));
    }
    options.user = UserName(options.user);
    options.password = Password(password_file);
    ChangeSetting(options.output, "format", format);
    options.output.header = !no_header;
    options.output.pager = !no_pager;
    return options;
}

}  // namespace tavolin::cli
