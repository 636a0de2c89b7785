// Passwords typed on a terminal: not shown, not in the history, not in any file.
#include "tests/cli/terminal.h"

namespace tavolin::cli {
namespace {

TEST_F(HostTest, TypedPasswordsStayUnseen) {
    if (ProgramIsForeign()) GTEST_SKIP() << "the terminal is this machine's";
    const std::string anns = "QzAnns7Word", bobs = "QzBobs8Word";
    const fs::path folder = Path("here");
    fs::create_directory(folder);
    std::string shown;
    {
        Terminal terminal(folder, {"shop"});
        terminal.Answer("> ", "create\n");
        terminal.Answer("owner, ann: ", anns + "\n");
        terminal.Answer("Again: ", anns + "\n");
        terminal.Answer("> ", "add-user bob --read\n");
        terminal.Answer("of bob: ", bobs + "\n");
        terminal.Answer("Again: ", bobs + "\n");
        std::string back;
        for (int i = 0; i < 9; ++i) back += "\x1B[A";
        terminal.Answer("> ", back + "\n");  // the oldest line, after all others
        terminal.Answer("is open", "");
        terminal.Answer("> ", "quit\n");
        terminal.Answer("Save", "y\n");
        shown = terminal.All();
    }
    EXPECT_NE(shown.find("add-user bob"), shown.rfind("add-user bob")) << shown;  // there is one
    for (const std::string& password : {anns, bobs}) {
        EXPECT_EQ(shown.find(password), std::string::npos) << shown;
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.is_directory()) continue;
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            EXPECT_EQ(bytes.find(password), std::string::npos) << entry.path();
        }
    }
    EXPECT_TRUE(fs::exists(folder / "shop.cdb"));
    EXPECT_TRUE(fs::exists(folder / ".local/state/tavolin/history"));
}

TEST_F(HostTest, CtrlCAtAQuestionIsAnInterruption) {
    if (ProgramIsForeign()) GTEST_SKIP() << "the terminal is this machine's";
    MakeShop();
    Write("old.csv", "old");
    const std::string shop = Read("shop.cdb");
    struct Case {
        std::vector<const char*> words;
        bool password;
        const char* prompt;
    };
    const Case cases[] = {
        {{"shop", "tables"}, false, "Password of ann: "},
        {{"shop"}, false, "Password of ann: "},
        {{"check", "shop"}, false, "Password of ann: "},
        {{"new", "create"}, false, "owner, ann: "},
        {{"new", "create", "--ask-password"}, true, "for the database: "},
        {{"shop", "add-user", "bob"}, true, "of bob: "},
        {{"shop", "export", "csv", "People", "old.csv"}, true, "[yes/no] "},
        {{"shop", "drop-table", "People"}, true, "[yes/no] "},
    };
    for (const Case& each : cases) {
        Terminal terminal(Path(""), each.words, each.password);
        terminal.Answer(each.prompt, "");
        EXPECT_EQ(130, terminal.Status("\x03")) << each.words.back();
    }
    EXPECT_EQ(shop, Read("shop.cdb"));
    EXPECT_EQ("old", Read("old.csv"));
    EXPECT_FALSE(fs::exists(Path("new.cdb")));
}

}  // namespace
}  // namespace tavolin::cli
