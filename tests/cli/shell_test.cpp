// A session at a terminal, what a system's shell completes, and the help.
#include <sstream>

#include "cli/help.h"
#include "tests/cli/terminal.h"

#ifndef _WIN32

namespace tavolin::cli {
namespace {

TEST_F(HostTest, ASessionCompletesRemembersAndPages) {
    if (ProgramIsForeign()) GTEST_SKIP() << "the terminal is this machine's";
    MakeShop();
    ASSERT_EQ(0, Run("shop label People Name 'Full name'").status);
    const fs::path folder = Path("");
    std::string csv = "A,B\n";
    for (int i = 0; i < 30; ++i) csv += std::to_string(i) + ",x\n";
    Write("many.csv", csv);
    {
        Terminal terminal(folder, {"shop"}, true);
        terminal.Answer("> ", "upd\tpeo\t7 'full\tEve'\n");
        terminal.Answer("record 7 updated", "");
        terminal.Answer("> ", "import Many many.csv\n");
        terminal.Answer("30 records added", "");
        terminal.Answer("> ", "list Many\n");
        terminal.Answer("\n:", "q");  // less waits
        terminal.Answer("> ", "list Many --no-pager\n");
        terminal.Answer("30 records", "");
        terminal.Answer("> ", "quit --discard\n");
        EXPECT_EQ(0, terminal.Status());
    }
    Terminal terminal(folder, {"shop"}, true);
    terminal.Answer("> ", "\x1B[A\x1B[A\x1B[A\n");
    terminal.Answer("Table Many Not Found!", "");
}

TEST_F(HostTest, TheSystemsShellGetsWhatMayComeNext) {
    MakeShop();
    fs::create_directory(Path("a folder"));
    const std::pair<const char*, const char*> cases[] = {
        {"tavolin sh", "shop.cdb\n"},
        {"tavolin sal", "salvage\n"},
        {"tavolin --format js", "json\n"},
        {"tavolin --no-p", "--no-pager\n"},
        {"tavolin check sh", "shop.cdb\n"},
        {"tavolin shop cou", "count\n"},
        {"tavolin -q shop list P", "People\n"},
        {"tavolin shop add People Na", "Name=\n"},
        {"tavolin shop update People 7 Name=x ci", "City=\n"},
        {"tavolin shop export html a", "'a folder/\n"},
        {"tavolin shop export html 'a", "a folder/\n"},
        {"tavolin none.cdb list P", ""},
        {"tavolin", ""},
    };
    for (const auto& [line, expected] : cases) {
        const std::string words = std::string("complete -- \"") + line + "\"";
        EXPECT_EQ(expected, Run(words).out) << line;
    }
    const std::string before = Read("shop.log");
    EXPECT_EQ("", Run("complete -- 'tavolin shop list P'", "", "TAVOLIN_PASSWORD=wrong").out);
    EXPECT_EQ(before, Read("shop.log"));
}

// By itself, on a database in which everything is there that the examples speak of.
TEST_F(HostTest, EveryExampleOfTheHelpDoesWhatItSays) {
    MakeShop();
    Write("new.txt", "fresh\n");
    Write("more.csv", "ID,City\n20,Oslo\n");
    Write("cities.csv", "ID,Country\nOslo,Norway\n");
    const Outcome made =
        Run("shop",
            "rename-table People Customers\nmake-table Orders --fields ID,Customer\n"
            "add Orders 1 7\nmake-table Visits --fields ID,Place\n"
            "make-table Places --fields ID\nlink Visits Place Places\n"
            "add-user bob --read --write --no-password\nnote add --user bob x\nsave\n");
    ASSERT_EQ(0, made.status) << made.err;
    fs::create_directory(Path("backup"));
    const std::string shop = Read("shop.cdb");
    const auto succeeds = [&](const Command& command, std::string_view lines) {
        Write("shop.cdb", shop);
        fs::remove(Path("fresh.cdb"));
        const bool makes = command.need == Need::kNewDatabase;
        const Outcome outcome =
            Run(makes ? "fresh" : "shop", std::string(lines) + "\nquit --discard\n");
        EXPECT_EQ(0, outcome.status) << lines << '\n' << outcome.err;
    };
    for (const Subject& subject : Subjects()) {
        for (const Command& command : subject.commands) {
            std::ostringstream help;
            PrintCommand(help, command);
            for (const std::string_view line : Lines(help.view()))
                EXPECT_LE(line.size(), 79u) << line;
            for (const PatternPart& part : PartsOf(command)) {
                if (!part.IsOption()) continue;
                EXPECT_NE("", ExplanationOf(command, part.name)) << command.name << part.name;
            }
            if (command.where == Where::kSessionOnly) {
                succeeds(command, command.example);
            } else {
                for (const std::string_view line : Lines(command.example)) succeeds(command, line);
            }
        }
    }
}

}  // namespace
}  // namespace tavolin::cli

#endif
