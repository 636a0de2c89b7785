// Commands, sessions, rights, imports.
#include <cstring>

#include "tests/cli/host_fixture.h"

namespace tavolin::cli {
namespace {

TEST_F(HostTest, OneCommandAtATimeKeepsWhatItChanged) {
    MakeShop();
    EXPECT_EQ(0, Run("shop update People 7 'name=ANN LEE'").status);
    EXPECT_EQ("7,ANN LEE,Paris\n8,,Rome\n", Csv("People"));
    EXPECT_EQ(0, Run("shop update People 7 'Name=ann lee'").status);
    EXPECT_EQ(1, Run("shop update People 7 ID=9").status);
    EXPECT_EQ(0, Run("shop attach People '#1' a.png --kind picture").status);
    EXPECT_EQ("ID: 7\nName: ann lee\nCity: Paris\nattached picture: a.png\n",
              Run("--format lines shop get People 7").out);
    EXPECT_EQ("ID  Name     City\n--  -------  -----\n7   ann lee  Paris\n1 record\n",
              Run("shop find LEE --in People").out);
    ASSERT_EQ(0, Run("shop make-linked People City --fields Town").status);
    EXPECT_EQ(0, Run("shop delete People '#1' --no-cascade").status);
    EXPECT_EQ("8,,Rome\n", Csv("People"));
    EXPECT_EQ(0, Run("shop drop-table People --no-cascade --yes").status);
    EXPECT_EQ("Paris\nRome\n", Csv("CityPeople"));
}

TEST_F(HostTest, KeysThatLookLikePositionsOrOptions) {
    MakeShop();
    EXPECT_EQ(0, Run("shop add People '#1' sharp").status);
    EXPECT_EQ(0, Run("shop add People -5 minus").status);
    EXPECT_EQ("#1,sharp,\n", Run("--format csv --no-header shop get People '\\#1'").out);
    EXPECT_EQ("7,Ann Lee,Paris\n", Run("--format csv --no-header shop get People '#1'").out);
    EXPECT_EQ("-5,minus,\n", Run("--format csv --no-header shop get People -5").out);
    EXPECT_EQ(0, Run("shop add People '\\#1' slash").status);
    EXPECT_EQ("\\#1,slash,\n", Run("--format csv --no-header shop get People '\\\\#1'").out);
}

TEST_F(HostTest, SortsAndExports) {
    MakeShop();
    EXPECT_EQ(1, Run("shop sort People City").status);
    EXPECT_EQ(2, Run("shop sort People 10 --yes").status);
    EXPECT_EQ(0, Run("shop sort People Name --yes").status);
    EXPECT_EQ("8,,Rome\n7,Ann Lee,Paris\n", Csv("People"));

    const std::string text =
        "\" People\r\n \r\n1\r\nID: 8\r\nName: NULL\r\nCity: Rome\r\n\r\n\r\n2\r\nID: 7\r\n"
        "Name: Ann Lee\r\nCity: Paris\r\n\r\n\r\n\r\n\"\r\n";
    EXPECT_EQ(0, Run("shop export text").status);
    EXPECT_EQ(text, Read("shop.txt"));
    Write("old.txt", "old");
    EXPECT_EQ(1, Run("shop export text ./old.txt").status);
    EXPECT_EQ("old", Read("old.txt"));
    EXPECT_EQ(0, Run("shop export text '.\\old.txt' --yes").status);
    EXPECT_EQ(text, Read("old.txt"));

    EXPECT_EQ(0, Run("shop export html site").status);
    EXPECT_TRUE(fs::exists(Path("site/site.htm")) && fs::exists(Path("site/People/Records.htm")));
    EXPECT_EQ(0, Run("shop export mdb").status);
    const std::string exported = Read("shop.mdb");
    EXPECT_EQ(1, Run("shop export mdb").status);
    EXPECT_EQ(exported, Read("shop.mdb"));
    EXPECT_EQ(0, Run("shop add People 9").status);
    EXPECT_EQ(0, Run("shop export mdb --replace").status);
    EXPECT_NE(exported, Read("shop.mdb"));
    std::string changed = Read("shop.mdb");
    changed[changed.size() / 2] ^= 1;
    Write("changed.mdb", changed);
    EXPECT_EQ(1, Run("shop export mdb changed.mdb --replace").status);
    EXPECT_EQ(changed, Read("changed.mdb"));
    EXPECT_EQ(0, Run("none create").status);
    EXPECT_EQ(1, Run("none export mdb shop.mdb --replace").status);
    EXPECT_NE(exported, Read("shop.mdb"));
    EXPECT_FALSE(fs::exists(Path("shop.mdb.tavolin-new1.mdb")));
    Write("foreign.mdb", "mine");
    EXPECT_EQ(1, Run("shop export mdb foreign.mdb --replace").status);
    EXPECT_EQ("mine", Read("foreign.mdb"));
    const std::pair<const char*, int> refused[] = {
        {"text x.csv", 2},    {"text none/x.txt", 1}, {"html site", 1},
        {"html shop.cdb", 1}, {"html /", 2},          {"html title", 1},
        {"mdb abcdb.mdb", 2}, {"text .txt", 2},       {"csv People shop.cdb --yes", 1}};
    for (const auto& [words, status] : refused) {
        EXPECT_EQ(status, Run(std::string("shop export ") + words).status) << words;
    }
    ASSERT_EQ(0, Run("shop save --as x.db").status);
    for (const char* file : {"html/x/x.htm", "text/x.txt", "mdb/x.mdb", "sql/x.sql"}) {
        const std::string kind(file, std::strchr(file, '/'));
        EXPECT_EQ(0, Run("x.db export " + kind).status) << file;
        EXPECT_TRUE(fs::exists(Path(file + kind.size() + 1))) << file;
    }
}

TEST_F(HostTest, WrongWordsAndFailuresHaveTheirStatus) {
    MakeShop();
    const std::pair<int, std::vector<const char*>> cases[] = {
        {2,
         {"", "shop bogus", "shop count", "shop count People more", "shop list People --bogus",
          "shop list People --from x", "--bogus shop count People",
          "shop --format bad count People", "shop begin", "shop add People 1 2 3 4",
          "shop add People ID=1 2"}},
        {2,
         {"shop make-table X --fields A,B,C,D,E,F,G,H,I,J,K",
          "shop make-table X --fields A,B --key C", "shop add-user bob --read",
          "shop add People Nope=x", "shop make-table X --fields A,B,a",
          "shop make-table X --fields A,$'\\xFF'", "shop find paris --field City",
          "shop find paris --in People --field Nope", "shop set-user ann",
          "shop set-user ann --name ''", "shop add-user '' --no-password"}},
        {1,
         {"shop count Nobody", "shop get People 99", "shop find nobody", "shop drop-table People",
          "missing tables", "shop create", "missing/shop create", "shop add People $'\\xFF'",
          "shop update People 7 Name=$'\\xFF'", "shop label People City $'\\xFF'",
          "shop label People City name", "shop remove-user ann --yes"}},
        {0, {"shop help import", "--no-pager help salvage", "--version", "--help"}}};
    for (const auto& [status, lines] : cases) {
        for (const char* words : lines) {
            if (ProgramIsForeign() && std::strstr(words, "\\xFF") != nullptr) continue;
            const Outcome outcome = Run(words);
            EXPECT_EQ(status, outcome.status) << words;
            EXPECT_EQ(status == 0, outcome.err.empty()) << words << outcome.err;
        }
    }
    EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n", Csv("People"));
    EXPECT_EQ(
        "error -2147161495 (0x8004EA69): Table Nobody Not Found!\n"
        "  source: CVLDBEngine:GetTable Method\n",
        Run("shop count Nobody").err);
}

TEST_F(HostTest, MessagesSayWhatIsWrong) {
    MakeShop();
    ASSERT_EQ(0, Run("shop add People key Nope=x --values").status);
    ASSERT_EQ(0, Run("shop add-user $'e\\x1Bve' --no-password").status);
    struct Case {
        const char* words;
        const char* input;
        const char* expected;  // in what is printed
    };
    const Case cases[] = {
        {"shop get People 99", "", "): no record 99 in People\n  source: "},
        {"shop update People 99 City=x", "", "): no record 99 in People\n"},
        {"shop delete People 99", "", "): no record 99 in People\n"},
        {"shop attach People 99 x.png", "", "): no record 99 in People\n"},
        {"shop update People key id=KEY", "", "is part of the key and cannot change"},
        {"shop add People Nope=x", "", "has no field Nope; --values takes"},
        {"missing/shop create", "", "the folder "},
        {"shop tables more", "", "usage: tables\n"},
        {"shop nonesuchnonesuchnonesuchnonesuchnonesuchnonesuch", "", "nonesuc…;"},
        {"--keep-going shop", "\nget\nadd 'x\ny\nz'\nnope\n", "line 2: error: TABLE is missing"},
        {"--keep-going shop", "\nget\nadd 'x\ny\nz'\nnope\n", "line 6: error: there is no"},
        {"shop remove-user ann --yes", "", "hand the database over first"},
        {"shop", "set --format json\nset pager off --quiet\nset pager\n", "pager    off"},
        {"shop remove-user $'e\\x1Bve' --yes", "", "user e\\x1Bve removed\n"},
        {"b.txt create", "", "created"},
        {"b.txt export text ./b.txt --yes", "", "b.txt is the database's own file"},
        {"shop export csv People .", "", " is a folder"},
        {"help salvage", "", "2 when no new file was written"},
        {"help check", "", "A registry of owners can be checked as well"},
        {"shop dump '.\\shop.cdb' --yes", "", "shop.cdb is the database's own file"},
        {"--keep-going shop", "delete-database --yes\ncreate\n", "a database is open"},
    };
    for (const Case& each : cases) {
        const Outcome outcome = Run(each.words, each.input);
        const std::string printed = outcome.out + outcome.err;
        EXPECT_NE(printed.npos, printed.find(each.expected)) << each.words << '\n' << printed;
    }
}

TEST_F(HostTest, WhoeverChangesHisOwnNameOrPasswordKeepsHisRights) {
    MakeShop();
    Write("new.txt", "fresh\n");
    Write("bob.txt", "hush\n");
    const std::pair<const char*, const char*> cases[] = {
        {"set-user ann --password-file new.txt", "--password-file new.txt"},
        {"set-user ann --name eve --password-file new.txt", "--user eve --password-file new.txt"},
        {"owner ann --password-file new.txt --yes", "--password-file new.txt"},
        {"owner ann --no-password --yes", "--password-file in.txt"},
    };
    const std::string shop = Read("shop.cdb");
    for (const auto& [command, log_on] : cases) {
        Write("shop.cdb", shop);
        const Outcome outcome =
            Run("shop", std::string(command) + "\nadd People 9\nlog on errors\nsave\n");
        EXPECT_EQ(0, outcome.status) << command << outcome.err;
        EXPECT_EQ(0, Run(std::string(log_on) + " shop log off errors").status) << command;
        EXPECT_EQ(1, Run("shop log off errors").status) << command;
        Write("shop.cdb", shop);
        EXPECT_EQ(0, Run("shop", "begin\n" + std::string(command) +
                                     "\nabort\nlog on errors\nquit --discard\n")
                         .status)
            << command;
    }
    Write("shop.cdb", shop);
    ASSERT_EQ(0, Run("shop add-user bob --read --password-file bob.txt").status);
    ASSERT_EQ(0, Run("shop set-user bob --password-file new.txt").status);
    EXPECT_EQ(1, Run("--user bob --password-file bob.txt shop tables").status);
    EXPECT_EQ(0, Run("--user bob --password-file new.txt shop tables").status);
    EXPECT_EQ(1, Run("--user bob --password-file new.txt shop set-user ann --no-password").status);
    ASSERT_EQ(0, Run("shop owner bob --no-password --yes").status);
    EXPECT_EQ(0, Run("--user bob shop log off errors", "", "TAVOLIN_PASSWORD=").status);
}

TEST_F(HostTest, RightsAreAskedForByCommand) {
    MakeShop();
    Write("bob.txt", "hush\r\n");
    ASSERT_EQ(0, Run("shop add-user bob --read --password-file bob.txt").status);
    const std::string bob = "--user bob --password-file bob.txt shop ";
    EXPECT_EQ("2 records\n", Run(bob + "count People").out);
    EXPECT_EQ(1, Run(bob + "add People 9").status);
    EXPECT_EQ(1, Run(bob + "delete People 7").status);
    EXPECT_EQ(1, Run(bob + "add-user eve --no-password").status);
    EXPECT_EQ(1, Run(bob, "label People Name x\nsave\n").status);
    ASSERT_EQ(0, Run("shop set-user bob --write on").status);
    EXPECT_EQ(0, Run(bob + "add People 9").status);
    EXPECT_EQ(1, Run(bob + "delete People 7").status);

    EXPECT_EQ(1, Run("--user bob shop count People", "", "TAVOLIN_PASSWORD=wrong").status);
    EXPECT_EQ(1, Run("--user eve shop", "help\n", "TAVOLIN_PASSWORD=wrong").status);
    ASSERT_EQ(0, Run("shop set-user bob --disabled on").status);
    EXPECT_EQ(1, Run(bob + "count People").status);
    EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n9,,\n", Csv("People"));
}

TEST_F(HostTest, ASessionSavesWhenItIsToldTo) {
    Outcome outcome = Run("new", "create\nmake-table T --fields A,B\nadd T 1 'x\ny'\nsave\n");
    EXPECT_EQ(0, outcome.status) << outcome.err;
    EXPECT_EQ("1,\"x\ny\"\n", Run("--format csv --no-header new list T").out);

    outcome = Run("-q new", "add T 2\ncount T\n");
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("2\n", outcome.out);
    EXPECT_NE("", outcome.err);
    EXPECT_EQ(0, Run("new", "add T 2\nquit --discard\nbogus\n").status);
    EXPECT_EQ("1\n", Run("-q new count T").out);

    outcome = Run("-q new", "count U\ncount T\n");
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("", outcome.out);
    outcome = Run("-q --keep-going new", "# comment\n\ncount U\nbogus\ncount T\n");
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ("1\n", outcome.out);
    EXPECT_EQ(2, Run("new", "add T 'x").status);
}

TEST_F(HostTest, ATransactionIsTakenBackOrSaved) {
    MakeShop();
    EXPECT_EQ(0, Run("shop", "begin\nadd People 9\ndrop-table People\nabort\n").status);
    EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n", Csv("People"));
    EXPECT_EQ(1, Run("shop", "add People 9\nbegin\nabort\n").status) << "9 is not saved";
    EXPECT_EQ(0, Run("shop", "begin\nadd People 9\ncommit\n").status);
    EXPECT_EQ(1, Run("shop", "begin\nadd People 10\nsave\nabort\n").status) << "10 is in the file";
    EXPECT_EQ(0, Run("shop", "delete People 10\nsave\n").status);
    EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n9,,\n", Csv("People"));
}

TEST_F(HostTest, ImportMakesOrFillsATable) {
    MakeShop();
    Write("new.csv", "\xEF\xBB\xBFid,City\r\nx,\"Pa\"\"ris\r\n2\"\r\ny,\r\n");
    EXPECT_EQ(0, Run("shop import Towns new.csv --key City").status);
    EXPECT_EQ("x,\"Pa\"\"ris\r\n2\"\ny,\n", Csv("Towns"));
    Write("more.csv", "CITY,id\nOslo,9\nBonn,8\n");
    const Outcome outcome = Run("shop import People more.csv --skip-duplicates");
    EXPECT_EQ(0, outcome.status);
    EXPECT_NE(outcome.out.npos, outcome.out.find("1 duplicate skipped")) << outcome.out;
    EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n9,,Oslo\n", Csv("People"));
}

// In a session that saves afterwards: whatever the failed import left would be on the disk.
TEST_F(HostTest, ARefusedImportNamesThePlaceAndChangesNothing) {
    MakeShop();
    ASSERT_EQ(0, Run("shop make-linked People City --fields Town").status);
    Write("pw", "hush\n");
    ASSERT_EQ(0, Run("shop add-user bob --read --write --password-file pw").status);
    const std::string towns = Csv("CityPeople");
    const std::array<std::string, 3> cases[] = {
        {"People", "ID,City\n10,Oslo\n11,Bonn,x\n", "f.csv:3:3: a field too many"},
        {"People", "ID,City\n10,Oslo\n11\n", "f.csv:3:2 (City): the field is missing"},
        {"People", "ID,City\n10,Oslo\n\n8,Bonn\n", "f.csv:4:1 (ID): the key \"8\" is already"},
        {"People", "ID,City\n10,\"Oslo\n\n", "f.csv:2:2 (City): a quote that is never"},
        {"People", "ID,City\n10,Oslo\n11,\xFF\n", "f.csv:3:2 (City): byte 1"},
        {"People", "ID,Street\n10,x\n", "f.csv:1:2 (Street): the table People has no such"},
        {"People", "Name\nx\n", "the key field ID is not in the header"},
        {"New", "A,B\n1,2\n1,3\n", "f.csv:3:1 (A): the key \"1\" is already"},
        {"New", "a,b,c,d,e,f,g,h,i,j,k\n", "f.csv:1:11 (k): a table has ten fields"},
        {"New", "a,A\n", "f.csv:1:2 (A): the name stands twice"},
        {"New", "", "the file has no header"},
    };
    for (const auto& [table, csv, expected] : cases) {
        Write("f.csv", csv);
        const Outcome outcome = Run("--user bob --password-file pw --keep-going shop",
                                    "import " + table + " f.csv\nsave\n");
        EXPECT_EQ(1, outcome.status) << expected;
        EXPECT_NE(outcome.err.npos, outcome.err.find(expected)) << outcome.err;
        EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n", Csv("People")) << expected;
        EXPECT_EQ(towns, Csv("CityPeople")) << expected;
        EXPECT_EQ(1, Run("shop count New").status) << expected;
    }
}

TEST_F(HostTest, NotesAreTheOwnersAlone) {
    MakeShop();
    ASSERT_EQ(0, Run("shop add-user bob --read --write --delete --no-password").status);
    const char* const added = "note add --user bob one two --number 7\nnote add --user BOB x\n";
    EXPECT_EQ(0, Run("shop", std::string(added) + "note add mine\nsave\n").status);
    EXPECT_EQ(0, Run("shop note set '#2' three --user bob").status);
    const std::string notes = Run("--format csv --no-header shop notes bob").out;
    EXPECT_NE(notes.npos, notes.find(",7,one two\n")) << notes;
    const std::string first = "'" + notes.substr(0, notes.find(',')) + "'";
    EXPECT_EQ(1, Run("shop note remove --user bob " + first).status) << "without --yes";
    EXPECT_EQ(0, Run("shop note remove --user bob --yes " + first).status);
    EXPECT_EQ(notes.substr(notes.find('\n') + 1),
              Run("--format csv --no-header shop notes bob").out);
    EXPECT_TRUE(notes.ends_with(",2,three\n")) << notes;
    EXPECT_NE(std::string::npos, Run("--format csv shop notes").out.find(",1,mine\n"));
    const std::string refusal = Run("--user bob shop notes", "", "TAVOLIN_PASSWORD=").err;
    EXPECT_NE(refusal.npos, refusal.find("bob Is Not The DataBase Owner")) << refusal;
}

TEST_F(HostTest, LogSwitchesKeepTheOthers) {
    MakeShop();
    ASSERT_EQ(0, Run("shop log on record-add linking").status);
    ASSERT_EQ(0, Run("shop log off linking").status);
    ASSERT_EQ(0, Run("shop log on errors unlinking").status);
    const std::string log = Run("--format csv shop log").out;
    for (const char* line : {"errors,on\n", "record-add,on\n", "unlinking,on\n", "\nlinking,off\n",
                             "record-update,off\n", "transactions,off\n"}) {
        EXPECT_NE(log.npos, log.find(line)) << line << log;
    }
    ASSERT_EQ(0, Run("shop add People 9").status);
    EXPECT_NE(std::string::npos, Read("shop.log").find("New Record Added. Key: 9"));
}

TEST_F(HostTest, DatabasesAreCopiedHandedOverAndDeleted) {
    MakeShop();
    EXPECT_EQ(0, Run("shop save --as copy").status);
    EXPECT_EQ("2\n", Run("-q copy count People").out);
    EXPECT_EQ(1, Run("shop save --as copy").status);
    EXPECT_EQ(1, Run("shop delete-database copy").status);
    EXPECT_EQ(0, Run("shop delete-database copy --yes").status);
    EXPECT_EQ("", Read("copy.cdb"));
    EXPECT_NE("", Read("shop.cdb"));

    Write("bob.txt", "hush\n");
    EXPECT_EQ(0, Run("shop owner bob --password-file bob.txt --yes").status);
    const std::string bob = "--user bob --password-file bob.txt shop ";
    EXPECT_EQ(1, Run("shop delete-database --yes").status);
    EXPECT_EQ(0, Run(bob + "drop-table People --yes").status);
    EXPECT_EQ(0, Run(bob + "delete-database --yes").status);
    EXPECT_EQ("", Read("shop.cdb"));
}

}  // namespace
}  // namespace tavolin::cli
