// How lines become words, and words the parts of a command.
#include "cli/words.h"

#include <gtest/gtest.h>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/failure.h"

namespace tavolin::cli {
namespace {

using Words = std::vector<std::string>;

TEST(WordsTest, SplitsAsAShellDoes) {
    const std::pair<const char*, Words> cases[] = {
        {"", {}},
        {" \t ", {}},
        {"  # add T 1", {}},
        {"get T #1", {"get", "T", "#1"}},
        {"a  'b c'\t\"d e\"", {"a", "b c", "d e"}},
        {"'' \"\"", {"", ""}},
        {"a'b'\"c\"d", {"abcd"}},
        {R"(a\ b \' \\ 'c\' "d\"\\\n")", {"a b", "'", "\\", "c\\", "d\"\\\\n"}},
        {"x\\", {"x\\"}},
        {"'two\nlines'", {"two\nlines"}},
    };
    for (const auto& [line, expected] : cases) {
        const WordSplit split = SplitWords(line);
        EXPECT_EQ(expected, split.words) << line;
        EXPECT_FALSE(split.open_quote) << line;
    }
    EXPECT_TRUE(SplitWords("add T 'x").open_quote);
    EXPECT_TRUE(SplitWords("add T \"x\\\"").open_quote);
}

TEST(WordsTest, ListsMayQuoteTheirNames) {
    EXPECT_EQ((Words{"ID", "Last, first", "City"}), SplitList("ID,\"Last, first\", City "));
    EXPECT_THROW(SplitList("ID,\"x"), UsageError);
}

constexpr std::string_view kPattern = "TABLE VALUE... [--kind a|b] [--yes] [--from N]";

TEST(ArgumentsTest, SortsWordsByThePattern) {
    const Words words = {"T", "--kind=b", "-1", "--from", "7", "--", "--yes"};
    const Arguments arguments(kPattern, words);
    EXPECT_EQ("T", arguments["TABLE"]);
    EXPECT_EQ((Words{"-1", "--yes"}), arguments.All("VALUE"));
    EXPECT_EQ("b", arguments["--kind"]);
    EXPECT_EQ(7, arguments.Number("--from", 0));
    EXPECT_FALSE(arguments.Has("--yes"));
}

TEST(ArgumentsTest, RefusesWhatDoesNotFit) {
    const Words cases[] = {
        {"T"},
        {"T", "v", "--nope"},
        {"T", "v", "--kind", "c"},
        {"T", "v", "--kind"},
        {"T", "v", "--yes=1"},
        {"T", "v", "--yes", "--yes"},
    };
    for (const Words& words : cases) {
        EXPECT_THROW(Arguments(kPattern, words), UsageError) << words.back();
    }
    EXPECT_THROW(Arguments("TABLE", Words({"T", "more"})), UsageError);
    EXPECT_THROW(Arguments("T --fields NAMES", Words({"T"})), UsageError);
    EXPECT_THROW(Arguments(kPattern, Words({"T", "v", "--from", "x"})).Number("--from", 0),
                 UsageError);
}

// The examples of the help must be commands that the program understands.
TEST(CommandTest, EveryExampleFitsItsCommand) {
    for (const Command& command : Commands()) {
        const WordSplit split = SplitWords(command.example);
        std::span<const std::string> words = split.words;
        EXPECT_EQ(&command, TakeCommand(words)) << command.name;
        EXPECT_NO_THROW(Arguments(command.pattern, words)) << command.example;
    }
}

TEST(CommandTest, Completes) {
    EXPECT_EQ((Words{"update"}), Completions({}, "up", {}));
    const Words attach = {"attach"};
    EXPECT_EQ((Words{"--kind"}), Completions(attach, "--k", {}));
    const Words kind = {"attach", "T", "1", "p", "--kind"};
    EXPECT_EQ((Words{"sound"}), Completions(kind, "so", {}));
    const Words list = {"list"};
    EXPECT_EQ((Words{"Cities"}), Completions(list, "C", {"Cities", "People"}));
}

}  // namespace
}  // namespace tavolin::cli
