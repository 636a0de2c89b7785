// A session at a terminal, what a system's shell completes, and the help.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <sstream>

#include "cli/csv_reader.h"
#include "cli/help.h"
#include "cli/stoppable.h"
#include "tests/cli/terminal.h"

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
    terminal.Answer("> ", "quit\n");
}

// A file that gives some rows and then neither more nor its end.
class StuckFile {
  public:
    explicit StuckFile(const fs::path& path) {
        EXPECT_EQ(0, ::mkfifo(path.c_str(), 0600));
        file_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
        const std::string rows = "ID,City\n90,Oslo\n91,Bonn\n";
        EXPECT_GT(::write(file_, rows.data(), rows.size()), 0);
    }
    ~StuckFile() { ::close(file_); }
    void WaitUntilRead() const {
        for (int left = 1; left > 0; ::usleep(1000)) ASSERT_EQ(0, ::ioctl(file_, FIONREAD, &left));
    }

  private:
    int file_;
};

TEST_F(HostTest, CtrlCTakesACommandBack) {
    if (ProgramIsForeign()) GTEST_SKIP() << "the terminal is this machine's";
    MakeShop();
    const std::string shop = Read("shop.cdb");
    for (const bool twice : {false, true}) {
        for (const bool session : {true, false}) {
            fs::remove(Path("stuck.csv"));
            auto stuck = std::make_unique<StuckFile>(Path("stuck.csv"));
            std::vector<const char*> words = {"shop", "import", "People", "stuck.csv"};
            if (session) words.resize(1);
            Terminal terminal(Path(""), words, true);
            if (session) terminal.Answer("> ", "import People stuck.csv\n");
            stuck->WaitUntilRead();
            terminal.Answer("", "\x03");
            terminal.Answer("^C", "");
            if (!twice) {
                stuck.reset();
                terminal.Answer("nothing was imported", "");
                if (session) {
                    terminal.Answer("> ", "count People\n");
                    terminal.Answer("2 records", "");
                    terminal.Answer("> ", "add People 9\n");
                    terminal.Answer("> ", "save\n");
                    terminal.Answer("> ", "quit\n");
                }
            }
            EXPECT_EQ(session && !twice ? 0 : 130, terminal.Status(twice ? "\x03" : ""));
            if (session && !twice) {
                EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n9,,\n", Csv("People"));
                Write("shop.cdb", shop);
            }
            EXPECT_EQ(shop, Read("shop.cdb"));
        }
    }
}

TEST_F(HostTest, AChangeThatTheLibraryStopsIsNoChange) {
    Host host(HostOptions{});
    CVLDBEngine& engine = host.engine();
    engine.LogOn("ann", "secret");
    engine.CreateNewDB("stopped", Path("").string());
    for (const char* name : {"Orders", "Buyers"}) engine.CreateNewPrimaryTable(name, {"ID", "B"});
    engine.AddRecord("Orders", 1, {"1", "Ann"});
    const InterruptCatcher catcher;
    const auto link = [&] {
        ChangeStoppably(host, "linking", [&] { engine.LinkTables("Orders", 1, "Buyers"); });
    };
    RememberInterrupt();
    EXPECT_THROW(link(), Cancelled);
    EXPECT_FALSE(host.unsaved());
    EXPECT_EQ(0, engine.GetTable("Buyers")->Count());
    ForgetInterrupt();
    link();
    EXPECT_TRUE(host.unsaved());
    EXPECT_EQ(1, engine.GetTable("Buyers")->Count());
}

TEST_F(HostTest, ATableComesBackFromItsCsvFile) {
    ASSERT_EQ(0, Run("shop create").status);
    const std::vector<std::string> pieces = {
        "",   ",", "\"",     "\r\n", "\n",  "\r", " ",   "007", "é",    "日本", "'",
        "\t", "#", "\uFEFF", "-1",   "1e5", "=1", "\\n", "x",   "\x1B", "😀",    "NULL"};
    std::vector<std::vector<std::string>> rows = {{"\uFEFFa", "key", " \"c\",\n"}};
    for (const std::string& one : pieces) {
        for (const std::string& two : pieces)
            rows.push_back({one + two, std::to_string(rows.size()) + two, one + "x" + two});
    }
    std::string csv = "\uFEFF";
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            csv += i > 0 ? ",\"" : "\"";
            for (const char c : row[i]) csv += c == '"' ? std::string("\"\"") : std::string(1, c);
            csv += '"';
        }
        csv += "\r\n";
    }
    Write("in.csv", csv);
    ASSERT_EQ(0, Run("shop import T in.csv --key key").status);
    ASSERT_EQ(0, Run("shop export csv T out.csv").status);
    const std::string exported = Read("out.csv");
    CsvReader reader(TextSource(exported));
    for (const auto& row : rows) {
        ASSERT_TRUE(reader.Next());
        EXPECT_EQ(row, std::vector<std::string>(reader.fields().begin(), reader.fields().end()));
    }
    EXPECT_FALSE(reader.Next());
    ASSERT_EQ(0, Run("shop import U out.csv --key key").status);
    EXPECT_EQ(exported, Run("shop export csv U -").out);
    EXPECT_EQ(1, Run("shop export csv T out.csv").status) << "it is there";
    EXPECT_EQ(exported, Run("--format csv shop list T").out);
}

TEST_F(HostTest, TheSystemsShellGetsWhatMayComeNext) {
    if (ProgramIsForeign()) GTEST_SKIP() << "that shell is this machine's";
    MakeShop();
    fs::create_directory(Path("a folder"));
    const std::pair<const char*, const char*> cases[] = {
        {"tavolin sh", "shop.cdb\n"},
        {"tavolin sal", "salvage\n"},
        {"tavolin --format js", "json\n"},
        {"tavolin check sh", "shop.cdb\n"},
        {"tavolin salvage shop x --t", "--take-ownership\n--timing\n"},
        {"tavolin --no-pager help sal", "salvage\n"},
        {"tavolin shop quit --", "--discard\n"},
        {"tavolin -q shop list P", "People\n"},
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
    if (ProgramIsForeign()) GTEST_SKIP() << "the commands are the same, and it takes long there";
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
    ASSERT_EQ(0, Run("shop dump shop.dump").status);
    const std::string shop = Read("shop.cdb");
    const auto succeeds = [&](const Command& command, std::string_view lines) {
        Write("shop.cdb", shop);
        fs::remove(Path("fresh.cdb"));
        const bool makes = command.need == Need::kNewDatabase || command.name == "restore";
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
