// What reaches the disk, where, and what is said about it.
#include "tests/cli/host_fixture.h"

#ifndef _WIN32

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
    const std::string meanwhile = "{ echo 'add People 9'; sleep 0.5; " + Program() +
                                  " shop add People 10 >&2; echo save; "
                                  "echo 'save --as mine'; } | ";
    const Outcome outcome = Run("--keep-going shop", "", meanwhile);
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(outcome.err.npos, outcome.err.find("was changed by somebody else")) << outcome.err;
    EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n10,,\n", Csv("People"));
    EXPECT_EQ("3\n", Run("-q mine count People").out);
    EXPECT_EQ(0, Run("shop", "add People 11\nsave\nadd People 12\nsave\n").status);
}

}  // namespace
}  // namespace tavolin::cli

#endif
