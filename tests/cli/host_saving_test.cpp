// What reaches the disk, where, and what is said about it.
#include <algorithm>
#include <csignal>

#include "tavolin/persist/file_system.h"
#include "tests/cli/host_fixture.h"

namespace tavolin::cli {
namespace {

TEST_F(HostTest, ADatabaseSavedWithoutItsRegistryIsSaved) {
    MakeShop();
    const std::string settings = "TAVOLIN_FOLDER=\"$PWD/gone\"";
    for (const auto& [words, input] :
         {std::pair("shop add People 9", ""), std::pair("shop", "begin\nadd People 10\ncommit\n"),
          std::pair("other create", "")}) {
        const Outcome outcome = Run(words, input, settings);
        EXPECT_EQ(0, outcome.status) << outcome.err;
        EXPECT_EQ(0U, outcome.err.find("warning: the database is saved; the owner registry"));
        EXPECT_NE(outcome.err.npos, outcome.err.find(Path("gone").string())) << outcome.err;
        EXPECT_NE(outcome.err.npos, outcome.err.find("TAVOLIN_FOLDER")) << outcome.err;
    }
    EXPECT_EQ("4\n", Run("-q shop count People").out);
}

TEST_F(HostTest, TheRegistryGoesWhereTheUserMayWrite) {
    if (ProgramIsForeign()) GTEST_SKIP() << "needs this machine's permissions";
    fs::permissions(Path(""), fs::perms::all);
    fs::create_directory(Path("bin"));
    fs::copy_file(TAVOLIN_HOST, Path("bin/tavolin"));
    fs::permissions(Path("bin"), fs::perms::owner_read | fs::perms::owner_exec |
                                     fs::perms::others_read | fs::perms::others_exec);
    const std::pair<const char*, const char*> cases[] = {
        {"XDG_DATA_HOME=\"$PWD/data\"", "data/tavolin/RDX.dat"},
        {"XDG_DATA_HOME= HOME=\"$PWD/home\"", "home/.local/share/tavolin/RDX.dat"},
    };
    ASSERT_EQ(0, Run("help", "", std::string("TAVOLIN_FOLDER= ") + cases[0].first,
                     WithoutPrivileges(Path("bin/tavolin")))
                     .status);
    EXPECT_FALSE(fs::exists(Path("data"))) << "made for nothing";
    for (const auto& [settings, registry] : cases) {
        fs::remove(Path("shop.cdb"));
        const Outcome outcome = Run("shop create", "", std::string("TAVOLIN_FOLDER= ") + settings,
                                    WithoutPrivileges(Path("bin/tavolin")));
        EXPECT_EQ(0, outcome.status) << outcome.err;
        EXPECT_TRUE(fs::exists(Path(registry))) << registry;
    }
    fs::permissions(Path("bin"), fs::perms::all);
}

// What is printed before the file is written would be believed.
TEST_F(HostTest, WhatCannotBeSavedIsNotReported) {
    if (ProgramIsForeign()) GTEST_SKIP() << "needs this machine's permissions";
    MakeShop();
    fs::permissions(Path(""), fs::perms::all);
    fs::permissions(Path("shop.cdb"), fs::perms::owner_read | fs::perms::others_read);
    const Outcome outcome = Run("shop add People 9", "", "", WithoutPrivileges(TAVOLIN_HOST));
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("", outcome.out);
    EXPECT_NE(outcome.err.npos, outcome.err.find("CVLDBEngine:SaveDB")) << outcome.err;
}

TEST_F(HostTest, AFileThatSomebodyElseChangedIsNotWrittenOver) {
    MakeShop();
    const auto meanwhile = [](const std::string& key, const std::string& then) {
        return "{ echo 'begin'; echo 'add People " + key + "'; sleep 0.5; " + Program() +
               " shop add People 1" + key + " >&2; " + then + "; } | ";
    };
    const Outcome outcome =
        Run("--keep-going shop", "",
            meanwhile("9", "echo commit; echo save; echo 'save --as mine'; echo abort"));
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ(outcome.err.npos, outcome.err.find("Cannot Abort")) << outcome.err;
    EXPECT_NE(outcome.err.npos, outcome.err.find("was changed by somebody else")) << outcome.err;
    EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n19,,\n", Csv("People"));
    EXPECT_EQ("3\n", Run("-q mine count People").out);
    EXPECT_EQ(0, Run("shop", "add People 11\nsave\nadd People 12\nsave\n").status);
    EXPECT_EQ(0, Run("shop", "", meanwhile("30", "echo 'commit --replace'")).status);
    EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n19,,\n11,,\n12,,\n30,,\n", Csv("People"));
}

// Eight processes at a time, each of which makes ten databases, and adds to a shared one.
TEST_F(HostTest, NoProcessTakesAwayWhatAnotherDid) {
    MakeShop();
    const std::string tavolin = Program() + " -q";
    Write("many.sh", "work() { for i in 0 1 2 3 4 5 6 7 8 9; do\n" + tavolin +
                         " db$1$i create 2>&1 || echo create failed\n"
                         "done; for i in 0 1 2; do\n"
                         "until " +
                         tavolin +
                         " shop add People p$1$i 2>many.err$1; do\n"
                         "grep -q 'changed by somebody\\|cannot be saved\\|Cannot Be Saved' "
                         "many.err$1 || { cat many.err$1; break; }\ndone; done; }\n"
                         "for p in 1 2 3 4 5 6 7 8; do work $p & done; wait\n");
    EXPECT_EQ("", Run("", "", "", "bash many.sh").out);
    std::string listed = Run("--format csv --no-header shop owners ann").out;
    EXPECT_EQ(81, std::count(listed.begin(), listed.end(), '\n')) << listed;
    EXPECT_EQ("26\n", Run("-q shop count People").out);
}

// A lock goes with the process that holds it, however that ends.
TEST_F(HostTest, AProcessThatDiedLocksNobodyOut) {
    if (ProgramIsForeign()) GTEST_SKIP() << "needs this machine's processes";
    MakeShop();
    const ::pid_t child = ::fork();
    if (child == 0) {
        const auto lock = MachineFileSystem().LockFolder(Path("").string());
        ::kill(::getpid(), lock ? SIGKILL : SIGTERM);
    }
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    EXPECT_EQ(SIGKILL, WTERMSIG(status));
    EXPECT_EQ(0, Run("shop add People 9").status);
}

TEST_F(HostTest, ADamagedFileIsCheckedAndSalvaged) {
    MakeShop();
    const Outcome whole = Run("check shop");
    EXPECT_EQ(0, whole.status) << whole.err;
    EXPECT_NE(whole.out.npos, whole.out.find("whole; 1 table, 2 records, 1 user")) << whole.out;
    std::string bytes = Read("shop.cdb");
    bytes[bytes.find("Ann Lee") + 1] ^= 1;
    Write("shop.cdb", bytes);
    EXPECT_EQ(1, Run("shop list People").status);
    const struct {
        const char* words;
        const char* settings;
        int status;
        const char* said;
    } cases[] = {
        {"check shop", "", 1, "the checksum is not that of the bytes"},
        {"salvage shop saved", "TAVOLIN_PASSWORD=wrong", 2, "may not read this database"},
        {"check shop", "TAVOLIN_USER=eve TAVOLIN_PASSWORD=e", 2, "may not read this database"},
        {"salvage shop shop.cdb", "", 2, "NEW is the damaged file itself"},
        {"salvage shop saved", "", 1, "written to"},
        {"salvage shop saved", "", 2, "--replace writes over it"},
        {"salvage shop saved --replace", "", 1, "written to"},
        {"check RDX.dat", "", 0, "whole, a registry of owners"},
        {"salvage RDX.dat saved2", "", 2, "is a registry of owners, not a database"},
        {"check run.sh", "", 2, "holds nothing that"},
        {"check gone", "", 2, "error"},
        {"check shop --timing", "", 1, " s\n"},
        {"check", "", 2, "usage: check FILE"},
    };
    for (const auto& test : cases) {
        const Outcome outcome = Run(test.words, "", test.settings);
        EXPECT_EQ(test.status, outcome.status) << test.words << '\n' << outcome.err;
        EXPECT_NE(outcome.out.npos, (outcome.out + outcome.err).find(test.said))
            << test.words << '\n'
            << outcome.out << outcome.err;
        EXPECT_EQ(outcome.out.npos, (outcome.out + outcome.err).find("secret"));
    }
    EXPECT_EQ(bytes, Read("shop.cdb"));
    EXPECT_EQ("7,Aon Lee,Paris\n8,,Rome\n", Run("--format csv --no-header saved list People").out);
    EXPECT_EQ(0, Run("check saved").status);
    // Without its end, where the users stand, nobody can be told to be the owner.
    Write("shop.cdb", bytes.substr(0, bytes.find("Rome") + 8));
    const std::string eve = "TAVOLIN_USER=eve TAVOLIN_PASSWORD=e";
    EXPECT_EQ(2, Run("salvage shop cut").status);
    EXPECT_EQ(1, Run("salvage shop cut --take-ownership", "", eve).status);
    EXPECT_EQ(1, Run("cut info").status);
    EXPECT_EQ(0, Run("cut info", "", eve).status);
}

}  // namespace
}  // namespace tavolin::cli
